#include "ui/find/FindSession.h"

#include "app/Transcript.h"
#include "async/OffMain.h"
#include "async/Scheduler.h"
#include "base/Overloaded.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

FindSession::FindSession(Scheduler &scheduler, const Transcript &transcript, QObject *parent)
    : QObject(parent), m_scheduler(scheduler), m_transcript(transcript)
{
    connect(&transcript, &Transcript::messagesReset, this, &FindSession::searchAgain);
    connect(&transcript, &Transcript::messageAppended, this, &FindSession::searchAgain);
    connect(&transcript, &Transcript::messageChanged, this, &FindSession::searchAgain);
}

FindSession::~FindSession()
{
    stop();
}

void FindSession::stop()
{
    if (const auto *searching = std::get_if<Searching>(&m_phase))
        *searching->isStopped = true;
    m_phase = Idle();
}

void FindSession::search(const QString &words, qsizetype message)
{
    if (words == m_words)
        return;
    m_words = words;
    begin({.message = message, .shown = {}});
}

void FindSession::searchAgain()
{
    if (std::holds_alternative<Idle>(m_phase))
        return;
    Goal goal = m_goal;
    if (const auto *done = std::get_if<Done>(&m_phase)) {
        goal.isRepeated = true;
        if (done->current >= 0)
            goal.shown = done->search.at(done->current);
    }
    begin(goal);
}

void FindSession::begin(const Goal &goal)
{
    stop();
    m_goal = goal;
    if (!m_words.isEmpty()) {
        auto isStopped = std::make_shared<std::atomic<bool>>(false);
        m_phase = Searching{isStopped};
        m_scheduler.spawn(searchOffMain(this, m_transcript.messages(), m_words, isStopped, goal));
    }
    Q_EMIT changed();
}

Task<void> FindSession::searchOffMain(QPointer<FindSession> session, QList<ChatMessage> messages,
                                      QString words, std::shared_ptr<std::atomic<bool>> isStopped, Goal goal)
{
    MessageSearch search =
        co_await runOffMain([messages = std::move(messages), words = std::move(words), isStopped] {
            return MessageSearch::run(messages, words, *isStopped);
        });
    if (session && !*isStopped)
        session->finish(std::move(search), goal);
}

void FindSession::finish(MessageSearch search, const Goal &goal)
{
    qsizetype current = goal.shown ? search.indexOf(*goal.shown) : -1;
    if (current < 0 && search.count() > 0)
        current = search.firstFrom(goal.shown ? goal.shown->message : goal.message);
    m_phase = Done{std::move(search), current};
    Q_EMIT changed();
    if (goal.isRepeated)
        return;
    if (current < 0)
        Q_EMIT nothingFound();
    else
        Q_EMIT reached(std::get<Done>(m_phase).search.at(current));
}

void FindSession::step(int direction)
{
    auto *done = std::get_if<Done>(&m_phase);
    if (done == nullptr)
        return;
    const qsizetype count = done->search.count();
    if (count == 0) {
        Q_EMIT nothingFound();
        return;
    }
    done->current = (done->current + direction + count) % count;
    Q_EMIT changed();
    Q_EMIT reached(done->search.at(done->current));
}

std::optional<qsizetype> FindSession::count() const
{
    const auto *done = std::get_if<Done>(&m_phase);
    return done ? std::optional(done->search.count()) : std::nullopt;
}

qsizetype FindSession::current() const
{
    const auto *done = std::get_if<Done>(&m_phase);
    return done ? done->current : -1;
}

QString FindSession::summary() const
{
    return std::visit(Overloaded{
                          [](const Idle &) { return QString(); },
                          [](const Searching &) { return u"Searching…"_s; },
                          [](const Done &done) {
                              return done.search.count() == 0
                                         ? u"No matches"_s
                                         : u"%1 of %2"_s.arg(done.current + 1).arg(done.search.count());
                          },
                      },
                      m_phase);
}

} // namespace morvane
