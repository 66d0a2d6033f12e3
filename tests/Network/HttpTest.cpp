// labels: threads
// pkg: cpp-httplib
// The HTTP client against local servers: methods, headers, statuses, redirects, limits, downloads
// to files with resume, failures as exceptions, callbacks on the helper thread, proxies.

#include <Cordel/Network/Http.h>
#include <Cordel/Util/Thread.h>

#include "HttpTestServer.h"
#include "TempFolder.h"

#include <sys/resource.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <set>

using namespace Cordel;
using namespace Cordel::Network;
using namespace HttpTest;
using HttpError = Network::Exception::HttpError;

namespace {

std::string slurp(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Compares long bodies without printing them.
::testing::AssertionResult sameBytes(std::string const& got, std::string const& expected)
{
    if (got == expected)
        return ::testing::AssertionSuccess();
    std::size_t at = 0;
    while (at < got.size() && at < expected.size() && got[at] == expected[at])
        ++at;
    return ::testing::AssertionFailure() << got.size() << " bytes instead of " << expected.size()
                                         << ", the first difference at " << at;
}

void spit(std::string const& path, std::string const& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

HttpRequest get(std::string const& url)
{
    HttpRequest r;
    r.url = url.c_str();
    return r;
}

class HttpClient : public CordelTest::TempFolder {
protected:
    void SetUp() override
    {
        TempFolder::SetUp();
        ClearProxyEnvironment();
    }

    // Runs a request to its end and returns how it ended.
    HttpResult run(HttpRequest request)
    {
        HttpTransfer t = http.Start(std::move(request));
        EXPECT_TRUE(t.Wait(30000));
        return t.GetResult();
    }

    Server server;
    Http http{"test"};
};

TEST_F(HttpClient, GetCollectsStatusHeadersAndBody)
{
    HttpResponse const r = http.Fetch(get(server.URL("/hello")), 30000);
    EXPECT_EQ(r.status, 200);
    EXPECT_EQ(r.body, "hello world");
    EXPECT_EQ(r.received, 11u);
    EXPECT_EQ(r.GetHeader("content-type"), "text/plain");
    EXPECT_EQ(r.GetHeader("Content-Length"), "11");
    EXPECT_EQ(r.GetHeader("X-Absent"), "");
    EXPECT_EQ(r.url, String(server.URL("/hello").c_str()));
}

TEST_F(HttpClient, MethodsBodiesAndHeadersReachTheServer)
{
    HttpRequest post = get(server.URL("/echo"));
    post.method = HttpMethod::Post;
    post.form = {{"name", "Kick 01.wav"}, {"tag", "a&b=c~*"}};
    post.headers = {{"X-Crash-Id", "1234"}, {"User-Agent", "Test/1"}};
    std::string const body = http.Fetch(post, 30000).body;
    EXPECT_TRUE(body.starts_with("POST\n")) << body;
    EXPECT_NE(body.find("Content-Type: application/x-www-form-urlencoded\n"), std::string::npos) << body;
    EXPECT_NE(body.find("X-Crash-Id: 1234\n"), std::string::npos) << body;
    EXPECT_NE(body.find("User-Agent: Test/1\n"), std::string::npos) << body;
    EXPECT_TRUE(body.ends_with("\n\nname=Kick+01.wav&tag=a%26b%3Dc%7E*")) << body;

    HttpRequest put = get(server.URL("/echo"));
    put.method = HttpMethod::Put;
    put.body = std::string("preset\0data", 11);
    put.headers = {{"Content-Type", "application/octet-stream"}};
    std::string const echoed = http.Fetch(put, 30000).body;
    EXPECT_TRUE(echoed.starts_with("PUT\n")) << echoed;
    EXPECT_TRUE(echoed.ends_with(std::string("\n\npreset\0data", 13))) << echoed;

    HttpRequest head = get(server.URL("/head"));
    head.method = HttpMethod::Head;
    HttpResponse const r = http.Fetch(head, 30000);
    EXPECT_EQ(r.status, 200);
    EXPECT_EQ(r.GetHeader("X-Answer"), "42");
    EXPECT_EQ(r.body, "");
}

TEST_F(HttpClient, ErrorStatusesAreResultsNotExceptions)
{
    HttpResponse const r = http.Fetch(get(server.URL("/status/503")), 30000);
    EXPECT_EQ(r.status, 503);
    EXPECT_EQ(r.body, "status 503");
    EXPECT_EQ(http.Fetch(get(server.URL("/status/404")), 30000).status, 404);
}

TEST_F(HttpClient, RedirectsAreFollowedWithinTheLimit)
{
    HttpResponse const r = http.Fetch(get(server.URL("/redirect/3")), 30000);
    EXPECT_EQ(r.status, 200);
    EXPECT_EQ(r.body, "hello world");
    EXPECT_EQ(r.url, String(server.URL("/hello").c_str()));

    HttpRequest limited = get(server.URL("/redirect/3"));
    limited.maxRedirects = 2;
    HttpResult const failed = run(limited);
    EXPECT_EQ(failed.outcome, HttpResult::Failed);
    EXPECT_EQ(failed.response.status, 302);

    int const before = server.requests;
    HttpResult const loop = run(get(server.URL("/loop")));
    EXPECT_EQ(loop.outcome, HttpResult::Failed);
    EXPECT_NE(std::string(loop.reason.c_str()).find("redirect"), std::string::npos) << loop.reason.c_str();
    EXPECT_EQ(server.requests - before, 11); // the request and the ten redirects allowed by default
}

TEST_F(HttpClient, FailuresThrowWithTheURLTheReasonAndTheStatus)
{
    int port = 0;
    ::close(listeningSocket(1, port)); // a port where nobody listens
    std::string const url = "http://127.0.0.1:" + std::to_string(port) + "/x";
    try {
        http.Fetch(get(url), 30000);
        FAIL() << "no exception";
    } catch (HttpError const& e) {
        EXPECT_EQ(e.GetKind(), HttpError::Failed);
        EXPECT_EQ(e.GetURL(), String(url.c_str()));
        EXPECT_EQ(e.GetStatus(), 0);
        EXPECT_EQ(e.GetErrorCode(), ECONNREFUSED);
        EXPECT_FALSE(e.GetReason().IsEmpty());
        std::string const text = e.ToString().c_str();
        EXPECT_NE(text.find("\nHttpError:\nFailed: " + url + "\n\t"), std::string::npos) << text;
    }

    try {
        http.Fetch(get(server.URL("/cut/200000")), 30000);
        FAIL() << "no exception";
    } catch (HttpError const& e) {
        EXPECT_EQ(e.GetStatus(), 200);
        EXPECT_NE(std::string(e.ToString().c_str()).find(" (HTTP 200)\n\t"), std::string::npos);
    }
}

TEST_F(HttpClient, AStalledTransferEndsAfterTheStallTimeOutAndAWaitCanGiveUp)
{
    SilentServer silent;
    HttpRequest r = get(silent.URL());
    r.stallTimeoutMs = 300;
    auto const start = Clock::now();
    HttpResult const stalled = run(r);
    auto const took = Clock::now() - start;
    EXPECT_EQ(stalled.outcome, HttpResult::Failed);
    EXPECT_EQ(stalled.reason, "no data for 300 ms");
    EXPECT_GE(took, 300ms);
    EXPECT_LT(took, 10s);

    try {
        http.Fetch(get(silent.URL()), 100);
        FAIL() << "no exception";
    } catch (HttpError const& e) {
        EXPECT_EQ(e.GetKind(), HttpError::TimedOut);
    }

    FullBacklog full;
    HttpRequest connecting = get(full.URL());
    connecting.connectTimeoutMs = 300;
    HttpResult const refused = run(connecting);
    EXPECT_EQ(refused.outcome, HttpResult::Failed);
    EXPECT_NE(std::string(refused.reason.c_str()).find("Timeout"), std::string::npos) << refused.reason.c_str();
}

TEST_F(HttpClient, CallbacksRunOnTheHelperThreadInOrder)
{
    std::mutex mutex;
    std::set<unsigned int> threads;
    std::string events;
    std::size_t bytes = 0;
    auto note = [&](char what) {
        std::lock_guard<std::mutex> hold(mutex);
        threads.insert(Util::Thread::GetCurrentThreadID());
        if (events.empty() || events.back() != what)
            events += what;
    };
    HttpRequest r = get(server.URL("/bytes/300000"));
    r.onProgress = [&](HttpProgress const& p) {
        note('p');
        EXPECT_LE(p.received, 300000u);
    };
    r.onData = [&](char const*, std::size_t n) {
        note('d');
        bytes += n;
    };
    r.onComplete = [&](HttpResult const& result) {
        note('c');
        EXPECT_EQ(result.outcome, HttpResult::Completed);
        EXPECT_TRUE(result.response.body.empty());
    };
    HttpTransfer t = http.Start(r);
    ASSERT_TRUE(t.Wait(30000));
    std::lock_guard<std::mutex> hold(mutex);
    EXPECT_EQ(bytes, 300000u);
    EXPECT_EQ(threads.size(), 1u);
    EXPECT_EQ(threads.count(Util::Thread::GetCurrentThreadID()), 0u);
    EXPECT_TRUE(events.starts_with("p")) << events;
    EXPECT_NE(events.find('d'), std::string::npos) << events;
    EXPECT_TRUE(events.ends_with("c")) << events;
}

TEST_F(HttpClient, DestroyingTheClientCancelsEverythingAndNoCallbackFollows)
{
    SilentServer silent;
    Signal completed;
    std::atomic<int> cancelled{0};
    std::vector<HttpTransfer> transfers;
    {
        Http local("local");
        for (int i = 0; i < 3; ++i) {
            HttpRequest r = get(silent.URL());
            r.onComplete = [&](HttpResult const& result) {
                cancelled += result.outcome == HttpResult::Cancelled;
                completed.Raise();
            };
            transfers.push_back(local.Start(r));
        }
        ASSERT_TRUE(silent.accepted.WaitFor(3));
    }
    EXPECT_EQ(completed.Count(), 3);
    EXPECT_EQ(cancelled, 3);
    for (HttpTransfer& t : transfers) {
        EXPECT_TRUE(t.IsFinished());
        t.Cancel(); // the client is gone: does nothing
        EXPECT_THROW(t.GetResponse(), HttpError);
    }
    EXPECT_EQ(completed.Count(), 3);
}

TEST_F(HttpClient, ManyThreadsStartAndCancelAtOnce)
{
    // Half the threads fetch, the other half start requests to a silent server and cancel them.
    SilentServer silent;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, cancelling = i % 2 == 1] {
            for (int j = 0; j < 5; ++j) {
                HttpTransfer t = http.Start(get(cancelling ? silent.URL() : server.URL("/bytes/1000")));
                if (cancelling)
                    t.Cancel();
                ASSERT_TRUE(t.Wait(30000));
                HttpResult const r = t.GetResult();
                if (cancelling)
                    EXPECT_EQ(r.outcome, HttpResult::Cancelled);
                else
                    EXPECT_EQ(r.response.body, pattern(0, 1000)) << r.reason.c_str();
            }
        });
    for (auto& t : threads)
        t.join();
}

TEST_F(HttpClient, DownloadsGoThroughAPartFileAndResume)
{
    std::string const target = PathOf("pack.zip");
    std::size_t const size = 1 << 20;

    HttpRequest r = get(server.URL("/bytes/" + std::to_string(size)));
    r.downloadTo = target.c_str();
    HttpResult const fresh = run(r);
    ASSERT_EQ(fresh.outcome, HttpResult::Completed) << fresh.reason.c_str();
    EXPECT_TRUE(fresh.response.body.empty());
    EXPECT_TRUE(sameBytes(slurp(target), pattern(0, size)));
    EXPECT_FALSE(std::filesystem::exists(target + ".part"));

    // A cut transfer leaves the old target whole, and without resume no part file.
    spit(target, "old");
    r.url = server.URL("/cut/" + std::to_string(size)).c_str();
    EXPECT_EQ(run(r).outcome, HttpResult::Failed);
    EXPECT_EQ(slurp(target), "old");
    EXPECT_FALSE(std::filesystem::exists(target + ".part"));

    // With resume the part is kept and continued with a Range request.
    r.resume = true;
    EXPECT_EQ(run(r).outcome, HttpResult::Failed);
    std::size_t const kept = std::filesystem::file_size(target + ".part");
    EXPECT_GT(kept, 0u);
    EXPECT_TRUE(sameBytes(slurp(target + ".part"), pattern(0, kept)));
    r.url = server.URL("/bytes/" + std::to_string(size)).c_str();
    HttpProgress last;
    r.onProgress = [&](HttpProgress const& p) { last = p; };
    HttpResult const resumed = run(r);
    ASSERT_EQ(resumed.outcome, HttpResult::Completed) << resumed.reason.c_str();
    EXPECT_EQ(resumed.response.status, 206);
    EXPECT_EQ(resumed.response.received, size - kept);
    EXPECT_EQ(last.received, size);
    EXPECT_EQ(last.total, size);
    {
        std::lock_guard<std::mutex> hold(server.lastRangeMutex);
        EXPECT_EQ(server.lastRange, "bytes=" + std::to_string(kept) + "-");
    }
    EXPECT_TRUE(sameBytes(slurp(target), pattern(0, size)));
    EXPECT_FALSE(std::filesystem::exists(target + ".part"));

    // A server that ignores the Range gets the part file started again.
    spit(target + ".part", "stale bytes");
    r.url = server.URL("/whole/5000").c_str();
    HttpResult const whole = run(r);
    ASSERT_EQ(whole.outcome, HttpResult::Completed) << whole.reason.c_str();
    EXPECT_EQ(whole.response.status, 200);
    EXPECT_TRUE(sameBytes(slurp(target), pattern(0, 5000)));
}

TEST_F(HttpClient, AnErrorPageNeverBecomesTheDownload)
{
    std::string const target = PathOf("preset.xml");
    spit(target, "mine");
    HttpRequest r = get(server.URL("/status/404"));
    r.downloadTo = target.c_str();
    HttpResult const result = run(r);
    EXPECT_EQ(result.outcome, HttpResult::Completed);
    EXPECT_EQ(result.response.status, 404);
    EXPECT_EQ(result.response.body, "status 404");
    EXPECT_EQ(slurp(target), "mine");
    EXPECT_FALSE(std::filesystem::exists(target + ".part"));

    r.url = server.URL("/hello").c_str();
    r.downloadTo = PathOf("no/such/folder/file").c_str();
    HttpResult const unwritable = run(r);
    EXPECT_EQ(unwritable.outcome, HttpResult::Failed);
    EXPECT_EQ(unwritable.errorCode, ENOENT);
}

long peakKilobytes()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST_F(HttpClient, LargeBodiesStreamInBoundedMemory)
{
    std::size_t const size = std::size_t(100) << 20;
    [[maybe_unused]] long const before = peakKilobytes();
    HttpRequest r = get(server.URL("/bytes/" + std::to_string(size)));
    r.downloadTo = PathOf("large.bin").c_str();
    HttpResult const result = run(r);
    ASSERT_EQ(result.outcome, HttpResult::Completed) << result.reason.c_str();
    EXPECT_EQ(std::filesystem::file_size(PathOf("large.bin")), size);
    std::ifstream in(PathOf("large.bin"), std::ios::binary);
    in.seekg(std::streamoff(size - 4096));
    std::string tail(4096, '\0');
    in.read(tail.data(), 4096);
    EXPECT_TRUE(sameBytes(tail, pattern(size - 4096, 4096)));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    // Server and client together, in this process; the sanitizers' own bookkeeping is not bounded.
    EXPECT_LT(peakKilobytes() - before, 32 * 1024);
#endif
}

TEST_F(HttpClient, ProxiesComeFromTheEnvironment)
{
    OneAnswerProxy proxy;
    ::setenv("http_proxy", proxy.Address().c_str(), 1);
    ::setenv("no_proxy", "127.0.0.1", 1);
    {
        Http viaEnvironment("proxied");
        EXPECT_EQ(viaEnvironment.Fetch(get(server.URL("/hello")), 30000).body, "hello world");
        ::unsetenv("no_proxy");
        EXPECT_EQ(viaEnvironment.Fetch(get("http://updates.cordel.test/latest"), 30000).body, "via proxy");
    }
    ClearProxyEnvironment();
    EXPECT_EQ(proxy.RequestLine(), "GET http://updates.cordel.test/latest HTTP/1.1");
}

} // namespace
