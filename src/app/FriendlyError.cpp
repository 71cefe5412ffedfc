#include "app/FriendlyError.h"

#include "net/TransportError.h"
#include "providers/AIServiceError.h"

namespace morvane {

QString friendlyError(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const AIServiceError &failure) {
        const QString text = failure.errorDescription();
        return text.isEmpty() ? QStringLiteral("Unknown error.") : text;
    } catch (const TransportError &failure) {
        if (failure.isConnectionFailure()) {
            return QStringLiteral("Could not connect to the AI provider. Check your internet connection and "
                                  "try again.");
        }
        return failure.description();
    } catch (const std::exception &failure) {
        return QString::fromUtf8(failure.what());
    } catch (...) {
        return QStringLiteral("Unknown error.");
    }
}

} // namespace morvane
