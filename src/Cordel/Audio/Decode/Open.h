#pragma once
// Open: a synced reader for any audio file the library reads, recognised by its content alone,
// whatever the file is named. Unlike Stream::Instantiate it knows AIFF-C files, reads 64-bit
// float samples, delivers doubles from every reader and, unless told not to, recovers
// interrupted recordings.
//
// Repair: rewrites the header of an interrupted recording so that every reader takes it.

#include <Cordel/Audio/Decode/Stream.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>
#include <Cordel/common/SharedPtr.h>

namespace Cordel::Audio::Decode {

struct OpenOptions {
    // Sample data declared with size 0 (with bytes after it that the container's size does not
    // account for), 0xFFFFFFFF or past the end of the file, as a crashed recorder or a writer
    // into a pipe leaves them, are read to the end of the file, whole frames only; the reader's
    // IsRecovered then says so. Off, such a file fails as a truncated one does.
    bool recoverInterrupted = true;
};

// Recognises RIFF/WAVE, FORM/AIFF and FORM/AIFC by their first 12 bytes and returns the reader,
// synced. Throws BadFormat "Not a WAV, AIFF or AIFF-C file" for anything else (a file shorter
// than 12 bytes included), the reader's BadFormat for a malformed file, and the file layer's
// FileIO when the file cannot be opened or read.
CORDEL_API shared_ptr<Stream> Open(FilePath const& path, OpenOptions const& options = {});

// Writes to out a copy of the interrupted recording in whose header declares what the file
// holds: everything up to the last whole frame, with the sizes (and an AIFF frame count)
// rewritten. Writes front to back only, so out may be a pipe or a device. Returns the frames
// kept. Throws BadFormat "Not an interrupted recording: the header is intact" when there is
// nothing to repair, and as Open does.
CORDEL_API unsigned int Repair(FilePath const& in, FilePath const& out);

} // namespace Cordel::Audio::Decode
