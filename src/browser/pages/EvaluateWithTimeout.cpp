#include "browser/pages/EvaluateWithTimeout.h"

#include "async/Wait.h"

#include <memory>

namespace morvane {
namespace {

class Evaluation {
public:
    Evaluation(QPointer<WebPage> page, const QString &script, std::chrono::milliseconds limit)
        : m_page(std::move(page)), m_script(script), m_limit(limit)
    {
    }
    ~Evaluation() { QObject::disconnect(m_pageGone); }
    Evaluation(const Evaluation &) = delete;
    Evaluation &operator=(const Evaluation &) = delete;

    bool await_ready() const { return !m_page; }
    template <class Promise> void await_suspend(std::coroutine_handle<Promise> coroutine)
    {
        m_wait.begin(coroutine);
        const auto signal = m_wait.signal();
        m_timer = m_wait.context().scheduler->clock().after(m_limit, [this, signal] {
            if (m_limit >= longEnoughToAnswer && m_page)
                m_page->scriptUnanswered();
            signal->fire();
        });
        m_pageGone = QObject::connect(m_page, &QObject::destroyed, [signal] { signal->fire(); });
        m_page->evaluate(m_script, [signal, value = m_value](const QVariant &answer) {
            if (signal->fire())
                *value = answer;
        });
    }
    QVariant await_resume()
    {
        m_timer.reset();
        m_wait.finish();
        return *m_value;
    }

private:
    QPointer<WebPage> m_page;
    QString m_script;
    std::chrono::milliseconds m_limit;
    Wait m_wait;
    std::unique_ptr<Clock::Timer> m_timer;
    QMetaObject::Connection m_pageGone;
    std::shared_ptr<QVariant> m_value = std::make_shared<QVariant>();
};

} // namespace

Task<QVariant> evaluateWithTimeout(QString script, QPointer<WebPage> page, std::chrono::milliseconds limit)
{
    Evaluation evaluation(page, script, limit);
    co_return co_await evaluation;
}

} // namespace morvane
