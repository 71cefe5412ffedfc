#pragma once

#include "browser/pages/WebPageFactory.h"

#include <QList>
#include <QPointer>
#include <QStringList>
#include <QWidget>
#include <utility>

namespace morvane {

/// A page without an engine: remembers what it was told, and loads and answers when the test says so.
class FakeWebPage final : public WebPage {
    Q_OBJECT
public:
    void load(const QUrl &address) override { begin(QStringLiteral("load ") + address.toString(), address); }
    void loadHtml(const QString &html) override { log.append(QStringLiteral("html ") + html); }
    void goBack() override { begin(QStringLiteral("back"), current); }
    void goForward() override { begin(QStringLiteral("forward"), current); }
    void reload() override { begin(QStringLiteral("reload"), current); }
    void stop() override { log.append(QStringLiteral("stop")); }
    void leaveUnasked() override { log.append(QStringLiteral("leave")); }
    void setZoom(double factor) override { zoom = factor; }
    void edit(EditCommand command) override { edited.append(command); }

    QString title() const override { return currentTitle; }
    QUrl address() const override { return current; }
    bool isLoading() const override { return loading; }
    bool canGoBack() const override { return back; }
    bool canGoForward() const override { return forward; }

    void evaluate(const QString &script, ScriptAnswer answer) override;
    void scriptUnanswered() override { ++unanswered; }
    QWidget *view() override;

    /// A navigation of the page's own begins.
    void begin(const QString &what, const QUrl &address);
    /// The document under way takes its place; by itself it has the address that was to be loaded.
    void commit(const QString &title = {});
    /// The load under way ends well, and is committed before if it was not.
    void finish(const QString &title = {});
    void fail(const PageFailure &failure);
    /// Answers the scripts that were held back.
    void answerHeld();

    QStringList log;
    QStringList scripts;
    QList<EditCommand> edited;
    QString currentTitle;
    QUrl current;
    bool loading = false;
    bool back = false;
    bool forward = false;
    double zoom = 1.0;
    int unanswered = 0;
    /// What a script comes to. By itself a page is complete, and has no other value.
    std::function<QVariant(const QString &script)> answers;
    bool holdsAnswers = false;
    bool finishesByItself = false; ///< Loads end at once.

private:
    QUrl m_next;
    bool m_committed = true;
    QList<std::pair<QString, ScriptAnswer>> m_held;
    std::unique_ptr<QWidget> m_view;
};

/// Makes pages for the tabs and knows them.
class FakeWebPageFactory final : public WebPageFactory {
public:
    std::unique_ptr<WebPage> makePage() override;
    void removeAllSiteData() override { ++removals; }

    QList<QPointer<FakeWebPage>> pages; ///< In the order in which they were made; null once they are gone.
    std::function<void(FakeWebPage &)> prepare; ///< Called with each new page.
    int removals = 0;
};

} // namespace morvane
