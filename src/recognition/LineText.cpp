#include "recognition/LineText.h"

#include <algorithm>
#include <numeric>

namespace morvane {
namespace {

/// Less is what pictures are mistaken for.
constexpr float leastConfidence = 30; // percent

bool covers(const ReadWord &read, const LinePicture::Slot &slot)
{
    const int middle = (slot.left + slot.right) / 2;
    return read.left <= middle && middle < read.right;
}

/// The slot that a place in the picture is nearest to.
std::size_t slotAt(const std::vector<LinePicture::Slot> &slots, int place)
{
    std::size_t nearest = 0;
    const auto distance = [place](const LinePicture::Slot &slot) {
        return std::max({slot.left - place, place - slot.right, 0});
    };
    for (std::size_t at = 1; at < slots.size(); ++at)
        if (distance(slots[at]) < distance(slots[nearest]))
            nearest = at;
    return nearest;
}

/// All that was read as one word.
WordText oneWord(const std::vector<ReadWord> &read)
{
    WordText whole;
    std::vector<WordText> parts;
    for (const ReadWord &part : read) {
        whole.confidence += part.word.confidence / float(read.size());
        whole.isRightToLeft = whole.isRightToLeft || part.word.isRightToLeft;
        parts.push_back(part.word);
    }
    if (whole.isRightToLeft)
        std::reverse(parts.begin(), parts.end());
    for (const WordText &part : parts)
        whole.text += (whole.text.empty() ? "" : " ") + part.text;
    return whole;
}

} // namespace

std::vector<std::optional<WordText>> textsOf(const std::vector<LinePicture::Slot> &slots,
                                             const std::vector<ReadWord> &read)
{
    std::vector<std::vector<ReadWord>> inSlots(slots.size());
    std::vector<bool> isClear(slots.size(), true);
    for (const ReadWord &word : read) {
        const auto covered = std::count_if(slots.begin(), slots.end(),
                                           [&](const LinePicture::Slot &slot) { return covers(word, slot); });
        if (covered > 1) {
            for (std::size_t at = 0; at < slots.size(); ++at)
                if (covers(word, slots[at]))
                    isClear[at] = false;
        } else if (!slots.empty()) {
            inSlots[slotAt(slots, (word.left + word.right) / 2)].push_back(word);
        }
    }
    std::vector<std::optional<WordText>> texts(slots.size());
    for (std::size_t at = 0; at < slots.size(); ++at)
        if (isClear[at] && !inSlots[at].empty())
            texts[at] = oneWord(inSlots[at]);
    return texts;
}

std::vector<std::optional<WordText>> surestTexts(const std::vector<LinePicture::Slot> &slots,
                                                 const std::vector<std::vector<ReadWord>> &readings)
{
    std::vector<std::optional<WordText>> surest(slots.size());
    for (const std::vector<ReadWord> &read : readings) {
        std::vector<std::optional<WordText>> texts = textsOf(slots, read);
        for (std::size_t at = 0; at < slots.size(); ++at)
            if (texts[at] && (!surest[at] || texts[at]->confidence > surest[at]->confidence))
                surest[at] = std::move(texts[at]);
    }
    return surest;
}

WordText surestWord(const std::vector<std::vector<ReadWord>> &readings)
{
    WordText surest;
    for (const std::vector<ReadWord> &read : readings)
        if (WordText word = oneWord(read); surest.text.empty() || word.confidence > surest.confidence)
            surest = std::move(word);
    return surest;
}

std::string lineText(const std::vector<WordText> &words)
{
    std::vector<WordText> seen;
    std::copy_if(words.begin(), words.end(), std::back_inserter(seen),
                 [](const WordText &word) { return !word.text.empty(); });
    const float confidence =
        std::accumulate(seen.begin(), seen.end(), 0.0F,
                        [](float sum, const WordText &word) { return sum + word.confidence; });
    if (seen.empty() || confidence / float(seen.size()) < leastConfidence)
        return {};
    const auto isRightToLeft = [](const WordText &word) { return word.isRightToLeft; };
    if (2 * std::count_if(seen.begin(), seen.end(), isRightToLeft) > std::ptrdiff_t(seen.size())) {
        // Such a line begins on the right; numbers and foreign words in it keep their own order.
        std::reverse(seen.begin(), seen.end());
        for (auto first = seen.begin(); first != seen.end();) {
            const auto end = std::find_if(first, seen.end(), isRightToLeft);
            std::reverse(first, end);
            first = std::find_if_not(end, seen.end(), isRightToLeft);
        }
    }
    std::string text;
    for (const WordText &word : seen)
        text += (text.empty() ? "" : " ") + word.text;
    return text;
}

} // namespace morvane
