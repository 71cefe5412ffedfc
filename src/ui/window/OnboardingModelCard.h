#pragma once

#include <QWidget>

class QLabel;

namespace morvane {

class AppModel;
class DownloadProgressBar;
class HeadingLabel;
class NoteLabel;
class SymbolLabel;
class WrappingButton;

/// What the greeting says of the built-in local model: that it is being set up, how far that is and the way
/// to stop it, or that it is ready, or what it would be and the way to get it.
class OnboardingModelCard : public QWidget {
    Q_OBJECT
public:
    explicit OnboardingModelCard(AppModel &model, QWidget *parent = nullptr);

    /// Shows the state as it is now.
    void updateState();
    /// Has what can be pressed, in whatever state; hidden while that is nothing. The last part of the card.
    QWidget *buttons() const { return m_buttons; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    enum class State { settingUp, ready, missing };

    State state() const;
    /// What can be pressed in the present state; null where there is nothing to be done.
    WrappingButton *button() const;
    void updateProgress();

    AppModel &m_model;
    QWidget *m_head;
    SymbolLabel *m_symbol;
    HeadingLabel *m_heading;
    NoteLabel *m_text;
    NoteLabel *m_promise;
    DownloadProgressBar *m_bar;
    QLabel *m_percent;
    NoteLabel *m_progress;
    NoteLabel *m_error;
    QWidget *m_buttons;
    WrappingButton *m_cancel;
    WrappingButton *m_install;
};

} // namespace morvane
