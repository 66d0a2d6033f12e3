// labels: threads
// pkg: cpp-httplib
// Cancelling a transfer in each phase, from another thread: the completion reports it within
// 50 ms whether the name is still being looked up, the connection is still being made, the
// server is silent, or the body is arriving.

#include <Cordel/Network/Http.h>

#include "HttpTestServer.h"

#include <dlfcn.h>
#include <netdb.h>

using namespace Cordel;
using namespace Cordel::Network;
using namespace HttpTest;

namespace {

// Look-ups of this name hang until released; nothing about it reaches a real resolver.
char const hangingName[] = "hanging-lookup.cordel.test";

struct Lookups {
    std::mutex mutex;
    std::condition_variable released;
    bool open = false;
    Signal entered;
};

Lookups& lookups()
{
    static Lookups l;
    return l;
}

} // namespace

// The test program's own getaddrinfo comes before the C library's for libcurl's resolver thread.
extern "C" int getaddrinfo(char const* node, char const* service, addrinfo const* hints, addrinfo** result)
{
    if (node && std::string_view(node) == hangingName) {
        Lookups& l = lookups();
        l.entered.Raise();
        std::unique_lock<std::mutex> hold(l.mutex);
        l.released.wait_for(hold, 60s, [&] { return l.open; });
        return EAI_NONAME;
    }
    using Real = int (*)(char const*, char const*, addrinfo const*, addrinfo**);
    static Real const real = reinterpret_cast<Real>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(node, service, hints, result);
}

namespace {

class HttpCancel : public ::testing::Test {
protected:
    void SetUp() override { ClearProxyEnvironment(); }

    // Starts a request whose completion notes when it ran and how it ended.
    HttpTransfer start(std::string const& url, std::function<void()> onFirstData = {})
    {
        HttpRequest r;
        r.url = url.c_str();
        r.onData = [this, onFirstData](char const*, std::size_t) {
            if (!receiving.exchange(true) && onFirstData)
                onFirstData();
        };
        r.onComplete = [this](HttpResult const& result) {
            completedAt = Clock::now();
            outcome = result.outcome;
            completed.Raise();
        };
        return http.Start(r);
    }

    // Cancels, and checks that the completion reported the cancellation within 50 ms.
    void cancelAndMeasure(HttpTransfer& t)
    {
        auto const cancelledAt = Clock::now();
        t.Cancel();
        ASSERT_TRUE(completed.WaitFor(1));
        EXPECT_EQ(outcome, HttpResult::Cancelled);
        auto const latency = std::chrono::duration_cast<std::chrono::microseconds>(completedAt - cancelledAt);
        EXPECT_LT(latency, 50ms) << latency.count() << " us";
        RecordProperty("latency_us", static_cast<int>(latency.count()));
        EXPECT_THROW(t.GetResponse(), Network::Exception::HttpError);
    }

    Http http{"cancel"};
    Signal completed;
    Clock::time_point completedAt;
    std::atomic<bool> receiving{false};
    HttpResult::Outcome outcome = HttpResult::Failed;
};

TEST_F(HttpCancel, WhileResolving)
{
    HttpTransfer t = start(std::string("http://") + hangingName + "/update.xml");
    ASSERT_TRUE(lookups().entered.WaitFor(1));
    cancelAndMeasure(t);
    {
        std::lock_guard<std::mutex> hold(lookups().mutex);
        lookups().open = true;
    }
    lookups().released.notify_all();
}

TEST_F(HttpCancel, WhileConnecting)
{
    FullBacklog full;
    HttpTransfer t = start(full.URL());
    ASSERT_TRUE(PollUntil([&] { return full.SomeoneConnecting(); }));
    cancelAndMeasure(t);
}

TEST_F(HttpCancel, WhileTheServerIsSilent)
{
    SilentServer silent;
    HttpTransfer t = start(silent.URL());
    ASSERT_TRUE(silent.accepted.WaitFor(1));
    cancelAndMeasure(t);
}

TEST_F(HttpCancel, WhileReceiving)
{
    Server server;
    Signal firstData;
    HttpTransfer t = start(server.URL("/drip"), [&] { firstData.Raise(); });
    ASSERT_TRUE(firstData.WaitFor(1));
    cancelAndMeasure(t);
}

TEST_F(HttpCancel, FromInsideACallback)
{
    Server server;
    HttpTransfer t;
    std::mutex handle;
    HttpRequest r;
    r.url = server.URL("/drip").c_str();
    r.onData = [&](char const*, std::size_t) {
        std::lock_guard<std::mutex> hold(handle);
        t.Cancel();
    };
    r.onComplete = [&](HttpResult const& result) {
        outcome = result.outcome;
        completed.Raise();
    };
    {
        std::lock_guard<std::mutex> hold(handle);
        t = http.Start(r);
    }
    ASSERT_TRUE(completed.WaitFor(1));
    EXPECT_EQ(outcome, HttpResult::Cancelled);
}

} // namespace
