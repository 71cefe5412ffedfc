#pragma once

#include "recognition/GrayPicture.h"
#include "recognition/TextLine.h"

#include <memory>
#include <string>

namespace tesseract {
class TessBaseAPI;
}

namespace morvane {

/// Recognises text in a part of a picture. One thread for each object.
class StripRecognition {
public:
    StripRecognition();
    ~StripRecognition();

    /// `languages` by their three letters, joined by "+", the most likely first; English serves where none of
    /// them is installed. False without any language data.
    bool prepare(const std::string &languages);

    void recognize(const GrayPicture &picture, Strip &strip);

private:
    std::unique_ptr<tesseract::TessBaseAPI> m_engine;
};

} // namespace morvane
