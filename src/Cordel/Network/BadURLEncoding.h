#pragma once
// Thrown by URLDecode for text whose percent escapes are malformed.

#include <Cordel/Util/Exception.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>

namespace Cordel::Network::Exception {

class CORDEL_API BadURLEncoding : public Cordel::Exception::Base {
public:
    // text: what was being decoded; offset: the byte offset of the bad "%".
    BadURLEncoding(String const& message, String const& text, unsigned int offset);
    ~BadURLEncoding() override;

    String const& GetText() const { return text; }
    unsigned int GetOffset() const { return offset; }
    // The base text, then "\nBadURLEncoding: at offset <offset> of '<text>'\n".
    String ToString() const override;

private:
    String text;
    unsigned int offset;
};

} // namespace Cordel::Network::Exception
