#pragma once
// ConfigFile: an application's settings, named values kept by the system between runs.
//
// One object stands for one application identifier. Values are read from the current user's
// scope first, then from the scope of all users; they are written to all users' scope when the
// user is an administrator (a member of the group "admin", found through the "USER" variable),
// else to the current user's.
//
// Each scope keeps one XML file per application: "<identifier>.xml" in XDG_CONFIG_HOME (by
// default ~/.config) for the current user, and in the first folder of XDG_CONFIG_DIRS (by
// default /etc/xdg) for all users. Every write reaches the disk before the setter returns: the
// file is read, changed and replaced whole (a temporary file, fsync, rename) while a lock file
// beside it is held, so a reader sees the old file or the new one, never half of one, and two
// processes writing different keys at once lose neither. Every read looks at the file afresh and
// so sees what other processes wrote. A file that does not parse reads as empty; the next write
// moves it aside to "<identifier>.xml.corrupt-XXXXXX" before starting a new one.
//
// Floats are stored as readable decimal text; GetBinary still gives them as the 8-byte block
// SetFloat is specified to write. A writer that dies mid-write leaves its temporary file behind;
// the next writer removes it.
//
// Nothing throws but CheckName: a missing or ill-typed value makes a getter return its default,
// and a write that cannot be made (a key or text that is not UTF-8, a folder that cannot be
// written) does nothing, with the reason in GetWriteFailure. Use an object from one thread at a
// time.

#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>

#include <vector>

namespace Cordel::Util {

// The scope of one access.
enum PreferenceDomain : unsigned int {
    CurrentUserDomain = 0,
    AnyUserDomain = 1,
};

class CORDEL_API ConfigFile : private noncopyable {
public:
    explicit ConfigFile(String const& name);
    // With the administrator test decided by the caller: a tool that writes for all users.
    ConfigFile(String const& name, bool admin);

    void SetString(String const& key, String const& value);
    void SetInt(String const& key, int value);
    void SetUInt(String const& key, unsigned int value);
    void SetBool(String const& key, bool value);
    void SetBinary(String const& key, std::vector<unsigned char> const& value);
    // Read back by GetBinary as 8 bytes: four zero bytes, then the float's bytes in native order.
    void SetFloat(String const& key, float value);

    String GetString(String const& key, String const& fallback) const;
    int GetInt(String const& key, int fallback) const;
    unsigned int GetUInt(String const& key, unsigned int fallback) const;
    // True for any non-zero stored number.
    bool GetBool(String const& key, bool fallback) const;
    // The 8-byte form SetFloat writes, or a 4-byte big-endian float; anything else gives fallback.
    float GetFloat(String const& key, float fallback) const;
    // Empties out when there is no such binary value.
    void GetBinary(String const& key, std::vector<unsigned char>& out) const;

    // Removes the key from the scope this object writes to; returns true.
    bool RemoveValue(String const& key);
    // The key names of both scopes, sorted, each once. The second argument is not used.
    void GetValueNames(std::vector<String>& names, String const& unused = String()) const;
    // Empties names: values have no sub-keys.
    void GetKeyNames(std::vector<String>& names, String const& unused = String()) const;
    // Every setter has already reached the disk; this waits until both scopes' folders have
    // recorded the files' latest names too.
    void Synchronize();

    // The kind a value was stored with, found as the getters find it.
    enum class ValueKind { Missing, String, Integer, Binary, Float, Unusable };
    ValueKind GetValueKind(String const& key) const;

    // Why the last setter or RemoveValue stored nothing; empty when it stored what it was given.
    String const& GetWriteFailure() const { return writeFailure; }

    // Throws Exception::Base saying why, when an identifier cannot name a preference file: empty,
    // "." or "..", holding "/", a control character or bytes that are not UTF-8, or longer than
    // a file name may be. An object made with such a name stores nothing.
    static void CheckName(String const& name);

    String const& GetName() const { return name; }
    bool IsAdmin() const { return admin; }

private:
    PreferenceDomain writeDomain() const { return admin ? AnyUserDomain : CurrentUserDomain; }

    String name;
    bool admin;
    String writeFailure;
};

} // namespace Cordel::Util
