#include "browser/pages/WaitUntilReady.h"

#include "async/CurrentContext.h"
#include "async/Sleep.h"
#include "browser/pages/EvaluateWithTimeout.h"

#include <array>
#include <memory>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using namespace std::chrono_literals;

constexpr auto settlingTime = 400ms;
constexpr auto pause = 300ms;
constexpr auto firstLookLimit = 3s;
constexpr auto lookLimit = 2s;

/// Ends after a pause, and with the end of a load before that, so that a quick page costs no more than it
/// takes.
class LoadingPause {
public:
    explicit LoadingPause(WebPage &page) : m_page(page) {}
    ~LoadingPause()
    {
        for (const QMetaObject::Connection &connection : m_connections)
            QObject::disconnect(connection);
    }
    LoadingPause(const LoadingPause &) = delete;
    LoadingPause &operator=(const LoadingPause &) = delete;

    bool await_ready() const { return false; }
    template <class Promise> void await_suspend(std::coroutine_handle<Promise> coroutine)
    {
        m_wait.begin(coroutine);
        const auto fire = [signal = m_wait.signal()] { signal->fire(); };
        m_timer = m_wait.context().scheduler->clock().after(pause, fire);
        m_connections[0] = QObject::connect(&m_page, &WebPage::finished, fire);
        m_connections[1] = QObject::connect(&m_page, &WebPage::failed, fire);
        m_connections[2] = QObject::connect(&m_page, &QObject::destroyed, fire);
    }
    void await_resume()
    {
        m_timer.reset();
        m_wait.finish();
    }

private:
    WebPage &m_page;
    Wait m_wait;
    std::unique_ptr<Clock::Timer> m_timer;
    std::array<QMetaObject::Connection, 3> m_connections;
};

Task<void> pauseWhileLoading(QPointer<WebPage> page)
{
    if (!page)
        co_return;
    LoadingPause loadingPause(*page);
    co_await loadingPause;
}

bool isSettled(const QPointer<WebPage> &page)
{
    return page && !page->isLoading();
}

Task<QVariant> readyState(QPointer<WebPage> page, std::chrono::milliseconds limit)
{
    return evaluateWithTimeout(u"document.readyState"_s, page, limit);
}

bool isText(const QVariant &value)
{
    return value.typeId() == QMetaType::QString;
}

bool isComplete(const QVariant &state)
{
    return isText(state) && state.toString() == "complete"_L1;
}

/// Whether it is time to let the page settle: it says that it is complete, or is too busy to say anything.
Task<bool> isCompleteOrBusy(QPointer<WebPage> page)
{
    const QVariant state = co_await readyState(page, lookLimit);
    if (isComplete(state))
        co_return true;
    const QVariant again = co_await readyState(page, lookLimit);
    co_return !isText(again);
}

} // namespace

Task<bool> waitUntilReady(QPointer<WebPage> page, std::chrono::milliseconds timeout)
{
    const TaskContext context = co_await currentContext();
    const Clock &clock = context.scheduler->clock();
    const Clock::TimePoint deadline = clock.now() + timeout;
    if (isSettled(page)) {
        const QVariant state = co_await readyState(page, firstLookLimit);
        if (isComplete(state)) {
            co_await sleepFor(settlingTime);
            if (isSettled(page))
                co_return true;
        }
    }
    while (page && clock.now() < deadline) {
        if (page->isLoading()) {
            co_await pauseWhileLoading(page);
            continue;
        }
        const bool mayBeReady = co_await isCompleteOrBusy(page);
        if (mayBeReady) {
            co_await sleepFor(settlingTime);
            if (isSettled(page))
                co_return true;
        }
        co_await sleepFor(pause);
    }
    co_return isSettled(page);
}

} // namespace morvane
