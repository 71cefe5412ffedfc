#pragma once

#include <QFrame>

class QLabel;
class QProgressBar;

namespace morvane {

class AppModel;

/// Stands above the conversation while the local model is set up: what happens, how far it is, and a way out.
class LocalModelBanner : public QFrame {
    Q_OBJECT
public:
    explicit LocalModelBanner(AppModel &model, QWidget *parent = nullptr);

private:
    void updateState();

    AppModel &m_model;
    QLabel *m_text;
    QProgressBar *m_progress;
};

} // namespace morvane
