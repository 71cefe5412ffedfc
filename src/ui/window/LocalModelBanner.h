#pragma once

#include <QFrame>

class QLabel;

namespace morvane {

class AppModel;
class DownloadProgressBar;

/// Stands above the conversation while a model is set up: what happens, how far it is, and a way out.
class LocalModelBanner : public QFrame {
    Q_OBJECT
public:
    explicit LocalModelBanner(AppModel &model, QWidget *parent = nullptr);

private:
    void updateState();

    AppModel &m_model;
    QLabel *m_text;
    DownloadProgressBar *m_bar;
};

} // namespace morvane
