#include "AttachmentFixture.h"

#include "support/SamplePictures.h"

#include <QColorSpace>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class PictureTest : public AttachmentFixture {
protected:
    QImage prepared(const QString &name, const QByteArray &content) const
    {
        const ChatAttachment attachment = process(name, content);
        EXPECT_EQ(attachment.mimeType, u"image/jpeg"_s);
        EXPECT_TRUE(attachment.data->startsWith("\xFF\xD8\xFF"));
        EXPECT_EQ(attachment.byteSize, attachment.data->size());
        return QImage::fromData(*attachment.data, "jpeg");
    }
    void expectUnchanged(const QString &name, const QByteArray &content, const QString &type) const
    {
        const ChatAttachment attachment = process(name, content);
        EXPECT_EQ(attachment.kind, AttachmentKind::image);
        EXPECT_TRUE(attachment.data == content) << name.toStdString();
        EXPECT_EQ(attachment.mimeType, type);
        EXPECT_EQ(attachment.byteSize, content.size());
        EXPECT_EQ(attachment.extractedText, QString());
    }
};

/// Each quarter in a colour of its own: red, green above, blue, white below.
QImage quarters(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    const int x = size.width() / 2;
    const int y = size.height() / 2;
    painter.fillRect(0, 0, x, y, Qt::red);
    painter.fillRect(x, 0, x, y, Qt::green);
    painter.fillRect(0, y, x, y, Qt::blue);
    painter.fillRect(x, y, x, y, Qt::white);
    return image;
}

bool isNear(QColor colour, QColor expected)
{
    const auto near = [](int one, int other) { return std::abs(one - other) < 24; };
    return near(colour.red(), expected.red()) && near(colour.green(), expected.green()) &&
           near(colour.blue(), expected.blue());
}

TEST_F(PictureTest, PngOfAThousandPixelsAndOneMegabyteGoesAsItIs)
{
    const QByteArray png = encoded(samplePhoto({1'000, 1'000}), "png");
    ASSERT_GT(png.size(), 500'000);
    ASSERT_LE(png.size(), 2'000'000);
    expectUnchanged(u"a.png"_s, png, u"image/png"_s);
}

TEST_F(PictureTest, PngOfFourThousandPixelsBecomesASmallerJpeg)
{
    const QByteArray png = encoded(quarters({4'000, 3'000}), "png");
    EXPECT_EQ(prepared(u"a.png"_s, png).size(), QSize(1'568, 1'176));
}

TEST_F(PictureTest, SmallPictureOfThreeMegabytesIsEncodedAnewAtItsOwnSize)
{
    const QImage photo = samplePhoto({1'200, 1'100});
    const QByteArray bmp = encoded(photo, "bmp");
    ASSERT_GT(bmp.size(), 3'000'000);
    const QImage result = prepared(u"a.bmp"_s, bmp);
    EXPECT_EQ(result.size(), photo.size());
    EXPECT_TRUE(isNear(result.pixelColor(1'000, 1'000), photo.pixelColor(1'000, 1'000)));
}

TEST_F(PictureTest, FileOfExactlyTenMegabytesIsTaken)
{
    const QByteArray photo = encoded(quarters({2'000, 1'000}), "png");
    EXPECT_EQ(prepared(u"a.png"_s, photo.leftJustified(10'000'000, '\0')).size(), QSize(1'568, 784));
    EXPECT_EQ(failureOf(u"b.png"_s, photo.leftJustified(10'000'001, '\0')),
              u"\"b.png\" is larger than 10 MB. Please attach a smaller image."_s);
}

TEST_F(PictureTest, PictureOfExactlyTheLongestSideGoesAsItIs)
{
    expectUnchanged(u"a.jpg"_s, encoded(quarters({1'568, 10}), "jpeg"), u"image/jpeg"_s);
    EXPECT_EQ(prepared(u"b.jpg"_s, encoded(quarters({10, 1'569}), "jpeg")).size(), QSize(9, 1'568));
}

TEST_F(PictureTest, ThinPictureKeepsAtLeastOnePixel)
{
    EXPECT_EQ(prepared(u"a.png"_s, encoded(quarters({20'000, 4}), "png")).size(), QSize(1'568, 1));
}

TEST_F(PictureTest, TransparencyComesOutWhite)
{
    QImage image(2'000, 2'000, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter(&image).fillRect(0, 0, 1'000, 2'000, QColor(255, 0, 0, 128));
    const QImage result = prepared(u"a.png"_s, encoded(image, "png"));
    EXPECT_TRUE(isNear(result.pixelColor(1'200, 700), Qt::white));
    EXPECT_TRUE(isNear(result.pixelColor(300, 700), QColor(255, 127, 127)));
}

TEST_F(PictureTest, EveryFormatIsScaledDown)
{
    const QImage image = quarters({2'000, 1'000});
    QList<std::pair<QString, QByteArray>> files;
    for (const char *format : {"png", "jpeg", "webp", "bmp", "tiff"})
        files.append({u"a."_s + QString::fromLatin1(format), encoded(image, format, 90)});
    files.append({u"a.heic"_s, encodedHeic(image)});
    for (const auto &[name, content] : files) {
        ASSERT_FALSE(content.isEmpty()) << name.toStdString();
        const QImage result = prepared(name, content);
        EXPECT_EQ(result.size(), QSize(1'568, 784)) << name.toStdString();
        EXPECT_TRUE(isNear(result.pixelColor(100, 100), Qt::red)) << name.toStdString();
        EXPECT_TRUE(isNear(result.pixelColor(1'400, 100), Qt::green)) << name.toStdString();
        EXPECT_TRUE(isNear(result.pixelColor(100, 700), Qt::blue)) << name.toStdString();
    }
}

TEST_F(PictureTest, SmallHeicGoesAsItIs)
{
    const QByteArray heic = encodedHeic(quarters({200, 100}));
    ASSERT_FALSE(heic.isEmpty());
    expectUnchanged(u"photo.HEIC"_s, heic, u"image/heic"_s);
    expectUnchanged(u"photo.heif"_s, heic, u"image/heif"_s);
}

TEST_F(PictureTest, PhotoIsTurnedAsItWasHeld)
{
    const QByteArray jpeg = encoded(quarters({2'000, 1'000}), "jpeg", 95);
    // Held with its left side down: what is above in the data is seen at the right.
    const QImage turned = prepared(u"a.jpg"_s, withExifOrientation(jpeg, 6));
    EXPECT_EQ(turned.size(), QSize(784, 1'568));
    EXPECT_TRUE(isNear(turned.pixelColor(700, 100), Qt::red));
    EXPECT_TRUE(isNear(turned.pixelColor(700, 1'400), Qt::green));
    EXPECT_TRUE(isNear(turned.pixelColor(100, 100), Qt::blue));
    const QImage upsideDown = prepared(u"b.jpg"_s, withExifOrientation(jpeg, 3));
    EXPECT_EQ(upsideDown.size(), QSize(1'568, 784));
    EXPECT_TRUE(isNear(upsideDown.pixelColor(1'400, 700), Qt::red));
}

TEST_F(PictureTest, ColoursOfAWiderSpaceAreConverted)
{
    QImage image(2'000, 100, QImage::Format_RGB32);
    image.fill(QColor(200, 100, 50));
    image.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
    const QImage standard = image.convertedToColorSpace(QColorSpace(QColorSpace::SRgb));
    ASSERT_FALSE(isNear(standard.pixelColor(0, 0), QColor(170, 100, 50)));
    const QImage result = prepared(u"a.png"_s, encoded(image, "png"));
    EXPECT_TRUE(isNear(result.pixelColor(700, 30), standard.pixelColor(700, 30)));
    EXPECT_FALSE(result.colorSpace().isValid() && result.colorSpace() == QColorSpace(QColorSpace::DisplayP3));
}

TEST_F(PictureTest, FormatIsToldByTheContent)
{
    EXPECT_EQ(prepared(u"wrong.png"_s, encoded(quarters({2'000, 1'000}), "jpeg")).size(), QSize(1'568, 784));
}

TEST_F(PictureTest, BitmapWithItsLinesFromTheTopIsScaledDown)
{
    const QImage result = prepared(u"a.bmp"_s, topDownBitmap(quarters({2'000, 1'000})));
    EXPECT_EQ(result.size(), QSize(1'568, 784));
    EXPECT_TRUE(isNear(result.pixelColor(100, 100), Qt::red));
    EXPECT_TRUE(isNear(result.pixelColor(100, 700), Qt::blue));
}

TEST_F(PictureTest, WebpIsTurnedAsItWasHeld)
{
    const QSize size(2'000, 1'000);
    const QByteArray webp = encoded(quarters(size), "webp", 90);
    struct Expected {
        char orientation;
        QColor upperLeft;
        QColor upperRight;
        QColor lowerLeft;
    };
    const QColor red(Qt::red);
    const QColor green(Qt::green);
    const QColor blue(Qt::blue);
    const QColor white(Qt::white);
    const QList<Expected> all{{1, red, green, blue},   {2, green, red, white}, {3, white, blue, green},
                              {4, blue, white, red},   {5, red, blue, green},  {6, blue, red, white},
                              {7, white, green, blue}, {8, green, white, red}, {9, red, green, blue}};
    for (const Expected &expected : all) {
        const int orientation = expected.orientation;
        const QImage image = prepared(u"a.webp"_s, webpWithExifOrientation(webp, size, expected.orientation));
        const bool isUpright = orientation >= 5 && orientation <= 8;
        EXPECT_EQ(image.size(), isUpright ? QSize(784, 1'568) : QSize(1'568, 784)) << orientation;
        const int right = image.width() - 100;
        const int below = image.height() - 100;
        EXPECT_TRUE(isNear(image.pixelColor(100, 100), expected.upperLeft)) << orientation;
        EXPECT_TRUE(isNear(image.pixelColor(right, 100), expected.upperRight)) << orientation;
        EXPECT_TRUE(isNear(image.pixelColor(100, below), expected.lowerLeft)) << orientation;
    }
}

TEST_F(PictureTest, WhatIsNoPictureGoesAsItIs)
{
    expectUnchanged(u"a.png"_s, "no picture at all", u"image/png"_s);
    expectUnchanged(u"a.heic"_s, QByteArray(2'000'000, '\x7F'), u"image/heic"_s);
}

TEST_F(PictureTest, WhatIsNoPictureAndLargerThanModelsTakeIsRefused)
{
    const QByteArray noise(2'000'001, '\x7F');
    EXPECT_EQ(failureOf(u"a.heic"_s, noise), u"Could not read \"a.heic\"."_s);
    EXPECT_EQ(failureOf(u"a.png"_s, noise), u"Could not read \"a.png\"."_s);
    const auto prepared = processor.prepareForVision(noise, u"png"_s, stop);
    EXPECT_EQ(prepared.data, noise);
    EXPECT_EQ(prepared.mimeType, u"image/png"_s);
}

TEST_F(PictureTest, DrawingThatIsAProgramIsNotRun)
{
    const QByteArray svg("<svg xmlns='http://www.w3.org/2000/svg' width='9000' height='9000'><rect "
                         "width='9000' height='9000'/></svg>");
    expectUnchanged(u"a.svg"_s, svg, u"image/png"_s);
}

TEST_F(PictureTest, PictureOfTwoHundredMegapixelsIsRefusedInSoManyWords)
{
    QImage image(20'000, 10'000, QImage::Format_Mono);
    image.fill(0);
    const QByteArray png = encoded(image, "png");
    ASSERT_LT(png.size(), 1'000'000);
    EXPECT_EQ(failureOf(u"a.png"_s, png),
              u"\"a.png\" has more than 150 million pixels. Please attach a smaller image."_s);
    EXPECT_EQ(processor.prepareForVision(png, u"png"_s, stop).data, png);
}

TEST_F(PictureTest, SizeThatIsALieDoesNoHarm)
{
    // The head names two thousand million pixels; behind it stand a few bytes.
    QByteArray png = encoded(quarters({2'000, 2'000}), "png").first(200);
    png.replace(16, 8, QByteArray("\x7F\xFF\xFF\xFF\x00\x00\x00\x01", 8));
    expectUnchanged(u"a.png"_s, png, u"image/png"_s);
    const QByteArray gif("GIF89a\xFF\xFF\xFF\xFF\xF7\x00\x00", 13);
    EXPECT_NE(failureOf(u"a.gif"_s, gif + QByteArray(2'500'000, '\x21')), QString());
    QByteArray bmp = encoded(quarters({20, 20}), "bmp");
    bmp.replace(22, 4, QByteArray("\x00\x00\x00\x80", 4)); // the lowest height that there is
    expectUnchanged(u"a.bmp"_s, bmp, u"image/bmp"_s);
}

TEST_F(PictureTest, TextOfAPictureIsRecognised)
{
    QImage image(800, 200, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    QFont font(u"DejaVu Sans"_s);
    font.setPixelSize(40);
    painter.setFont(font);
    painter.drawText(20, 60, u"Invoice number 4711"_s);
    painter.drawText(20, 140, u"Thank you very much"_s);
    painter.end();
    EXPECT_EQ(processor.ocr(encoded(image, "png"), stop), u"Invoice number 4711\nThank you very much"_s);
}

TEST_F(PictureTest, NothingIsRecognisedWhereNothingIsWritten)
{
    QImage image(800, 200, QImage::Format_RGB32);
    image.fill(Qt::white);
    EXPECT_EQ(processor.ocr(encoded(image, "png"), stop), QString());
    EXPECT_EQ(processor.ocr("no picture", stop), QString());
}

} // namespace
} // namespace morvane
