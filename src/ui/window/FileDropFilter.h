#pragma once

#include <QList>
#include <QObject>
#include <QUrl>

class QMimeData;
class QWidget;

namespace morvane {

/// Lets files of other programs be dropped anywhere on a widget and what it holds.
class FileDropFilter : public QObject {
    Q_OBJECT
public:
    /// Belongs to `target`.
    explicit FileDropFilter(QWidget *target);

    /// The files that `data` offers; addresses of other computers are left out.
    static QList<QUrl> filesOf(const QMimeData *data);

Q_SIGNALS:
    void filesDropped(const QList<QUrl> &urls);
    /// Whether files hang over the widget.
    void hoveringChanged(bool hovering);

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    QList<QUrl> m_files; ///< Those that hang over the widget.
};

} // namespace morvane
