#include <Cordel/Util/Exception.h>

namespace Cordel::Exception {

Base::Base(String const& message) : message(message) {}

Base::~Base() = default;

String Base::ToString() const
{
    // Concatenated rather than filled in with Arg, so that a "%1" inside the file name or the
    // message is never taken for a placeholder.
    return file + " (" + String::Number(line) + "): Thrown, GetLastError(): " + String::Number(errorCode)
        + "\nBase:\n\t" + message + "\n";
}

} // namespace Cordel::Exception
