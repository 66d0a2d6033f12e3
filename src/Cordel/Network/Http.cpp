#include <Cordel/Network/Http.h>
#include <Cordel/Network/detail/HttpEngine.h>
#include <Cordel/Network/detail/Transfer.h>
#include <Cordel/Util/detail/Throw.h>

#include <chrono>

namespace Cordel::Network {

namespace detail {

namespace {

String own(String const& s)
{
    return String(s.View());
}

void own(std::vector<HttpHeader>& headers)
{
    for (HttpHeader& h : headers)
        h = {own(h.name), own(h.value)};
}

} // namespace

HttpRequest Detached(HttpRequest r)
{
    r.url = own(r.url);
    own(r.headers);
    for (auto& field : r.form)
        field = {own(field.first), own(field.second)};
    r.downloadTo = own(r.downloadTo);
    r.caFile = own(r.caFile);
    return r;
}

HttpResult Detached(HttpResult r)
{
    own(r.response.headers);
    r.response.url = own(r.response.url);
    r.reason = own(r.reason);
    return r;
}

Transfer::Transfer(HttpRequest request, HttpEngine* engine)
    : request(Detached(std::move(request))), lock("Http Transfer"), ended("Http Transfer Ended"), engine(engine)
{
}

} // namespace detail

String HttpResponse::GetHeader(String const& name) const
{
    for (HttpHeader const& h : headers)
        if (h.name.ToLower() == name.ToLower())
            return h.value;
    return String();
}

HttpTransfer::HttpTransfer() = default;
HttpTransfer::~HttpTransfer() = default;
HttpTransfer::HttpTransfer(HttpTransfer const&) = default;
HttpTransfer& HttpTransfer::operator=(HttpTransfer const&) = default;
HttpTransfer::HttpTransfer(std::shared_ptr<detail::Transfer> transfer) : transfer(std::move(transfer)) {}

void HttpTransfer::Cancel()
{
    if (!transfer)
        return;
    transfer->lock.Lock();
    if (!transfer->finished) {
        transfer->cancelRequested = true;
        transfer->engine->Wake();
    }
    transfer->lock.Unlock();
}

bool HttpTransfer::Wait(checked_value<unsigned int> const& timeoutMs)
{
    if (!transfer)
        return true;
    using Clock = std::chrono::steady_clock;
    auto const deadline = Clock::now() + std::chrono::milliseconds(timeoutMs.GetOr(0));
    transfer->lock.Lock();
    while (!transfer->finished) {
        checked_value<unsigned int> left;
        if (timeoutMs.IsSet()) {
            auto const remaining = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (remaining <= 0)
                break;
            left = static_cast<unsigned int>(remaining);
        }
        transfer->ended.Wait(&transfer->lock, left);
    }
    bool const finished = transfer->finished;
    transfer->lock.Unlock();
    return finished;
}

bool HttpTransfer::IsFinished() const
{
    if (!transfer)
        return true;
    transfer->lock.Lock();
    bool const finished = transfer->finished;
    transfer->lock.Unlock();
    return finished;
}

HttpResult HttpTransfer::GetResult() const
{
    HttpResult result;
    result.reason = "not finished";
    if (!transfer)
        return result;
    transfer->lock.Lock();
    if (transfer->finished)
        result = detail::Detached(transfer->result);
    transfer->lock.Unlock();
    return result;
}

HttpResponse HttpTransfer::GetResponse() const
{
    HttpResult const result = GetResult();
    if (result.outcome == HttpResult::Completed)
        return result.response;
    using Exception::HttpError;
    String const url(transfer ? transfer->request.url.View() : std::string_view());
    HttpError::Kind const kind = result.outcome == HttpResult::Cancelled ? HttpError::Cancelled : HttpError::Failed;
    Cordel::Exception::Throw(HttpError(String("%1: %2").Arg(url).Arg(result.reason), kind, url, result.reason,
                                       result.response.status),
                             CORDEL_HERE, result.errorCode);
}

Http::Http(String const& name) : engine(new detail::HttpEngine(name)) {}

Http::~Http()
{
    delete engine;
}

HttpTransfer Http::Start(HttpRequest request)
{
    auto transfer = std::make_shared<detail::Transfer>(std::move(request), engine);
    engine->Submit(transfer);
    return HttpTransfer(transfer);
}

HttpResponse Http::Fetch(HttpRequest request, checked_value<unsigned int> const& timeoutMs)
{
    HttpTransfer transfer = Start(std::move(request));
    if (!transfer.Wait(timeoutMs)) {
        transfer.Cancel();
        transfer.Wait();
        String const url(transfer.transfer->request.url.View());
        String const reason = String("no answer within %1 ms").Arg(timeoutMs.Get());
        Cordel::Exception::Throw(Exception::HttpError(String("%1: %2").Arg(url).Arg(reason),
                                                      Exception::HttpError::TimedOut, url, reason,
                                                      transfer.GetResult().response.status),
                                 CORDEL_HERE);
    }
    return transfer.GetResponse();
}

} // namespace Cordel::Network
