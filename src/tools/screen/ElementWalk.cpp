#include "tools/screen/ElementWalk.h"

#include "base/Text.h"

#include <QSet>
#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Elements that one wave asks about: enough to make the ways to the program few, not enough to read a large
/// tree in vain.
constexpr int waveSize = 64;
constexpr qreal smallestSide = 4;
constexpr qreal sameCentre = 2;
constexpr qreal sameLine = 12;
constexpr qsizetype valueLimit = 60;

bool isCandidate(const ScreenElement &element)
{
    static const QSet<QString> roles{
        u"AXButton"_s,      u"AXLink"_s,     u"AXCheckBox"_s,  u"AXRadioButton"_s, u"AXPopUpButton"_s,
        u"AXMenuButton"_s,  u"AXMenuItem"_s, u"AXTextField"_s, u"AXTextArea"_s,    u"AXComboBox"_s,
        u"AXSearchField"_s, u"AXSlider"_s,   u"AXTabGroup"_s,  u"AXIncrementor"_s};
    return roles.contains(element.role) ||
           (element.pressable && element.role != "AXGroup"_L1 && element.role != "AXStaticText"_L1);
}

QString labelOf(const ScreenElement &element)
{
    if (element.title && !element.title->isEmpty())
        return *element.title;
    if (element.description && !element.description->isEmpty())
        return *element.description;
    const QString value = element.value.value_or(QString());
    const QString shown = firstCharacters(value, valueLimit);
    return shown.size() < value.size() ? shown + u'…' : shown;
}

bool isBefore(const AXElementInfo &one, const AXElementInfo &other)
{
    if (std::abs(one.center.y() - other.center.y()) > sameLine)
        return one.center.y() < other.center.y();
    return one.center.x() < other.center.x();
}

} // namespace

std::optional<AXElementInfo> clickable(const ScreenElement &element)
{
    if (!isCandidate(element) || !element.frame || element.frame->width() < smallestSide ||
        element.frame->height() < smallestSide)
        return std::nullopt;
    // Each element is one line to the model: a label of several would tell of elements that there are not.
    return AXElementInfo{friendlyRole(element.role), singleLine(labelOf(element)),
                         element.frame->center(),    *element.frame,
                         element.pressable,          element};
}

ElementWalk::ElementWalk(AccessibilityTree &tree, QDeadlineTimer deadline, std::stop_token stop)
    : m_tree(tree), m_deadline(deadline), m_stop(std::move(stop))
{
}

QList<AXElementInfo> ElementWalk::find(const ScreenElement &application)
{
    Node root{application, false, {}};
    for (;;) {
        m_budget = elementBudget;
        m_results.clear();
        m_unread.clear();
        walk(root, depthLimit);
        if (m_unread.empty() || m_deadline.hasExpired() || m_stop.stop_requested())
            return m_results;
        QList<ScreenElement> parents;
        for (const Node *node : m_unread)
            parents.append(node->element);
        const QList<QList<ScreenElement>> families = m_tree.children(parents, m_deadline, m_stop);
        for (std::size_t at = 0; at < m_unread.size(); ++at) {
            m_unread[at]->isRead = true;
            for (const ScreenElement &child : families.value(qsizetype(at)))
                m_unread[at]->children.push_back(Node{child, false, {}});
        }
    }
}

void ElementWalk::walk(Node &node, int depth)
{
    if (depth < 0 || m_budget < 1)
        return;
    if (auto info = clickable(node.element)) {
        // Nested wrappers of one control count once.
        const bool isKnown = std::any_of(m_results.cbegin(), m_results.cend(), [&](const auto &other) {
            const QPointF distance = info->center - other.center;
            return std::abs(distance.x()) < sameCentre && std::abs(distance.y()) < sameCentre;
        });
        if (!isKnown) {
            m_results.append(*std::move(info));
            --m_budget;
        }
    }
    if (depth == 0 || m_budget < 1)
        return;
    if (!node.isRead && node.element.mayHaveChildren && m_unread.size() < waveSize)
        m_unread.push_back(&node);
    for (Node &child : node.children)
        walk(child, depth - 1);
}

QList<AXElementInfo> inReadingOrder(const QList<AXElementInfo> &elements)
{
    // "On one line" is not transitive, which the library's sorts do not allow; this one is content with it.
    QList<AXElementInfo> ordered;
    for (const AXElementInfo &element : elements) {
        qsizetype at = ordered.size();
        while (at > 0 && isBefore(element, ordered.at(at - 1)))
            --at;
        ordered.insert(at, element);
    }
    return ordered;
}

} // namespace morvane
