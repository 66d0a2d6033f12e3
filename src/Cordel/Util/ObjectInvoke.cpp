#include <Cordel/Util/ObjectInvoke.h>
#include <Cordel/Util/detail/InvokeGate.h>
#include <Cordel/Util/detail/Signature.h>
#include <Cordel/Util/detail/Throw.h>

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>

namespace Cordel::Util {

namespace detail {

// What a waiting caller and the thread that runs its call share. The state moves from Pending to
// Running to Done, or from Pending to Withdrawn when the caller gives up first.
struct InvokeCompletion {
    enum : int { Pending, Running, Done, Withdrawn };
    std::atomic<int> state{Pending};
    bool taken = false; // whether the receiver took the call; written before Done
    Atomic::CriticalSection section{"invocation"};
    Atomic::WaitCondition finished{"invocation finished"};
};

} // namespace detail

namespace {

[[noreturn]] void refuse(String const& message, Exception::Site const& site)
{
    Exception::Throw(Exception::Base(message), site);
}

} // namespace

ObjectInvokeImpl::ObjectInvokeImpl(Object* target, char const* member, std::initializer_list<char const*> words)
    : receiver(target), gate(nullptr), arguments(nullptr), index(0), type(0)
{
    if (!receiver || !member)
        refuse("ObjectInvokeImpl: no receiver or no member", CORDEL_HERE);
    // A signature without white space is already in normal form: spare the copy.
    std::string normalized;
    std::string_view text(member);
    if (text.find_first_of(" \t") != std::string_view::npos)
        text = normalized = detail::normalizeSignature(member);
    MetaObject const* meta = receiver->GetMetaObject();
    checked_value<unsigned int> found;
    if (!text.empty() && text[0] == '1')
        found = meta->GetSlotIndex(text.data() + 1, true);
    else if (!text.empty() && text[0] == '2')
        found = meta->GetSignalIndex(text.data() + 1, true);
    else
        refuse(String("ObjectInvokeImpl: \"%1\" lacks the '1' or '2' prefix").Arg(member), CORDEL_HERE);
    if (!found.IsSet())
        refuse(String("ObjectInvokeImpl: %1 has no %2 \"%3\"")
                   .Arg(meta->GetClassName())
                   .Arg(text[0] == '1' ? "slot" : "signal")
                   .Arg(text.data() + 1),
               CORDEL_HERE);
    type = text[0];
    index = found.Get();
    char const* const signature =
        type == '1' ? meta->GetSlotMetaData(index, true) : meta->GetSignalMetaData(index, true);
    // The arguments play the part of a signal's: the member may take them, a leading part, or none.
    // Only the lists after '(' are compared, so the bare list stands for a signal's signature.
    std::string given = "(";
    for (char const* word : words)
        given.append(given.size() > 1 ? "," : "").append(word);
    given += ')';
    if (!Object::CheckConnectArgs(given.c_str(), signature))
        refuse(String("ObjectInvokeImpl: arguments %1 do not fit \"%2\"").Arg(given.c_str()).Arg(signature), CORDEL_HERE);
    gate = receiver->shareInvokeGate();
}

ObjectInvokeImpl::~ObjectInvokeImpl()
{
    if (static_cast<void*>(arguments) == inlineArguments)
        arguments->~InvokeArguments();
    else
        delete arguments;
    if (gate)
        gate->Release();
}

bool ObjectInvokeImpl::ExecuteHigh()
{
    run();
    return false;
}

bool ObjectInvokeImpl::ExecuteLow()
{
    run();
    return false;
}

bool ObjectInvokeImpl::Invoke() { return run(); }

bool ObjectInvokeImpl::run()
{
    detail::InvokeCompletion* const waiter = completion.get();
    int pending = detail::InvokeCompletion::Pending;
    if (waiter && !waiter->state.compare_exchange_strong(pending, detail::InvokeCompletion::Running))
        return false; // withdrawn by a caller that stopped waiting

    bool taken = false;
    {
        detail::InvokeGate::Pass const pass(*gate);
        if (pass.Entered()) {
            std::vector<void*> const& args = arguments->Pointers();
            taken = (type == '1' ? receiver->Object_Invoke(index, args) : receiver->Object_Emit(index, args)) != 0;
            arguments->LetGoOfSharedText();
        }
    }

    if (waiter) {
        waiter->section.Lock();
        waiter->taken = taken;
        waiter->state.store(detail::InvokeCompletion::Done);
        waiter->finished.WakeAll();
        waiter->section.Unlock();
    }
    return taken;
}

checked_value<bool> ObjectInvokeImpl::PostHighAndWait(Atomic::CommandPipe& pipe, ObjectInvokeImpl* call,
                                                      checked_value<unsigned int> const& timeoutMs)
{
    if (pipe.IsHighThread() || !pipe.IsHighSideRunning()) {
        delete call;
        refuse("ObjectInvokeImpl: a blocking call on the thread that would have to run it", CORDEL_HERE);
    }
    auto const completion = std::make_shared<detail::InvokeCompletion>();
    call->completion = completion;
    pipe.PostHigh(call);

    using Clock = std::chrono::steady_clock;
    auto const deadline = Clock::now() + std::chrono::milliseconds(timeoutMs.GetOr(0));
    completion->section.Lock();
    while (completion->state.load() != detail::InvokeCompletion::Done) {
        checked_value<unsigned int> wait;
        if (timeoutMs.IsSet() && completion->state.load() == detail::InvokeCompletion::Pending) {
            auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            int pending = detail::InvokeCompletion::Pending;
            if (left <= 0 &&
                completion->state.compare_exchange_strong(pending, detail::InvokeCompletion::Withdrawn)) {
                completion->section.Unlock();
                return {};
            }
            wait = static_cast<unsigned int>(left > 0 ? left : 1);
        }
        completion->finished.Wait(&completion->section, wait);
    }
    bool const taken = completion->taken;
    completion->section.Unlock();
    return taken;
}

void ObjectInvokeImpl::Revoke(Object* receiver)
{
    if (!receiver)
        return;
    detail::InvokeGate* const gate = receiver->shareInvokeGate();
    gate->Close();
    gate->Release();
}

} // namespace Cordel::Util
