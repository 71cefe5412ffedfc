#pragma once

#include "platform/AccessibilityTree.h"
#include "tools/screen/AXElementInfo.h"

#include <QDeadlineTimer>
#include <QList>
#include <stop_token>
#include <vector>

namespace morvane {

/// Finds the clickable elements of one program. Parents come before their children and the first child's
/// descendants before the second child; what lies behind the budget is never found. The tree is read in waves
/// of many questions, always those that the walk comes to next, so that a large program costs no more than a
/// small one. One thread.
class ElementWalk {
public:
    static constexpr int depthLimit = 12;
    static constexpr int elementBudget = 120;

    ElementWalk(AccessibilityTree &tree, QDeadlineTimer deadline, std::stop_token stop);

    /// What was found when all is read, the budget is used up, or the time is.
    QList<AXElementInfo> find(const ScreenElement &application);

private:
    /// What is known of an element's children so far.
    struct Node {
        ScreenElement element;
        bool isRead = false;
        std::vector<Node> children;
    };

    void walk(Node &node, int depth);

    AccessibilityTree &m_tree;
    const QDeadlineTimer m_deadline;
    const std::stop_token m_stop;
    int m_budget = elementBudget;
    QList<AXElementInfo> m_results;
    std::vector<Node *> m_unread; ///< Those that the walk came to first.
};

/// What the model is told of `element`; nothing if it is not clickable or too small to be seen.
std::optional<AXElementInfo> clickable(const ScreenElement &element);

/// In lines from top to bottom and from left to right; elements within 12 points are on one line.
QList<AXElementInfo> inReadingOrder(const QList<AXElementInfo> &elements);

} // namespace morvane
