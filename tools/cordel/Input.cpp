#include "Input.h"

#include <Cordel/Util/FileIOException.h>
#include <Cordel/common/Path.h>

#include <cerrno>

using namespace Cordel;

namespace CordelTool {

namespace {

bool isStandardInput(String const& name) { return name.IsEmpty() || name == "-"; }

} // namespace

Input::Input(String const& name) : name(name), file(isStandardInput(name) ? stdin : std::fopen(name.c_str(), "rb"))
{
    if (!file)
        Exception::Throw(Util::Exception::FileIO(String("Can't open %1").Arg(name), FilePath::Exact(name),
                                                 Util::Exception::FileIO::OpenError),
                         {__FILE__, __LINE__}, errno);
}

Input::~Input()
{
    if (file != stdin)
        std::fclose(file);
}

std::size_t Input::Read(unsigned char* dest, std::size_t size)
{
    std::size_t total = 0;
    while (total < size) {
        std::size_t const got = std::fread(dest + total, 1, size - total, file);
        if (got == 0)
            break;
        total += got;
    }
    if (std::ferror(file))
        Exception::Throw(Util::Exception::FileIO(String("Can't read %1").Arg(isStandardInput(name) ? String("standard input") : name),
                                                 FilePath::Exact(name), Util::Exception::FileIO::ReadError),
                         {__FILE__, __LINE__}, errno);
    return total;
}

} // namespace CordelTool
