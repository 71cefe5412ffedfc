#include "providers/DiscardBody.h"

#include "async/Race.h"
#include "async/Sleep.h"
#include "net/Log.h"
#include "providers/Log.h"

namespace morvane {
namespace {

Task<void> readToEnd(LineReader lines)
{
    qint64 bytes = 0;
    try {
        while (const auto line = co_await lines.next()) {
            bytes += line->size();
            if (bytes > maximumDiscardedBytes)
                break;
        }
    } catch (const TransportError &error) {
        // What is thrown away may as well be missing.
        qCInfo(providersLog) << "a body that nobody wants broke off:" << reasonOf(error);
    }
}

Task<void> timeLimit()
{
    co_await sleepFor(maximumDiscardTime);
}

} // namespace

Task<void> discardBody(LineReader lines)
{
    co_await race(readToEnd(std::move(lines)), timeLimit());
}

} // namespace morvane
