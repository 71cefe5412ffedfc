#include "support/SamplePdf.h"

#include <QBuffer>
#include <QPainter>
#include <QPdfWriter>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr int dotsPerInch = 150;
constexpr QSize letter(1275, 1650);
constexpr QRect printed(120, 120, 1035, 1410);

QFont pageFont()
{
    QFont font(u"DejaVu Sans"_s);
    font.setPixelSize(30);
    return font;
}

} // namespace

QImage scannedText(const QString &text)
{
    QImage image(letter, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setFont(pageFont());
    painter.drawText(printed, Qt::TextWordWrap, text);
    return image;
}

QByteArray samplePdf(const QList<SamplePage> &pages)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setPageSize(QPageSize(QPageSize::Letter));
    writer.setPageMargins({});
    writer.setResolution(dotsPerInch);
    QPainter painter(&writer);
    painter.setFont(pageFont());
    bool isFirst = true;
    for (const SamplePage &page : pages) {
        if (!isFirst)
            writer.newPage();
        isFirst = false;
        if (page.kind == SamplePage::Kind::text)
            painter.drawText(printed, Qt::TextWordWrap, page.text);
        else if (page.kind == SamplePage::Kind::scanned)
            painter.drawImage(QPoint(), scannedText(page.text));
    }
    painter.end();
    return bytes;
}

} // namespace morvane
