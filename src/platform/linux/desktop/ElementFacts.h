#pragma once

#include "platform/linux/desktop/AccessibilityConnection.h"

#include <QRectF>
#include <QString>
#include <QStringList>
#include <optional>

namespace morvane {

/// What a program tells of one element, in its own words. What it does not tell is empty.
struct ElementFacts {
    /// Numbers of the accessibility protocol.
    static constexpr uint32_t activeState = 1;
    static constexpr uint32_t modalState = 16;
    static constexpr uint32_t multiLineState = 17;
    static constexpr uint32_t showingState = 25;

    uint32_t role = 0; ///< 0 if the element does not answer.
    QList<uint> states;
    QString name;
    QString description;
    QString text; ///< The beginning of what a field holds.
    std::optional<QRectF> extents;
    QStringList actions;
    int childCount = 0;

    bool has(uint32_t state) const { return (states.value(state / 32) >> (state % 32) & 1) != 0; }
};

/// Asks all of them at once. Places are told from the window's inside where `fromWindow` says so.
QList<ElementFacts> readFacts(AccessibilityConnection &bus, const QList<AccessibilityReference> &elements,
                              const QList<bool> &fromWindow, QDeadlineTimer deadline);

/// A single reference; nothing if there is none.
std::optional<AccessibilityReference> referenceOf(const AccessibilityAnswer &answer);

} // namespace morvane
