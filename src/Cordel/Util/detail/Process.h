#pragma once
// Internal: starting other programs without a shell, without waiting on what must not be waited
// for, and without leaving zombies behind.

#include <cstddef>
#include <string>
#include <vector>

namespace Cordel::Util::detail {

struct ProcessResult {
    bool finished = false; // the program ran and exited on its own within the time allowed
    int exitCode = -1;
    std::vector<unsigned char> output; // standard output, at most the limit asked for
    bool outputOverLimit = false;      // it wrote more than the limit (and was stopped)
};

// Runs program (a path) with args after its name, feeding input to its standard input and
// collecting its standard output. A program that outlives timeoutMs or writes more than
// maxOutput bytes is killed; either way it is reaped before this returns. Standard error goes to
// /dev/null and no other descriptor of the caller is passed on.
ProcessResult RunProcess(std::string const& program, std::vector<std::string> const& args,
                         std::vector<unsigned char> const& input, std::size_t maxOutput, int timeoutMs);

// Starts file (looked up on PATH) with args after its name, detached: the caller never waits
// for it and it never becomes the caller's zombie. Standard input is /dev/null. False when it
// could not be started.
bool SpawnDetached(char const* file, std::vector<std::string> const& args);

} // namespace Cordel::Util::detail
