#include "app/FriendlyError.h"

#include "app/Log.h"
#include "base/ErrorForUser.h"
#include "net/TransportError.h"
#include "providers/AIServiceError.h"

#include <new>

using namespace Qt::StringLiterals;

namespace morvane {

QString friendlyError(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const AIServiceError &failure) {
        const QString text = failure.errorDescription();
        return text.isEmpty() ? u"Unknown error."_s : text;
    } catch (const TransportError &failure) {
        if (failure.isConnectionFailure()) {
            return u"Could not connect to the AI provider. Check your internet connection and "
                   "try again."_s;
        }
        return failure.description();
    } catch (const ErrorForUser &failure) {
        return failure.message();
    } catch (const std::bad_alloc &) {
        return u"There is not enough memory for that."_s;
    } catch (...) { // what a library says is not for the user
        qCWarning(appLog) << "an error without words for the user:" << kindOfCurrentFailure();
        return u"Unknown error."_s;
    }
}

} // namespace morvane
