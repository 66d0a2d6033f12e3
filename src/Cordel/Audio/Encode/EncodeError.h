#pragma once
// Thrown by the audio writers for a misuse or an unsupported conversion, with code -1.

#include <Cordel/Util/Exception.h>
#include <Cordel/common/Export.h>

namespace Cordel::Audio::Encode::Exception {

class CORDEL_API EncodeError : public Cordel::Exception::Base {
public:
    explicit EncodeError(String const& message, unsigned int code = 0xFFFFFFFFu);
    ~EncodeError() override;
    unsigned int GetCode() const { return code; }
    // The base text, then "\nEncodeError: <code>\n".
    String ToString() const override;

private:
    unsigned int code;
};

} // namespace Cordel::Audio::Encode::Exception
