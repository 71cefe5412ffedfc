#pragma once

#include "platform/AccessibilityTree.h"

#include <QPointF>
#include <QRectF>
#include <QString>

namespace morvane {

/// One clickable element of the screen, as the model is told of it and acts on it.
struct AXElementInfo {
    QString role; ///< The friendly role.
    QString label;
    QPointF center;
    QRectF frame;
    bool pressable = false;
    ScreenElement element;

    /// Such as "button 'Save'".
    QString summary() const;
};

/// What people call an element with this role: "button" for "AXButton".
QString friendlyRole(const QString &role);

} // namespace morvane
