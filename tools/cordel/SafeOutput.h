#pragma once
// Where every command that writes a file puts it. OUT is never left half-written and the tool never
// removes or replaces a path it did not create:
// - a regular file (or a name not yet taken) is written as a temporary file beside it, which
//   replaces it only when the writing has succeeded; a failure, Ctrl-C or a termination signal
//   removes the temporary file and leaves OUT as it was;
// - a symbolic link is followed, and the file it names is the one replaced;
// - anything else (a FIFO, a device, standard output given as "-") is written in place, once the
//   whole output is ready, and is never unlinked. Until then the bytes wait in an unnamed file in
//   the temporary folder, since writers seek back to patch their headers.

#include <Cordel/common/Path.h>
#include <Cordel/common/String.h>

#include <string>

namespace CordelTool {

class SafeOutput {
public:
    // Fails, naming path, when it cannot be written: a folder, a folder that does not exist, a
    // file without write permission.
    explicit SafeOutput(Cordel::String const& path);
    // Removes the temporary file unless Commit succeeded.
    ~SafeOutput();
    SafeOutput(SafeOutput const&) = delete;
    SafeOutput& operator=(SafeOutput const&) = delete;

    // The name writers open. It reaches the temporary file through its open descriptor, so the
    // bytes cannot land anywhere else whatever the user's file name looks like.
    Cordel::FilePath WriterPath() const;

    // Puts what the writers wrote (and closed) in place of OUT.
    void Commit();

private:
    void copyInPlace();

    Cordel::String shown;  // OUT as the user gave it, for messages
    std::string target;    // OUT with its symbolic links followed
    std::string temporary; // the named temporary file beside target; empty when writing in place
    int file = -1;         // the temporary file
    bool inPlace = false;
    bool committed = false;
};

} // namespace CordelTool
