#pragma once
// Thrown when an HTTP transfer did not complete: it failed (no connection, a refused certificate,
// a stalled or cut transfer, a file that could not be written), it was cancelled, or a blocking
// wait ran out of time. A response with a 4xx or 5xx status is a result, not an HttpError.

#include <Cordel/Util/Exception.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/String.h>

namespace Cordel::Network::Exception {

class CORDEL_API HttpError : public Cordel::Exception::Base {
public:
    enum Kind : int {
        Failed = 0,
        Cancelled = 1,
        TimedOut = 2, // the caller's wait ran out; the transfer was cancelled
    };

    // reason: the transfer library's own text ("Connection refused", "SSL certificate problem:
    // ..."); status: the last HTTP status received, 0 when none was.
    HttpError(String const& message, Kind kind, String const& url, String const& reason, long status);
    ~HttpError() override;

    Kind GetKind() const { return kind; }
    String const& GetURL() const { return url; }
    String const& GetReason() const { return reason; }
    long GetStatus() const { return status; }

    // The base text, then "\nHttpError:\n", the kind ("Failed", "Cancelled", "Timed out"),
    // ": ", the URL, the status when there is one (" (HTTP 503)") and "\n\t" with the reason.
    String ToString() const override;
    static String KindText(Kind kind);

private:
    Kind kind;
    String url;
    String reason;
    long status;
};

} // namespace Cordel::Network::Exception
