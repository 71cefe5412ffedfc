#pragma once

#include <QScrollArea>

class QLabel;
class QPushButton;

namespace morvane {

class AppModel;

/// What the conversation's place shows while there is no conversation: the mark, what is missing for a start,
/// and prompts to try.
class WelcomeView : public QScrollArea {
    Q_OBJECT
public:
    explicit WelcomeView(AppModel &model, QWidget *parent = nullptr);

Q_SIGNALS:
    void settingsRequested();

private:
    void updateState();

    AppModel &m_model;
    QWidget *m_settings = nullptr;
    QWidget *m_localModel;
};

} // namespace morvane
