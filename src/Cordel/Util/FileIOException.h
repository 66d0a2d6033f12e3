#pragma once
// Thrown when a file-system operation fails: the message, the file or folder concerned and what
// kind of failure it was.

#include <Cordel/Util/Exception.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>

namespace Cordel::Util::Exception {

class CORDEL_API FileIO : public Cordel::Exception::Base {
public:
    // Stored and compared as a plain int: values outside the list (6 among them) are possible and
    // print as " Unknown error".
    enum ErrorType : int {
        FileNotFound = 0,
        OpenError = 1,
        ReadError = 2,
        WriteError = 3,
        CloseError = 4,
        RemoveError = 5,
        UnexpectedError = 7,
    };

    FileIO(String const& message, FilePath const& path, ErrorType type);
    FileIO(String const& message, FolderPath const& path, ErrorType type);
    ~FileIO() override;

    String const& GetPath() const { return path; }
    ErrorType GetErrorType() const { return type; }

    // The base text followed by "\nFileIO:\n", the error type's text, ": " and the path.
    String ToString() const override;
    // "File not found", "Open error", ...; " Unknown error" for a value outside the list.
    static String ErrorTypeText(ErrorType type);

private:
    String path;
    ErrorType type;
};

} // namespace Cordel::Util::Exception
