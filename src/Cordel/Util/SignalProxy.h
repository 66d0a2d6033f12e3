#pragma once
// Signal proxies: one receiver telling many senders apart.
//
// A proxy is made with a tag (kept in the object's word, `GetTag`). When its slot is called it
// emits its signal with the tag first and the slot's argument after it:
//
//   auto* proxy = new Util::SignalProxyFloat(parameterNumber);
//   editor.AddAutoDelete(proxy); // the editor owns its proxies
//   Object::Connect(&knob, "2valueChanged(float)", proxy, "1proxy(float)");
//   Object::Connect(proxy, "2sigProxy(uint,float)", &editor, "1parameterMoved(uint,float)");
//
// The receiving slot may also take the tag alone, or nothing, as any connection allows.

#include <Cordel/Util/Signals.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>

#include <cstdint>

namespace Cordel::Util {

// Slot "proxy()", signal "sigProxy(uint)".
class CORDEL_API SignalProxy : public Object {
    CORDEL_OBJECT(SignalProxy, Object)
public:
    explicit SignalProxy(std::uint32_t tag);
    ~SignalProxy() override;

    void proxy();
    void sigProxy(unsigned int tag) { Emit<&SignalProxy::sigProxy>(tag); }

    CORDEL_SIGNALS(CORDEL_MEMBER(sigProxy, "sigProxy(uint)"))
    CORDEL_SLOTS(CORDEL_MEMBER(proxy, "proxy()"))
};

// Slot "proxy(String)", signal "sigProxy(uint,String)".
class CORDEL_API SignalProxyString : public Object {
    CORDEL_OBJECT(SignalProxyString, Object)
public:
    explicit SignalProxyString(std::uint32_t tag);
    ~SignalProxyString() override;

    void proxy(String const& value);
    void sigProxy(unsigned int tag, String const& value) { Emit<&SignalProxyString::sigProxy>(tag, value); }

    CORDEL_SIGNALS(CORDEL_MEMBER(sigProxy, "sigProxy(uint,String)"))
    CORDEL_SLOTS(CORDEL_MEMBER(proxy, "proxy(String)"))
};

// Slot "proxy(float)", signal "sigProxy(uint,float)".
class CORDEL_API SignalProxyFloat : public Object {
    CORDEL_OBJECT(SignalProxyFloat, Object)
public:
    explicit SignalProxyFloat(std::uint32_t tag);
    ~SignalProxyFloat() override;

    void proxy(float value);
    void sigProxy(unsigned int tag, float value) { Emit<&SignalProxyFloat::sigProxy>(tag, value); }

    CORDEL_SIGNALS(CORDEL_MEMBER(sigProxy, "sigProxy(uint,float)"))
    CORDEL_SLOTS(CORDEL_MEMBER(proxy, "proxy(float)"))
};

} // namespace Cordel::Util
