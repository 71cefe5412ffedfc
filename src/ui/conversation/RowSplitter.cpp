#include "ui/conversation/RowSplitter.h"

#include "base/Overloaded.h"
#include "ui/conversation/MessageParts.h"

#include <QPromise>
#include <QThreadPool>
#include <memory>
#include <utility>

namespace morvane {

RowSplitter::RowSplitter()
{
    connect(&m_work, &QFutureWatcherBase::finished, this, &RowSplitter::finish);
}

bool RowSplitter::isLong(const ChatMessage &message)
{
    constexpr qsizetype limit = 200'000;
    return !message.isStreaming &&
           message.text.size() + message.errorMessage.value_or(QString()).size() > limit;
}

bool RowSplitter::isFor(const ConversationItem &item) const
{
    return std::visit(Overloaded{
                          [](const Idle &) { return false; },
                          [&item](const auto &phase) { return phase.item == item; },
                      },
                      m_phase);
}

void RowSplitter::begin(const ConversationItem &item, const ChatMessage &message)
{
    if (isFor(item))
        return;
    const auto promise = std::make_shared<QPromise<RowLayout>>();
    m_phase = Running{item};
    m_work.setFuture(promise->future());
    QThreadPool::globalInstance()->start([promise, message] {
        promise->start();
        promise->addResult(rowOf(message));
        promise->finish();
    });
}

void RowSplitter::finish()
{
    if (const auto *running = std::get_if<Running>(&m_phase)) {
        const ConversationItem item = running->item;
        m_phase = Done{item, m_work.result()};
        m_work.setFuture({});
        Q_EMIT done();
    }
}

std::optional<RowLayout> RowSplitter::take(const ConversationItem &item)
{
    auto *done = std::get_if<Done>(&m_phase);
    if (done == nullptr || !isFor(item))
        return std::nullopt;
    RowLayout row = std::move(done->row);
    m_phase = Idle{};
    return row;
}

void RowSplitter::forget(const ConversationItem &item)
{
    if (isFor(item))
        forgetAll();
}

void RowSplitter::forgetAll()
{
    m_phase = Idle{};
    m_work.setFuture({});
}

} // namespace morvane
