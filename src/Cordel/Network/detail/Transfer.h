#pragma once
// Internal: what a started request shares between the helper thread that runs it and the
// HttpTransfer handles that refer to it.

#include <Cordel/Network/Http.h>
#include <Cordel/Util/Atomic.h>

#include <atomic>

namespace Cordel::Network::detail {

class HttpEngine;

struct Transfer : noncopyable {
    Transfer(HttpRequest request, HttpEngine* engine);

    HttpRequest const request;

    // Set from any thread, read by the helper thread and by its callbacks.
    std::atomic<bool> cancelRequested{false};

    // The fields below are under lock. engine is null once the transfer has finished: the engine
    // finishes every transfer before it goes away, so a Cancel that finds the transfer unfinished
    // (under the lock) may still wake the engine.
    Atomic::CriticalSection lock;
    Atomic::WaitCondition ended;
    HttpEngine* engine;
    bool finished = false;
    HttpResult result;
};

} // namespace Cordel::Network::detail
