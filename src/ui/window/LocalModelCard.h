#pragma once

#include <QFrame>

class QLabel;
class QProgressBar;

namespace morvane {

class AppModel;

/// The state of the local model on the welcome screen, and the way to set it up.
class LocalModelCard : public QFrame {
    Q_OBJECT
public:
    explicit LocalModelCard(AppModel &model, QWidget *parent = nullptr);

Q_SIGNALS:
    void settingsRequested();

private:
    void updateState();

    AppModel &m_model;
    QLabel *m_text;
    QProgressBar *m_progress;
    QWidget *m_buttons;
};

} // namespace morvane
