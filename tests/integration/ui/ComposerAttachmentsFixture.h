#pragma once

#include "support/AppFixture.h"

#include "ui/window/AttachmentChip.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/ComposerView.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QToolButton>

namespace morvane {

/// The composer with a model that sees pictures, and files of many kinds to attach.
class ComposerAttachmentsFixture : public AppFixture {
protected:
    ComposerAttachmentsFixture() : view(std::make_unique<ComposerView>(*model, model->updates()))
    {
        settings->setProviderID(ProviderID::gemini);
        settings->setApiKey(QStringLiteral("key"));
        view->resize(600, 300);
        view->show();
        view->activateWindow();
        edit = view->findChild<ComposerEdit *>();
        view->focusDraft();
        announcer.spoken.clear();
    }
    ~ComposerAttachmentsFixture() override { view.reset(); }

    static QUrl file(const QString &name) { return QUrl::fromLocalFile(QStringLiteral("/files/") + name); }
    void attach(const QStringList &names)
    {
        QList<QUrl> urls;
        for (const QString &name : names)
            urls.append(file(name));
        view->handleFiles(urls);
        settle();
    }
    QStringList pendingNames() const
    {
        QStringList names;
        for (const ChatAttachment &attachment : view->attachments().attachments())
            names.append(attachment.filename);
        return names;
    }
    template <class Widget> Widget *shown(const QString &accessibleName) const
    {
        for (auto *widget : view->findChildren<Widget *>())
            if (widget->isVisible() && nameOf(widget) == accessibleName)
                return widget;
        return nullptr;
    }
    QWidget *shownWidget(const QString &accessibleName) const { return shown<QWidget>(accessibleName); }
    static QString nameOf(QWidget *widget)
    {
        QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(widget);
        return accessible ? accessible->text(QAccessible::Name) : QString();
    }
    QToolButton *button(const QString &name) const { return shown<QToolButton>(name); }
    QList<AttachmentChip *> chips() const
    {
        QList<AttachmentChip *> visible = view->findChildren<AttachmentChip *>();
        visible.removeIf([](const AttachmentChip *chip) { return !chip->isVisible(); });
        return visible;
    }
    void paste(QMimeData *data)
    {
        QApplication::clipboard()->setMimeData(data);
        edit->paste();
        settle();
    }
    bool warns() const
    {
        return shownWidget(QStringLiteral("Warning: the current model can't see images. Switch to a vision "
                                          "model to send them.")) != nullptr;
    }

    std::unique_ptr<ComposerView> view;
    ComposerEdit *edit = nullptr;
};

} // namespace morvane
