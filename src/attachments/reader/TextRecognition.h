#pragma once

#include <QImage>
#include <QString>
#include <atomic>
#include <chrono>
#include <memory>

namespace tesseract {
class TessBaseAPI;
}

namespace morvane {

/// What was recognised, as far as the time reached.
struct RecognizedText {
    enum class End { whole, early };

    QString text;
    End end = End::whole;
};

/// Recognises the text that pictures show, in English and in the languages of the user's locale as far as
/// their data is installed. The data is read with the first picture.
class TextRecognition {
public:
    TextRecognition();
    ~TextRecognition();

    /// The lines in reading order, joined by line feeds; empty without any, without language data, when
    /// `limit` passes first, which is an early end, or soon after `givesUp` has become true. `dotsPerInch` is
    /// a guess that helps, 0 if unknown. One thread at a time for each object.
    RecognizedText lines(const QImage &image, int dotsPerInch, std::chrono::milliseconds limit,
                         const std::atomic<bool> *givesUp = nullptr);

private:
    bool prepare();

    std::unique_ptr<tesseract::TessBaseAPI> m_engine;
    bool m_isReady = false;
    bool m_hasFailed = false;
};

} // namespace morvane
