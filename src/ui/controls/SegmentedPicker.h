#pragma once

#include <QList>
#include <QStringList>
#include <QWidget>

namespace morvane {

class SegmentButton;

/// One choice out of a few, all visible, in as many rows as the width asks for. It is one stop of the Tab
/// key: the arrow keys, Home and End move between the segments, Space or Return chooses the one reached, so
/// that passing over a segment changes nothing. Assistive technology finds a group of radio buttons.
class SegmentedPicker : public QWidget {
    Q_OBJECT
public:
    SegmentedPicker(const QString &accessibleName, const QStringList &labels, QWidget *parent = nullptr);

    int currentIndex() const { return m_current; }
    /// Shows another choice without `chosen`.
    void setCurrentIndex(int index);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;
    bool hasHeightForWidth() const override { return true; }

Q_SIGNALS:
    /// The user chose another segment.
    void chosen(int index);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    enum class Purpose { measure, place };
    int arrange(int width, Purpose purpose) const;
    void choose(int index);
    bool moveFocus(int from, int key);
    void makeTabStop(int index);

    QList<SegmentButton *> m_segments;
    int m_current = 0;
};

} // namespace morvane
