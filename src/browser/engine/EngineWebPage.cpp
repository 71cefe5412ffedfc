#include "browser/engine/EngineWebPage.h"

#include "browser/engine/DocumentTitle.h"
#include "browser/engine/EnginePermission.h"
#include "browser/engine/LoadError.h"

#include <QWebEngineHistory>
#include <QWebEngineLoadingInfo>
#include <QWebEngineScript>
#include <QWebEngineView>
#include <csignal>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using namespace std::chrono_literals;

/// How long a server may keep a request waiting before anything of the page has come.
constexpr auto requestLimit = 60s;
/// A page can change its title and address without end, and every change is shown and heard.
constexpr auto changePause = 250ms;

bool isSameDocument(const QUrl &one, const QUrl &other)
{
    return one.adjusted(QUrl::RemoveFragment) == other.adjusted(QUrl::RemoveFragment);
}

QWebEnginePage::WebAction webAction(EditCommand command)
{
    switch (command) {
    case EditCommand::undo:
        return QWebEnginePage::Undo;
    case EditCommand::redo:
        return QWebEnginePage::Redo;
    case EditCommand::cut:
        return QWebEnginePage::Cut;
    case EditCommand::copy:
        return QWebEnginePage::Copy;
    case EditCommand::paste:
        return QWebEnginePage::Paste;
    case EditCommand::selectAll:
        return QWebEnginePage::SelectAll;
    }
    Q_UNREACHABLE();
}

} // namespace

EngineWebPage::EngineWebPage(QWebEngineProfile &profile, SteadyNow now, QObject &parent)
    : m_page(new EnginePage(profile, std::move(now), &parent))
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(requestLimit);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        m_next.reset();
        m_page->triggerAction(QWebEnginePage::Stop);
        end();
        Q_EMIT failed({PageFailure::Kind::failed, u"The server did not answer in time."_s});
    });
    m_changePause.setSingleShot(true);
    m_changePause.setInterval(changePause);
    connect(&m_changePause, &QTimer::timeout, this, [this] {
        if (std::exchange(m_hasChanged, false))
            tellOfChange();
    });
    connect(m_page, &EnginePage::navigationAccepted, this, &EngineWebPage::navigationAccepted);
    connect(m_page, &EnginePage::asksWithoutEnd, this, &EngineWebPage::endProcess);
    connect(m_page, &QWebEnginePage::urlChanged, this, &EngineWebPage::urlChanged);
    connect(m_page, &QWebEnginePage::loadProgress, this, &EngineWebPage::progressed);
    connect(m_page, &QWebEnginePage::loadStarted, this, [this] { m_isLoading = true; });
    connect(m_page, &QWebEnginePage::loadingChanged, this, &EngineWebPage::loadingChanged);
    connect(m_page, &QWebEnginePage::titleChanged, this, &EngineWebPage::tellOfChange);
    connect(m_page, &QWebEnginePage::renderProcessTerminated, this, &EngineWebPage::processEnded);
    connect(m_page, &EnginePage::askedElsewhere, this, &WebPage::askedElsewhere);
    connect(m_page, &EnginePage::windowWanted, this, &WebPage::newWindowRequested);
    connect(m_page, &EnginePage::windowsRefused, this, &WebPage::windowsRefused);
    connect(m_page, &QWebEnginePage::featurePermissionRequested, this, &EngineWebPage::askFor);
}

EngineWebPage::~EngineWebPage()
{
    m_page->disconnect(this);
    m_page->view().setParent(nullptr);
    m_page->view().hide();
    m_page->endLater();
}

void EngineWebPage::load(const QUrl &address)
{
    onceItAnswers([this, address] {
        m_isLoading = true;
        m_wanted = address;
        m_patience.start();
        leaveUnasked();
        m_page->load(address);
    });
}

void EngineWebPage::loadHtml(const QString &html)
{
    m_ownDocument = html;
    onceItAnswers([this, html] {
        m_isLoading = true;
        m_page->expectOwnDocument();
        m_page->setHtml(html);
    });
}

void EngineWebPage::goBack()
{
    onceItAnswers([this] { goTo(m_page->history()->backItems(1)); });
}

void EngineWebPage::goForward()
{
    onceItAnswers([this] { goTo(m_page->history()->forwardItems(1)); });
}

void EngineWebPage::goTo(const QList<QWebEngineHistoryItem> &items)
{
    if (!items.isEmpty())
        m_page->history()->goToItem(items.first());
}

void EngineWebPage::reload()
{
    if (m_showsOwnDocument)
        loadHtml(m_ownDocument);
    else
        onceItAnswers([this] { m_page->triggerAction(QWebEnginePage::Reload); });
}

void EngineWebPage::stop()
{
    m_stopped = Stopped::nothing;
    m_page->dialogs().dismiss();
    m_page->triggerAction(QWebEnginePage::Stop);
}

void EngineWebPage::connectionsEnded()
{
    // What has not been accepted yet, or is ours, has no connection.
    const bool hasNone = m_next ? m_next->isEmpty() : m_navigation || m_showsOwnDocument;
    if (!m_isLoading || hasNone || m_page->expectsOwnDocument())
        return;
    m_page->triggerAction(QWebEnginePage::Stop);
    m_next.reset();
    m_stopped = m_navigation ? Stopped::beginsAnew : Stopped::ends;
    if (m_navigation)
        return;
    end();
    Q_EMIT failed({PageFailure::Kind::failed, connectionsClearedAway()});
}

void EngineWebPage::setZoom(double factor)
{
    m_zoom = factor;
    m_page->setZoomFactor(factor);
}

void EngineWebPage::edit(EditCommand command)
{
    m_page->triggerAction(webAction(command));
}

QString EngineWebPage::title() const
{
    return documentTitle(m_page->title(), m_page->url());
}

QUrl EngineWebPage::address() const
{
    // A name and a password are for the server alone.
    return m_showsOwnDocument ? QUrl() : m_page->url().adjusted(QUrl::RemoveUserInfo);
}

bool EngineWebPage::canGoBack() const
{
    // The engine's own back passes over a page that was left without a key or a press of the user's, as every
    // page is that the agent leaves.
    return !m_page->history()->backItems(1).isEmpty();
}

bool EngineWebPage::canGoForward() const
{
    return !m_page->history()->forwardItems(1).isEmpty();
}

void EngineWebPage::evaluate(const QString &script, ScriptAnswer answer)
{
    if (!m_hasProcess) {
        answer({});
        return;
    }
    m_page->forgetWindows();
    const quint64 number = ++m_scripts;
    m_answers[number] = std::move(answer);
    m_page->runJavaScript(script, QWebEngineScript::ApplicationWorld,
                          [self = QPointer(this), number](const QVariant &value) {
                              if (self)
                                  self->answer(number, value);
                          });
}

void EngineWebPage::scriptUnanswered()
{
    // A page whose question stands answers when it is answered.
    m_isHung = !m_answers.empty() && !m_page->dialogs().isOpen();
}

void EngineWebPage::answer(quint64 script, const QVariant &value)
{
    m_isHung = false;
    if (const auto entry = m_answers.extract(script))
        entry.mapped()(value);
}

void EngineWebPage::answerNothing()
{
    for (const auto &[script, answer] : std::exchange(m_answers, {}))
        answer({});
}

QWidget *EngineWebPage::view()
{
    return &m_page->view();
}

void EngineWebPage::onceItAnswers(std::function<void()> navigation)
{
    // Where the user or the agent goes a page may speak again; one that takes its own place goes on speaking.
    m_page->dialogs().forget();
    if (m_stopped == Stopped::beginsAnew)
        m_stopped = Stopped::ends;
    m_navigation = navigation;
    m_wanted.clear();
    if (!m_isHung || m_page->renderProcessPid() <= 0) {
        navigation();
        return;
    }
    m_isLoading = true;
    endProcess();
}

void EngineWebPage::endProcess()
{
    // The engine would wait for it for ever, even to stop.
    m_isHung = false;
    if (const qint64 process = m_page->renderProcessPid(); process > 0)
        ::kill(pid_t(process), SIGKILL);
}

void EngineWebPage::processEnded()
{
    m_hasProcess = false;
    answerNothing();
    // It may have taken a load under way with it.
    if (const auto navigation = std::exchange(m_navigation, nullptr)) {
        navigation();
        return;
    }
    m_next.reset();
    end();
    Q_EMIT failed({PageFailure::Kind::crashed, u"The page crashed."_s});
}

void EngineWebPage::navigationAccepted(const QUrl &address, bool isRedirection)
{
    m_isLoading = true;
    m_hasProcess = true;
    m_stopped = Stopped::nothing;
    m_next = address;
    if (!isRedirection)
        Q_EMIT navigationStarted(address);
}

void EngineWebPage::urlChanged(const QUrl &address)
{
    if (m_stopped != Stopped::nothing)
        return;
    if (m_next && (m_next->isEmpty() || isSameDocument(address, *m_next))) {
        commit();
        return;
    }
    // A step within the document is over with this.
    if (!m_next && isSameDocument(address, m_wanted))
        end();
    else if (!m_next)
        m_page->setLeavesUnasked(false);
    tellOfChange();
}

void EngineWebPage::tellOfChange()
{
    if (m_changePause.isActive()) {
        m_hasChanged = true;
        return;
    }
    m_changePause.start();
    Q_EMIT changed();
}

void EngineWebPage::askFor(const QUrl &origin, QWebEnginePage::Feature feature)
{
    // One that is not answered yet answers all that are like it.
    std::erase_if(m_asked, [](const auto &asked) { return asked.expired(); });
    for (const auto &asked : m_asked)
        if (const auto permission = asked.lock(); permission && permission->isFor(origin, feature))
            return;
    const auto permission = EnginePermission::make(*m_page, origin, feature);
    if (!permission) {
        m_page->setFeaturePermission(origin, feature, QWebEnginePage::PermissionDeniedByUser);
        return;
    }
    m_asked.push_back(permission);
    Q_EMIT permissionRequested(permission);
}

bool EngineWebPage::isNext(const QUrl &address) const
{
    return m_next->isEmpty() ? address.scheme() == "data"_L1 : isSameDocument(address, *m_next);
}

void EngineWebPage::progressed(int percent)
{
    // A document that takes the place of one with the same address says nothing else.
    constexpr int whole = 100;
    if (m_next && percent > 0 && percent < whole && isSameDocument(m_page->url(), *m_next))
        commit();
}

void EngineWebPage::commit()
{
    const bool wasOwn = m_showsOwnDocument;
    m_showsOwnDocument = m_next->isEmpty();
    m_next.reset();
    m_navigation = nullptr;
    m_patience.stop();
    m_page->setLeavesUnasked(false);
    m_page->forgetWindows();
    if (wasOwn && !m_showsOwnDocument)
        m_page->history()->clear();
    m_page->setZoomFactor(m_zoom);
    Q_EMIT committed();
}

void EngineWebPage::end()
{
    m_isLoading = false;
    m_navigation = nullptr;
    m_wanted.clear();
    m_patience.stop();
    m_page->setLeavesUnasked(false);
}

void EngineWebPage::loadingChanged(const QWebEngineLoadingInfo &info)
{
    if (m_stopped != Stopped::nothing) {
        if (info.status() == QWebEngineLoadingInfo::LoadStoppedStatus &&
            std::exchange(m_stopped, Stopped::nothing) == Stopped::beginsAnew)
            onceItAnswers(std::exchange(m_navigation, nullptr));
        return;
    }
    // The end of a load whose place another one has taken is told when that one is under way.
    if (m_next && !isNext(info.url()))
        return;
    switch (info.status()) {
    case QWebEngineLoadingInfo::LoadStartedStatus:
        return;
    case QWebEngineLoadingInfo::LoadStoppedStatus:
        break;
    case QWebEngineLoadingInfo::LoadSucceededStatus:
    case QWebEngineLoadingInfo::LoadFailedStatus:
        if (info.status() == QWebEngineLoadingInfo::LoadSucceededStatus ||
            info.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain) {
            const QPointer<EngineWebPage> self(this);
            if (m_next)
                commit();
            if (!self)
                return;
            end();
            Q_EMIT finished();
            return;
        }
        break;
    }
    m_next.reset();
    end();
    Q_EMIT failed(pageFailure(info));
}

} // namespace morvane
