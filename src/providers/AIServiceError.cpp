#include "providers/AIServiceError.h"

#include "base/Json.h"
#include "base/Overloaded.h"
#include "base/Text.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr qsizetype longestDetail = 300; // characters of a body that explains itself in no known form

} // namespace

AIServiceError::AIServiceError(Reason reason)
    : m_reason(std::move(reason)), m_what(errorDescription().toUtf8())
{
}

QString AIServiceError::errorDescription() const
{
    return std::visit(
        Overloaded{
            [](const Http &http) {
                return u"The AI provider returned an error (HTTP "_s + QString::number(http.status) +
                       u"). "_s + friendlyDetail(http.body);
            },
            [](const Api &api) {
                return api.message.isEmpty() ? u"The AI provider returned an error."_s : api.message;
            },
            [](const RateLimited &limit) {
                return u"You reached the free limit for this provider for now. "_s + limit.resets;
            },
            [](const Blocked &) {
                return u"Morvane did not respond because the request was blocked by the "
                       "provider's content safety filter."_s;
            },
        },
        m_reason);
}

QString friendlyDetail(const QString &body)
{
    if (const auto object = parseJsonObject(body.toUtf8())) {
        if (const auto *error = objectMember(*object, "error")) {
            if (auto message = stringMember(*error, "message"))
                return *message;
        }
        if (auto message = stringMember(*object, "message"))
            return *message;
    }
    return firstCharacters(body, longestDetail);
}

} // namespace morvane
