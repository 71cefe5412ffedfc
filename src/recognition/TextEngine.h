#pragma once

#include "recognition/FoundLine.h"
#include "recognition/GrayPicture.h"
#include "recognition/LineText.h"

#include <memory>
#include <string>
#include <vector>

namespace tesseract {
class TessBaseAPI;
}

namespace morvane {

/// Finds lines of text in a picture and reads them. One thread for each object.
class TextEngine {
public:
    TextEngine();
    ~TextEngine();

    /// `languages` by their three letters, joined by "+", the most likely first; English serves where none of
    /// them is installed. False without any language data.
    bool prepare(const std::string &languages);

    /// Looks for the lines of `strip`, with dark text on a light ground, and their words.
    void findLines(const GrayPicture &picture, Strip &strip);

    /// Reads a picture that is one line of text.
    std::vector<ReadWord> read(const GrayPicture &line);

private:
    std::unique_ptr<tesseract::TessBaseAPI> m_engine;
    bool m_hasSpaces = true; ///< In all languages that are read, words are set apart.
};

} // namespace morvane
