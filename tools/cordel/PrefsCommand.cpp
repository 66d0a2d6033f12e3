// cordel prefs: reads and writes an application's preferences.

#include "Command.h"

#include <Cordel/Util/ConfigFile.h>

#include <charconv>
#include <cstdio>
#include <string_view>

using namespace Cordel;

namespace CordelTool {

namespace {

String hexOf(std::vector<unsigned char> const& bytes)
{
    String text;
    for (unsigned char b : bytes)
        text += String("%1").Arg(static_cast<unsigned int>(b) | 0x100u, 16).Mid(1);
    return text;
}

std::vector<unsigned char> bytesOfHex(String const& hex)
{
    if (hex.Length() % 2 != 0)
        throw Util::CommandLine::Error(String("binary values are even-length hex, not \"%1\"").Arg(hex));
    std::vector<unsigned char> bytes;
    for (unsigned int i = 0; i < hex.Length(); i += 2) {
        bool ok = false;
        unsigned int const b = hex.Mid(i, 2u).ToUInt(&ok, 16);
        if (!ok)
            throw Util::CommandLine::Error(String("binary values are even-length hex, not \"%1\"").Arg(hex));
        bytes.push_back(static_cast<unsigned char>(b));
    }
    return bytes;
}

char const* kindName(Util::ConfigFile::ValueKind kind)
{
    using Kind = Util::ConfigFile::ValueKind;
    switch (kind) {
    case Kind::Integer: return "int";
    case Kind::Float: return "float";
    case Kind::Binary: return "binary";
    default: return "string";
    }
}

String getValue(Util::ConfigFile const& prefs, String const& key, String const& type)
{
    if (type == "int")
        return String::Number(prefs.GetInt(key, 0));
    if (type == "bool")
        return prefs.GetBool(key, false) ? "true" : "false";
    if (type == "float") {
        char text[64];
        return String(std::string_view(text, std::to_chars(text, text + sizeof text, prefs.GetFloat(key, 0)).ptr));
    }
    if (type == "binary") {
        std::vector<unsigned char> bytes;
        prefs.GetBinary(key, bytes);
        return hexOf(bytes);
    }
    return prefs.GetString(key, String());
}

void setValue(Util::ConfigFile& prefs, String const& key, String const& value, String const& type)
{
    bool ok = true;
    if (type == "int") {
        int const v = value.ToInt(&ok);
        if (ok)
            prefs.SetInt(key, v);
    } else if (type == "bool") {
        ok = value == "true" || value == "false" || value == "1" || value == "0";
        if (ok)
            prefs.SetBool(key, value == "true" || value == "1");
    } else if (type == "float") {
        float f = 0;
        auto const [end, error] = std::from_chars(value.c_str(), value.c_str() + value.Length(), f);
        ok = error == std::errc() && end == value.c_str() + value.Length() && !value.IsEmpty();
        if (ok)
            prefs.SetFloat(key, f);
    } else if (type == "binary") {
        prefs.SetBinary(key, bytesOfHex(value));
    } else {
        prefs.SetString(key, value);
    }
    if (!ok)
        throw Util::CommandLine::Error(String("\"%1\" is not a valid %2 value").Arg(value).Arg(type));
    if (!prefs.GetWriteFailure().IsEmpty())
        throw Exception::Base(String("%1: %2").Arg(prefs.GetName()).Arg(prefs.GetWriteFailure()));
}

int prefs(Args const& args)
{
    Util::CommandLine line("cordel prefs", "Reads and writes an application's preferences.");
    Util::TextArg action("ACTION", 0, "ACTION", "get, set, remove or list");
    Util::TextArg app("APP", 0, "APP", "the application identifier, as org.example.App");
    Util::TextArg type("type", 't', "TYPE", "the value's kind: string, int, float, bool or binary (hex); get prints a value as it was stored unless given", "string");
    Util::FlagArg allUsers("all-users", 0, "set and remove for all users instead of the current user");
    line.AddPositional(action);
    line.AddPositional(app);
    line.AddRest("KEY [VALUE]", "the key, and for set the value");
    line.AddOption(type);
    line.AddOption(allUsers);
    line.SetEpilogue("\nValues are read from the current user's preferences, then from all users'.\n"
                     "Files: $XDG_CONFIG_HOME/APP.xml (~/.config) and, for all users, APP.xml in the\n"
                     "first folder of $XDG_CONFIG_DIRS (/etc/xdg). 'get' prints a value as the kind it was\n"
                     "stored with (bool is stored as int) unless --type asks for another. Floats are stored\n"
                     "and printed as the shortest decimal text that reads back as the same float.\n"
                     "APP must be usable as a file name: not empty, '.' or '..', without '/' or control\n"
                     "characters, UTF-8, and at most 236 bytes. A value that could not be stored is a\n"
                     "failure (exit 1).\n");
    if (ParseOrHelp(line, args))
        return 0;
    String const kind = type.Get().IsEmpty() ? String("string") : type.Get();
    if (kind != "string" && kind != "int" && kind != "float" && kind != "bool" && kind != "binary")
        throw Util::CommandLine::Error(String("unknown type \"%1\"").Arg(kind));

    String const& what = action.Get();
    auto const& rest = line.GetRest();
    std::size_t const wanted = what == "list" ? 0 : what == "set" ? 2 : 1;
    if (what != "get" && what != "set" && what != "remove" && what != "list")
        throw Util::CommandLine::Error(String("unknown action \"%1\"").Arg(what));
    if (rest.size() != wanted)
        throw Util::CommandLine::Error(String("%1 takes %2").Arg(what).Arg(wanted == 0 ? "no key" : wanted == 1 ? "a key" : "a key and a value"));

    Util::ConfigFile::CheckName(app.Get());
    Util::ConfigFile prefs(app.Get(), allUsers.Get());
    if (what == "list") {
        std::vector<String> names;
        prefs.GetValueNames(names, String());
        for (String const& n : names)
            Print(n + "\n");
    } else if (what == "get") {
        auto const stored = prefs.GetValueKind(rest[0]);
        if (stored == Util::ConfigFile::ValueKind::Missing)
            throw Exception::Base(String("%1: no value \"%2\"").Arg(app.Get()).Arg(rest[0]));
        Print(getValue(prefs, rest[0], type.IsSet() ? kind : String(kindName(stored))) + "\n");
    } else if (what == "set") {
        setValue(prefs, rest[0], rest[1], kind);
        prefs.Synchronize();
    } else {
        prefs.RemoveValue(rest[0]);
        if (!prefs.GetWriteFailure().IsEmpty())
            throw Exception::Base(String("%1: %2").Arg(app.Get()).Arg(prefs.GetWriteFailure()));
        prefs.Synchronize();
    }
    return 0;
}

} // namespace

CORDEL_COMMAND("prefs", "read and write an application's preferences", prefs);

} // namespace CordelTool
