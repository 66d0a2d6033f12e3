#pragma once
// Internal: the helper thread of an Http object. It owns a libcurl multi handle and runs every
// transfer of its object; other threads only queue requests and wake it.

#include <Cordel/Util/CriticalSection.h>
#include <Cordel/Util/Thread.h>

#include <memory>
#include <vector>

namespace Cordel::Network::detail {

struct Transfer;
struct ActiveTransfer;

class HttpEngine : public Util::Thread {
public:
    explicit HttpEngine(String const& name);
    // Finishes every transfer as cancelled and joins the thread.
    ~HttpEngine() override;

    // From any thread.
    void Submit(std::shared_ptr<Transfer> const& transfer);
    // From any thread: makes the helper thread look at its queue and its transfers' cancel flags.
    void Wake();

protected:
    void Run() override;

private:
    void begin(std::shared_ptr<Transfer> const& transfer);
    void checkTransfers();
    void collectCompleted();
    void finish(ActiveTransfer& active, int outcome, String const& reason, int errorCode);
    int pollTimeoutMs() const;

    Util::CriticalSection queueLock;
    std::vector<std::shared_ptr<Transfer>> queued; // under queueLock
    bool stopping = false;                          // under queueLock

    void* multi; // the CURLM handle, kept out of this header
    std::vector<std::unique_ptr<ActiveTransfer>> active; // the helper thread's own
};

} // namespace Cordel::Network::detail
