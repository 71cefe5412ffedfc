#include "support/FakeWebPage.h"

using namespace Qt::StringLiterals;

namespace morvane {

void FakeWebPage::begin(const QString &what, const QUrl &address)
{
    log.append(what);
    m_next = address;
    m_committed = false;
    loading = true;
    const QPointer<FakeWebPage> self(this);
    Q_EMIT navigationStarted(address);
    if (self && finishesByItself)
        finish();
}

void FakeWebPage::commit(const QString &title)
{
    current = m_next;
    currentTitle = title;
    m_committed = true;
    Q_EMIT committed();
}

void FakeWebPage::finish(const QString &title)
{
    const QPointer<FakeWebPage> self(this);
    if (!m_committed)
        commit(title);
    if (!self)
        return;
    loading = false;
    Q_EMIT finished();
}

void FakeWebPage::fail(const PageFailure &failure)
{
    loading = false;
    Q_EMIT failed(failure);
}

void FakeWebPage::evaluate(const QString &script, ScriptAnswer answer)
{
    scripts.append(script);
    if (holdsAnswers) {
        m_held.append({script, std::move(answer)});
        return;
    }
    if (answers)
        answer(answers(script));
    else
        answer(script == "document.readyState"_L1 ? QVariant(u"complete"_s) : QVariant());
}

void FakeWebPage::answerHeld()
{
    holdsAnswers = false;
    for (auto &[script, answer] : std::exchange(m_held, {})) {
        scripts.removeOne(script);
        evaluate(script, std::move(answer));
    }
}

QWidget *FakeWebPage::view()
{
    if (!m_view)
        m_view = std::make_unique<QWidget>();
    return m_view.get();
}

std::unique_ptr<WebPage> FakeWebPageFactory::makePage()
{
    auto page = std::make_unique<FakeWebPage>();
    pages.append(page.get());
    if (prepare)
        prepare(*page);
    return page;
}

} // namespace morvane
