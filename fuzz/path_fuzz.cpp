// Paths built from arbitrary text: no crash, and absolute normalised forms are fixed points.
// (Relative ones need not be: "./~/a" cleans to "~/a/", which the next round takes for the home
// folder, and "./ a" to " a/", which the next round trims.)

#include <Cordel/common/Path.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

using Cordel::FilePath;
using Cordel::FolderPath;
using Cordel::String;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size == 0)
        return 0;
    bool const resolve = data[0] & 1;
    String const text(std::string_view(reinterpret_cast<char const*>(data + 1), size - 1));

    FolderPath const folder(text, resolve);
    if (!folder.IsEmpty()) {
        if (!folder.GetInternal().EndsWith("/") || (folder.GetInternal().Length() > 1 && folder.GetInternal().EndsWith("//")))
            std::abort();
        bool const absolute = !FolderPath::IsRelative(folder.GetInternal());
        if (absolute && FolderPath(folder.GetInternal(), false) != folder)
            std::abort();
        if (!folder.IsTopLevel() && folder.GetParent().IsEmpty())
            std::abort();
        (void)(folder + text);
    }

    FilePath const file(text, resolve);
    if (!file.IsEmpty()) {
        FilePath const again(file.GetInternal(), false);
        bool const absolute = !FilePath::IsRelative(file.GetInternal());
        if (absolute && file.GetInternal().StripWhiteSpace() == file.GetInternal() && again != file)
            std::abort();
        (void)file.GetFolder().GetFolderName();
        (void)file.GetBaseName();
        (void)file.GetExtension();
    }
    return 0;
}
