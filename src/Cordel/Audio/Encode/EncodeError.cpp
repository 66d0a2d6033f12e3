#include <Cordel/Audio/Encode/EncodeError.h>

namespace Cordel::Audio::Encode::Exception {

EncodeError::EncodeError(String const& message, unsigned int code) : Base(message), code(code) {}

EncodeError::~EncodeError() = default;

String EncodeError::ToString() const
{
    return Base::ToString() + "\nEncodeError: " + String::Number(code) + "\n";
}

} // namespace Cordel::Audio::Encode::Exception
