#pragma once

#include <QImage>
#include <QList>
#include <QPlainTextEdit>
#include <QUrl>

namespace morvane {

/// The field in which the user writes: grows with its text up to eight lines, Return sends, Shift+Return
/// begins a new line, Tab leaves the field. Pasted files and pictures are not its own.
class ComposerEdit : public QPlainTextEdit {
    Q_OBJECT
public:
    explicit ComposerEdit(QWidget *parent = nullptr);

Q_SIGNALS:
    void sendRequested();
    /// A page down (1) or up (-1) of what stands above the field.
    void pageRequested(int direction);
    void filesPasted(const QList<QUrl> &urls);
    /// A picture in the format of its name's extension.
    void imagePasted(const QByteArray &data, const QString &filename);
    /// A picture that this program itself has put on the clipboard.
    void ownImagePasted(const QImage &image, const QString &filename);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;

private:
    void fitHeight();
};

} // namespace morvane
