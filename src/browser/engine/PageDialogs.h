#pragma once

#include "ui/sheets/AnswerGuard.h"

#include <QFileDialog>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>
#include <utility>

class QWidget;

namespace morvane {

/// The dialogs of one page. The engine wants each answer at once, so that a sheet holds its caller in a loop
/// of its own while the program goes on. A page that nobody sees is answered as if the user had refused, and
/// so is one that the user has silenced, with all that stands in it. Main thread.
class PageDialogs {
public:
    struct Credentials {
        QString user;
        QString password;
    };

    /// `view` shows the page, which is of the site `page`. Both stay as long as a sheet stands. `tell` hears
    /// in one line what is asked while the user is in another window; by `now` a sheet waits for the user to
    /// pause.
    PageDialogs(QWidget &view, std::function<QString()> page, std::function<void(const QString &words)> tell,
                SteadyNow now)
        : m_view(view), m_page(std::move(page)), m_tell(std::move(tell)), m_now(std::move(now))
    {
    }
    PageDialogs(const PageDialogs &) = delete;
    PageDialogs &operator=(const PageDialogs &) = delete;

    void alert(const QString &site, const QString &text);
    bool confirm(const QString &site, const QString &text);
    std::optional<QString> prompt(const QString &site, const QString &text, const QString &initial);
    /// What a server wants to know before it gives the page; `realm` is what it calls itself.
    std::optional<Credentials> credentials(const QString &site, const QString &realm);
    /// The files, or the one folder, that the page is to have; whole paths.
    QStringList files(const QString &site, QFileDialog::FileMode mode);

    /// Whether one stands.
    bool isOpen() const { return m_sheet; }
    /// Answers what stands as if the user had refused.
    void dismiss();
    /// Whether the user wants to hear no more of this site.
    bool isSilenced(const QString &site) const;
    /// From now on it may speak again.
    void forget();

private:
    /// Null unless the user agreed; goes by itself afterwards.
    QPointer<QDialog> show(QDialog *sheet, const QString &site);
    bool isSeen(const QString &site) const;
    void silence(const QString &site);

    QWidget &m_view;
    std::function<QString()> m_page;
    std::function<void(const QString &)> m_tell;
    SteadyNow m_now;
    QPointer<QDialog> m_sheet;
    int m_inARow = 0; ///< Since the user or the agent went somewhere.
    QSet<QString> m_silenced;
    int m_silences = 0;
};

} // namespace morvane
