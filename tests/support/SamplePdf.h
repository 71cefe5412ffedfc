#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QString>

namespace morvane {

/// One page of a made-up document.
struct SamplePage {
    enum class Kind { text, scanned, blank };

    Kind kind = Kind::text;
    QString text; ///< Lines; a scanned page shows them as a picture only.
};

/// A PDF with these pages. Needs a QGuiApplication.
QByteArray samplePdf(const QList<SamplePage> &pages);

/// Black text on white, at about 150 dots an inch, as a scanner sees a letter page.
QImage scannedText(const QString &text);

} // namespace morvane
