#include "platform/linux/AnnouncementNotice.h"

#include <QGuiApplication>

namespace morvane {

namespace {

class AccessibleNotice : public QAccessibleObject {
public:
    using QAccessibleObject::QAccessibleObject;

    QAccessibleInterface *parent() const override { return QAccessible::queryAccessibleInterface(qApp); }
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::Notification; }
    QAccessible::State state() const override { return {}; }

    QString text(QAccessible::Text kind) const override
    {
        const auto *notice = qobject_cast<AnnouncementNotice *>(object());
        return kind == QAccessible::Name && notice != nullptr ? notice->text() : QString();
    }
};

QAccessibleInterface *makeAccessibleNotice(const QString &className, QObject *object)
{
    const bool isNotice = className == QLatin1String(AnnouncementNotice::staticMetaObject.className());
    return isNotice && object != nullptr ? new AccessibleNotice(object) : nullptr;
}

} // namespace

AnnouncementNotice::AnnouncementNotice(QString text, QObject *parent)
    : QObject(parent), m_text(std::move(text))
{
}

void AnnouncementNotice::show()
{
    QAccessibleEvent event(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&event);
}

void AnnouncementNotice::installAccessibility()
{
    QAccessible::installFactory(makeAccessibleNotice);
}

} // namespace morvane
