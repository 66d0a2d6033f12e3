#include <Cordel/Util/detail/InvokeGate.h>

namespace Cordel::Util::detail {

namespace {

// The innermost pass of the calling thread. Initial-exec: reaching it never allocates.
thread_local InvokeGate::Pass* innermost __attribute__((tls_model("initial-exec"))) = nullptr;

} // namespace

InvokeGate::Pass::Pass(InvokeGate& g) : gate(g), entered(false), outer(innermost)
{
    std::uint32_t s = gate.state.load(std::memory_order_relaxed);
    while (!(s & closedBit)) {
        if (gate.state.compare_exchange_weak(s, s + 1, std::memory_order_acquire, std::memory_order_relaxed)) {
            entered = true;
            innermost = this;
            return;
        }
    }
}

InvokeGate::Pass::~Pass()
{
    if (!entered)
        return;
    innermost = outer;
    std::uint32_t const before = gate.state.fetch_sub(1, std::memory_order_release);
    // Only a closing thread ever waits, so an open gate is left without a wake-up.
    if (before & closedBit)
        gate.state.notify_all();
}

unsigned int InvokeGate::passesOfThisThread() const
{
    unsigned int n = 0;
    for (Pass const* p = innermost; p; p = p->outer)
        n += p->entered && &p->gate == this;
    return n;
}

void InvokeGate::Close()
{
    std::uint32_t s = state.fetch_or(closedBit, std::memory_order_acquire) | closedBit;
    unsigned int const own = passesOfThisThread();
    while ((s & ~closedBit) > own) {
        state.wait(s, std::memory_order_acquire);
        s = state.load(std::memory_order_acquire);
    }
}

} // namespace Cordel::Util::detail
