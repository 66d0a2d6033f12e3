// labels: threads
#include <Cordel/Util/ObjectInvoke.h>
#include <Cordel/Util/Signals.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

using namespace Cordel;
using namespace Cordel::Util;

namespace {

using Clock = std::chrono::steady_clock;
using Bytes = std::vector<unsigned char>;

std::vector<std::string> calls;

class Synth : public Object {
    CORDEL_OBJECT(Synth, Object)
public:
    void setParameter(unsigned int n, float v)
    {
        calls.push_back("set " + std::to_string(n) + " " + std::to_string(v));
    }
    void select(unsigned int n) { calls.push_back("select " + std::to_string(n)); }
    void reset() { calls.push_back("reset"); }
    void rename(String const& s) { calls.push_back(std::string("rename ") + s.c_str()); }
    void load(Bytes const& b) { calls.push_back("load " + std::to_string(b.size()) + " bytes, last " + std::to_string(b.back())); }
    void gain(double g) { calls.push_back("gain " + std::to_string(g)); }
    void mixed(bool on, int offset) { calls.push_back(std::string("mixed ") + (on ? "on " : "off ") + std::to_string(offset)); }
    void selfDestruct() { delete this; }
    void changed(unsigned int n) { Emit<&Synth::changed>(n); }

    CORDEL_SIGNALS(CORDEL_MEMBER(changed, "changed(uint)"))
    CORDEL_SLOTS(CORDEL_MEMBER(setParameter, "setParameter(uint,float)"), CORDEL_MEMBER(select, "select(uint)"),
                 CORDEL_MEMBER(reset, "reset()"), CORDEL_MEMBER(rename, "rename(String)"),
                 CORDEL_MEMBER(load, "load(ByteVector)"), CORDEL_MEMBER(gain, "gain(double)"),
                 CORDEL_MEMBER(mixed, "mixed(bool,int)"), CORDEL_MEMBER(selfDestruct, "selfDestruct()"))
};

class Listener : public Object {
    CORDEL_OBJECT(Listener, Object)
public:
    void heard(unsigned int n) { calls.push_back("heard " + std::to_string(n)); }
    CORDEL_SLOTS(CORDEL_MEMBER(heard, "heard(uint)"))
};

std::atomic<int> commandsDeleted{0};

struct CountedCall : ObjectInvokeImpl {
    using ObjectInvokeImpl::ObjectInvokeImpl;
    ~CountedCall() override { ++commandsDeleted; }
};

// Waits for a condition that another thread brings about, failing instead of hanging.
template <typename F>
bool eventually(F condition, std::chrono::seconds bound = std::chrono::seconds(60))
{
    auto const limit = Clock::now() + bound;
    while (!condition()) {
        if (Clock::now() > limit)
            return false;
        std::this_thread::yield();
    }
    return true;
}

// A thread that serves the high side of a pipe until told to stop.
class HighThread {
public:
    explicit HighThread(Atomic::CommandPipe& pipe) : pipe(pipe), thread([this] { run(); }) {}
    ~HighThread() { Stop(); }
    void Stop()
    {
        stop = true;
        if (thread.joinable())
            thread.join();
    }
    bool Started() const { return started.load(); }

private:
    void run()
    {
        while (!stop.load()) {
            pipe.ProcessHigh();
            started = true;
            std::this_thread::yield();
        }
        pipe.StopHigh();
    }
    Atomic::CommandPipe& pipe;
    std::atomic<bool> stop{false};
    std::atomic<bool> started{false};
    std::thread thread;
};

class ObjectInvokeTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        calls.clear();
        commandsDeleted = 0;
    }
    Atomic::CriticalSection external{"invoke test"};
};

std::vector<std::string> expected(std::initializer_list<char const*> lines) { return {lines.begin(), lines.end()}; }

std::string buildError(Object* receiver, char const* member, auto const&... args)
{
    try {
        ObjectInvokeImpl call(receiver, member, args...);
    } catch (Exception::Base const& e) {
        return e.GetMessage().c_str();
    }
    return "built";
}

} // namespace

TEST_F(ObjectInvokeTest, MismatchesAreRefusedWhereTheCallIsBuilt)
{
    Synth synth;
    EXPECT_EQ(buildError(&synth, "1setParameter(uint,float)", 1u, 0.5f), "built");
    EXPECT_EQ(buildError(&synth, "1select(uint)", 1u, 0.5f), "built"); // a leading part
    EXPECT_EQ(buildError(&synth, "1reset()", 1u, 0.5f), "built");
    EXPECT_EQ(buildError(&synth, "2changed(uint)", 4u), "built");
    EXPECT_EQ(buildError(&synth, " 1setParameter( uint , float ) ", 1u, 0.5f), "built");

    EXPECT_EQ(buildError(&synth, "1setParameter(uint,float)", 1, 0.5f),
              "ObjectInvokeImpl: arguments (int,float) do not fit \"setParameter(uint,float)\"");
    EXPECT_EQ(buildError(&synth, "1setParameter(uint,float)", 1u, 0.5),
              "ObjectInvokeImpl: arguments (uint,double) do not fit \"setParameter(uint,float)\"");
    EXPECT_EQ(buildError(&synth, "1setParameter(uint,float)", 1u),
              "ObjectInvokeImpl: arguments (uint) do not fit \"setParameter(uint,float)\"");
    EXPECT_EQ(buildError(&synth, "1select(uint)", 0.5f, 1u),
              "ObjectInvokeImpl: arguments (float,uint) do not fit \"select(uint)\"");
    EXPECT_EQ(buildError(&synth, "1rename(String)"), "ObjectInvokeImpl: arguments () do not fit \"rename(String)\"");
    EXPECT_EQ(buildError(&synth, "1missing()"), "ObjectInvokeImpl: Synth has no slot \"missing()\"");
    EXPECT_EQ(buildError(&synth, "2select(uint)", 1u), "ObjectInvokeImpl: Synth has no signal \"select(uint)\"");
    EXPECT_EQ(buildError(&synth, "select(uint)", 1u), "ObjectInvokeImpl: \"select(uint)\" lacks the '1' or '2' prefix");
    EXPECT_EQ(buildError(nullptr, "1reset()"), "ObjectInvokeImpl: no receiver or no member");
    EXPECT_EQ(buildError(&synth, nullptr), "ObjectInvokeImpl: no receiver or no member");
}

TEST_F(ObjectInvokeTest, ArgumentsAreCopiedIntoTheCall)
{
    Synth synth;
    String name("Pad");
    std::string scratch = "Lead";
    Bytes patch{1, 2, 3};
    ObjectInvokeImpl renamed(&synth, "1rename(String)", name);
    ObjectInvokeImpl fromText(&synth, "1rename(String)", scratch.c_str());
    ObjectInvokeImpl loaded(&synth, "1load(ByteVector)", patch);
    ObjectInvokeImpl mixed(&synth, "1mixed(bool,int)", true, -3);
    ObjectInvokeImpl gain(&synth, "1gain(double)", 0.5);
    EXPECT_EQ(name.GetHandle().use_count(), 1u); // the call holds text of its own
    name = "changed";
    scratch.assign("Bass");
    patch.assign(9, 9);

    EXPECT_TRUE(renamed.Invoke());
    EXPECT_TRUE(fromText.Invoke());
    EXPECT_TRUE(loaded.Invoke());
    EXPECT_TRUE(mixed.Invoke());
    EXPECT_TRUE(gain.Invoke());
    EXPECT_EQ(calls, expected({"rename Pad", "rename Lead", "load 3 bytes, last 3", "mixed on -3", "gain 0.500000"}));
}

TEST_F(ObjectInvokeTest, CallsRunOnTheSideTheyArePostedTo)
{
    Atomic::CommandPipe pipe("invoke", nullptr, 8, {}, external);
    Synth synth;
    Listener listener;
    ASSERT_TRUE(Object::Connect(&synth, "2changed(uint)", &listener, "1heard(uint)"));

    pipe.ProcessHigh(); // the high side is running from here on
    pipe.PostHigh(new CountedCall(&synth, "1setParameter(uint,float)", 2u, 0.75f));
    pipe.PostHigh(new CountedCall(&synth, "2changed(uint)", 9u));
    pipe.ProcessLow();
    EXPECT_TRUE(calls.empty());
    pipe.ProcessHigh();
    EXPECT_EQ(calls, expected({"set 2 0.750000", "heard 9"}));
    EXPECT_EQ(commandsDeleted.load(), 0); // they travel back to be deleted
    pipe.ProcessLow();
    EXPECT_EQ(commandsDeleted.load(), 2);

    pipe.PostLow(new CountedCall(&synth, "1select(uint)", 4u));
    pipe.ProcessHigh();
    EXPECT_EQ(calls.size(), 2u);
    pipe.ProcessLow();
    EXPECT_EQ(calls.back(), "select 4");
    EXPECT_EQ(commandsDeleted.load(), 3);
}

TEST_F(ObjectInvokeTest, CallsIntoADestroyedReceiverDoNothing)
{
    Atomic::CommandPipe pipe("invoke", nullptr, 8, {}, external);
    auto* synth = new Synth;
    ObjectInvokeImpl inPlace(synth, "1reset()");
    pipe.ProcessHigh();
    pipe.PostHigh(new CountedCall(synth, "1select(uint)", 1u));
    delete synth;
    EXPECT_FALSE(inPlace.Invoke());
    pipe.ProcessHigh();
    pipe.ProcessLow();
    EXPECT_EQ(commandsDeleted.load(), 1);
    EXPECT_TRUE(calls.empty());
}

TEST_F(ObjectInvokeTest, AMemberThatDestroysItsOwnReceiverDoesNotWaitForItself)
{
    ObjectInvokeImpl call(new Synth, "1selfDestruct()");
    EXPECT_TRUE(call.Invoke());
    EXPECT_FALSE(call.Invoke());
}

TEST_F(ObjectInvokeTest, BlockingCallsAreRefusedOnTheThreadThatWouldRunThem)
{
    Atomic::CommandPipe pipe("invoke", nullptr, 8, {}, external);
    Synth synth;
    auto refused = [&] {
        try {
            ObjectInvokeImpl::PostHighAndWait(pipe, new CountedCall(&synth, "1reset()"), 1000u);
        } catch (Exception::Base const& e) {
            return std::string(e.GetMessage().c_str()) ==
                   "ObjectInvokeImpl: a blocking call on the thread that would have to run it";
        }
        return false;
    };
    EXPECT_TRUE(refused()); // no high side yet: the low side's take-over would run it
    pipe.ProcessHigh();
    EXPECT_TRUE(refused()); // this is the high thread
    pipe.StopHigh();
    EXPECT_TRUE(refused());
    EXPECT_EQ(commandsDeleted.load(), 3);
    EXPECT_TRUE(calls.empty());
}

TEST_F(ObjectInvokeTest, BlockingCallsWaitForTheHighSide)
{
    Atomic::CommandPipe pipe("invoke", nullptr, 8, {}, external);
    auto* synth = new Synth;
    {
        HighThread high(pipe);
        ASSERT_TRUE(eventually([&] { return high.Started(); }));
        checked_value<bool> const taken =
            ObjectInvokeImpl::PostHighAndWait(pipe, new CountedCall(synth, "1select(uint)", 6u), {});
        ASSERT_TRUE(taken.IsSet());
        EXPECT_TRUE(taken.Get());
        EXPECT_EQ(calls, expected({"select 6"})); // already made, on the other thread
        auto* late = new CountedCall(synth, "1reset()");
        delete synth;
        checked_value<bool> const gone = ObjectInvokeImpl::PostHighAndWait(pipe, late, 60000u);
        ASSERT_TRUE(gone.IsSet());
        EXPECT_FALSE(gone.Get());
    }
    pipe.ProcessLow();
    EXPECT_EQ(commandsDeleted.load(), 2);
}

TEST_F(ObjectInvokeTest, ABlockingCallThatTimesOutNeverRuns)
{
    // A high side that ran once and has gone quiet, without a watchdog to notice.
    Atomic::CommandPipe pipe("invoke", nullptr, 8, {}, external);
    Synth synth;
    std::thread([&] { pipe.ProcessHigh(); }).join();
    checked_value<bool> const taken =
        ObjectInvokeImpl::PostHighAndWait(pipe, new CountedCall(&synth, "1reset()"), 20u);
    EXPECT_FALSE(taken.IsSet());
    pipe.ProcessHigh();
    pipe.ProcessLow();
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(commandsDeleted.load(), 1);
}

namespace {

// Records overlaps of its destructor and its calls in globals, which outlive it.
std::atomic<int> inside{0};
std::atomic<bool> destroying{false};
std::atomic<int> overlaps{0};
std::atomic<int> delivered{0};

class Voice : public Object {
    CORDEL_OBJECT(Voice, Object)
public:
    ~Voice() override
    {
        ObjectInvokeImpl::Revoke(this); // the lifetime rule: first, before anything comes apart
        destroying = true;
        // Keeps the destructor going for a while, so that a call let through would be seen.
        for (int i = 0; i < 2000; ++i) {
            if (inside.load() != 0)
                ++overlaps;
            std::this_thread::yield();
        }
        levels.clear();
    }
    void setLevel(unsigned int n, float v)
    {
        ++inside;
        if (destroying.load())
            ++overlaps;
        levels.push_back(v + static_cast<float>(n));
        if (levels.size() > 64)
            levels.clear();
        ++delivered;
        --inside;
    }
    void setName(String const& s) { name = s; } // keeps a share of the call's text
    String name;
    std::vector<float> levels;
    CORDEL_SLOTS(CORDEL_MEMBER(setLevel, "setLevel(uint,float)"), CORDEL_MEMBER(setName, "setName(String)"))
};

} // namespace

TEST_F(ObjectInvokeTest, AReceiverDestroyedMidFlightGetsNoCallAfterItsDestruction)
{
    constexpr int total = 100000;
    constexpr int destroyAt = total / 2;
    Atomic::CommandPipe pipe("invoke", nullptr, 1024, {}, external);
    auto* voice = new Voice;
    std::vector<ObjectInvokeImpl*> posted;
    posted.reserve(total);
    for (int i = 0; i < total; ++i)
        posted.push_back(i % 100 == 0 ? new CountedCall(voice, "1setName(String)", String("take"))
                                      : new CountedCall(voice, "1setLevel(uint,float)", unsigned(i), 0.5f));

    int deliveredBeforeDestruction = 0;
    {
        HighThread high(pipe);
        ASSERT_TRUE(eventually([&] { return high.Started(); }));
        for (int i = 0; i < total; ++i) {
            if (i == destroyAt) {
                // Let some calls be under way on the high side while the voice goes.
                ASSERT_TRUE(eventually([&] { return delivered.load() > destroyAt / 2; }));
                delete voice;
                deliveredBeforeDestruction = delivered.load();
            }
            pipe.PostHigh(posted[i]);
            if (i % 256 == 0)
                pipe.ProcessLow();
        }
        ASSERT_TRUE(eventually([&] {
            pipe.ProcessLow();
            return commandsDeleted.load() == total;
        }));
    }
    EXPECT_EQ(overlaps.load(), 0);
    EXPECT_EQ(delivered.load(), deliveredBeforeDestruction);
    EXPECT_GT(deliveredBeforeDestruction, destroyAt / 2);
    EXPECT_LE(deliveredBeforeDestruction, destroyAt);
}

TEST_F(ObjectInvokeTest, AReceiverOnTheLowSideMayBeDestroyedThereWithoutRevoking)
{
    // The real-time side reports to an object of the worker, which the worker destroys itself.
    Atomic::CommandPipe pipe("invoke", nullptr, 1024, {}, external);
    auto* synth = new Synth;
    constexpr int total = 20000;
    std::vector<ObjectInvokeImpl*> made;
    for (int i = 0; i < total; ++i)
        made.push_back(new CountedCall(synth, "1select(uint)", unsigned(i)));
    std::atomic<int> sent{0};
    std::thread high([&] {
        for (ObjectInvokeImpl* call : made) {
            pipe.PostLow(call);
            ++sent;
        }
    });
    ASSERT_TRUE(eventually([&] {
        pipe.ProcessLow();
        return calls.size() > 100;
    }));
    delete synth;
    std::size_t const before = calls.size();
    high.join();
    pipe.ProcessLow();
    EXPECT_EQ(calls.size(), before);
    EXPECT_EQ(calls.back(), "select " + std::to_string(before - 1)); // in the order posted
    EXPECT_EQ(commandsDeleted.load(), total);
}
