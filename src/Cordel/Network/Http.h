#pragma once
// An HTTP and HTTPS client for an application's background work: checking for updates,
// downloading sample packs and presets, sending a crash report.
//
// One Http object owns one helper thread, which runs every transfer the object starts. Any thread
// may start a request and gets an HttpTransfer handle back at once; the response is delivered to
// the request's callbacks, which run on the helper thread, or collected for a blocking wait.
// Every transfer has limits: at most maxRedirects redirects (never from HTTPS to HTTP), a connect
// time-out, and a stall time-out that aborts when no byte arrives for that long (there is no
// total time-out: a large download on a slow line is not a failure). Certificates are always
// verified against the system's store, plus a CA file when the request names one. Proxies come
// from the environment (http_proxy, https_proxy, no_proxy and their upper-case forms).

#include <Cordel/Network/HttpError.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Cordel::Network {

namespace detail {
class HttpEngine;
struct Transfer;
} // namespace detail

enum class HttpMethod { Get, Head, Post, Put };

struct HttpHeader {
    String name;
    String value;
};

struct CORDEL_API HttpResponse {
    // The status of the last response (after redirects); 0 when none arrived.
    long status = 0;
    // The headers of the last response, in the order received.
    std::vector<HttpHeader> headers;
    // The body, unless the request sent it to a file or to its data callback. Those take a 2xx
    // body only: the body of any other response (an error page) is kept here, up to 1 MiB.
    std::string body;
    // Where the last response came from, after redirects.
    String url;
    // Body bytes received by this transfer (for a resumed download, not counting the part that
    // was already there).
    unsigned long long received = 0;

    // The value of the first header with this name, compared without case; empty when absent.
    String GetHeader(String const& name) const;
};

struct HttpProgress {
    // Body bytes so far and in all; for a resumed download both count the part already there.
    // total is 0 while unknown.
    unsigned long long received = 0;
    unsigned long long total = 0;
    unsigned long long sent = 0;
    unsigned long long sendTotal = 0;
};

struct HttpResult {
    enum Outcome { Completed, Failed, Cancelled };
    Outcome outcome = Failed;
    // Filled as far as the transfer got.
    HttpResponse response;
    // Why it failed or was cancelled; empty when completed.
    String reason;
    // The platform error code behind a failure (errno of a refused connection, of a failed write);
    // 0 when there is none.
    int errorCode = 0;
};

struct HttpRequest {
    HttpMethod method = HttpMethod::Get;
    String url;
    // Sent as given, after the library's own ("User-Agent" can be replaced that way).
    std::vector<HttpHeader> headers;
    // The body of a POST or PUT.
    std::string body;
    // When not empty, a POST sends these as application/x-www-form-urlencoded instead of body.
    std::vector<std::pair<String, String>> form;

    // When not empty, a 2xx body is written to "<downloadTo>.part" and renamed to downloadTo
    // when complete, so the target is never half-written.
    String downloadTo;
    // With downloadTo: continue a "<downloadTo>.part" left by an earlier attempt with a Range
    // request (starting afresh when the server sends the whole body), and keep the part file when
    // this attempt fails or is cancelled. Without it a failed download leaves nothing behind.
    bool resume = false;

    unsigned int maxRedirects = 10;
    unsigned int connectTimeoutMs = 15000; // resolving and connecting, TLS included
    unsigned int stallTimeoutMs = 30000;   // once connected: no byte in either direction for this long
    // A CA certificate file (PEM) trusted in addition to the system's store.
    String caFile;

    // Callbacks, all on the helper thread. They must not wait for a transfer of the same Http
    // object (the helper thread would wait for itself); cancelling one is fine. The Strings they
    // are given belong to the helper thread: String shares text under a count that is not atomic,
    // so a callback that hands text to another thread hands over a copy (String(s.View())).
    std::function<void(HttpProgress const&)> onProgress;
    // Receives a 2xx body as it arrives instead of collecting it (not used with downloadTo).
    std::function<void(char const* data, std::size_t size)> onData;
    // Called once when the transfer ends, however it ends, before waiters are woken.
    std::function<void(HttpResult const&)> onComplete;
};

// The handle of a started request. Copies refer to the same transfer; a default-constructed
// handle refers to none. The handle may outlive the Http object that started it. Any thread may
// use it; what it returns is the caller's own (the request's and the result's text is copied
// when the request starts and whenever a result is handed out).
class CORDEL_API HttpTransfer {
public:
    HttpTransfer();
    ~HttpTransfer();
    HttpTransfer(HttpTransfer const&);
    HttpTransfer& operator=(HttpTransfer const&);

    // From any thread: ends the transfer; its completion reports Cancelled. Does nothing once
    // the transfer has ended.
    void Cancel();
    // True when the transfer has ended (its completion callback has returned) within the time;
    // an unset time-out waits without limit.
    bool Wait(checked_value<unsigned int> const& timeoutMs = {});
    bool IsFinished() const;
    // The result once finished (Wait first); a transfer still running reports Failed with the
    // reason "not finished".
    HttpResult GetResult() const;
    // The response of a completed transfer; throws Network::Exception::HttpError for one that
    // failed, was cancelled, or has not finished.
    HttpResponse GetResponse() const;

private:
    friend class Http;
    explicit HttpTransfer(std::shared_ptr<detail::Transfer> transfer);
    std::shared_ptr<detail::Transfer> transfer;
};

class CORDEL_API Http : noncopyable {
public:
    // name: names the helper thread and the locks.
    explicit Http(String const& name = "Http");
    // Cancels every transfer (their completions report Cancelled) and joins the helper thread;
    // no callback runs after it returns.
    ~Http();

    // Starts the request on the helper thread and returns at once; failures are reported through
    // the handle, never thrown here.
    HttpTransfer Start(HttpRequest request);
    // Starts the request and waits for it. Returns the response of a completed transfer (any
    // status); throws Network::Exception::HttpError when it failed, or, cancelling it, when the
    // time-out ran out first.
    HttpResponse Fetch(HttpRequest request, checked_value<unsigned int> const& timeoutMs = {});

private:
    detail::HttpEngine* engine;
};

} // namespace Cordel::Network
