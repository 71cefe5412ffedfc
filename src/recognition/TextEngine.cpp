#include "recognition/TextEngine.h"

#include "attachments/reader/RecognitionData.h"
#include "recognition/LetterReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <leptonica/allheaders.h>
#include <string_view>
#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

namespace morvane {
namespace {

/// Letters of a screen are half as large as the engine likes to find them.
constexpr int enlargement = 2;
constexpr int dotsPerInch = 192;
/// What is lower is no text.
constexpr int lowestLine = 4;

/// How the engine tells ink from ground when it looks for lines: by Sauvola's method, each place compared
/// with what is around it, so that one window does not hide the text of another. A line by itself needs no
/// more than the usual one threshold.
constexpr auto localThreshold = "2";
constexpr auto oneThreshold = "0";

/// Languages whose words stand side by side without a space.
constexpr std::array<std::string_view, 6> withoutSpaces{"chi_", "jpn", "tha", "khm", "lao", "mya"};

struct PixDestroy {
    void operator()(Pix *pix) const { pixDestroy(&pix); }
};
using Picture = std::unique_ptr<Pix, PixDestroy>;

/// Whether the words of all `languages`, as "deu+eng", are set apart.
bool haveSpaces(const std::string &languages)
{
    return std::none_of(withoutSpaces.begin(), withoutSpaces.end(), [&](std::string_view language) {
        return ("+" + languages).find("+" + std::string(language)) != std::string::npos;
    });
}

/// Some rows of the picture in the engine's form; null without memory for it.
Picture pixOf(const GrayPicture &picture, int top, int bottom)
{
    Picture pix(pixCreate(picture.width, bottom - top, 8));
    if (!pix)
        return nullptr;
    const std::ptrdiff_t words = pixGetWpl(pix.get());
    for (int y = top; y < bottom; ++y) {
        l_uint32 *const line = pixGetData(pix.get()) + (y - top) * words;
        for (int x = 0; x < picture.width; ++x)
            SET_DATA_BYTE(line, x, picture.row(y)[x]);
    }
    return pix;
}

/// The box in pixels of the screen of one that was found in the enlarged strip.
Box onScreen(Box box, const Strip &strip)
{
    const auto up = [](int place) { return (place + enlargement - 1) / enlargement; };
    return {box.left / enlargement, box.top / enlargement + strip.top, up(box.right),
            up(box.bottom) + strip.top};
}

bool boxOf(const tesseract::PageIterator &place, tesseract::PageIteratorLevel level, Box &box)
{
    return place.BoundingBox(level, &box.left, &box.top, &box.right, &box.bottom);
}

/// The rows that the line's letters take, as far as the engine can tell.
void setLetters(const tesseract::LTRResultIterator &place, const Strip &strip, FoundLine &line)
{
    int left = 0;
    int right = 0;
    int leftBase = 0;
    int rightBase = 0;
    float height = 0;
    float below = 0; // negative
    float above = 0;
    line.baseline = line.box.bottom;
    if (place.Baseline(tesseract::RIL_TEXTLINE, &left, &leftBase, &right, &rightBase))
        line.baseline = (leftBase + rightBase) / (2 * enlargement) + strip.top;
    place.RowAttributes(&height, &below, &above);
    const auto rows = [](float engineRows) { return int(std::lround(engineRows / enlargement)); };
    line.lettersTop = std::max(line.box.top, line.baseline - rows(height + below));
    line.lettersBottom = std::min(line.box.bottom, line.baseline - rows(below));
    if (line.lettersBottom - line.lettersTop < lowestLine) {
        line.lettersTop = line.box.top;
        line.lettersBottom = line.box.bottom;
    }
}

} // namespace

TextEngine::TextEngine() = default;
TextEngine::~TextEngine() = default;

bool TextEngine::prepare(const RecognitionData &data, std::span<const LetterReader> readers)
{
    m_engine = std::make_unique<tesseract::TessBaseAPI>();
    m_hasSpaces = haveSpaces(data.languages);
    if (m_hasSpaces)
        m_readers = readers;
    if (!m_readers.empty())
        m_engine->InitForAnalysePage();
    else if (m_engine->Init(data.folder.c_str(), 0, data.languages.c_str(), tesseract::OEM_LSTM_ONLY, nullptr,
                            0, nullptr, nullptr, false, &RecognitionData::read) != 0)
        return false;
    m_engine->SetVariable("debug_file", "/dev/null");
    // The text is dark already; looking for light one as well would take twice the time.
    m_engine->SetVariable("tessedit_do_invert", "0");
    return true;
}

void TextEngine::findLines(const GrayPicture &picture, Strip &strip)
{
    const Picture plain = pixOf(picture, strip.top, strip.bottom);
    const Picture image(plain ? pixScaleGray2xLI(plain.get()) : nullptr);
    if (!image)
        return;
    m_engine->SetVariable("thresholding_method", localThreshold);
    m_engine->SetPageSegMode(tesseract::PSM_SPARSE_TEXT);
    m_engine->SetImage(image.get());
    m_engine->SetSourceResolution(dotsPerInch);
    const std::unique_ptr<tesseract::PageIterator> found(m_engine->AnalyseLayout());
    // The only public one that tells the rows of letters. It is moved as its base is: in its own order, that
    // of reading, it looks at the whole page for each line.
    const std::unique_ptr<tesseract::ResultIterator> place(found ? m_engine->GetIterator() : nullptr);
    if (place)
        place->tesseract::PageIterator::Begin();
    const auto asBox = [&strip](Box box, const GrayPicture &whole) {
        const Box found = onScreen(box, strip);
        return Box{found.left, found.top, std::min(found.right, whole.width),
                   std::min(found.bottom, whole.height)};
    };
    bool isLine = false;
    for (bool more = place && !place->Empty(tesseract::RIL_WORD); more;
         more = place->tesseract::PageIterator::Next(tesseract::RIL_WORD)) {
        Box box;
        if (place->tesseract::PageIterator::IsAtBeginningOf(tesseract::RIL_TEXTLINE)) {
            FoundLine line;
            isLine = boxOf(*place, tesseract::RIL_TEXTLINE, box);
            line.box = asBox(box, picture);
            isLine = isLine && line.box.bottom - line.box.top >= lowestLine;
            setLetters(*place, strip, line);
            if (isLine && !m_hasSpaces)
                line.words.push_back(line.box);
            if (isLine)
                strip.lines.push_back(std::move(line));
        }
        if (!isLine || !m_hasSpaces || !boxOf(*place, tesseract::RIL_WORD, box))
            continue;
        Box word = asBox(box, picture);
        if (word.left < word.right && word.top < word.bottom)
            strip.lines.back().words.push_back(word);
    }
    for (FoundLine &line : strip.lines)
        std::sort(line.words.begin(), line.words.end(),
                  [](const Box &one, const Box &other) { return one.left < other.left; });
    m_engine->Clear();
}

std::vector<std::vector<ReadWord>> TextEngine::read(const GrayPicture &line)
{
    std::vector<std::vector<ReadWord>> readings;
    for (const LetterReader &reader : m_readers)
        readings.push_back(reader.read(line));
    if (m_readers.empty())
        readings.push_back(readByLibrary(line));
    return readings;
}

std::vector<ReadWord> TextEngine::readByLibrary(const GrayPicture &line)
{
    std::vector<ReadWord> words;
    const Picture image = pixOf(line, 0, line.height);
    if (!image)
        return words;
    m_engine->SetVariable("thresholding_method", oneThreshold);
    m_engine->SetPageSegMode(tesseract::PSM_RAW_LINE);
    m_engine->SetImage(image.get());
    m_engine->SetSourceResolution(dotsPerInch);
    if (m_engine->Recognize(nullptr) == 0) {
        const std::unique_ptr<tesseract::ResultIterator> place(m_engine->GetIterator());
        const auto level = tesseract::RIL_WORD;
        for (bool more = place && !place->Empty(level); more; more = place->Next(level)) {
            const std::unique_ptr<char[]> utf8(place->GetUTF8Text(level));
            Box box;
            if (!utf8 || std::strlen(utf8.get()) == 0 || !boxOf(*place, level, box))
                continue;
            words.push_back({box.left,
                             box.right,
                             {utf8.get(), place->Confidence(level),
                              place->WordDirection() == tesseract::DIR_RIGHT_TO_LEFT}});
        }
    }
    m_engine->Clear();
    return words;
}

} // namespace morvane
