#include "attachments/reader/TextRecognition.h"

#include "base/Text.h"

#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <string>
#include <tesseract/baseapi.h>
#include <tesseract/ocrclass.h>
#include <tesseract/resultiterator.h>
#include <vector>

namespace morvane {
namespace {

constexpr auto english = "eng";

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

/// As the names of language data have it: "eng" or "deu+eng".
std::string languagesOf(const std::vector<std::string> &installed)
{
    std::string languages;
    QStringList wanted;
    for (const QString &name : QLocale::system().uiLanguages())
        wanted.append(QLocale::languageToCode(QLocale(name).language(), QLocale::ISO639Part2T));
    wanted.append(QString::fromLatin1(english));
    wanted.removeDuplicates();
    for (const QString &name : wanted)
        if (std::find(installed.begin(), installed.end(), name.toStdString()) != installed.end())
            languages += (languages.empty() ? "" : "+") + name.toStdString();
    return languages;
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
    // Which data is installed is told only by an engine that has some.
    if (m_engine->Init(nullptr, english, tesseract::OEM_LSTM_ONLY) != 0)
        return false;
    std::vector<std::string> installed;
    m_engine->GetAvailableLanguagesAsVector(&installed);
    const std::string languages = languagesOf(installed);
    if (languages != english && m_engine->Init(nullptr, languages.c_str(), tesseract::OEM_LSTM_ONLY) != 0)
        return false;
    m_engine->SetVariable("debug_file", "/dev/null");
    m_engine->SetPageSegMode(tesseract::PSM_AUTO);
    m_isReady = true;
    return true;
}

QString TextRecognition::lines(const QImage &image, int dotsPerInch, std::chrono::milliseconds limit,
                               const std::atomic<bool> *givesUp)
{
    if (givesUp && *givesUp)
        return {};
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
    QStringList lines;
    if (m_engine->Recognize(&monitor) == 0) {
        const std::unique_ptr<tesseract::ResultIterator> line(m_engine->GetIterator());
        const auto level = tesseract::RIL_TEXTLINE;
        for (bool more = line && !line->Empty(level); more; more = line->Next(level)) {
            const std::unique_ptr<char[]> utf8(line->GetUTF8Text(level));
            const QString text = utf8 ? trimmed(QString::fromUtf8(utf8.get())) : QString();
            if (!text.isEmpty() && line->Confidence(level) >= leastConfidence)
                lines.append(text);
        }
    }
    m_engine->Clear();
    return lines.join(u'\n');
}

} // namespace morvane
