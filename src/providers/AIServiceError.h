#pragma once

#include <QString>
#include <exception>
#include <variant>

namespace morvane {

/// Every failure of a model turn that is neither a transport error nor a cancellation.
class AIServiceError : public std::exception {
public:
    /// A status that is no success, with the raw body of the response.
    struct Http {
        int status = 0;
        QString body;
    };
    /// A failure with a finished message for the user.
    struct Api {
        QString message;
    };
    /// HTTP 429 after all retries; the text says when the allowance comes back.
    struct RateLimited {
        QString resets;
    };
    /// The provider's content filter refused.
    struct Blocked {};

    using Reason = std::variant<Http, Api, RateLimited, Blocked>;

    explicit AIServiceError(Reason reason);

    const Reason &reason() const { return m_reason; }

    /// The sentence that the user reads.
    QString errorDescription() const;

    const char *what() const noexcept override { return m_what.constData(); }

private:
    Reason m_reason;
    QByteArray m_what;
};

/// What a provider's error body says in words: its `error.message` or `message`, else its first 300
/// characters.
QString friendlyDetail(const QString &body);

} // namespace morvane
