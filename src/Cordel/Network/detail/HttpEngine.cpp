#include <Cordel/Network/detail/HttpEngine.h>
#include <Cordel/Network/detail/Transfer.h>

#include <Cordel/Network/URLEncode.h>
#include <Cordel/common/Version.h>

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace Cordel::Network::detail {

namespace {

using Clock = std::chrono::steady_clock;

// The body of an error page that answers a download or a request with a data callback is kept in
// memory for the caller, up to this.
constexpr std::size_t errorBodyLimit = 1 << 20;

void initialiseCurlOnce()
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

bool startsWithNoCase(std::string_view text, std::string_view prefix)
{
    return text.size() >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), text.begin(),
                      [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; });
}

std::string_view trim(std::string_view s)
{
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r' || s.back() == '\n'))
        s.remove_suffix(1);
    return s;
}

String errnoText(int error)
{
    return String(std::strerror(error));
}

} // namespace

// A transfer while the helper thread runs it: the curl handle and everything its callbacks touch.
struct ActiveTransfer : noncopyable {
    explicit ActiveTransfer(std::shared_ptr<Transfer> t) : transfer(std::move(t)), request(transfer->request) {}
    ~ActiveTransfer()
    {
        curl_easy_cleanup(easy);
        curl_slist_free_all(headers);
        if (fd >= 0)
            ::close(fd);
    }

    bool cancelled() const { return transfer->cancelRequested.load(std::memory_order_relaxed); }
    void touch() { lastActivity = Clock::now(); }
    // Stops the transfer from inside a callback with a reason of our own.
    void fail(String const& why, int error = 0)
    {
        failure = why;
        failureError = error;
    }

    std::shared_ptr<Transfer> transfer;
    HttpRequest const& request;
    CURL* easy = nullptr;
    bool added = false;
    curl_slist* headers = nullptr;
    char errorText[CURL_ERROR_SIZE] = {};
    std::string formBody;
    std::size_t uploaded = 0;
    HttpResponse response;

    // A download: the part file and how much of it was there before.
    int fd = -1;
    String partPath;
    unsigned long long resumedFrom = 0;
    // Where the current response's body goes: a 2xx body to the part file or the data callback
    // when the request has one, anything else (an error page) into response.body.
    bool bodyToFile = false;
    bool bodyToCallback = false;

    bool sawHttps = false;
    bool connected = false; // the stall clock runs from the first connection on
    Clock::time_point lastActivity;
    String failure;
    int failureError = 0;
};

namespace {

using Active = ActiveTransfer;

// The headers of each response replace those of the one before (a redirect, a "100 Continue").
// At the blank line that ends them the status is known, and with it where the body goes.
void headersComplete(Active& a)
{
    long status = 0;
    curl_easy_getinfo(a.easy, CURLINFO_RESPONSE_CODE, &status);
    bool const success = status >= 200 && status < 300;
    a.bodyToFile = a.fd >= 0 && success;
    a.bodyToCallback = a.fd < 0 && a.request.onData && success;
    if (!a.bodyToFile || a.resumedFrom == 0)
        return;
    if (status == 206) {
        String const range = a.response.GetHeader("Content-Range");
        if (!range.BeginsWith(String("bytes %1-").Arg(a.resumedFrom)))
            a.fail(String("the server resumed at another offset than %1 (Content-Range: %2)")
                       .Arg(a.resumedFrom)
                       .Arg(range));
        return;
    }
    // The server sent the whole body rather than the rest: start the part file again.
    if (::ftruncate(a.fd, 0) != 0 || ::lseek(a.fd, 0, SEEK_SET) != 0)
        a.fail(String("cannot truncate %1: %2").Arg(a.partPath).Arg(errnoText(errno)), errno);
    a.resumedFrom = 0;
}

std::size_t onHeader(char* data, std::size_t size, std::size_t count, void* user)
{
    Active& a = *static_cast<Active*>(user);
    std::size_t const length = size * count;
    a.touch();
    if (a.cancelled())
        return 0;
    std::string_view const line(data, length);
    if (line.starts_with("HTTP/"))
        a.response.headers.clear();
    else if (trim(line).empty())
        headersComplete(a);
    else if (auto const colon = line.find(':'); colon != std::string_view::npos)
        a.response.headers.push_back({String(trim(line.substr(0, colon))), String(trim(line.substr(colon + 1)))});
    return a.failure.IsEmpty() ? length : 0;
}

bool writeAll(int fd, char const* data, std::size_t length)
{
    while (length) {
        ssize_t const n = ::write(fd, data, length);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data += n;
        length -= static_cast<std::size_t>(n);
    }
    return true;
}

std::size_t onBody(char* data, std::size_t size, std::size_t count, void* user)
{
    Active& a = *static_cast<Active*>(user);
    std::size_t const length = size * count;
    a.touch();
    if (a.cancelled())
        return 0;
    a.response.received += length;
    if (a.bodyToFile) {
        if (!writeAll(a.fd, data, length)) {
            a.fail(String("cannot write %1: %2").Arg(a.partPath).Arg(errnoText(errno)), errno);
            return 0;
        }
    } else if (a.bodyToCallback) {
        try {
            a.request.onData(data, length);
        } catch (std::exception const& e) {
            a.fail(String("the data callback threw: %1").Arg(e.what()));
            return 0;
        }
    } else if (a.fd >= 0 || a.request.onData)
        a.response.body.append(data, std::min(length, errorBodyLimit - std::min(errorBodyLimit, a.response.body.size())));
    else
        a.response.body.append(data, length);
    return length;
}

std::size_t onUpload(char* buffer, std::size_t size, std::size_t count, void* user)
{
    Active& a = *static_cast<Active*>(user);
    a.touch();
    if (a.cancelled())
        return CURL_READFUNC_ABORT;
    std::string const& body = a.request.body;
    std::size_t const n = std::min(size * count, body.size() - a.uploaded);
    std::memcpy(buffer, body.data() + a.uploaded, n);
    a.uploaded += n;
    return n;
}

int onProgress(void* user, curl_off_t downTotal, curl_off_t downNow, curl_off_t upTotal, curl_off_t upNow)
{
    Active& a = *static_cast<Active*>(user);
    if (a.cancelled())
        return 1;
    if (a.request.onProgress) {
        HttpProgress p;
        p.received = a.resumedFrom + static_cast<unsigned long long>(downNow);
        p.total = downTotal > 0 ? a.resumedFrom + static_cast<unsigned long long>(downTotal) : 0;
        p.sent = static_cast<unsigned long long>(upNow);
        p.sendTotal = static_cast<unsigned long long>(upTotal);
        try {
            a.request.onProgress(p);
        } catch (std::exception const& e) {
            a.fail(String("the progress callback threw: %1").Arg(e.what()));
            return 1;
        }
    }
    return 0;
}

// Called once connected, before each request of the transfer goes out (redirects included): the
// place to refuse a step down from HTTPS to HTTP before anything is sent in clear text.
int onConnected(void* user, char*, char*, int, int)
{
    Active& a = *static_cast<Active*>(user);
    char* url = nullptr;
    curl_easy_getinfo(a.easy, CURLINFO_EFFECTIVE_URL, &url);
    bool const https = startsWithNoCase(url ? url : "", "https:");
    if (a.sawHttps && !https) {
        a.fail(String("refused a redirect from HTTPS to HTTP (%1)").Arg(url));
        return CURL_PREREQFUNC_ABORT;
    }
    a.sawHttps = a.sawHttps || https;
    a.connected = true;
    a.touch();
    return CURL_PREREQFUNC_OK;
}

void configureMethod(Active& a)
{
    HttpRequest const& r = a.request;
    switch (r.method) {
    case HttpMethod::Get:
        break;
    case HttpMethod::Head:
        curl_easy_setopt(a.easy, CURLOPT_NOBODY, 1L);
        break;
    case HttpMethod::Post: {
        std::string const* body = &r.body;
        if (!r.form.empty()) {
            a.formBody = FormEncode(r.form).ToStdString();
            body = &a.formBody;
        }
        curl_easy_setopt(a.easy, CURLOPT_POST, 1L);
        curl_easy_setopt(a.easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body->size()));
        curl_easy_setopt(a.easy, CURLOPT_POSTFIELDS, body->data());
        break;
    }
    case HttpMethod::Put:
        curl_easy_setopt(a.easy, CURLOPT_UPLOAD, 1L);
        curl_easy_setopt(a.easy, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(r.body.size()));
        curl_easy_setopt(a.easy, CURLOPT_READFUNCTION, onUpload);
        curl_easy_setopt(a.easy, CURLOPT_READDATA, &a);
        break;
    }
}

void configure(Active& a)
{
    HttpRequest const& r = a.request;
    CURL* const e = a.easy;
    curl_easy_setopt(e, CURLOPT_URL, r.url.c_str());
    curl_easy_setopt(e, CURLOPT_ERRORBUFFER, a.errorText);
    // Signals are no way to time out on a thread of a library; and a transfer removed while its
    // name is still being looked up must not wait for the look-up to end.
    curl_easy_setopt(e, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(e, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(e, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(e, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(e, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(e, CURLOPT_MAXREDIRS, static_cast<long>(r.maxRedirects));
    curl_easy_setopt(e, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(r.connectTimeoutMs));
    curl_easy_setopt(e, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(e, CURLOPT_SSL_VERIFYHOST, 2L);
    // The library's CA folder (the system store) stays in use beside the file.
    if (!r.caFile.IsEmpty())
        curl_easy_setopt(e, CURLOPT_CAINFO, r.caFile.c_str());
    // Larger reads than the default 16 KiB: a quarter of the system calls on a fast download.
    curl_easy_setopt(e, CURLOPT_BUFFERSIZE, 128L * 1024);
    curl_easy_setopt(e, CURLOPT_USERAGENT, (String("Cordel/") + GetVersionString()).c_str());

    for (HttpHeader const& h : r.headers)
        a.headers = curl_slist_append(a.headers, (h.name + ": " + h.value).c_str());
    curl_easy_setopt(e, CURLOPT_HTTPHEADER, a.headers);
    configureMethod(a);

    curl_easy_setopt(e, CURLOPT_HEADERFUNCTION, onHeader);
    curl_easy_setopt(e, CURLOPT_HEADERDATA, &a);
    curl_easy_setopt(e, CURLOPT_WRITEFUNCTION, onBody);
    curl_easy_setopt(e, CURLOPT_WRITEDATA, &a);
    curl_easy_setopt(e, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(e, CURLOPT_XFERINFOFUNCTION, onProgress);
    curl_easy_setopt(e, CURLOPT_XFERINFODATA, &a);
    curl_easy_setopt(e, CURLOPT_PREREQFUNCTION, onConnected);
    curl_easy_setopt(e, CURLOPT_PREREQDATA, &a);
    curl_easy_setopt(e, CURLOPT_PRIVATE, &a);
    // A plain Range header rather than curl's resume, which fails outright when the server sends
    // the whole body instead; we take the whole body and start the part file again.
    if (a.resumedFrom)
        curl_easy_setopt(e, CURLOPT_RANGE, (String::Number(a.resumedFrom) + "-").c_str());
}

// Opens "<target>.part": continued where an earlier attempt left it, or empty.
bool openPartFile(Active& a)
{
    a.partPath = a.request.downloadTo + ".part";
    int const flags = O_WRONLY | O_CREAT | O_CLOEXEC | (a.request.resume ? 0 : O_TRUNC);
    a.fd = ::open(a.partPath.c_str(), flags, 0666);
    if (a.fd < 0)
        return false;
    struct stat info;
    if (::fstat(a.fd, &info) != 0 || ::lseek(a.fd, 0, SEEK_END) < 0)
        return false;
    a.resumedFrom = static_cast<unsigned long long>(info.st_size);
    return true;
}

// Ends a download: a complete 2xx body replaces the target at once; anything else leaves the
// target as it was, and the part file only when the caller means to resume. Returns the reason
// when the complete body could not be put in place.
String settleDownload(Active& a, bool complete)
{
    bool const keep = complete && a.bodyToFile;
    int const closed = ::close(a.fd);
    int const closeError = errno;
    a.fd = -1;
    if (keep && closed != 0)
        a.failureError = closeError;
    else if (keep && std::rename(a.partPath.c_str(), a.request.downloadTo.c_str()) != 0)
        a.failureError = errno;
    else {
        if (!keep && !a.request.resume)
            ::unlink(a.partPath.c_str());
        return String();
    }
    return String("cannot complete %1: %2").Arg(a.request.downloadTo).Arg(errnoText(a.failureError));
}

} // namespace

HttpEngine::HttpEngine(String const& name)
    : Thread(name), queueLock(String("%1 Request Queue").Arg(name)), multi((initialiseCurlOnce(), curl_multi_init()))
{
    StartThread();
}

HttpEngine::~HttpEngine()
{
    queueLock.Lock();
    stopping = true;
    queueLock.Unlock();
    Wake();
    WaitThread();
    curl_multi_cleanup(multi);
}

void HttpEngine::Submit(std::shared_ptr<Transfer> const& transfer)
{
    queueLock.Lock();
    queued.push_back(transfer);
    queueLock.Unlock();
    Wake();
}

void HttpEngine::Wake()
{
    curl_multi_wakeup(multi);
}

void HttpEngine::Run()
{
    for (;;) {
        std::vector<std::shared_ptr<Transfer>> fresh;
        queueLock.Lock();
        bool const stop = stopping;
        fresh.swap(queued);
        queueLock.Unlock();

        for (auto const& t : fresh) {
            if (stop)
                t->cancelRequested = true;
            begin(t);
        }
        if (stop) {
            while (!active.empty())
                finish(*active.back(), HttpResult::Cancelled, "cancelled", 0);
            return;
        }
        checkTransfers();
        int running = 0;
        curl_multi_perform(multi, &running);
        collectCompleted();
        checkTransfers();
        curl_multi_poll(multi, nullptr, 0, pollTimeoutMs(), nullptr);
    }
}

void HttpEngine::begin(std::shared_ptr<Transfer> const& transfer)
{
    active.push_back(std::make_unique<ActiveTransfer>(transfer));
    ActiveTransfer& a = *active.back();
    if (a.cancelled())
        return finish(a, HttpResult::Cancelled, "cancelled", 0);
    if (!a.request.downloadTo.IsEmpty() && !openPartFile(a)) {
        int const error = errno;
        return finish(a, HttpResult::Failed, String("cannot open %1: %2").Arg(a.partPath).Arg(errnoText(error)), error);
    }
    a.easy = curl_easy_init();
    if (!a.easy)
        return finish(a, HttpResult::Failed, "cannot create a transfer", 0);
    configure(a);
    a.touch();
    a.added = curl_multi_add_handle(multi, a.easy) == CURLM_OK;
    if (!a.added)
        finish(a, HttpResult::Failed, "cannot start the transfer", 0);
}

// Ends the transfers that were cancelled, and those whose connection has gone quiet for longer
// than their stall time-out.
void HttpEngine::checkTransfers()
{
    auto const now = Clock::now();
    for (std::size_t i = active.size(); i-- > 0;) {
        ActiveTransfer& a = *active[i];
        if (a.cancelled())
            finish(a, HttpResult::Cancelled, "cancelled", 0);
        else if (a.connected && now - a.lastActivity > std::chrono::milliseconds(a.request.stallTimeoutMs))
            finish(a, HttpResult::Failed, String("no data for %1 ms").Arg(a.request.stallTimeoutMs), 0);
    }
}

void HttpEngine::collectCompleted()
{
    int left = 0;
    while (CURLMsg* message = curl_multi_info_read(multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        ActiveTransfer* a = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &a);
        CURLcode const code = message->data.result;
        if (a->cancelled())
            finish(*a, HttpResult::Cancelled, "cancelled", 0);
        else if (!a->failure.IsEmpty())
            finish(*a, HttpResult::Failed, a->failure, a->failureError);
        else if (code != CURLE_OK) {
            long osError = 0;
            curl_easy_getinfo(a->easy, CURLINFO_OS_ERRNO, &osError);
            String const reason(a->errorText[0] ? a->errorText : curl_easy_strerror(code));
            finish(*a, HttpResult::Failed, reason, static_cast<int>(osError));
        } else
            finish(*a, HttpResult::Completed, String(), 0);
    }
}

int HttpEngine::pollTimeoutMs() const
{
    // Nothing to time out: sleep until woken (or, for safety, a minute).
    long long wait = 60000;
    auto const now = Clock::now();
    for (auto const& a : active)
        if (a->connected) {
            auto const due = a->lastActivity + std::chrono::milliseconds(a->request.stallTimeoutMs) - now;
            wait = std::min<long long>(wait, std::chrono::duration_cast<std::chrono::milliseconds>(due).count() + 1);
        }
    return static_cast<int>(std::max(0LL, wait));
}

void HttpEngine::finish(ActiveTransfer& a, int outcome, String const& reason, int errorCode)
{
    if (a.added)
        curl_multi_remove_handle(multi, a.easy);
    HttpResult result;
    result.outcome = static_cast<HttpResult::Outcome>(outcome);
    result.reason = reason;
    result.errorCode = errorCode;
    if (a.easy) {
        curl_easy_getinfo(a.easy, CURLINFO_RESPONSE_CODE, &a.response.status);
        char* url = nullptr;
        curl_easy_getinfo(a.easy, CURLINFO_EFFECTIVE_URL, &url);
        a.response.url = String(url ? url : "");
    }
    if (a.fd >= 0) {
        String const failed = settleDownload(a, result.outcome == HttpResult::Completed);
        if (!failed.IsEmpty()) {
            result.outcome = HttpResult::Failed;
            result.reason = failed;
            result.errorCode = a.failureError;
        }
    }
    result.response = std::move(a.response);

    Transfer& t = *a.transfer;
    if (t.request.onComplete) {
        // Nobody is there to hear an exception from the last callback: the transfer is over.
        try {
            t.request.onComplete(result);
        } catch (...) {
        }
    }
    t.lock.Lock();
    t.result = Detached(std::move(result));
    t.finished = true;
    t.engine = nullptr;
    t.ended.WakeAll();
    t.lock.Unlock();

    auto const at = std::find_if(active.begin(), active.end(), [&](auto const& p) { return p.get() == &a; });
    active.erase(at);
}

} // namespace Cordel::Network::detail
