#pragma once

#include <QFrame>

class QToolButton;

namespace morvane {

class UpdateModel;
class UpdateProgress;
class WrappingButton;

/// Stands above the conversation while there is an update: which one, how far its installation is, and what
/// can be done.
class UpdateBanner : public QFrame {
    Q_OBJECT
public:
    /// `updates` must outlive the banner.
    explicit UpdateBanner(UpdateModel &updates, QWidget *parent = nullptr);

Q_SIGNALS:
    /// The focus is on something that is about to go.
    void focusLost();

private:
    void updateState();
    void showButtons();
    void leave(const QWidget *going);
    QString idleText() const;

    UpdateModel &m_updates;
    UpdateProgress *m_progress;
    WrappingButton *m_install;
    WrappingButton *m_retry;
    WrappingButton *m_website;
    QToolButton *m_dismiss;
    QWidget *m_waysOut; ///< From a failure.
};

} // namespace morvane
