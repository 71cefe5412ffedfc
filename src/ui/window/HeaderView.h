#pragma once

#include <QWidget>

class QLabel;
class QToolButton;

namespace morvane {

class AppModel;
class BrowserWindowPort;

/// The top of the main window: the mark, the provider in use, the subagent at work, and the toolbar's
/// buttons.
class HeaderView : public QWidget {
    Q_OBJECT
public:
    /// Both must outlive the view.
    HeaderView(AppModel &model, BrowserWindowPort &browserWindow, QWidget *parent = nullptr);

Q_SIGNALS:
    void settingsRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void updateProvider();
    void updateSubagent();
    QToolButton *addButton(const QIcon &icon, const QString &text);

    AppModel &m_model;
    QLabel *m_title;
    QLabel *m_subagent;
    bool m_hasMark = true;
};

} // namespace morvane
