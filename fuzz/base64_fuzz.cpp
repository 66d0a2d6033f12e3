// Base64Decode on arbitrary text: no crash, output within 3 bytes per 4 characters, and what
// decodes re-encodes to the alphabet characters it came from (up to an unfinished last group).

#include <Cordel/Util/Base64.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Cordel::String const text(std::string_view(reinterpret_cast<char const*>(data), size));
    std::vector<unsigned char> bytes;
    Cordel::Util::Base64Decode(text, bytes);
    if (bytes.size() > size / 4 * 3 + 2)
        std::abort();

    std::vector<unsigned char> again;
    Cordel::Util::Base64Decode(Cordel::Util::Base64Encode(bytes), again);
    if (again != bytes)
        std::abort();
    return 0;
}
