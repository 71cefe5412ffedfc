#pragma once

#include <QLayout>
#include <memory>
#include <vector>

namespace morvane {

/// Lays its widgets out one beside the other, in as many rows as the width asks for. None becomes wider than
/// the layout.
class FlowLayout : public QLayout {
    Q_OBJECT
public:
    /// `spacing` in logical pixels, both ways.
    explicit FlowLayout(int spacing, QWidget *parent = nullptr);
    ~FlowLayout() override;

    void addItem(QLayoutItem *item) override;
    int count() const override;
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override { return minimumSize(); }
    void setGeometry(const QRect &rect) override;

private:
    enum class Mode { measure, place };

    int layOut(const QRect &rect, Mode mode) const;

    std::vector<std::unique_ptr<QLayoutItem>> m_items;
};

} // namespace morvane
