#pragma once
// Internal: what stands between a receiver and the posted calls into it.
//
// A gate is shared by the receiver and by every call that names it, and freed by the last of
// them. A call passes through the gate while it runs; closing the gate stops every later call and
// waits for the ones inside to come out, so that once `Close` has returned nothing runs in the
// receiver on behalf of a posted call. Passing costs two atomic operations, no lock and no
// allocation, which keeps it fit for the real-time side.

#include <atomic>
#include <cstdint>

namespace Cordel::Util::detail {

class InvokeGate {
public:
    // A new gate has one holder: the receiver that made it.
    InvokeGate() = default;
    InvokeGate(InvokeGate const&) = delete;
    InvokeGate& operator=(InvokeGate const&) = delete;

    void Retain() { holders.fetch_add(1, std::memory_order_relaxed); }
    void Release()
    {
        if (holders.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

    // Stops later calls and waits until no call is inside, except calls of the closing thread
    // itself (a member that destroys its own receiver), which it could never wait for.
    void Close();

    // One pass through the gate, for the length of a scope; `Entered` says whether the gate was
    // still open. Passes of one thread are chained so that `Close` can tell them apart.
    class Pass {
    public:
        explicit Pass(InvokeGate& gate);
        ~Pass();
        Pass(Pass const&) = delete;
        Pass& operator=(Pass const&) = delete;
        bool Entered() const { return entered; }

    private:
        friend class InvokeGate;
        InvokeGate& gate;
        bool entered;
        Pass* outer;
    };

private:
    static constexpr std::uint32_t closedBit = 0x80000000u;

    ~InvokeGate() = default;
    unsigned int passesOfThisThread() const;

    // Calls are built and deleted on one side and run on the other: the two counts sit on lines
    // of their own so that the sides do not take the line from each other.
    alignas(64) std::atomic<std::uint32_t> holders{1};
    alignas(64) std::atomic<std::uint32_t> state{0}; // closedBit | the number of calls inside
};

} // namespace Cordel::Util::detail
