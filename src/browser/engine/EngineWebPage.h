#pragma once

#include "browser/engine/EnginePage.h"
#include "browser/pages/WebPage.h"

#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <map>
#include <memory>
#include <optional>
#include <vector>

class QWebEngineHistoryItem;
class QWebEngineLoadingInfo;

namespace morvane {

class EnginePermission;

/// A page of the web engine, told in the terms of WebPage.
class EngineWebPage final : public WebPage {
    Q_OBJECT
public:
    /// The page ends with this, or as soon after it as the engine lets it; `parent` has it until then.
    /// By `now` its questions wait for the user to pause.
    EngineWebPage(QWebEngineProfile &profile, SteadyNow now, QObject &parent);
    ~EngineWebPage() override;

    void load(const QUrl &address) override;
    void loadHtml(const QString &html) override;
    void goBack() override;
    void goForward() override;
    void reload() override;
    void stop() override;
    void leaveUnasked() override { m_page->setLeavesUnasked(true); }
    /// Takes away what the site of the page has stored for its scripts.
    void removeSiteData() { m_page->removeSiteData(); }
    /// All connections have ended without a word. A load under way is begun once more, but one that the page
    /// has begun itself fails: it may have been a form.
    void connectionsEnded();
    void setZoom(double factor) override;
    void edit(EditCommand command) override;

    QString title() const override;
    QUrl address() const override;
    bool isLoading() const override { return m_isLoading; }
    bool canGoBack() const override;
    bool canGoForward() const override;

    void evaluate(const QString &script, ScriptAnswer answer) override;
    void scriptUnanswered() override;
    QWidget *view() override;

private:
    /// What becomes of a load that was stopped here, once the engine has told of its end.
    enum class Stopped { nothing, ends, beginsAnew };

    void goTo(const QList<QWebEngineHistoryItem> &items);
    void onceItAnswers(std::function<void()> navigation);
    void navigationAccepted(const QUrl &address, bool isRedirection);
    void urlChanged(const QUrl &address);
    bool isNext(const QUrl &address) const;
    void progressed(int percent);
    void tellOfChange();
    void askFor(const QUrl &origin, QWebEnginePage::Feature feature);
    void loadingChanged(const QWebEngineLoadingInfo &info);
    void commit();
    void end();
    void endProcess();
    void processEnded();
    void answer(quint64 script, const QVariant &value);
    void answerNothing();

    EnginePage *m_page;
    bool m_isLoading = false;
    bool m_showsOwnDocument = true;
    std::optional<QUrl> m_next; ///< Of the document that has not taken its place yet; empty for one of ours.
    QTimer m_patience;
    QTimer m_changePause;
    bool m_hasChanged = false; ///< During the pause.
    std::vector<std::weak_ptr<EnginePermission>> m_asked;
    Stopped m_stopped = Stopped::nothing;
    bool m_isHung = false;
    bool m_hasProcess = true;
    std::function<void()> m_navigation; ///< That was asked for, until its document has taken its place.
    QUrl m_wanted;                      ///< The address of that navigation, where it was given one.
    QString m_ownDocument;
    double m_zoom = 1.0;
    quint64 m_scripts = 0;
    std::map<quint64, ScriptAnswer> m_answers;
};

} // namespace morvane
