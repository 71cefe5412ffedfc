#include "browser/window/PageQuestions.h"

#include "async/Scheduler.h"
#include "browser/pages/PageText.h"
#include "platform/Announcer.h"
#include "platform/UrlOpener.h"
#include "ui/sheets/UnaskedDialog.h"

#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QString wish(PagePermission::Kind kind)
{
    switch (kind) {
    case PagePermission::Kind::location:
        return u"know where you are"_s;
    case PagePermission::Kind::microphone:
        return u"use your microphone"_s;
    case PagePermission::Kind::camera:
        return u"use your camera"_s;
    case PagePermission::Kind::microphoneAndCamera:
        return u"use your microphone and your camera"_s;
    case PagePermission::Kind::notifications:
        return u"show notifications"_s;
    case PagePermission::Kind::screen:
        return u"see your screen"_s;
    }
    Q_UNREACHABLE();
}

QString siteName(const QString &site)
{
    return site.isEmpty() ? u"This page"_s : pageText(site);
}

QString downloadFolder()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    return QDir(folder).exists() ? folder : QDir::homePath();
}

} // namespace

void askWhereToSave(QWidget &window, const BrowserWindowServices &services, const QString &suggestedFileName,
                    const QString &site, std::function<void(const QString &path)> answer)
{
    const QString title = site.isEmpty() ? u"Save File"_s : u"Save File from "_s + pageText(site);
    auto *dialog = new QFileDialog(&window, title, downloadFolder());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->selectFile(suggestedFileName);
    // A key that comes behind the one that has answered still reaches the dialog.
    QObject::connect(
        dialog, &QFileDialog::finished, dialog,
        [dialog, answer = std::move(answer)](int result) {
            const QStringList files = dialog->selectedFiles();
            answer(result == QDialog::Accepted && !files.isEmpty() ? files.first() : QString());
        },
        Qt::SingleShotConnection);
    guardAnswers(*dialog, [&clock = services.scheduler.clock()] { return clock.now(); });
    if (openUnasked(*dialog))
        services.announcer.announce(title + u": "_s + pageText(suggestedFileName));
}

void askForPagePermission(QWidget &window, const BrowserWindowServices &services,
                          const PagePermission &permission, std::function<void(bool isGranted)> answer)
{
    auto *box = new QMessageBox(&window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIcon(QMessageBox::Question);
    box->setTextFormat(Qt::PlainText);
    box->setWindowTitle(siteName(permission.site()));
    box->setText(siteName(permission.site()) + u" would like to "_s + wish(permission.kind()) + u'.');
    auto *allow = box->addButton(u"Allow"_s, QMessageBox::AcceptRole);
    auto *refuse = box->addButton(u"Don't Allow"_s, QMessageBox::RejectRole);
    box->setDefaultButton(refuse);
    box->setEscapeButton(refuse);
    QObject::connect(box, &QMessageBox::finished, box,
                     [box, allow, answer = std::move(answer)] { answer(box->clickedButton() == allow); });
    QObject::connect(&permission, &PagePermission::withdrawn, box, &QMessageBox::deleteLater);
    guardAnswers(*box, [&clock = services.scheduler.clock()] { return clock.now(); });
    if (openUnasked(*box))
        services.announcer.announce(box->text());
}

void showShareMenu(QWidget &window, const BrowserWindowServices &services, const QUrl &address)
{
    auto *menu = new QMenu(&window);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setAccessibleName(u"Share"_s);
    QAction *copy = menu->addAction(u"Copy Link"_s, &window, [address, &announcer = services.announcer] {
        QGuiApplication::clipboard()->setText(address.toString(QUrl::FullyEncoded));
        announcer.announce(u"Link copied."_s);
    });
    menu->addAction(u"Open in Default Browser"_s, &window,
                    [address, &urls = services.urls, &announcer = services.announcer] {
                        if (!urls.open(address))
                            announcer.announce(u"The default browser could not be opened."_s);
                    });
    menu->addAction(u"Send by Email"_s, &window,
                    [address, &urls = services.urls, &announcer = services.announcer] {
                        if (!urls.beginMail(address.toString(QUrl::FullyEncoded)))
                            announcer.announce(u"No mail program could be opened."_s);
                    });
    menu->popup(window.mapToGlobal(window.rect().topRight() - QPoint(menu->sizeHint().width(), 0)));
    menu->setActiveAction(copy);
}

} // namespace morvane
