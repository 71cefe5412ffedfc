#pragma once

#include "recognition/FoundLine.h"
#include "recognition/GrayPicture.h"
#include "recognition/LineText.h"

#include <memory>
#include <span>
#include <vector>

namespace tesseract {
class TessBaseAPI;
}

namespace morvane {

class LetterReader;
struct RecognitionData;

/// Finds lines of text in a picture and reads them. One thread for each object.
class TextEngine {
public:
    TextEngine();
    ~TextEngine();

    /// `readers` are those of all languages, and have to outlive this; without any the library reads itself,
    /// by the language data. False if that is damaged.
    bool prepare(const RecognitionData &data, std::span<const LetterReader> readers);

    /// Looks for the lines of `strip`, with dark text on a light ground, and their words.
    void findLines(const GrayPicture &picture, Strip &strip);

    /// Reads a picture that is one line of text, with each reader.
    std::vector<std::vector<ReadWord>> read(const GrayPicture &line);

private:
    std::vector<ReadWord> readByLibrary(const GrayPicture &line);

    std::unique_ptr<tesseract::TessBaseAPI> m_engine;
    std::span<const LetterReader> m_readers;
    bool m_hasSpaces = true; ///< In all languages that are read, words are set apart.
};

} // namespace morvane
