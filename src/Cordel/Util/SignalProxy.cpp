#include <Cordel/Util/SignalProxy.h>

namespace Cordel::Util {

// The destructors are defined here so that each class's virtual table, and with it the one
// meta-object its virtual members hand out, lives in the library.

SignalProxy::SignalProxy(std::uint32_t tag) { SetTag(tag); }
SignalProxy::~SignalProxy() = default;
void SignalProxy::proxy() { sigProxy(GetTag()); }

SignalProxyString::SignalProxyString(std::uint32_t tag) { SetTag(tag); }
SignalProxyString::~SignalProxyString() = default;
void SignalProxyString::proxy(String const& value) { sigProxy(GetTag(), value); }

SignalProxyFloat::SignalProxyFloat(std::uint32_t tag) { SetTag(tag); }
SignalProxyFloat::~SignalProxyFloat() = default;
void SignalProxyFloat::proxy(float value) { sigProxy(GetTag(), value); }

} // namespace Cordel::Util
