#include <Cordel/Util/FileIOException.h>

namespace Cordel::Util::Exception {

FileIO::FileIO(String const& message, FilePath const& path, ErrorType type)
    : Base(message), path(path.ToString()), type(type)
{
}

FileIO::FileIO(String const& message, FolderPath const& path, ErrorType type)
    : Base(message), path(path.ToString()), type(type)
{
}

FileIO::~FileIO() = default;

String FileIO::ErrorTypeText(ErrorType type)
{
    switch (static_cast<int>(type)) {
    case FileNotFound: return "File not found";
    case OpenError: return "Open error";
    case ReadError: return "Read error";
    case WriteError: return "Write error";
    case CloseError: return "Close error";
    case RemoveError: return "Remove error";
    case UnexpectedError: return "Unexpected error";
    // The leading blank is part of the text callers have always seen.
    default: return " Unknown error";
    }
}

String FileIO::ToString() const { return Base::ToString() + "\nFileIO:\n" + ErrorTypeText(type) + ": " + path; }

} // namespace Cordel::Util::Exception
