#include <Cordel/Audio/Decode/BadFormat.h>

namespace Cordel::Audio::Decode::Exception {

BadFormat::BadFormat(String const& message, FilePath const& path) : Base(message), path(path) {}

BadFormat::~BadFormat() = default;

String BadFormat::ToString() const
{
    return Base::ToString() + "\nBadFormat: '" + path.ToString() + "'\n";
}

} // namespace Cordel::Audio::Decode::Exception
