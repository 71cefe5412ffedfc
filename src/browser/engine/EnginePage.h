#pragma once

#include "browser/engine/PageDialogs.h"

#include <QUrl>
#include <QWebEnginePage>
#include <memory>

class QAuthenticator;
class QWebEngineNewWindowRequest;
class QWebEngineView;

namespace morvane {

/// A page of the web engine with its view: which addresses it may go to, and what it may ask the user.
class EnginePage final : public QWebEnginePage {
    Q_OBJECT
public:
    /// By `now` its questions wait for the user to pause.
    EnginePage(QWebEngineProfile &profile, SteadyNow now, QObject *parent);
    ~EnginePage() override;

    QWebEngineView &view() const { return *m_view; }
    PageDialogs &dialogs() { return m_dialogs; }

    /// The next document is one of ours.
    void expectOwnDocument() { m_expectsOwnDocument = true; }
    bool expectsOwnDocument() const { return m_expectsOwnDocument; }
    /// Whether all that the page asks is refused, since it is being left; but that it may be left is granted.
    void setLeavesUnasked(bool leavesUnasked);
    /// Takes away what its site has stored for scripts. Nothing waits for the end of it.
    void removeSiteData();
    /// Another document is there, or somebody works in this one: it may ask for windows as if it were the
    /// first time.
    void forgetWindows();
    /// Ends the page once nothing of it is at work any more.
    void endLater();

Q_SIGNALS:
    /// The main frame goes to an address; one of ours is empty.
    void navigationAccepted(const QUrl &address, bool isRedirection);
    /// A page that is being left asks so much that it does nothing else.
    void asksWithoutEnd();
    /// A link or a script wants another window; the address is empty where it may not be loaded.
    void windowWanted(const QUrl &address);
    /// The document gets no more windows but by the user's own presses.
    void windowsRefused();
    /// The page asks something while the user is in another window.
    void askedElsewhere(const QString &words);

protected:
    bool acceptNavigationRequest(const QUrl &address, NavigationType type, bool isMainFrame) override;
    void javaScriptAlert(const QUrl &origin, const QString &text) override;
    bool javaScriptConfirm(const QUrl &origin, const QString &text) override;
    bool javaScriptPrompt(const QUrl &origin, const QString &text, const QString &initial,
                          QString *result) override;
    QStringList chooseFiles(FileSelectionMode mode, const QStringList &oldFiles,
                            const QStringList &acceptedMimeTypes) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString &, int,
                                  const QString &) override
    {
    }

private:
    void answerWindow(const QWebEngineNewWindowRequest &request);
    void authenticate(const QString &site, QAuthenticator &authenticator);
    bool refuses();
    void dialogEnded();

    std::unique_ptr<QWebEngineView> m_view;
    PageDialogs m_dialogs;
    bool m_expectsOwnDocument = false;
    bool m_leavesUnasked = false;
    int m_refusals = 0;
    QString m_site;    ///< Of the page, or of the one that it goes to.
    int m_windows = 0; ///< That were asked for without a press of the user's.
    bool m_isEnding = false;
};

} // namespace morvane
