#pragma once

#include "platform/TextRecognizer.h"

#include <QByteArray>

namespace morvane {

/// Has the program morvane-text-recognizer read the picture: recognition on all processors takes memory that
/// would stay, and code that pictures may break.
class LinuxTextRecognizer final : public TextRecognizer {
public:
    /// `program` is the path of the recogniser.
    explicit LinuxTextRecognizer(const QString &program);

    QList<RecognizedLine> recognize(const QImage &image, const std::stop_token &stop) override;

private:
    const QByteArray m_program;
};

/// What the recogniser's output says; lines that make no sense are left out. Any thread.
QList<RecognizedLine> parseRecognizedLines(const QByteArray &output);

} // namespace morvane
