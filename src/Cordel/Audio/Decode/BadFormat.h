#pragma once
// Thrown by the audio readers for a malformed file, an unsupported format or a misuse.

#include <Cordel/Util/Exception.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>

namespace Cordel::Audio::Decode::Exception {

class CORDEL_API BadFormat : public Cordel::Exception::Base {
public:
    BadFormat(String const& message, FilePath const& path);
    ~BadFormat() override;
    FilePath const& GetPath() const { return path; }
    // The base text, then "\nBadFormat: '<path>'\n".
    String ToString() const override;

private:
    FilePath path;
};

} // namespace Cordel::Audio::Decode::Exception
