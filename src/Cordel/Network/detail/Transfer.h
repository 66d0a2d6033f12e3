#pragma once
// Internal: what a started request shares between the helper thread that runs it and the
// HttpTransfer handles that refer to it.

#include <Cordel/Network/Http.h>
#include <Cordel/Util/Atomic.h>

#include <atomic>

namespace Cordel::Network::detail {

class HttpEngine;

// String shares its text under a count that is not atomic, so no String may be shared by two
// threads. Whatever crosses between a caller's thread and the helper thread is copied into text
// of its own on the way.
HttpRequest Detached(HttpRequest request);
HttpResult Detached(HttpResult result);

struct Transfer : noncopyable {
    Transfer(HttpRequest request, HttpEngine* engine);

    HttpRequest const request;

    // Set from any thread, read by the helper thread and by its callbacks.
    std::atomic<bool> cancelRequested{false};

    // The fields below are under lock; result holds text of its own, copied in and out. engine is null once the transfer has finished: the engine
    // finishes every transfer before it goes away, so a Cancel that finds the transfer unfinished
    // (under the lock) may still wake the engine.
    Atomic::CriticalSection lock;
    Atomic::WaitCondition ended;
    HttpEngine* engine;
    bool finished = false;
    HttpResult result;
};

} // namespace Cordel::Network::detail
