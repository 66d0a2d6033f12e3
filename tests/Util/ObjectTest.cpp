#include <Cordel/Util/Signals.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Cordel;
using namespace Cordel::Util;

namespace {

std::vector<std::string> calls;

class Source : public Object {
    CORDEL_OBJECT(Source, Object)
public:
    void sig(unsigned int channel, float level) { Emit<&Source::sig>(channel, level); }
    void ping() { Emit<&Source::ping>(); }

    CORDEL_SIGNALS(CORDEL_MEMBER(sig, "sig(uint,float)"), CORDEL_MEMBER(ping, "ping()"))
};

class Sink : public Object {
    CORDEL_OBJECT(Sink, Object)
public:
    explicit Sink(std::string label = "sink") : label(std::move(label)) {}
    ~Sink() override { calls.push_back(label + " destroyed"); }

    std::string label;
    void (*hook)(Sink*) = nullptr; // run inside slotNone, to act during a delivery

    void slot(unsigned int channel, float level)
    {
        calls.push_back(label + " slot " + std::to_string(channel) + " " + std::to_string(level));
    }
    void slotUint(unsigned int channel) { calls.push_back(label + " uint " + std::to_string(channel)); }
    void slotFloat(float level) { calls.push_back(label + " float " + std::to_string(level)); }
    void slotNone()
    {
        calls.push_back(label + " none");
        if (hook)
            hook(this);
    }
    // A signal of the receiver, so that signals can be chained.
    void relay(unsigned int channel) { Emit<&Sink::relay>(channel); }

    CORDEL_SIGNALS(CORDEL_MEMBER(relay, "relay(uint)"))
    CORDEL_SLOTS(CORDEL_MEMBER(slot, "slot(uint,float)"), CORDEL_MEMBER(slotUint, "slotUint(uint)"),
                 CORDEL_MEMBER(slotFloat, "slotFloat(float)"), CORDEL_MEMBER(slotNone, "slotNone()"))
};

// Three levels with signals at each one; the leaf redeclares a signature of the root.
class Root : public Object {
    CORDEL_OBJECT(Root, Object)
public:
    void rootSig(int v) { Emit<&Root::rootSig>(v); }
    void shared() { Emit<&Root::shared>(); }
    void rootSlot(int v) { calls.push_back("rootSlot " + std::to_string(v)); }
    CORDEL_SIGNALS(CORDEL_MEMBER(rootSig, "rootSig(int)"), CORDEL_MEMBER(shared, "shared()"))
    CORDEL_SLOTS(CORDEL_MEMBER(rootSlot, "rootSlot(int)"))
};

class Middle : public Root {
    CORDEL_OBJECT(Middle, Root)
public:
    void middleSig(int v) { Emit<&Middle::middleSig>(v); }
    CORDEL_SIGNALS(CORDEL_MEMBER(middleSig, "middleSig(int)"))
};

class Leaf : public Middle {
    CORDEL_OBJECT(Leaf, Middle)
public:
    void leafSig(int v) { Emit<&Leaf::leafSig>(v); }
    void leafShared() { Emit<&Leaf::leafShared>(); }
    void leafSlot(int v) { calls.push_back("leafSlot " + std::to_string(v)); }
    CORDEL_SIGNALS(CORDEL_MEMBER(leafSig, "leafSig(int)"), CORDEL_MEMBER(leafShared, "shared()"))
    CORDEL_SLOTS(CORDEL_MEMBER(leafSlot, "leafSlot(int)"))
};

class ObjectTest : public ::testing::Test {
protected:
    void SetUp() override { calls.clear(); }
};

std::vector<std::string> expected(std::initializer_list<char const*> lines) { return {lines.begin(), lines.end()}; }

} // namespace

TEST_F(ObjectTest, ConnectAcceptsLeadingArgumentSubsets)
{
    Source source;
    Sink sink;
    EXPECT_TRUE(Object::Connect(&source, "2sig(uint,float)", &sink, "1slot(uint,float)"));
    EXPECT_TRUE(Object::Connect(&source, "2sig(uint,float)", &sink, "1slotUint(uint)"));
    EXPECT_TRUE(Object::Connect(&source, "2sig(uint,float)", &sink, "1slotNone()"));
    EXPECT_FALSE(Object::Connect(&source, "2sig(uint,float)", &sink, "1slotFloat(float)"));
    EXPECT_FALSE(Object::Connect(&source, "2ping()", &sink, "1slotUint(uint)"));

    source.sig(3, 0.5); // the double is converted to the signal's float
    EXPECT_EQ(calls, expected({"sink slot 3 0.500000", "sink uint 3", "sink none"}));
}

TEST_F(ObjectTest, ConnectFailuresAreSilentAndChangeNothing)
{
    Source source;
    Sink sink;
    EXPECT_FALSE(Object::Connect(&source, "sig(uint,float)", &sink, "1slot(uint,float)"));
    EXPECT_FALSE(Object::Connect(&source, "1sig(uint,float)", &sink, "1slot(uint,float)"));
    EXPECT_FALSE(Object::Connect(&source, "2sig(int,float)", &sink, "1slot(uint,float)"));
    EXPECT_FALSE(Object::Connect(&source, "2sig(uint,float)", &sink, "slot(uint,float)"));
    EXPECT_FALSE(Object::Connect(&source, "2sig(uint,float)", &sink, "1missing()"));
    EXPECT_FALSE(Object::Connect(&source, "2sig(uint,float)", &sink, "2slotNone()"));
    EXPECT_FALSE(Object::Connect(nullptr, "2ping()", &sink, "1slotNone()"));
    EXPECT_FALSE(Object::Connect(&source, nullptr, &sink, "1slotNone()"));
    EXPECT_FALSE(Object::Connect(&source, "2ping()", nullptr, "1slotNone()"));
    EXPECT_FALSE(Object::Connect(&source, "2ping()", &sink, nullptr));
    EXPECT_FALSE(Object::Connect(&source, "", &sink, ""));
    EXPECT_EQ(source.lookupReceivers("sig(uint,float)"), nullptr);
    source.sig(1, 1);
    source.ping();
    EXPECT_TRUE(calls.empty());
}

TEST_F(ObjectTest, CheckConnectArgsNeedsAWholeLeadingArgument)
{
    EXPECT_TRUE(Object::CheckConnectArgs("s(int,float)", "m(int,float)"));
    EXPECT_TRUE(Object::CheckConnectArgs("s(int,float)", "m(int)"));
    EXPECT_TRUE(Object::CheckConnectArgs("s(int,float)", "m()"));
    EXPECT_TRUE(Object::CheckConnectArgs("s()", "m()"));
    EXPECT_FALSE(Object::CheckConnectArgs("s(integer)", "m(int)")); // a prefix of a word is not an argument
    EXPECT_FALSE(Object::CheckConnectArgs("s(int)", "m(int,float)"));
    EXPECT_FALSE(Object::CheckConnectArgs("s()", "m(int)"));
    EXPECT_FALSE(Object::CheckConnectArgs("s(int,float)", "m(float)"));
    EXPECT_FALSE(Object::CheckConnectArgs("s", "m()"));
    EXPECT_FALSE(Object::CheckConnectArgs(nullptr, "m()"));
    EXPECT_FALSE(Object::CheckConnectArgs("s()", nullptr));
}

TEST_F(ObjectTest, SpacedSignaturesNameTheSameMember)
{
    EXPECT_EQ(Object::Normalize(" sig( uint , float ) "), "sig(uint,float)");
    EXPECT_EQ(Object::Normalize("f(const  String &,\tchar *)"), "f(const String&,char*)");
    EXPECT_EQ(Object::Normalize("f( )"), "f()");

    Source source;
    Sink sink;
    EXPECT_TRUE(Object::Connect(&source, " 2sig( uint ,float )", &sink, "1slotUint (\tuint )"));
    source.sig(7, 0);
    EXPECT_EQ(calls, expected({"sink uint 7"}));
    EXPECT_NE(source.lookupReceivers("sig ( uint, float )"), nullptr);
    EXPECT_EQ(source.lookupReceivers("2sig(uint,float)"), source.lookupReceivers("sig(uint,float)"));
}

TEST_F(ObjectTest, IdenticalConnectionsDeliverTwiceInConnectionOrder)
{
    Source source;
    Sink a("a"), b("b");
    ASSERT_TRUE(Object::Connect(&source, "2ping()", &a, "1slotNone()"));
    ASSERT_TRUE(Object::Connect(&source, "2ping()", &b, "1slotNone()"));
    ASSERT_TRUE(Object::Connect(&source, "2ping()", &a, "1slotNone()"));
    source.ping();
    EXPECT_EQ(calls, expected({"a none", "b none", "a none"}));
    ASSERT_NE(source.lookupReceivers("ping()"), nullptr);
    EXPECT_EQ(source.lookupReceivers("ping()")->size(), 3u);
}

TEST_F(ObjectTest, ConnectionAddedDuringDeliveryIsReachedInTheSameEmission)
{
    static Source source;
    static Sink late("late");
    Sink first("first");
    first.hook = [](Sink*) {
        calls.push_back("connecting");
        Object::Connect(&source, "2ping()", &late, "1slotUint(uint)"); // refused: needs an argument
        Object::Connect(&source, "2ping()", &late, "1slotNone()");
    };
    ASSERT_TRUE(Object::Connect(&source, "2ping()", &first, "1slotNone()"));
    source.ping();
    EXPECT_EQ(calls, expected({"first none", "connecting", "late none"}));
    Object::Disconnect(&source, nullptr, nullptr, nullptr);
}

TEST_F(ObjectTest, SignalsChainToSignals)
{
    Source source;
    Sink middle("middle"), end("end");
    ASSERT_TRUE(Object::Connect(&source, "2sig(uint,float)", &middle, "2relay(uint)"));
    ASSERT_TRUE(Object::Connect(&middle, "2relay(uint)", &end, "1slotUint(uint)"));
    ASSERT_TRUE(Object::Connect(&middle, "2relay(uint)", &middle, "1slotUint(uint)"));
    EXPECT_FALSE(Object::Connect(&middle, "2relay(uint)", &source, "2sig(uint,float)"));
    source.sig(9, 1);
    middle.relay(4);
    EXPECT_EQ(calls, expected({"end uint 9", "middle uint 9", "end uint 4", "middle uint 4"}));
}

TEST_F(ObjectTest, InheritedSignalsAndSlotsShareOneIndexSpace)
{
    MetaObject const* root = Root::GetStaticMetaObject();
    MetaObject const* middle = Middle::GetStaticMetaObject();
    MetaObject const* leaf = Leaf::GetStaticMetaObject();
    EXPECT_EQ(root->GetSuperClass(), Object::GetStaticMetaObject());
    EXPECT_EQ(leaf->GetSuperClass(), middle);
    EXPECT_EQ(Object::GetStaticMetaObject()->GetNumSignals(true), 0u);

    EXPECT_EQ(leaf->GetNumSignals(false), 2u);
    EXPECT_EQ(leaf->GetNumSignals(true), 5u);
    EXPECT_EQ(leaf->GetNumSlots(true), 2u);
    // A class's first own signal comes after all of its superclasses' signals.
    EXPECT_EQ(middle->GetSignalIndex("middleSig(int)", false).Get(), root->GetNumSignals(true));
    EXPECT_EQ(leaf->GetSignalIndex("leafSig(int)", true).Get(), middle->GetNumSignals(true));
    EXPECT_EQ(leaf->GetSignalIndex("rootSig(int)", true).Get(), 0u);
    EXPECT_FALSE(leaf->GetSignalIndex("rootSig(int)", false).IsSet());
    EXPECT_EQ(leaf->GetSlotIndex("leafSlot(int)", true).Get(), 1u);
    // The class's own map is searched first, so a redeclared signature finds the leaf's entry.
    EXPECT_EQ(leaf->GetSignalIndex("shared()", true).Get(), 4u);
    EXPECT_EQ(middle->GetSignalIndex("shared()", true).Get(), 1u);

    EXPECT_STREQ(leaf->GetSignalMetaData(2, true), "middleSig(int)");
    EXPECT_EQ(leaf->GetSignalMetaData(2, false), nullptr);
    EXPECT_EQ(leaf->GetSignalMetaData(5, true), nullptr);
    EXPECT_EQ(leaf->GetSignalEntry(3, true)->word, 1u);

    Leaf object;
    EXPECT_STREQ(object.GetClassName(), "Leaf");
    EXPECT_STREQ(object.GetMetaObject()->GetClassName(), "Leaf");
    EXPECT_TRUE(object.IsType("Middle"));
    EXPECT_TRUE(object.IsType("Object"));
    EXPECT_TRUE(object.IsType(root));
    EXPECT_FALSE(object.IsType("Sink"));
    EXPECT_FALSE(Root().IsType("Leaf"));
    EXPECT_STREQ(Object().GetClassName(), "Object");
}

TEST_F(ObjectTest, EveryLevelOfAnInheritanceChainEmitsAndReceives)
{
    Leaf sender, receiver;
    ASSERT_TRUE(Object::Connect(&sender, "2rootSig(int)", &receiver, "1leafSlot(int)"));
    ASSERT_TRUE(Object::Connect(&sender, "2middleSig(int)", &receiver, "1rootSlot(int)"));
    ASSERT_TRUE(Object::Connect(&sender, "2leafSig(int)", &receiver, "2middleSig(int)"));
    ASSERT_TRUE(Object::Connect(&receiver, "2middleSig(int)", &receiver, "1leafSlot(int)"));
    ASSERT_TRUE(Object::Connect(&sender, "2shared()", &receiver, "1rootSlot(int)") == false);
    sender.rootSig(1);
    sender.middleSig(2);
    sender.leafSig(3);
    sender.shared(); // the root's signal, nothing connected to it
    EXPECT_EQ(calls, expected({"leafSlot 1", "rootSlot 2", "leafSlot 3"}));
}

TEST_F(ObjectTest, DestroyedReceiverIsSkipped)
{
    Source source;
    Sink kept("kept");
    auto* gone = new Sink("gone");
    ASSERT_TRUE(Object::Connect(&source, "2ping()", gone, "1slotNone()"));
    ASSERT_TRUE(Object::Connect(&source, "2ping()", &kept, "1slotNone()"));
    delete gone;
    source.ping();
    EXPECT_EQ(calls, expected({"gone destroyed", "kept none"}));
    // The cut link is dropped on the next change to the list.
    ASSERT_TRUE(Object::Connect(&source, "2ping()", &kept, "1slotNone()"));
    EXPECT_EQ(source.lookupReceivers("ping()")->size(), 2u);
}

TEST_F(ObjectTest, ReceiverDestroyedDuringDeliveryIsSkipped)
{
    static Sink* victim = nullptr;
    Source source;
    Sink killer("killer");
    victim = new Sink("victim");
    killer.hook = [](Sink*) { delete victim; };
    ASSERT_TRUE(Object::Connect(&source, "2ping()", &killer, "1slotNone()"));
    ASSERT_TRUE(Object::Connect(&source, "2ping()", victim, "1slotNone()"));
    source.ping();
    EXPECT_EQ(calls, expected({"killer none", "victim destroyed"}));
}

TEST_F(ObjectTest, ReceiverOutlivesItsSender)
{
    Sink sink;
    {
        Source source;
        ASSERT_TRUE(Object::Connect(&source, "2ping()", &sink, "1slotNone()"));
        ASSERT_TRUE(Object::Connect(&source, "2ping()", &sink, "1slotNone()"));
    }
    EXPECT_FALSE(Object::Disconnect(nullptr, nullptr, &sink, nullptr));
}

TEST_F(ObjectTest, AutoDeleteObjectsDieWithTheirOwner)
{
    auto* owner = new Sink("owner");
    auto* a = new Sink("a");
    auto* b = new Sink("b");
    owner->AddAutoDelete(a);
    owner->AddAutoDelete(b);
    owner->AddAutoDelete(a); // once only
    owner->AddAutoDelete(owner);
    owner->AddAutoDelete(nullptr);
    // Links among the family must not outlive it.
    ASSERT_TRUE(Object::Connect(a, "2relay(uint)", owner, "1slotUint(uint)"));
    ASSERT_TRUE(Object::Connect(owner, "2relay(uint)", b, "1slotUint(uint)"));
    delete owner;
    EXPECT_EQ(calls, expected({"owner destroyed", "a destroyed", "b destroyed"}));
}

TEST_F(ObjectTest, DisconnectBySenderSignalReceiverAndMember)
{
    Source source, other;
    Sink a("a"), b("b");
    auto connectAll = [&] {
        Object::Disconnect(&source, nullptr, nullptr, nullptr);
        Object::Disconnect(&other, nullptr, nullptr, nullptr);
        ASSERT_TRUE(Object::Connect(&source, "2ping()", &a, "1slotNone()"));
        ASSERT_TRUE(Object::Connect(&source, "2sig(uint,float)", &a, "1slotUint(uint)"));
        ASSERT_TRUE(Object::Connect(&source, "2sig(uint,float)", &b, "1slotNone()"));
        ASSERT_TRUE(Object::Connect(&other, "2ping()", &b, "1slotNone()"));
        calls.clear();
    };
    auto emitAll = [&] {
        source.ping();
        source.sig(1, 0);
        other.ping();
    };

    connectAll();
    EXPECT_TRUE(Object::Disconnect(&source, "2sig( uint, float )", nullptr, nullptr));
    emitAll();
    EXPECT_EQ(calls, expected({"a none", "b none"}));

    connectAll();
    EXPECT_TRUE(Object::Disconnect(&source, nullptr, &a, nullptr));
    emitAll();
    EXPECT_EQ(calls, expected({"b none", "b none"}));

    connectAll();
    EXPECT_TRUE(Object::Disconnect(nullptr, nullptr, &b, nullptr));
    emitAll();
    EXPECT_EQ(calls, expected({"a none", "a uint 1"}));

    connectAll();
    EXPECT_TRUE(Object::Disconnect(nullptr, "2ping()", &b, "1slotNone()"));
    emitAll();
    EXPECT_EQ(calls, expected({"a none", "a uint 1", "b none"}));

    connectAll();
    EXPECT_TRUE(Object::Disconnect(&source, nullptr, nullptr, "1slotNone()"));
    emitAll();
    EXPECT_EQ(calls, expected({"a uint 1", "b none"}));

    connectAll();
    EXPECT_FALSE(Object::Disconnect(&source, "2ping()", &b, nullptr));
    EXPECT_FALSE(Object::Disconnect(&source, "ping()", nullptr, nullptr));
    EXPECT_FALSE(Object::Disconnect(&source, "2nothing()", nullptr, nullptr));
    EXPECT_FALSE(Object::Disconnect(&source, nullptr, nullptr, "slotNone()"));
    EXPECT_FALSE(Object::Disconnect(nullptr, "2ping()", nullptr, "1slotNone()"));
    emitAll();
    EXPECT_EQ(calls, expected({"a none", "a uint 1", "b none", "b none"}));
}

TEST_F(ObjectTest, DisconnectDuringDeliverySkipsTheCutConnections)
{
    static Source source;
    Sink first("first"), second("second");
    first.hook = [](Sink*) { Object::Disconnect(&source, "2ping()", nullptr, nullptr); };
    ASSERT_TRUE(Object::Connect(&source, "2ping()", &first, "1slotNone()"));
    ASSERT_TRUE(Object::Connect(&source, "2ping()", &second, "1slotNone()"));
    source.ping();
    source.ping();
    EXPECT_EQ(calls, expected({"first none"}));
    EXPECT_TRUE(Object::Connect(&source, "2ping()", &second, "1slotNone()"));
    EXPECT_EQ(source.lookupReceivers("ping()")->size(), 1u);
    Object::Disconnect(&source, nullptr, nullptr, nullptr);
}

TEST_F(ObjectTest, DispatchByIndexRefusesWhatItCannotCall)
{
    Sink sink;
    unsigned int channel = 5;
    float level = 0.25f;
    std::vector<void*> const two{&channel, &level};
    std::vector<void*> const none;
    unsigned int const slotIndex = Sink::GetStaticMetaObject()->GetSlotIndex("slot(uint,float)", true).Get();
    EXPECT_EQ(sink.Object_Invoke(slotIndex, two), 1);
    EXPECT_EQ(sink.Object_Invoke(slotIndex, none), 0); // too few arguments
    EXPECT_EQ(sink.Object_Invoke(99, two), 0);
    EXPECT_EQ(sink.Object_Emit(99, two), 0);
    EXPECT_EQ(Object().Object_Invoke(0, two), 0);
    EXPECT_EQ(calls, expected({"sink slot 5 0.250000"}));
}
