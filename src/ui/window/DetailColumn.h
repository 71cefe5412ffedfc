#pragma once

#include <QWidget>

namespace morvane {

class ComposerView;

/// What stands beside the sidebar, from top to bottom. The conversation takes the room that the others leave;
/// where there is little of it, in a low window or with large type, the composer makes do with less.
class DetailColumn : public QWidget {
    Q_OBJECT
public:
    /// Takes all parts, of which `conversation` and `composer` stand among the others.
    DetailColumn(const QList<QWidget *> &parts, QWidget *conversation, ComposerView *composer);

protected:
    bool event(QEvent *event) override;

private:
    void fitComposer();

    QList<QWidget *> m_parts;
    QWidget *m_conversation;
    ComposerView *m_composer;
};

} // namespace morvane
