#include <Cordel/Network/HttpError.h>

namespace Cordel::Network::Exception {

HttpError::HttpError(String const& message, Kind kind, String const& url, String const& reason, long status)
    : Base(message), kind(kind), url(url), reason(reason), status(status)
{
}

HttpError::~HttpError() = default;

String HttpError::KindText(Kind kind)
{
    switch (kind) {
    case Failed: return "Failed";
    case Cancelled: return "Cancelled";
    case TimedOut: return "Timed out";
    }
    return "Failed";
}

String HttpError::ToString() const
{
    String text = Base::ToString() + "\nHttpError:\n" + KindText(kind) + ": " + url;
    if (status)
        text += String(" (HTTP %1)").Arg(status);
    return text + "\n\t" + reason + "\n";
}

} // namespace Cordel::Network::Exception
