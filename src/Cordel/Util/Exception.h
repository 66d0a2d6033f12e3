#pragma once
// The root of every exception the library throws.
//
// An exception carries its message, the source file and line of the throw (the file relative to
// the build, as "../../src/Cordel/Util/ByteStream.h"), and the platform error code at the time
// (errno where the failing call sets it, else 0). Exceptions are thrown by value and copy by
// sharing their texts.

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>

namespace Cordel::Exception {

class CORDEL_API Base {
public:
    explicit Base(String const& message);
    virtual ~Base();
    // "%1 (%2): Thrown, GetLastError(): %3\n" (file, line, error code), "Base:\n", then a tab,
    // the message and "\n". Subclasses append their own block.
    virtual String ToString() const;

    String const& GetMessage() const { return message; }
    String const& GetFile() const { return file; }
    int GetLine() const { return line; }
    int GetErrorCode() const { return errorCode; }

    void SetFile(String const& f) { file = f; }
    void SetLine(int l) { line = l; }
    void SetErrorCode(int code) { errorCode = code; }

private:
    String message;
    String file;      // empty until set
    int line = -1;    // -1 until set
    int errorCode = -1; // -1 until set
};

// Where an exception is thrown from.
struct Site {
    char const* file;
    int line;
};

// Stamps the exception with its site and error code and throws it: the one way the library throws.
template <typename E>
[[noreturn]] void Throw(E exception, Site const& site, int errorCode = 0)
{
    exception.SetFile(site.file);
    exception.SetLine(site.line);
    exception.SetErrorCode(errorCode);
    throw exception;
}

} // namespace Cordel::Exception
