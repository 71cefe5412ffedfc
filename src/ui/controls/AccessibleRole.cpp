#include "ui/controls/AccessibleRole.h"

#include <QAccessibleWidget>
#include <QLabel>
#include <QVariant>
#include <QWidget>

namespace morvane {

namespace {

constexpr auto roleProperty = "morvaneAccessibleRole";
constexpr auto modalProperty = "morvaneAccessibleModal";

class RoleInterface : public QAccessibleWidget {
public:
    RoleInterface(QWidget *widget, QAccessible::Role role) : QAccessibleWidget(widget, role) {}

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.modal = widget()->property(modalProperty).toBool();
        return state;
    }

    QString text(QAccessible::Text kind) const override
    {
        // Not the tool tip, which says what the name says.
        if (kind == QAccessible::Description)
            return widget()->accessibleDescription();
        const QString text = QAccessibleWidget::text(kind);
        const auto *label = qobject_cast<const QLabel *>(object());
        return kind == QAccessible::Name && text.isEmpty() && label != nullptr ? label->text() : text;
    }
};

QAccessibleInterface *createInterface(const QString &, QObject *object)
{
    auto *widget = qobject_cast<QWidget *>(object);
    const QVariant role = widget ? widget->property(roleProperty) : QVariant();
    if (!role.isValid())
        return nullptr;
    return new RoleInterface(widget, static_cast<QAccessible::Role>(role.toInt()));
}

} // namespace

void setAccessibleRole(QWidget *widget, QAccessible::Role role)
{
    QAccessible::installFactory(&createInterface);
    widget->setProperty(roleProperty, static_cast<int>(role));
}

void setAccessibleModalDialog(QWidget *widget)
{
    setAccessibleRole(widget, QAccessible::Dialog);
    widget->setProperty(modalProperty, true);
}

} // namespace morvane
