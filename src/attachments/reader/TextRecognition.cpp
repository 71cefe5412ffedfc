#include "attachments/reader/TextRecognition.h"

#include "attachments/reader/RecognitionData.h"
#include "base/Text.h"

#include <QStringList>
#include <algorithm>
#include <tesseract/baseapi.h>
#include <tesseract/ocrclass.h>
#include <tesseract/resultiterator.h>

namespace morvane {
namespace {

/// Less is what photographs without text are mistaken for.
constexpr float leastConfidence = 30; // percent

bool isUniform(const QImage &gray)
{
    const auto first = *gray.constScanLine(0);
    for (int y = 0; y < gray.height(); ++y) {
        const uchar *line = gray.constScanLine(y);
        if (std::any_of(line, line + gray.width(), [first](uchar pixel) { return pixel != first; }))
            return false;
    }
    return true;
}

QString linesOf(tesseract::TessBaseAPI &engine)
{
    QStringList lines;
    const std::unique_ptr<tesseract::ResultIterator> line(engine.GetIterator());
    const auto level = tesseract::RIL_TEXTLINE;
    for (bool more = line && !line->Empty(level); more; more = line->Next(level)) {
        const std::unique_ptr<char[]> utf8(line->GetUTF8Text(level));
        const QString text = utf8 ? trimmed(QString::fromUtf8(utf8.get())) : QString();
        if (!text.isEmpty() && line->Confidence(level) >= leastConfidence)
            lines.append(text);
    }
    return lines.join(u'\n');
}

} // namespace

TextRecognition::TextRecognition() = default;
TextRecognition::~TextRecognition() = default;

bool TextRecognition::prepare()
{
    if (m_isReady || m_hasFailed)
        return m_isReady;
    m_hasFailed = true;
    m_engine = std::make_unique<tesseract::TessBaseAPI>();
    const auto data = RecognitionData::find();
    if (!data || m_engine->Init(data->folder.c_str(), 0, data->languages.c_str(), tesseract::OEM_LSTM_ONLY,
                                nullptr, 0, nullptr, nullptr, false, &RecognitionData::read) != 0)
        return false;
    m_engine->SetPageSegMode(tesseract::PSM_AUTO);
    m_isReady = true;
    return true;
}

RecognizedText TextRecognition::lines(const QImage &image, int dotsPerInch, std::chrono::milliseconds limit,
                                      const std::atomic<bool> *givesUp)
{
    if ((givesUp && *givesUp) || limit <= std::chrono::milliseconds::zero())
        return {{}, RecognizedText::End::early};
    const QImage gray = image.convertToFormat(QImage::Format_Grayscale8);
    if (gray.isNull() || isUniform(gray) || !prepare())
        return {};
    m_engine->SetImage(gray.constBits(), gray.width(), gray.height(), 1,
                       static_cast<int>(gray.bytesPerLine()));
    if (dotsPerInch > 0)
        m_engine->SetSourceResolution(dotsPerInch);
    tesseract::ETEXT_DESC monitor;
    monitor.set_deadline_msecs(static_cast<int32_t>(limit.count()));
    monitor.cancel_this = const_cast<std::atomic<bool> *>(givesUp);
    monitor.cancel = [](void *flag, int) {
        return flag && static_cast<const std::atomic<bool> *>(flag)->load();
    };
    RecognizedText result;
    if (m_engine->Recognize(&monitor) == 0)
        result.text = linesOf(*m_engine);
    else if (monitor.deadline_exceeded())
        result.end = RecognizedText::End::early;
    m_engine->Clear();
    return result;
}

} // namespace morvane
