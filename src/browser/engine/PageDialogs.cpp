#include "browser/engine/PageDialogs.h"

#include <QCheckBox>
#include <QEventLoop>
#include <QLineEdit>
#include <QWidget>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

using Refusal = PageDialogSheet::Refusal;

void PageDialogs::alert(const QString &site, const QString &text)
{
    if (!isSeen())
        return;
    show(new PageDialogSheet(m_view.window(), site, text, Refusal::none));
}

bool PageDialogs::confirm(const QString &site, const QString &text)
{
    if (!isSeen())
        return false;
    return show(new PageDialogSheet(m_view.window(), site, text, Refusal::cancel));
}

std::optional<QString> PageDialogs::prompt(const QString &site, const QString &text, const QString &initial)
{
    if (!isSeen())
        return std::nullopt;
    auto *const sheet = new PageDialogSheet(m_view.window(), site, text, Refusal::cancel);
    const QLineEdit *const field = sheet->addField({}, initial);
    return show(sheet) ? std::optional(field->text()) : std::nullopt;
}

std::optional<PageDialogs::Credentials> PageDialogs::credentials(const QString &site, const QString &realm)
{
    if (!isSeen())
        return std::nullopt;
    auto *const sheet =
        new PageDialogSheet(m_view.window(), site, u"Sign in to see this page: "_s + realm, Refusal::cancel);
    const QLineEdit *const user = sheet->addField(u"User name"_s, {});
    QLineEdit *const password = sheet->addField(u"Password"_s, {});
    password->setEchoMode(QLineEdit::Password);
    if (!show(sheet))
        return std::nullopt;
    return Credentials{user->text(), password->text()};
}

void PageDialogs::dismiss()
{
    if (m_sheet)
        m_sheet->reject();
}

void PageDialogs::forget()
{
    m_inARow = 0;
    m_isSilenced = false;
}

bool PageDialogs::isSeen() const
{
    const QWidget *const window = m_view.window();
    return !m_isSilenced && !m_sheet && m_view.isVisible() && !window->isMinimized();
}

QPointer<PageDialogSheet> PageDialogs::show(PageDialogSheet *sheet)
{
    const QCheckBox *const silence = m_inARow++ > 0 ? sheet->addSilence() : nullptr;
    m_sheet = sheet;
    QEventLoop loop;
    QObject::connect(sheet, &QDialog::finished, &loop, &QEventLoop::quit);
    QObject::connect(sheet, &QObject::destroyed, &loop, &QEventLoop::quit); // with its window
    sheet->open();
    loop.exec();
    const QPointer<PageDialogSheet> shown = std::exchange(m_sheet, nullptr);
    if (!shown)
        return nullptr;
    m_isSilenced = silence && silence->isChecked();
    shown->hide();
    shown->deleteLater();
    return shown->result() == QDialog::Accepted ? shown : nullptr;
}

} // namespace morvane
