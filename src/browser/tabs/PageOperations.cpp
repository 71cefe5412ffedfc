#include "browser/tabs/PageOperations.h"

#include "base/Json.h"
#include "browser/pages/BrowserTarget.h"
#include "browser/pages/EvaluateWithTimeout.h"
#include "browser/pages/PageReading.h"
#include "browser/pages/PageScripts.h"
#include "browser/pages/PageText.h"
#include "browser/pages/ScriptAnswer.h"
#include "browser/pages/WaitUntilReady.h"
#include "browser/tabs/BrowserManager.h"
#include "platform/Announcer.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using namespace std::chrono_literals;

constexpr auto scriptLimit = 8s;
constexpr auto scrollLimit = 5s;
constexpr auto openLimit = 20s;
constexpr auto followLimit = 10s;

QString noWindow()
{
    return u"Error: the browser window is not open."_s;
}

QString notOpen()
{
    return u"Error: the browser is not open."_s;
}

QString noElement(qint64 index)
{
    return u"Error: there is no element [%1]. Run browser_read first and use a number from its list."_s.arg(
        index);
}

/// Why a script could not do its work; empty if it could.
QString failureOf(const boost::json::object &answer, const QString &withoutReason)
{
    if (booleanMember(answer, "ok").value_or(false))
        return {};
    const auto reason = stringMember(answer, "reason");
    return u"Error: "_s + reason.value_or(withoutReason);
}

Task<boost::json::object> runOnElement(QPointer<WebPage> page, QString script)
{
    const QVariant answer = co_await evaluateWithTimeout(script, page, scriptLimit);
    co_return readScriptAnswer(answer).value_or(boost::json::object());
}

} // namespace

bool PageOperations::showWindow()
{
    m_browser.makeWindowIfNeeded();
    BrowserWindow *const window = m_browser.window();
    if (window)
        window->orderFront();
    return window != nullptr;
}

std::expected<PageOperations::Element, QString> PageOperations::element(qint64 index)
{
    const QPointer<BrowserTab> tab = m_browser.activeTab();
    if (!tab || index < 1 || index > tab->lastElementRefs().size())
        return std::unexpected(noElement(index));
    const QString ref = tab->lastElementRefs().at(index - 1);
    if (!showWindow() || !tab)
        return std::unexpected(notOpen());
    return Element{tab, ref};
}

QPointer<BrowserTab> PageOperations::load(const BrowserTarget &target)
{
    const bool isOpen = showWindow();
    if (isOpen && !m_browser.activeTab())
        m_browser.newTab();
    QPointer<BrowserTab> tab = m_browser.activeTab();
    if (!isOpen || !tab)
        return nullptr;
    tab->setLastElementRefs({});
    m_browser.forgetRefusals();
    m_announcer.announce(u"Loading "_s + pageText(target.host()));
    tab->webView().load(target.url);
    return tab;
}

void PageOperations::open(const QString &text)
{
    load(resolveTarget(text));
}

Task<QString> PageOperations::browserOpen(QString urlString)
{
    const BrowserTarget target = resolveTarget(urlString);
    const QPointer<BrowserTab> tab = load(target);
    if (!tab)
        co_return noWindow();
    const bool isReady = co_await waitUntilReady(&tab->webView(), openLimit);
    if (!tab)
        co_return noWindow();
    if (!isReady)
        co_return u"Opened %1 but it is still loading. Run browser_read in a moment to see it."_s.arg(
            target.host());
    co_return co_await readTab(tab);
}

Task<QString> PageOperations::browserRead()
{
    if (!showWindow() || !m_browser.activeTab())
        co_return noWindow();
    co_return co_await readTab(m_browser.activeTab());
}

Task<QString> PageOperations::readTab(QPointer<BrowserTab> tab)
{
    // One after the other in the page, which may be too busy for either.
    tab->webView().evaluate(removeMarksScript(), [](const QVariant &) {});
    const QVariant answer = co_await evaluateWithTimeout(elementScript(), &tab->webView(), scriptLimit);
    if (!tab)
        co_return noWindow();
    const std::optional<PageReading> reading = readPageAnswer(answer);
    if (!reading)
        co_return u"Error: could not read the page. It may still be loading — run browser_read again."_s;
    tab->setLastElementRefs(reading->refs);
    co_return reading->text;
}

Task<QString> PageOperations::browserClick(qint64 index)
{
    const auto found = element(index);
    if (!found)
        co_return found.error();
    const auto &[tab, ref] = *found;
    const boost::json::object answer = co_await runOnElement(&tab->webView(), clickScript(ref));
    if (!tab)
        co_return notOpen();
    if (const QString failure = failureOf(answer, u"the click did not work."_s); !failure.isEmpty())
        co_return failure;
    const QString name = stringMember(answer, "name").value_or(QString());
    co_await waitUntilReady(&tab->webView(), followLimit);
    co_return name.isEmpty() ? u"Clicked element [%1]."_s.arg(index) : u"Clicked '"_s + name + u"'."_s;
}

Task<QString> PageOperations::browserType(qint64 index, QString text, bool submit)
{
    const auto found = element(index);
    if (!found)
        co_return found.error();
    const auto &[tab, ref] = *found;
    const boost::json::object answer = co_await runOnElement(&tab->webView(), typeScript(ref, text, submit));
    if (!tab)
        co_return notOpen();
    if (const QString failure = failureOf(answer, u"could not type into that element."_s); !failure.isEmpty())
        co_return failure;
    co_return (submit ? u"Typed the text into field [%1] and submitted."_s
                      : u"Typed the text into field [%1]."_s)
        .arg(index);
}

Task<QString> PageOperations::browserScroll(qint64 amount)
{
    const QPointer<BrowserTab> tab = showWindow() ? m_browser.activeTab() : nullptr;
    if (!tab)
        co_return notOpen();
    co_await evaluateWithTimeout(scrollScript(amount), &tab->webView(), scrollLimit);
    co_return amount < 0 ? u"Scrolled down."_s : u"Scrolled up."_s;
}

Task<QString> PageOperations::browserBack()
{
    const QPointer<BrowserTab> tab = showWindow() ? m_browser.activeTab() : nullptr;
    if (!tab)
        co_return notOpen();
    if (!tab->webView().canGoBack())
        co_return u"Error: there is no previous page to go back to."_s;
    tab->webView().leaveUnasked();
    tab->webView().goBack();
    co_await waitUntilReady(&tab->webView(), followLimit);
    co_return u"Went back to the previous page."_s;
}

} // namespace morvane
