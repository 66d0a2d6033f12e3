#include <Cordel/Util/SignalProxy.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Cordel;
using namespace Cordel::Util;

namespace {

std::vector<std::string> calls;

// Three controls of different kinds, as the senders a proxy tells apart.
class Knob : public Object {
    CORDEL_OBJECT(Knob, Object)
public:
    void valueChanged(float v) { Emit<&Knob::valueChanged>(v); }
    CORDEL_SIGNALS(CORDEL_MEMBER(valueChanged, "valueChanged(float)"))
};

class Button : public Object {
    CORDEL_OBJECT(Button, Object)
public:
    void clicked() { Emit<&Button::clicked>(); }
    CORDEL_SIGNALS(CORDEL_MEMBER(clicked, "clicked()"))
};

class Field : public Object {
    CORDEL_OBJECT(Field, Object)
public:
    void textChanged(String const& s) { Emit<&Field::textChanged>(s); }
    CORDEL_SIGNALS(CORDEL_MEMBER(textChanged, "textChanged(String)"))
};

class Editor : public Object {
    CORDEL_OBJECT(Editor, Object)
public:
    ~Editor() override { calls.push_back("editor destroyed"); }
    void moved(unsigned int tag, float v) { calls.push_back("moved " + std::to_string(tag) + " " + std::to_string(v)); }
    void renamed(unsigned int tag, String const& s) { calls.push_back("renamed " + std::to_string(tag) + " " + s.c_str()); }
    void which(unsigned int tag) { calls.push_back("which " + std::to_string(tag)); }
    void any() { calls.push_back("any"); }
    void level(float v) { calls.push_back("level " + std::to_string(v)); }
    CORDEL_SLOTS(CORDEL_MEMBER(moved, "moved(uint,float)"), CORDEL_MEMBER(renamed, "renamed(uint,String)"),
                 CORDEL_MEMBER(which, "which(uint)"), CORDEL_MEMBER(any, "any()"),
                 CORDEL_MEMBER(level, "level(float)"))
};

// Counts its own destruction, to show who deletes a proxy.
class CountedProxy : public SignalProxyFloat {
    CORDEL_OBJECT(CountedProxy, SignalProxyFloat)
public:
    using SignalProxyFloat::SignalProxyFloat;
    ~CountedProxy() override { calls.push_back("proxy " + std::to_string(GetTag()) + " destroyed"); }
};

class SignalProxyTest : public ::testing::Test {
protected:
    void SetUp() override { calls.clear(); }
};

std::vector<std::string> expected(std::initializer_list<char const*> lines) { return {lines.begin(), lines.end()}; }

} // namespace

TEST_F(SignalProxyTest, TagsAndValuesArriveInOrderFromManySenders)
{
    Knob knobs[3];
    Editor editor;
    for (unsigned int i = 0; i < 3; ++i) {
        auto* proxy = new SignalProxyFloat(10 + i);
        editor.AddAutoDelete(proxy);
        ASSERT_TRUE(Object::Connect(&knobs[i], "2valueChanged(float)", proxy, "1proxy(float)"));
        ASSERT_TRUE(Object::Connect(proxy, "2sigProxy(uint,float)", &editor, "1moved(uint,float)"));
    }
    knobs[2].valueChanged(0.25f);
    knobs[0].valueChanged(0.5f);
    knobs[2].valueChanged(-1.0f);
    knobs[1].valueChanged(0.0f);
    EXPECT_EQ(calls, expected({"moved 12 0.250000", "moved 10 0.500000", "moved 12 -1.000000", "moved 11 0.000000"}));
}

TEST_F(SignalProxyTest, EachKindCarriesTheTagBeforeItsValue)
{
    Button button;
    Field field;
    Editor editor;
    SignalProxy plain(0xFFFFFFFFu);
    SignalProxyString text(7);
    ASSERT_TRUE(Object::Connect(&button, "2clicked()", &plain, "1proxy()"));
    ASSERT_TRUE(Object::Connect(&plain, "2sigProxy(uint)", &editor, "1which(uint)"));
    ASSERT_TRUE(Object::Connect(&field, "2textChanged(String)", &text, "1proxy(String)"));
    ASSERT_TRUE(Object::Connect(&text, "2sigProxy(uint,String)", &editor, "1renamed(uint,String)"));

    button.clicked();
    field.textChanged("Cutoff");
    text.proxy("direct"); // the slot called by hand behaves the same
    EXPECT_EQ(calls, expected({"which 4294967295", "renamed 7 Cutoff", "renamed 7 direct"}));
    EXPECT_EQ(plain.GetTag(), 0xFFFFFFFFu);
    EXPECT_STREQ(text.GetClassName(), "SignalProxyString");
}

TEST_F(SignalProxyTest, ReceiversMayTakeTheTagAloneOrNothingButNeverTheValueAlone)
{
    Knob knob;
    Editor editor;
    SignalProxyFloat proxy(3);
    ASSERT_TRUE(Object::Connect(&knob, "2valueChanged(float)", &proxy, "1proxy(float)"));
    EXPECT_TRUE(Object::Connect(&proxy, "2sigProxy(uint,float)", &editor, "1which(uint)"));
    EXPECT_TRUE(Object::Connect(&proxy, "2sigProxy(uint,float)", &editor, "1any()"));
    EXPECT_FALSE(Object::Connect(&proxy, "2sigProxy(uint,float)", &editor, "1level(float)"));
    EXPECT_FALSE(Object::Connect(&proxy, "2sigProxy(uint,String)", &editor, "1renamed(uint,String)"));

    // A sender without arguments cannot drive a proxy whose slot wants a value.
    Button button;
    EXPECT_FALSE(Object::Connect(&button, "2clicked()", &proxy, "1proxy(float)"));
    SignalProxy plain(1);
    EXPECT_TRUE(Object::Connect(&knob, "2valueChanged(float)", &plain, "1proxy()"));
    EXPECT_TRUE(Object::Connect(&plain, "2sigProxy(uint)", &editor, "1which(uint)"));

    knob.valueChanged(0.75f);
    EXPECT_EQ(calls, expected({"which 3", "any", "which 1"}));
}

TEST_F(SignalProxyTest, AutoDeletedProxiesGoWithTheirReceiverAndCutTheirSenders)
{
    Knob knob;
    {
        auto* editor = new Editor;
        auto* proxy = new CountedProxy(5);
        editor->AddAutoDelete(proxy);
        editor->AddAutoDelete(proxy); // owned once
        ASSERT_TRUE(Object::Connect(&knob, "2valueChanged(float)", proxy, "1proxy(float)"));
        ASSERT_TRUE(Object::Connect(proxy, "2sigProxy(uint,float)", editor, "1moved(uint,float)"));
        knob.valueChanged(1.0f);
        delete editor;
    }
    knob.valueChanged(2.0f); // the proxy is gone, and the knob knows it
    EXPECT_EQ(calls, expected({"moved 5 1.000000", "editor destroyed", "proxy 5 destroyed"}));
}
