#pragma once

#include <QWidget>

namespace morvane {

class AppModel;
class DownloadProgressBar;
class NoteLabel;

/// The state of the local model on the welcome screen, and the way to set it up.
class LocalModelCard : public QWidget {
    Q_OBJECT
public:
    explicit LocalModelCard(AppModel &model, QWidget *parent = nullptr);

Q_SIGNALS:
    void settingsRequested();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void updateState();
    QString text() const;

    AppModel &m_model;
    NoteLabel *m_text;
    DownloadProgressBar *m_bar;
    NoteLabel *m_error;
    QWidget *m_buttons;
};

} // namespace morvane
