#pragma once

#include <QtGlobal>
#include <chrono>

namespace morvane::attachmentLimits {

// Sizes of the file on disk from which on it is refused, in bytes.
inline constexpr qint64 imageBytes = 10'000'000;
inline constexpr qint64 pdfBytes = 20'000'000;
inline constexpr qint64 textBytes = 5'000'000;

/// Characters of a document or a text file that go to the model.
inline constexpr qsizetype textCharacters = 16'000;
inline constexpr int documentPages = 200;

/// What models that see accept without scaling it down themselves: pixels of the longer side, bytes.
inline constexpr int visionSide = 1'568;
inline constexpr qint64 visionBytes = 2'000'000;

/// Pixels of the longer side of a picture that is only looked at.
inline constexpr int iconSide = 64;
inline constexpr int thumbnailSide = 256;
inline constexpr int previewSide = 1'400;

/// Pixels that are decoded at most; the largest cameras of today make 108 to 150 million. Four bytes each.
inline constexpr qint64 imagePixels = 150'000'000;
/// The same of a site's icon, which comes without the user having asked for it.
inline constexpr qint64 iconPixels = 1'048'576;

// The reader stops itself at the first two, and is stopped from outside at the third. Reading text, and
// recognising it, which takes seconds for each scanned page, end early enough for an answer.
inline constexpr qint64 readerMemoryBytes = 2'000'000'000;
inline constexpr std::chrono::seconds readerProcessorTime{900};
inline constexpr std::chrono::seconds readerTime{300};
inline constexpr std::chrono::seconds documentTextTime{60};
inline constexpr std::chrono::seconds recognitionTime{180};
inline constexpr std::chrono::seconds recognitionTimeOfPage{40};

/// The longest answer of the reader: far more than a picture of `visionSide` or a text can be.
inline constexpr qsizetype answerBytes = 16'000'000;

} // namespace morvane::attachmentLimits
