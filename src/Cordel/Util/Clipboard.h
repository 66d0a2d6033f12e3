#pragma once
// Clipboard: the desktop's shared clipboard, as byte blocks under four-character format codes.
//
// Text lives under the format TEXT (0x54455854) as its bytes and one terminating zero byte, and
// that zero counts in its size. Every operation takes the caller's window first, which is
// accepted and not used.
//
// On an X11 desktop this is the CLIPBOARD selection. Text is offered to other programs as
// UTF8_STRING, "text/plain;charset=utf-8" and STRING (without the zero byte), and any other
// format as a target named "application/x-cordel-format-" followed by its code in eight upper-case
// hex digits (0x41424344 is "application/x-cordel-format-41424344"). A small helper program,
// cordel-clipboard, installed beside the library, owns and serves what SetContent placed, so it
// stays available after the call returns and after the caller exits, until another program
// takes the clipboard over. The helper also reads the clipboard for the getters.
//
// Without a display, or without the helper, a clipboard inside the process with the same rules
// serves instead. The environment variable CORDEL_CLIPBOARD_HELPER names another helper program.
//
// Nothing here throws: a clipboard that cannot be reached leaves outputs unchanged.

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>

#include <vector>

namespace Cordel::Util {

class CORDEL_API Clipboard {
public:
    static constexpr unsigned int TextFormat = 0x54455854; // TEXT

    // Returns format; the name is not used.
    static unsigned int RegisterFormat(String const& name, unsigned int format);
    static bool IsFormatAvailable(unsigned int format);
    // Empties the clipboard, then places data under format (when format is set and data is not
    // empty) and text under TEXT (when it is not empty). Data placed under TEXT itself wins over
    // the text.
    static void SetContent(void* window, checked_value<unsigned int> const& format,
                           std::vector<unsigned char> const& data, String const& text);
    // Replaces data with the clipboard's bytes under format, unless there are none, or more
    // than maxSize; then data is left as it was.
    static void GetContent(void* window, unsigned int format, std::vector<unsigned char>& data, unsigned int maxSize);
    // The clipboard's text, or empty when there is none or its size (zero byte included) is
    // over maxLength.
    static String GetString(void* window, unsigned int maxLength);
};

} // namespace Cordel::Util
