#include "platform/linux/desktop/AccessiblePeers.h"

#include "platform/linux/desktop/ElementFacts.h"

#include <QDBusArgument>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Of all programs together; a program may claim dialogs without end.
constexpr std::size_t mostLines = 64;
constexpr qsizetype mostWindows = 1000;

} // namespace

AccessibilityAnswer AccessiblePeers::tell(const AccessibilityCall &call, qint64 pid, QDeadlineTimer deadline)
{
    const QList<AccessibilityReference> dialogs = openDialogs(call.service, deadline);
    const std::shared_ptr peer = AccessiblePeer::open(m_bus, call.service, pid, deadline);
    if (!peer)
        return m_bus.ask(call, deadline);
    keep({call.service, dialogs, peer});
    return peer->ask(call, deadline);
}

QList<AccessibilityReference> AccessiblePeers::openDialogs(const QString &service, QDeadlineTimer deadline)
{
    const QString accessibleInterface = u"org.a11y.atspi.Accessible"_s;
    const AccessibilityCall question{service, u"/org/a11y/atspi/accessible/root"_s, accessibleInterface,
                                     u"GetChildren"_s};
    const auto windows = referencesOf(m_bus.ask(question, deadline), mostWindows);
    QList<AccessibilityCall> calls;
    for (const AccessibilityReference &window : windows)
        calls.append({window.service, window.path, accessibleInterface, u"GetState"_s});
    const auto answers = m_bus.ask(calls, deadline);
    QList<AccessibilityReference> dialogs;
    for (qsizetype at = 0; at < windows.size(); ++at) {
        ElementFacts facts;
        facts.states = qdbus_cast<QList<uint>>(answers.at(at).values.value(0));
        if (facts.has(ElementFacts::modalState))
            dialogs.append(windows.at(at));
    }
    return dialogs;
}

void AccessiblePeers::keep(Line line)
{
    const auto isRead = [&line](const Line &other) {
        return other.service == line.service &&
               std::all_of(line.dialogs.begin(), line.dialogs.end(),
                           [&other](const auto &dialog) { return other.dialogs.contains(dialog); });
    };
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_lines, [&](const Line &other) { return isRead(other) || !other.peer->isOpen(); });
    if (m_lines.size() >= mostLines)
        m_lines.erase(m_lines.begin());
    m_lines.push_back(std::move(line));
}

} // namespace morvane
