// cordel fetch: downloads a URL to a file or to standard output.

#include "Command.h"

#include <Cordel/Network/Http.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <unistd.h>

using namespace Cordel;

namespace CordelTool {

namespace {

// --header may be given several times; each one is kept.
class HeaderArg : public Util::CommandArg {
public:
    HeaderArg() : CommandArg("header", 'H', "'NAME: VALUE'", "a request header (repeatable)") {}
    String GetDefaultText() const override { return String(); }
    std::vector<Network::HttpHeader> headers;

protected:
    void parseValue(String const& text) override
    {
        checked_value<unsigned int> const colon = text.Find(':');
        if (!colon.IsSet() || colon.Get() == 0)
            failValue(text, "a header as 'NAME: VALUE'");
        headers.push_back({text.Left(colon.Get()).StripWhiteSpace(), text.Mid(colon.Get() + 1).StripWhiteSpace()});
    }
};

String sizeText(double bytes)
{
    char const* const units[] = {"B", "KiB", "MiB", "GiB", "TiB"};
    int unit = 0;
    while (bytes >= 1024 && unit < 4) {
        bytes /= 1024;
        ++unit;
    }
    return String("%1 %2").Arg(bytes, unit ? 1u : 0u).Arg(units[unit]);
}

String durationText(double seconds)
{
    auto const s = static_cast<long long>(std::ceil(seconds));
    char text[32];
    if (s >= 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", s / 3600, s / 60 % 60, s % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld", s / 60, s % 60);
    return text;
}

// The progress line on a terminal: bytes so far (of how many), the rate, and the time left.
// Drawn from the client's helper thread, at most ten times a second.
class ProgressBar {
public:
    explicit ProgressBar(unsigned long long alreadyThere) : enabled(::isatty(STDERR_FILENO) == 1), base(alreadyThere) {}
    ~ProgressBar()
    {
        if (drawn)
            std::fputs("\n", stderr);
    }

    void Update(Network::HttpProgress const& p, bool final = false)
    {
        auto const now = Clock::now();
        if (!enabled || (!final && now - lastDraw < std::chrono::milliseconds(100)))
            return;
        lastDraw = now;
        double const seconds = std::chrono::duration<double>(now - start).count();
        double const rate = seconds > 0 ? double(p.received - std::min(p.received, base)) / seconds : 0;
        String line = sizeText(double(p.received));
        if (p.total) {
            int const percent = static_cast<int>(p.received * 100 / p.total);
            constexpr int width = 30;
            int const filled = percent * width / 100;
            line = String("[%1%2] %3% ").Arg(String(std::string(filled, '#'))).Arg(String(std::string(width - filled, ' '))).Arg(percent) +
                   line + " of " + sizeText(double(p.total));
        }
        line += String(", %1/s").Arg(sizeText(rate));
        if (p.total && rate > 0)
            line += String(", %1 left").Arg(durationText(double(p.total - p.received) / rate));
        std::fprintf(stderr, "\r%-78s", line.c_str());
        std::fflush(stderr);
        drawn = true;
    }

private:
    using Clock = std::chrono::steady_clock;
    bool enabled;
    bool drawn = false;
    unsigned long long base;
    Clock::time_point start = Clock::now();
    Clock::time_point lastDraw;
};

unsigned long long sizeOfFile(String const& path)
{
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
        return 0;
    std::fseek(f, 0, SEEK_END);
    long const size = std::ftell(f);
    std::fclose(f);
    return size > 0 ? static_cast<unsigned long long>(size) : 0;
}

int fetch(Args const& args)
{
    Util::CommandLine line("cordel fetch", "Downloads a URL (HTTP or HTTPS) to a file or to standard output.");
    Util::TextArg url("URL", 0, "URL", "what to download");
    Util::PathArg output("output", 'o', "FILE", "write to FILE (replaced only when complete) instead of standard output");
    Util::FlagArg resume("continue", 'c', "continue a download left incomplete in FILE.part (needs -o)");
    HeaderArg headers;
    Util::FloatArg timeout("timeout", 't', "SECONDS", "give up when connecting, or waiting for data, takes longer", 30);
    line.AddPositional(url);
    line.AddOption(output);
    line.AddOption(resume);
    line.AddOption(headers);
    line.AddOption(timeout);
    line.SetEpilogue("Redirects are followed (at most 10, never from HTTPS to HTTP); certificates are verified\n"
                     "against the system's store; http_proxy, https_proxy and no_proxy are honoured. There is no\n"
                     "limit on the whole download, only on silence. A progress line shows on a terminal.\n"
                     "A failure, an HTTP status of 400 or more included, exits with 1 and one line on stderr.\n");
    if (ParseOrHelp(line, args))
        return 0;
    if (resume.Get() && output.Get().IsEmpty())
        throw Util::CommandLine::Error("--continue needs -o FILE");
    if (!(timeout.Get() > 0 && timeout.Get() < 4.0e6))
        throw Util::CommandLine::Error("--timeout must be a positive number of seconds");

    Network::HttpRequest request;
    request.url = url.Get();
    request.headers = headers.headers;
    request.downloadTo = output.Get();
    request.resume = resume.Get();
    request.connectTimeoutMs = request.stallTimeoutMs = static_cast<unsigned int>(std::lround(timeout.Get() * 1000));
    if (request.downloadTo.IsEmpty())
        request.onData = [](char const* data, std::size_t size) {
            if (std::fwrite(data, 1, size, stdout) != size)
                throw std::runtime_error("cannot write to standard output");
        };
    ProgressBar bar(resume.Get() ? sizeOfFile(output.Get() + ".part") : 0);
    Network::HttpProgress last;
    request.onProgress = [&](Network::HttpProgress const& p) {
        last = p;
        bar.Update(p);
    };

    Network::Http http("cordel fetch");
    Network::HttpResponse const response = http.Fetch(request);
    bar.Update(last, true);
    std::fflush(stdout);
    if (response.status >= 400) {
        PrintError(String("cordel fetch: HTTP %1 from %2\n").Arg(response.status).Arg(response.url));
        return 1;
    }
    return 0;
}

} // namespace

CORDEL_COMMAND("fetch", "download a URL over HTTP or HTTPS", fetch);

} // namespace CordelTool
