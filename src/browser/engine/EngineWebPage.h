#pragma once

#include "browser/engine/EnginePage.h"
#include "browser/pages/WebPage.h"

#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <map>
#include <memory>
#include <optional>

class QWebEngineHistoryItem;
class QWebEngineLoadingInfo;

namespace morvane {

/// A page of the web engine, told in the terms of WebPage.
class EngineWebPage final : public WebPage {
    Q_OBJECT
public:
    /// The page ends with this, or as soon after it as the engine lets it; `parent` has it until then.
    EngineWebPage(QWebEngineProfile &profile, QObject &parent);
    ~EngineWebPage() override;

    void load(const QUrl &address) override;
    void loadHtml(const QString &html) override;
    void goBack() override;
    void goForward() override;
    void reload() override;
    void stop() override;
    void setZoom(double factor) override;
    void edit(EditCommand command) override;

    QString title() const override;
    QUrl address() const override;
    bool isLoading() const override { return m_isLoading; }
    bool canGoBack() const override;
    bool canGoForward() const override;

    void evaluate(const QString &script, ScriptAnswer answer) override;
    void scriptUnanswered() override { m_isHung = !m_answers.empty(); }
    QWidget *view() override;

    bool isOf(const QWebEnginePage *page) const { return page == m_page; }

private:
    void goTo(const QList<QWebEngineHistoryItem> &items);
    void onceItAnswers(std::function<void()> navigation);
    void navigationAccepted(const QUrl &address, bool isRedirection);
    void urlChanged(const QUrl &address);
    bool isNext(const QUrl &address) const;
    void progressed(int percent);
    void loadingChanged(const QWebEngineLoadingInfo &info);
    void commit();
    void end();
    void processEnded();
    void answer(quint64 script, const QVariant &value);
    void answerNothing();

    EnginePage *m_page;
    bool m_isLoading = false;
    bool m_showsOwnDocument = true;
    std::optional<QUrl> m_next; ///< Of the document that has not taken its place yet; empty for one of ours.
    QTimer m_patience;
    bool m_isHung = false;
    bool m_hasProcess = true;
    std::function<void()> m_afterProcess; ///< The navigation that waits for a hung process to end.
    double m_zoom = 1.0;
    quint64 m_scripts = 0;
    std::map<quint64, ScriptAnswer> m_answers;
};

} // namespace morvane
