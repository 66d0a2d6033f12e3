#pragma once
// A command-line parser for programs built on the library, the cordel tool among them.
//
// A program declares its arguments as CommandArg objects it owns (text, integer, floating point,
// flag, path), adds them to a CommandLine as options (a long name "--rate" and optionally a short
// one "-r") or as positional arguments, and calls Parse. Values are "--rate 48000",
// "--rate=48000" or "-r 48000". "--" ends the options. GetHelp writes the usage and option table
// from the declarations. Every fault (unknown option, missing value, a number that does not
// parse, a missing or surplus positional argument) throws CommandLine::Error, which a program
// reports as a usage error.

#include <Cordel/Util/Exception.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>

#include <vector>

namespace Cordel::Util {

class CORDEL_API CommandArg {
public:
    // name: the long option name without dashes, or the display name of a positional argument.
    // shortName: 0 for none. valueName: how help shows the value ("N", "FILE").
    CommandArg(String const& name, char shortName, String const& valueName, String const& help);
    virtual ~CommandArg();
    CommandArg(CommandArg const&) = delete;
    CommandArg& operator=(CommandArg const&) = delete;

    String const& GetName() const { return name; }
    char GetShortName() const { return shortName; }
    String const& GetValueName() const { return valueName; }
    String const& GetHelp() const { return help; }
    // Whether the command line gave this argument.
    bool IsSet() const { return set; }
    virtual bool TakesValue() const { return true; }
    // The default as help shows it; empty for none.
    virtual String GetDefaultText() const = 0;

    // Takes the argument's text; throws CommandLine::Error when it does not parse.
    void Parse(String const& text);
    // Marks a flag as given.
    void SetGiven() { set = true; }

protected:
    virtual void parseValue(String const& text) = 0;
    [[noreturn]] void failValue(String const& text, char const* what) const;

private:
    String name;
    char shortName;
    String valueName;
    String help;
    bool set = false;
};

class CORDEL_API TextArg : public CommandArg {
public:
    TextArg(String const& name, char shortName, String const& valueName, String const& help, String const& fallback = String());
    String const& Get() const { return value; }
    String GetDefaultText() const override { return fallback; }

protected:
    void parseValue(String const& text) override { value = text; }

private:
    String fallback;
    String value;
};

// A path as given on the command line ("-" conventionally meaning standard input or output).
class CORDEL_API PathArg : public TextArg {
public:
    using TextArg::TextArg;
};

class CORDEL_API IntArg : public CommandArg {
public:
    IntArg(String const& name, char shortName, String const& valueName, String const& help, long long fallback = 0,
           long long minimum = -0x7FFFFFFFFFFFFFFFLL - 1, long long maximum = 0x7FFFFFFFFFFFFFFFLL);
    long long Get() const { return value; }
    String GetDefaultText() const override { return String::Number(fallback); }

protected:
    void parseValue(String const& text) override;

private:
    long long fallback, minimum, maximum, value;
};

class CORDEL_API FloatArg : public CommandArg {
public:
    FloatArg(String const& name, char shortName, String const& valueName, String const& help, double fallback = 0);
    double Get() const { return value; }
    String GetDefaultText() const override { return String::Number(fallback, String::NoPrecision, 'g'); }

protected:
    void parseValue(String const& text) override;

private:
    double fallback, value;
};

class CORDEL_API FlagArg : public CommandArg {
public:
    FlagArg(String const& name, char shortName, String const& help);
    bool Get() const { return IsSet(); }
    bool TakesValue() const override { return false; }
    String GetDefaultText() const override { return String(); }

protected:
    void parseValue(String const& text) override;
};

class CORDEL_API CommandLine {
public:
    class CORDEL_API Error : public Cordel::Exception::Base {
    public:
        explicit Error(String const& message) : Base(message) {}
    };

    // program: how usage names the program ("cordel convert"); summary: one line saying what it does.
    CommandLine(String const& program, String const& summary);

    void AddOption(CommandArg& arg);
    void AddPositional(CommandArg& arg, bool required = true);
    // Accepts any number of further positional arguments (at least minimum), shown as NAME...
    void AddRest(String const& name, String const& help, unsigned int minimum = 0);
    // Free text appended to the help (formats, examples).
    void SetEpilogue(String const& text) { epilogue = text; }

    // Parses the arguments after the program (and sub-command) name. "-h" and "--help" stop
    // parsing and set HelpRequested; nothing is checked after them.
    void Parse(std::vector<String> const& args);
    void Parse(int argc, char const* const* argv, int first = 1);

    bool HelpRequested() const { return helpRequested; }
    std::vector<String> const& GetRest() const { return rest; }
    String GetHelp() const;

private:
    CommandArg* findLong(String const& name) const;
    CommandArg* findShort(char c) const;
    void takePositional(String const& text);

    String program, summary, epilogue;
    std::vector<CommandArg*> options;
    std::vector<CommandArg*> positionals;
    unsigned int requiredPositionals = 0;
    unsigned int positionalsSeen = 0;
    String restName, restHelp;
    bool acceptsRest = false;
    unsigned int restMinimum = 0;
    std::vector<String> rest;
    bool helpRequested = false;
};

} // namespace Cordel::Util
