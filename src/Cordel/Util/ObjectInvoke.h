#pragma once
// A call of a slot by its signature, with copies of its arguments, run later on the thread that
// executes it: a command of a command pipe, so that a worker can call into an object of the
// real-time side (PostHigh) and the real-time side into an object of the worker (PostLow).
//
//   pipe.PostHigh(new Util::ObjectInvokeImpl(&synth, "1setParameter(uint,float)", 3u, 0.25f));
//
// - Everything is checked where the call is built: the member must exist and take the
//   arguments, a leading part of them, or none, as `Object::Connect` requires of a slot; a
//   mismatch throws there, never on the thread that runs the call. A '2' member is a signal of
//   the receiver, emitted with the arguments.
// - The type words an argument matches are: bool "bool", int "int", unsigned int "uint", float
//   "float", double "double", String (or a C string) "String", std::vector<unsigned char>
//   "ByteVector". Types must match exactly: 0.5 is a double and 3 an int.
// - Arguments are copied (a String into text of its own), so nothing points into the caller.
// - Running a call whose arguments are numbers allocates nothing and takes no lock; build it on
//   the low side.
//
// Lifetime rule: a call into a receiver that has been destroyed does nothing, and a receiver's
// destructor never runs while a posted call is inside it, provided that the receiver is either
// destroyed on the thread that runs its calls, or revoked with `Revoke` before its own destructor
// body does anything (as the first statement of the most derived destructor, or by its owner
// before deleting it). `Object`'s destructor revokes too, but it runs after the derived parts are
// gone, which is too late for a call running on another thread.

#include <Cordel/Util/CommandPipe.h>
#include <Cordel/Util/Exception.h>
#include <Cordel/Util/Object.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace Cordel::Util {

namespace detail {

class InvokeGate;
struct InvokeCompletion;

// The argument types a call can carry, as they are stored (a C string as a String), and their
// words in signatures.
template <typename T>
using InvokeStored = std::conditional_t<std::is_same_v<T, char const*> || std::is_same_v<T, char*>, String, T>;

template <typename T>
constexpr char const* invokeWord()
{
    using S = InvokeStored<T>;
    if constexpr (std::is_same_v<S, bool>)
        return "bool";
    else if constexpr (std::is_same_v<S, int>)
        return "int";
    else if constexpr (std::is_same_v<S, unsigned int>)
        return "uint";
    else if constexpr (std::is_same_v<S, float>)
        return "float";
    else if constexpr (std::is_same_v<S, double>)
        return "double";
    else if constexpr (std::is_same_v<S, String>)
        return "String";
    else if constexpr (std::is_same_v<S, std::vector<unsigned char>>)
        return "ByteVector";
    else
        static_assert(sizeof(T) == 0, "a posted call carries bool, int, unsigned int, float, double, String or "
                                      "std::vector<unsigned char>");
}

// The copied arguments of one call, with a pointer to each as a member expects them.
class InvokeArguments {
public:
    virtual ~InvokeArguments() = default;
    std::vector<void*> const& Pointers() const { return pointers; }
    // Called on the thread that ran the call: gives up this call's share of any text that the
    // member kept a copy of, so that deleting the call on another thread touches no shared count.
    virtual void LetGoOfSharedText() = 0;

protected:
    std::vector<void*> pointers;
};

inline String unsharedCopy(String const& s) { return String(s.View()); }
inline String unsharedCopy(char const* s) { return String(std::string_view(s ? s : "")); }
template <typename T>
T const& unsharedCopy(T const& v)
{
    return v;
}

template <typename... A>
class InvokeValues final : public InvokeArguments {
public:
    explicit InvokeValues(A const&... a) : values(unsharedCopy(a)...)
    {
        std::apply([this](auto&... v) { pointers = {static_cast<void*>(&v)...}; }, values);
    }

    void LetGoOfSharedText() override
    {
        std::apply([](auto&... v) { (letGo(v), ...); }, values);
    }

private:
    // Moving out leaves an empty handle behind, which, unlike assigning an empty text, allocates
    // nothing.
    static void letGo(String& s)
    {
        if (s.GetHandle().use_count() > 1)
            String const gone(std::move(s));
    }
    template <typename T>
    static void letGo(T&)
    {
    }

    std::tuple<InvokeStored<A>...> values;
};

} // namespace detail

class CORDEL_API ObjectInvokeImpl : public Atomic::Command {
public:
    // `member` carries the '1' (slot) or '2' (signal) prefix of `Object::Connect`. Throws
    // Exception::Base when the receiver or member is null, the prefix is neither, the receiver's
    // class has no such member, or the arguments do not fit it.
    template <typename... A>
    ObjectInvokeImpl(Object* receiver, char const* member, A const&... args)
        : ObjectInvokeImpl(receiver, member, {detail::invokeWord<std::decay_t<A>>()...})
    {
        using Values = detail::InvokeValues<std::decay_t<A>...>;
        if constexpr (sizeof(Values) <= sizeof(inlineArguments) && alignof(Values) <= alignof(std::uint64_t))
            arguments = new (inlineArguments) Values(args...);
        else
            arguments = new Values(args...);
    }
    ~ObjectInvokeImpl() override;

    // Each side runs the call when the command reaches it, and the command is then finished.
    bool ExecuteHigh() override;
    bool ExecuteLow() override;

    // Runs the call here and now. True when the receiver was still there and took it.
    bool Invoke();

    // For the low side: posts `call` to the high side of `pipe` and waits until it has run there.
    // The result says whether the receiver took the call; it is unset when the time-out passed
    // first, and the call then never runs (one that has already started is waited for). An unset
    // time-out waits without limit, so use one where the high side may stall. `call` is owned
    // from here on: the pipe deletes it, or this function does when it refuses. It refuses, with
    // Exception::Base and without posting, to wait on the thread that would have to run the call:
    // the pipe's high thread, or, while the high side is not running (stopped, not started, or
    // silent past the watchdog), the low side, whose take-over runs the high queue then.
    static checked_value<bool> PostHighAndWait(Atomic::CommandPipe& pipe, ObjectInvokeImpl* call,
                                               checked_value<unsigned int> const& timeoutMs);

    // Stops every posted call into `receiver` that has not started and waits for the ones
    // running on other threads to return; calls built later do nothing either. See the lifetime
    // rule above. Must not be called while holding anything a running call waits for.
    static void Revoke(Object* receiver);

private:
    // Finds the member and checks the arguments' type words against it.
    ObjectInvokeImpl(Object* receiver, char const* member, std::initializer_list<char const*> words);
    bool run();

    // What the running side reads comes first, so that it spans as few cache lines as it can.
    Object* receiver;
    detail::InvokeGate* gate; // shared with the receiver
    detail::InvokeArguments* arguments; // in `inlineArguments` when they fit, else its own block
    std::shared_ptr<detail::InvokeCompletion> completion; // set while a caller waits
    unsigned int index; // the member's index in the receiver's class chain
    char type;          // '1' a slot, '2' a signal
    // Numbers and a text fit here, sparing the call an allocation and its runner a cache line.
    alignas(std::uint64_t) unsigned char inlineArguments[48];
};

} // namespace Cordel::Util
