#pragma once

#include <QLabel>

namespace morvane {

/// A label that wants the room of one line and wraps where it gets less. The toolkit's own label that wraps
/// wants to be about as high as it is wide.
class LineLabel : public QLabel {
    Q_OBJECT
public:
    explicit LineLabel(Qt::TextFormat format, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    /// The longest word stays whole.
    QSize minimumSizeHint() const override;
};

} // namespace morvane
