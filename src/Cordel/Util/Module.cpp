#include <Cordel/Util/Module.h>

#include <dlfcn.h>

namespace Cordel::Util {

Module::Module(FilePath const& path) : path(path.ToString()) {}

Module::Module(String const& path) : path(path) {}

Module::~Module()
{
    Unload();
}

bool Module::Load()
{
    if (handle)
        return true;
    if (path.IsEmpty())
        return false;
    handle = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    return handle != nullptr;
}

void Module::Unload()
{
    if (!handle)
        return;
    ::dlclose(handle);
    handle = nullptr;
}

void* Module::GetFunction(String const& name) const
{
    if (!handle)
        return nullptr;
    return ::dlsym(handle, name.c_str());
}

} // namespace Cordel::Util
