#pragma once
// The input of a filtering command: a named file, or standard input when the name is empty or
// "-", read in blocks so that a large input needs little memory.

#include <Cordel/common/String.h>

#include <cstddef>
#include <cstdio>

namespace CordelTool {

class Input {
public:
    // Throws Util::Exception::FileIO when the file does not open.
    explicit Input(Cordel::String const& name);
    ~Input();
    Input(Input const&) = delete;
    Input& operator=(Input const&) = delete;

    // Fills up to size bytes; returns how many, 0 at the end. Throws FileIO on a read error.
    std::size_t Read(unsigned char* dest, std::size_t size);

private:
    Cordel::String name;
    std::FILE* file;
};

} // namespace CordelTool
