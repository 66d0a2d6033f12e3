#include <Cordel/Util/CommandLine.h>

#include <gtest/gtest.h>

using namespace Cordel;
using Util::CommandLine;

namespace {

struct Convert {
    Util::PathArg input{"IN", 0, "FILE", "file to read"};
    Util::PathArg output{"OUT", 0, "FILE", "file to write", "out.wav"};
    Util::IntArg bits{"bits", 'b', "N", "bits per sample", 16, 8, 32};
    Util::FloatArg gain{"gain", 'g', "DB", "gain in dB", -3.0};
    Util::TextArg format{"format", 0, "NAME", "file format"};
    Util::FlagArg quiet{"quiet", 'q', "no progress"};
    CommandLine line{"cordel convert", "Converts audio files."};

    Convert()
    {
        line.AddOption(bits);
        line.AddOption(gain);
        line.AddOption(format);
        line.AddOption(quiet);
        line.AddPositional(input);
        line.AddPositional(output, false);
    }
    void Parse(std::vector<String> const& args) { line.Parse(args); }
};

String errorOf(std::vector<String> const& args)
{
    Convert c;
    try {
        c.Parse(args);
    } catch (CommandLine::Error const& e) {
        return e.GetMessage();
    }
    return "no error";
}

} // namespace

TEST(CommandLine, DefaultsAndEveryValueSpelling)
{
    Convert c;
    c.Parse({"in.wav"});
    EXPECT_EQ(c.input.Get(), "in.wav");
    EXPECT_EQ(c.output.Get(), "out.wav");
    EXPECT_FALSE(c.output.IsSet());
    EXPECT_EQ(c.bits.Get(), 16);
    EXPECT_DOUBLE_EQ(c.gain.Get(), -3.0);
    EXPECT_FALSE(c.quiet.Get());

    Convert d;
    d.Parse({"--bits", "24", "in.wav", "-g-6.5", "--format=aiff", "-q", "x.aif"});
    EXPECT_EQ(d.bits.Get(), 24);
    EXPECT_DOUBLE_EQ(d.gain.Get(), -6.5);
    EXPECT_EQ(d.format.Get(), "aiff");
    EXPECT_TRUE(d.quiet.Get());
    EXPECT_EQ(d.output.Get(), "x.aif");

    Convert e;
    e.Parse({"-g", "-12", "--", "-in.wav"}); // a negative number is a value; "--" ends options
    EXPECT_DOUBLE_EQ(e.gain.Get(), -12.0);
    EXPECT_EQ(e.input.Get(), "-in.wav");
}

TEST(CommandLine, ErrorsSayWhatIsWrong)
{
    EXPECT_EQ(errorOf({"--colour", "x"}), "unknown option '--colour'");
    EXPECT_EQ(errorOf({"in.wav", "--bits"}), "option --bits needs a value (N)");
    EXPECT_EQ(errorOf({"--bits", "many", "in.wav"}), "'many' is not an integer for bits");
    EXPECT_EQ(errorOf({"--bits", "64", "in.wav"}), "64 is out of range for bits (8 to 32)");
    EXPECT_EQ(errorOf({"--gain", "1.5dB", "in.wav"}), "'1.5dB' is not a number for gain");
    EXPECT_EQ(errorOf({}), "missing argument IN");
    EXPECT_EQ(errorOf({"a", "b", "c"}), "unexpected argument 'c'");
    EXPECT_EQ(errorOf({"--quiet=yes", "a"}), "option --quiet takes no value (got 'yes')");
}

TEST(CommandLine, HelpIsGeneratedFromTheDeclarations)
{
    Convert c;
    c.Parse({"-h", "--bits", "nonsense"});
    EXPECT_TRUE(c.line.HelpRequested());
    String const help = c.line.GetHelp();
    EXPECT_TRUE(help.BeginsWith("Usage: cordel convert [OPTIONS] IN [OUT]\n\nConverts audio files.\n"));
    EXPECT_TRUE(help.Find("-b, --bits N").IsSet());
    EXPECT_TRUE(help.Find("bits per sample (default 16)").IsSet());
    EXPECT_TRUE(help.Find("    --format NAME").IsSet());
    EXPECT_TRUE(help.Find("-q, --quiet").IsSet());

    Convert d; // a fault before --help still counts
    EXPECT_THROW(d.Parse({"--bits", "nonsense", "--help"}), CommandLine::Error);
}

TEST(CommandLine, RestCollectsFurtherArguments)
{
    CommandLine line("cordel info", "Describes files.");
    line.AddRest("FILE", "files to describe", 1);
    EXPECT_THROW(line.Parse(std::vector<String>{}), CommandLine::Error);
    CommandLine again("cordel info", "Describes files.");
    again.AddRest("FILE", "files to describe", 1);
    again.Parse({"a.wav", "b.wav"});
    ASSERT_EQ(again.GetRest().size(), 2u);
    EXPECT_EQ(again.GetRest()[1], "b.wav");
}
