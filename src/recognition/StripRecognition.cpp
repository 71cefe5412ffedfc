#include "recognition/StripRecognition.h"

#include <algorithm>
#include <array>
#include <leptonica/allheaders.h>
#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>
#include <vector>

namespace morvane {
namespace {

constexpr auto english = "eng";
/// Letters of a screen are half as large as the engine likes them.
constexpr int enlargement = 2;
/// Less is what pictures are mistaken for.
constexpr float leastConfidence = 30; // percent
constexpr int dotsPerInch = 192;
/// Pixels of the side of a part whose ground is looked at by itself: a letter or two.
constexpr int part = 32;
constexpr int darkGround = 112;
/// Sauvola's: each place is compared with what is around it, so that one window does not hide the text of
/// another. One threshold for the whole strip is the engine's usual one.
constexpr auto localThreshold = "2";

struct PixDestroy {
    void operator()(Pix *pix) const { pixDestroy(&pix); }
};
using Picture = std::unique_ptr<Pix, PixDestroy>;

std::string installedOf(const std::string &wanted, const std::vector<std::string> &installed)
{
    std::string languages;
    for (std::size_t at = 0; at <= wanted.size();) {
        const std::size_t end = std::min(wanted.find('+', at), wanted.size());
        const std::string name = wanted.substr(at, end - at);
        if (std::find(installed.begin(), installed.end(), name) != installed.end())
            languages += (languages.empty() ? "" : "+") + name;
        at = end + 1;
    }
    return languages;
}

/// The shade that most pixels of a part of the picture have: what its text is written on.
int ground(const GrayPicture &picture, int left, int top, int right, int bottom)
{
    constexpr int shades = 16;
    std::array<int, 256 / shades> counts{};
    for (int y = top; y < bottom; ++y)
        for (int x = left; x < right; ++x)
            ++counts[picture.row(y)[x] / shades];
    const auto most = std::max_element(counts.begin(), counts.end());
    return int(most - counts.begin()) * shades + shades / 2;
}

/// The strip at twice its size, dark text on a light ground: the engine takes light text on a dark one for
/// the ground. Each small part is looked at by itself, as a screen has windows of both kinds beside each
/// other.
Picture enlarged(const GrayPicture &picture, const Strip &strip)
{
    const Picture plain(pixCreate(picture.width, strip.bottom - strip.top, 8));
    if (!plain)
        return nullptr;
    const int words = pixGetWpl(plain.get());
    for (int top = strip.top; top < strip.bottom; top += part) {
        const int bottom = std::min(top + part, strip.bottom);
        for (int left = 0; left < picture.width; left += part) {
            const int right = std::min(left + part, picture.width);
            const int mask = ground(picture, left, top, right, bottom) < darkGround ? 255 : 0;
            for (int y = top; y < bottom; ++y) {
                l_uint32 *const line = pixGetData(plain.get()) + std::ptrdiff_t(y - strip.top) * words;
                for (int x = left; x < right; ++x)
                    SET_DATA_BYTE(line, x, picture.row(y)[x] ^ mask);
            }
        }
    }
    return Picture(pixScaleGray2xLI(plain.get()));
}

std::string trimmed(const std::string &text)
{
    const auto first = text.find_first_not_of(" \t\r\n");
    const auto last = text.find_last_not_of(" \t\r\n");
    return first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
}

} // namespace

StripRecognition::StripRecognition() = default;
StripRecognition::~StripRecognition() = default;

bool StripRecognition::prepare(const std::string &languages)
{
    m_engine = std::make_unique<tesseract::TessBaseAPI>();
    // Which data is installed is told only by an engine that has some.
    if (m_engine->Init(nullptr, english, tesseract::OEM_LSTM_ONLY) != 0)
        return false;
    std::vector<std::string> installed;
    m_engine->GetAvailableLanguagesAsVector(&installed);
    const std::string wanted = installedOf(languages, installed);
    if (!wanted.empty() && wanted != english &&
        m_engine->Init(nullptr, wanted.c_str(), tesseract::OEM_LSTM_ONLY) != 0)
        return false;
    m_engine->SetVariable("debug_file", "/dev/null");
    m_engine->SetVariable("thresholding_method", localThreshold);
    m_engine->SetPageSegMode(tesseract::PSM_SPARSE_TEXT);
    return true;
}

void StripRecognition::recognize(const GrayPicture &picture, Strip &strip)
{
    const Picture image = enlarged(picture, strip);
    if (!image)
        return;
    m_engine->SetImage(image.get());
    m_engine->SetSourceResolution(dotsPerInch);
    if (m_engine->Recognize(nullptr) == 0) {
        const std::unique_ptr<tesseract::ResultIterator> line(m_engine->GetIterator());
        const auto level = tesseract::RIL_TEXTLINE;
        for (bool more = line && !line->Empty(level); more; more = line->Next(level)) {
            const std::unique_ptr<char[]> utf8(line->GetUTF8Text(level));
            std::string text = utf8 ? trimmed(utf8.get()) : std::string();
            std::replace(text.begin(), text.end(), '\n', ' ');
            TextLine found;
            if (text.empty() || line->Confidence(level) < leastConfidence ||
                !line->BoundingBox(level, &found.left, &found.top, &found.right, &found.bottom))
                continue;
            found.left /= enlargement;
            found.right /= enlargement;
            found.top = found.top / enlargement + strip.top;
            found.bottom = found.bottom / enlargement + strip.top;
            found.text = std::move(text);
            strip.lines.push_back(std::move(found));
        }
    }
    m_engine->Clear();
}

} // namespace morvane
