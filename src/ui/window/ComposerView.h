#pragma once

#include <QWidget>

class QLabel;
class QToolButton;

namespace morvane {

class AppModel;
class ComposerEdit;

/// Where the user writes a message, sends it and stops the answer. Holds the draft; the model sees the text
/// only when it is sent.
class ComposerView : public QWidget {
    Q_OBJECT
public:
    explicit ComposerView(AppModel &model, QWidget *parent = nullptr);

    /// Whether the draft may be sent now.
    bool canSend() const;
    QString draft() const;
    void focusDraft();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void send();
    void takeSuggestion(const QString &prompt);
    void updateState();

    AppModel &m_model;
    ComposerEdit *m_edit;
    QToolButton *m_send;
    QToolButton *m_stop;
    QLabel *m_note;
};

} // namespace morvane
