#pragma once
// Module: a shared library (a plug-in, an optional component) loaded on request.
//
// The object owns one dynamic-loader handle. Loading binds lazily and keeps the library's symbols
// local, so two plug-ins that export the same names never see each other's. Loading twice opens
// the library once: there is no reference counting, and one Unload closes it.

#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>

namespace Cordel::Util {

class CORDEL_API Module : private noncopyable {
public:
    explicit Module(FilePath const& path);
    explicit Module(String const& path);
    // Closes the library if it is loaded.
    ~Module();

    // True when the library is (now) loaded. An empty path or a library the loader refuses gives
    // false and leaves the object unloaded, ready for another try.
    bool Load();
    void Unload();
    bool IsLoaded() const { return handle != nullptr; }
    // The address of an exported symbol; null when it is not there or the module is not loaded
    // (this never loads it).
    void* GetFunction(String const& name) const;

private:
    String path;
    void* handle = nullptr;
};

} // namespace Cordel::Util
