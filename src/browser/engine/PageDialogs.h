#pragma once

#include "browser/engine/PageDialogSheet.h"

#include <QPointer>
#include <QString>
#include <functional>
#include <optional>

class QWidget;

namespace morvane {

/// The dialogs of one page. The engine wants each answer at once, so that a sheet holds its caller in a loop
/// of its own while the program goes on. A page that nobody sees is answered as if the user had refused, and
/// so is one that the user has silenced. Main thread.
class PageDialogs {
public:
    struct Credentials {
        QString user;
        QString password;
    };

    /// `view` shows the page. Both stay as long as a sheet stands.
    explicit PageDialogs(QWidget &view) : m_view(view) {}
    PageDialogs(const PageDialogs &) = delete;
    PageDialogs &operator=(const PageDialogs &) = delete;

    void alert(const QString &site, const QString &text);
    bool confirm(const QString &site, const QString &text);
    std::optional<QString> prompt(const QString &site, const QString &text, const QString &initial);
    /// What a server wants to know before it gives the page; `realm` is what it calls itself.
    std::optional<Credentials> credentials(const QString &site, const QString &realm);

    /// Whether one stands.
    bool isOpen() const { return m_sheet; }
    /// Answers what stands as if the user had refused.
    void dismiss();
    /// Another document may speak again.
    void forget();

private:
    /// Null unless the user agreed; goes by itself afterwards.
    QPointer<PageDialogSheet> show(PageDialogSheet *sheet);
    bool isSeen() const;

    QWidget &m_view;
    QPointer<PageDialogSheet> m_sheet;
    int m_inARow = 0; ///< Of the same document.
    bool m_isSilenced = false;
};

} // namespace morvane
