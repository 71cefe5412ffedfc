#include "browser/engine/EnginePage.h"

#include "browser/pages/SiteOf.h"

#include <QAction>
#include <QAuthenticator>
#include <QCoreApplication>
#include <QWebEngineCertificateError>
#include <QWebEngineNewWindowRequest>
#include <QWebEngineScript>
#include <QWebEngineSettings>
#include <QWebEngineView>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// That a document gets without a press of the user's. Each loads in the place of the one before.
constexpr int mostWindows = 5;

bool isOfTheWeb(const QUrl &address)
{
    return address.scheme() == "http"_L1 || address.scheme() == "https"_L1 ||
           address == QUrl(u"about:blank"_s);
}

/// What the engine asks with when the user may lose something; there is no other sign of it.
QString leavingQuestion()
{
    return QCoreApplication::translate(
        "QWebEnginePage",
        "Are you sure you want to leave this page? Changes that you made may not be saved.");
}

} // namespace

EnginePage::EnginePage(QWebEngineProfile &profile, SteadyNow now, QObject *parent)
    : QWebEnginePage(&profile, parent), m_view(std::make_unique<QWebEngineView>()),
      m_dialogs(
          *m_view, [this] { return m_site; }, [this](const QString &words) { Q_EMIT askedElsewhere(words); },
          std::move(now))
{
    m_view->setPage(this);
    // It would go to an address that is none of the web's.
    action(QWebEnginePage::ViewSource)->setVisible(false);
    connect(this, &QWebEnginePage::certificateError, this,
            [](QWebEngineCertificateError error) { error.rejectCertificate(); });
    connect(this, &QWebEnginePage::newWindowRequested, this, &EnginePage::answerWindow);
    connect(this, &QWebEnginePage::authenticationRequired, this,
            [this](const QUrl &address, QAuthenticator *authenticator) {
                authenticate(siteOf(address), *authenticator);
            });
    connect(this, &QWebEnginePage::proxyAuthenticationRequired, this,
            [this](const QUrl &, QAuthenticator *authenticator, const QString &proxy) {
                authenticate(proxy, *authenticator);
            });
}

EnginePage::~EnginePage() = default;

void EnginePage::removeSiteData()
{
    // A document without a site of its own may not even ask for these.
    runJavaScript(uR"js(try {
  localStorage.clear();
  sessionStorage.clear();
  indexedDB.databases().then(all => all.forEach(each => indexedDB.deleteDatabase(each.name)));
  caches.keys().then(all => all.forEach(each => caches.delete(each)));
  navigator.serviceWorker.getRegistrations().then(all => all.forEach(each => each.unregister()));
} catch (e) {})js"_s,
                  QWebEngineScript::ApplicationWorld);
}

void EnginePage::answerWindow(const QWebEngineNewWindowRequest &request)
{
    // The agent's clicks are a script's, too, so that not all of these can be refused. But each costs the
    // engine so much that a page which asks without end would do nothing else.
    if (!request.isUserInitiated() && ++m_windows == mostWindows) {
        settings()->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, false);
        Q_EMIT windowsRefused();
    }
    // One without an address is to be written by the page itself; one that may not be is called so, too.
    const QUrl address = request.requestedUrl();
    Q_EMIT windowWanted(isOfTheWeb(address) && address.scheme() != "about"_L1 ? address : QUrl());
}

void EnginePage::forgetWindows()
{
    if (std::exchange(m_windows, 0) >= mostWindows)
        settings()->resetAttribute(QWebEngineSettings::JavascriptCanOpenWindows);
}

void EnginePage::endLater()
{
    m_isEnding = true;
    if (m_dialogs.isOpen())
        m_dialogs.dismiss();
    else
        deleteLater();
}

void EnginePage::setLeavesUnasked(bool leavesUnasked)
{
    m_leavesUnasked = leavesUnasked;
    m_refusals = 0;
    if (leavesUnasked)
        m_dialogs.dismiss();
}

bool EnginePage::refuses()
{
    constexpr int mostRefusals = 100;
    if (m_leavesUnasked && ++m_refusals == mostRefusals)
        Q_EMIT asksWithoutEnd();
    return m_leavesUnasked;
}

void EnginePage::dialogEnded()
{
    // Its own functions are still at work, and the engine's below them.
    if (m_isEnding)
        deleteLater();
}

bool EnginePage::acceptNavigationRequest(const QUrl &address, NavigationType type, bool isMainFrame)
{
    if (!isMainFrame)
        return true;
    // A load that follows at once takes its place before it is asked about.
    if (std::exchange(m_expectsOwnDocument, false) && address.scheme() == "data"_L1) {
        Q_EMIT navigationAccepted(QUrl(), false);
        return true;
    }
    if (!isOfTheWeb(address))
        return false;
    m_site = siteOf(address);
    Q_EMIT navigationAccepted(address, type == NavigationTypeRedirect);
    return true;
}

void EnginePage::javaScriptAlert(const QUrl &origin, const QString &text)
{
    if (refuses())
        return;
    m_dialogs.alert(siteOf(origin), text);
    dialogEnded();
}

bool EnginePage::javaScriptConfirm(const QUrl &origin, const QString &text)
{
    if (refuses())
        return text == leavingQuestion();
    // Nor is anybody held by a page that is not to ask.
    if (m_dialogs.isSilenced(siteOf(origin)) && text == leavingQuestion())
        return true;
    const bool agreed = m_dialogs.confirm(siteOf(origin), text);
    dialogEnded();
    return agreed;
}

bool EnginePage::javaScriptPrompt(const QUrl &origin, const QString &text, const QString &initial,
                                  QString *result)
{
    if (refuses())
        return false;
    const auto answer = m_dialogs.prompt(siteOf(origin), text, initial);
    dialogEnded();
    *result = answer.value_or(QString());
    return answer.has_value();
}

QStringList EnginePage::chooseFiles(FileSelectionMode mode, const QStringList &, const QStringList &)
{
    // A place to write to is asked for by what no page gets.
    if (mode == FileSelectSave || refuses())
        return {};
    const auto fileMode = [mode] {
        switch (mode) {
        case FileSelectOpenMultiple:
            return QFileDialog::ExistingFiles;
        case FileSelectUploadFolder:
            return QFileDialog::Directory;
        default:
            return QFileDialog::ExistingFile;
        }
    };
    const QStringList files = m_dialogs.files(siteOf(url()), fileMode());
    dialogEnded();
    return files;
}

void EnginePage::authenticate(const QString &site, QAuthenticator &authenticator)
{
    const auto answer = m_dialogs.credentials(site, authenticator.realm());
    dialogEnded();
    // Left as it is, it would be sent with an empty name.
    authenticator = QAuthenticator();
    if (answer) {
        authenticator.setUser(answer->user);
        authenticator.setPassword(answer->password);
    }
}

} // namespace morvane
