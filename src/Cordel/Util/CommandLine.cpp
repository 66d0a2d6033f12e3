#include <Cordel/Util/CommandLine.h>
#include <Cordel/Util/detail/Throw.h>

#include <algorithm>
#include <cmath>

namespace Cordel::Util {

namespace {

[[noreturn]] void fail(String const& message)
{
    Exception::Throw(CommandLine::Error(message), CORDEL_HERE);
}

String optionName(CommandArg const& arg)
{
    return String("--") + arg.GetName();
}

} // namespace

// ---- arguments ----

CommandArg::CommandArg(String const& name, char shortName, String const& valueName, String const& help)
    : name(name), shortName(shortName), valueName(valueName), help(help)
{
}

CommandArg::~CommandArg() = default;

void CommandArg::Parse(String const& text)
{
    parseValue(text);
    set = true;
}

void CommandArg::failValue(String const& text, char const* what) const
{
    fail(String("'%1' is not %2 for %3").Arg(text).Arg(what).Arg(name));
}

TextArg::TextArg(String const& name, char shortName, String const& valueName, String const& help, String const& fallback)
    : CommandArg(name, shortName, valueName, help), fallback(fallback), value(fallback)
{
}

IntArg::IntArg(String const& name, char shortName, String const& valueName, String const& help, long long fallback,
               long long minimum, long long maximum)
    : CommandArg(name, shortName, valueName, help), fallback(fallback), minimum(minimum), maximum(maximum), value(fallback)
{
}

void IntArg::parseValue(String const& text)
{
    bool ok = false;
    long long const v = text.ToInt64(&ok);
    if (!ok)
        failValue(text, "an integer");
    if (v < minimum || v > maximum)
        fail(String("%1 is out of range for %2 (%3 to %4)").Arg(text).Arg(GetName()).Arg(minimum).Arg(maximum));
    value = v;
}

FloatArg::FloatArg(String const& name, char shortName, String const& valueName, String const& help, double fallback)
    : CommandArg(name, shortName, valueName, help), fallback(fallback), value(fallback)
{
}

void FloatArg::parseValue(String const& text)
{
    bool ok = false;
    double const v = text.ToDouble(&ok);
    if (!ok || !std::isfinite(v))
        failValue(text, "a number");
    value = v;
}

FlagArg::FlagArg(String const& name, char shortName, String const& help) : CommandArg(name, shortName, String(), help) {}

void FlagArg::parseValue(String const& text)
{
    fail(String("option --%1 takes no value (got '%2')").Arg(GetName()).Arg(text));
}

// ---- the parser ----

CommandLine::CommandLine(String const& program, String const& summary) : program(program), summary(summary) {}

void CommandLine::AddOption(CommandArg& arg)
{
    options.push_back(&arg);
}

void CommandLine::AddPositional(CommandArg& arg, bool required)
{
    positionals.push_back(&arg);
    if (required)
        requiredPositionals = static_cast<unsigned int>(positionals.size());
}

void CommandLine::AddRest(String const& name, String const& help, unsigned int minimum)
{
    acceptsRest = true;
    restName = name;
    restHelp = help;
    restMinimum = minimum;
}

CommandArg* CommandLine::findLong(String const& name) const
{
    auto it = std::find_if(options.begin(), options.end(), [&](CommandArg* a) { return a->GetName() == name; });
    return it == options.end() ? nullptr : *it;
}

CommandArg* CommandLine::findShort(char c) const
{
    auto it = std::find_if(options.begin(), options.end(), [&](CommandArg* a) { return a->GetShortName() == c; });
    return it == options.end() ? nullptr : *it;
}

void CommandLine::takePositional(String const& text)
{
    if (positionalsSeen < positionals.size())
        positionals[positionalsSeen++]->Parse(text);
    else if (acceptsRest)
        rest.push_back(text);
    else
        fail(String("unexpected argument '%1'").Arg(text));
}

void CommandLine::Parse(std::vector<String> const& args)
{
    bool optionsEnded = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        String const& a = args[i];
        if (optionsEnded || a.Length() < 2 || a[0].ToAscii() != '-') {
            takePositional(a);
            continue;
        }
        if (a == "--") {
            optionsEnded = true;
            continue;
        }
        if (a == "--help" || a == "-h") {
            helpRequested = true;
            return;
        }
        CommandArg* arg = nullptr;
        checked_value<String> inlineValue;
        if (a.BeginsWith("--")) {
            checked_value<unsigned int> const eq = a.Find('=');
            String const name = eq.IsSet() ? a.Mid(2, eq.Get() - 2) : a.Mid(2);
            if (eq.IsSet())
                inlineValue = a.Mid(eq.Get() + 1);
            arg = findLong(name);
        } else if (a.Length() == 2) {
            arg = findShort(a[1].ToAscii());
        } else if ((arg = findShort(a[1].ToAscii())) && arg->TakesValue()) {
            inlineValue = a.Mid(2); // "-r48000"
        } else {
            arg = nullptr;
        }
        if (!arg) {
            bool numeric = false;
            a.ToDouble(&numeric);
            if (numeric) { // a negative number is a value, not an option
                takePositional(a);
                continue;
            }
            fail(String("unknown option '%1'").Arg(a));
        }
        if (!arg->TakesValue()) {
            if (inlineValue.IsSet())
                arg->Parse(inlineValue.Get());
            arg->SetGiven();
        } else if (inlineValue.IsSet()) {
            arg->Parse(inlineValue.Get());
        } else if (i + 1 < args.size()) {
            arg->Parse(args[++i]);
        } else {
            fail(String("option %1 needs a value (%2)").Arg(optionName(*arg)).Arg(arg->GetValueName()));
        }
    }
    if (positionalsSeen < requiredPositionals)
        fail(String("missing argument %1").Arg(positionals[positionalsSeen]->GetName()));
    if (rest.size() < restMinimum)
        fail(String("missing argument %1").Arg(restName));
}

void CommandLine::Parse(int argc, char const* const* argv, int first)
{
    std::vector<String> args;
    for (int i = first; i < argc; ++i)
        args.emplace_back(argv[i]);
    Parse(args);
}

String CommandLine::GetHelp() const
{
    String usage = String("Usage: %1").Arg(program);
    if (!options.empty())
        usage += " [OPTIONS]";
    for (std::size_t i = 0; i < positionals.size(); ++i)
        usage += i < requiredPositionals ? String(" %1").Arg(positionals[i]->GetName())
                                         : String(" [%1]").Arg(positionals[i]->GetName());
    if (acceptsRest)
        usage += restMinimum ? String(" %1...").Arg(restName) : String(" [%1...]").Arg(restName);

    String out = usage + "\n\n" + summary + "\n";
    auto row = [&out](String const& left, String const& help) {
        String line = String("  ") + left;
        while (line.Length() < 28)
            line += ' ';
        if (left.Length() + 2 >= 28)
            line += "\n                            ";
        out += line + help + "\n";
    };
    if (!positionals.empty() || acceptsRest) {
        out += "\nArguments:\n";
        for (CommandArg const* p : positionals)
            row(p->GetName(), p->GetHelp());
        if (acceptsRest)
            row(restName, restHelp);
    }
    out += "\nOptions:\n";
    for (CommandArg const* o : options) {
        String left = o->GetShortName() ? String("-%1, --%2").Arg(o->GetShortName()).Arg(o->GetName())
                                        : String("    --%1").Arg(o->GetName());
        if (o->TakesValue())
            left += String(" %1").Arg(o->GetValueName());
        String help = o->GetHelp();
        if (o->TakesValue() && !o->GetDefaultText().IsEmpty())
            help += String(" (default %1)").Arg(o->GetDefaultText());
        row(left, help);
    }
    row("-h, --help", "show this help");
    if (!epilogue.IsEmpty())
        out += String("\n") + epilogue + (epilogue.EndsWith("\n") ? "" : "\n");
    return out;
}

} // namespace Cordel::Util
