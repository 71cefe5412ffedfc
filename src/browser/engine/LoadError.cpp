#include "browser/engine/LoadError.h"

#include <QWebEngineLoadingInfo>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

// The engine's numbers.
constexpr int aborted = -3;
constexpr int timedOut = -7;
constexpr int offline = -106;
constexpr int nameNotResolved = -105;
constexpr int connectionTimedOut = -118;
constexpr int refused = -102;
constexpr int tooManyRedirects = -310;
constexpr int emptyResponse = -324;

QString sentence(int code, QWebEngineLoadingInfo::ErrorDomain domain)
{
    switch (code) {
    case timedOut:
    case connectionTimedOut:
        return u"The server did not answer in time."_s;
    case nameNotResolved:
        return u"There is no server with this name."_s;
    case offline:
        return u"There is no connection to the internet."_s;
    case refused:
        return u"The server does not accept connections."_s;
    case tooManyRedirects:
        return u"The server sends the request round in circles."_s;
    case emptyResponse:
        return u"The server sent nothing."_s;
    default:
        break;
    }
    switch (domain) {
    case QWebEngineLoadingInfo::CertificateErrorDomain:
        return u"The server could not prove that it is what it says, so the page was not loaded."_s;
    case QWebEngineLoadingInfo::ConnectionErrorDomain:
        return u"The connection to the server failed."_s;
    default:
        return u"The page could not be loaded (%1)."_s.arg(code);
    }
}

} // namespace

QString connectionsClearedAway()
{
    return u"The connection ended when browsing data was cleared."_s;
}

PageFailure pageFailure(const QWebEngineLoadingInfo &info)
{
    if (info.status() == QWebEngineLoadingInfo::LoadStoppedStatus || info.errorCode() == aborted)
        return {PageFailure::Kind::cancelled, u"The load was stopped."_s};
    return {PageFailure::Kind::failed, sentence(info.errorCode(), info.errorDomain())};
}

} // namespace morvane
