#pragma once

#include <QImage>
#include <QList>
#include <QRectF>
#include <QString>
#include <stop_token>

namespace morvane {

/// One line of text in a picture.
struct RecognizedLine {
    QString text;
    QRectF box; ///< In pixels, from the picture's top left.

    bool operator==(const RecognizedLine &) const = default;
};

/// Reads the text that a picture shows. Any thread; blocks for a second or so.
class TextRecognizer {
public:
    virtual ~TextRecognizer() = default;

    /// The lines in reading order; empty without any, on any failure, and soon after `stop`.
    virtual QList<RecognizedLine> recognize(const QImage &image, const std::stop_token &stop) = 0;
};

} // namespace morvane
