#include "browser/engine/PageDialogs.h"

#include "browser/engine/PageDialogSheet.h"
#include "browser/pages/PageText.h"
#include "ui/sheets/UnaskedDialog.h"

#include <QCheckBox>
#include <QDir>
#include <QEventLoop>
#include <QLineEdit>
#include <QWidget>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// A page can go from site to site to ask again.
constexpr int mostSilences = 3;

} // namespace

using Refusal = PageDialogSheet::Refusal;

void PageDialogs::alert(const QString &site, const QString &text)
{
    if (!isSeen(site))
        return;
    show(new PageDialogSheet(m_view.window(), site, text, Refusal::none), site);
}

bool PageDialogs::confirm(const QString &site, const QString &text)
{
    if (!isSeen(site))
        return false;
    return show(new PageDialogSheet(m_view.window(), site, text, Refusal::cancel), site);
}

std::optional<QString> PageDialogs::prompt(const QString &site, const QString &text, const QString &initial)
{
    if (!isSeen(site))
        return std::nullopt;
    auto *const sheet = new PageDialogSheet(m_view.window(), site, text, Refusal::cancel);
    const QLineEdit *const field = sheet->addField({}, initial);
    return show(sheet, site) ? std::optional(field->text()) : std::nullopt;
}

std::optional<PageDialogs::Credentials> PageDialogs::credentials(const QString &site, const QString &realm)
{
    if (!isSeen(site))
        return std::nullopt;
    auto *const sheet =
        new PageDialogSheet(m_view.window(), site, u"Sign in to see this page: "_s + realm, Refusal::cancel);
    const QLineEdit *const user = sheet->addField(u"User name"_s, {});
    QLineEdit *const password = sheet->addField(u"Password"_s, {});
    password->setEchoMode(QLineEdit::Password);
    if (!show(sheet, site))
        return std::nullopt;
    return Credentials{user->text(), password->text()};
}

QStringList PageDialogs::files(const QString &site, QFileDialog::FileMode mode)
{
    if (!isSeen(site))
        return {};
    auto *const dialog = new QFileDialog(
        m_view.window(), site.isEmpty() ? u"Choose File"_s : u"Choose File for "_s + pageText(site),
        QDir::homePath());
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setFileMode(mode);
    return show(dialog, site) ? dialog->selectedFiles() : QStringList();
}

void PageDialogs::dismiss()
{
    if (m_sheet)
        m_sheet->reject();
}

void PageDialogs::forget()
{
    m_inARow = 0;
    m_silenced.clear();
    m_silences = 0;
}

bool PageDialogs::isSilenced(const QString &site) const
{
    return m_silences >= mostSilences || m_silenced.contains(site) || m_silenced.contains(m_page());
}

void PageDialogs::silence(const QString &site)
{
    m_silenced.insert(site);
    m_silenced.insert(m_page()); // or each of its frames would have to be silenced
    ++m_silences;
}

bool PageDialogs::isSeen(const QString &site) const
{
    const QWidget *const window = m_view.window();
    return !isSilenced(site) && !m_sheet && m_view.isVisible() && !window->isMinimized();
}

QPointer<QDialog> PageDialogs::show(QDialog *sheet, const QString &site)
{
    auto *const words = qobject_cast<PageDialogSheet *>(sheet);
    const QCheckBox *const silenced = words && m_inARow++ > 0 ? words->addSilence() : nullptr;
    m_sheet = sheet;
    QEventLoop loop;
    bool isAccepted = false;
    // A key that comes behind the one that has answered still reaches the sheet.
    QObject::connect(
        sheet, &QDialog::finished, &loop,
        [&](int result) {
            isAccepted = result == QDialog::Accepted;
            loop.quit();
        },
        Qt::SingleShotConnection);
    QObject::connect(sheet, &QObject::destroyed, &loop, &QEventLoop::quit); // with its window
    guardAnswers(*sheet, m_now);
    if (openUnasked(*sheet) && words)
        m_tell(words->inOneLine());
    loop.exec();
    const QPointer<QDialog> shown = std::exchange(m_sheet, nullptr);
    if (!shown)
        return nullptr;
    if (silenced && silenced->isChecked())
        silence(site);
    shown->hide();
    shown->deleteLater();
    return isAccepted ? shown : nullptr;
}

} // namespace morvane
