#include "ui/controls/DescribedMenuItem.h"

#include <QAccessibleObject>
#include <QAction>
#include <QMenu>
#include <QPointer>
#include <QWindow>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// An entry as the toolkit's own, but with a description.
class DescribedMenuItem final : public QAccessibleObject, public QAccessibleActionInterface {
public:
    DescribedMenuItem(QMenu &menu, QAction &entry, QString hint)
        : QAccessibleObject(&entry), m_menu(&menu), m_hint(std::move(hint))
    {
    }

    bool isValid() const override { return QAccessibleObject::isValid() && m_menu; }
    QWindow *window() const override { return m_menu ? m_menu->windowHandle() : nullptr; }
    QAccessibleInterface *parent() const override
    {
        return m_menu ? QAccessible::queryAccessibleInterface(m_menu) : nullptr;
    }
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }

    QAccessible::Role role() const override { return QAccessible::MenuItem; }
    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Name)
            return entry()->text().replace(u"&&"_s, u"&"_s);
        return kind == QAccessible::Description ? m_hint : QString();
    }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.focusable = true;
        state.focused = m_menu && m_menu->activeAction() == entry();
        state.disabled = !entry()->isEnabled();
        state.invisible = !m_menu || !m_menu->isVisible() || !entry()->isVisible();
        return state;
    }
    QRect rect() const override
    {
        if (!m_menu)
            return {};
        const QRect place = m_menu->actionGeometry(entry());
        return {m_menu->mapToGlobal(place.topLeft()), place.size()};
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString &name) override
    {
        if (name == pressAction())
            entry()->trigger();
    }
    QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    QAction *entry() const { return static_cast<QAction *>(object()); }

    QPointer<QMenu> m_menu;
    QString m_hint;
};

} // namespace

void describeMenuItem(QMenu &menu, QAction &entry, const QString &hint)
{
    QAccessible::registerAccessibleInterface(new DescribedMenuItem(menu, entry, hint));
}

} // namespace morvane
