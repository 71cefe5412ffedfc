#include "AttachmentFixture.h"

#include "attachments/reader/ReadAttachment.h"
#include "support/SamplePdf.h"
#include "support/SamplePictures.h"

#include <random>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::AnyOf;

/// Files as a bad disk, a broken download or an attacker leaves them. The same every time.
class DamagedFileTest : public AttachmentFixture {
protected:
    QList<QByteArray> damaged(const QByteArray &whole, int count)
    {
        QList<QByteArray> files;
        for (int file = 0; file < count; ++file) {
            QByteArray bytes = whole;
            if (file % 3 == 0)
                bytes.truncate(below(whole.size()));
            // Mostly at the beginning, where the structure is.
            for (int flip = 0; flip < 1 + file % 20 && !bytes.isEmpty(); ++flip) {
                const qsizetype at =
                    below(flip % 2 == 0 ? bytes.size() : std::min<qsizetype>(bytes.size(), 600));
                bytes[at] = static_cast<char>(bytes.at(at) ^ (1 << below(8)));
            }
            files.append(bytes);
        }
        return files;
    }
    void expectHarmlessPicture(const QString &name, const QByteArray &whole)
    {
        const QList<QByteArray> files = damaged(whole, 24);
        // In this process, which the decoders would take with them.
        for (const QByteArray &file : files) {
            const ReaderAnswer answer = readAttachment("picture", file);
            if (answer.kind == ReaderAnswer::Kind::jpeg)
                EXPECT_LE(widthOf(answer.payload), 1'568) << name.toStdString();
            else
                EXPECT_EQ(answer.payload, QByteArray()) << name.toStdString();
        }
        for (const QByteArray &file : files.first(3)) {
            const auto image = processor.prepareForVision(file, u"png"_s, stop);
            if (image.mimeType == "image/jpeg"_L1)
                EXPECT_LE(widthOf(image.data), 1'568) << name.toStdString();
            else
                EXPECT_TRUE(image.data == file) << name.toStdString();
        }
    }

private:
    static int widthOf(const QByteArray &jpeg) { return QImage::fromData(jpeg, "jpeg").width(); }
    qsizetype below(qsizetype limit)
    {
        return limit > 0 ? static_cast<qsizetype>(m_random() % static_cast<unsigned long>(limit)) : 0;
    }

    std::mt19937 m_random{4711};
};

TEST_F(DamagedFileTest, PicturesOfEveryFormatDoNoHarm)
{
    const QImage image = samplePhoto({1'700, 40});
    for (const char *format : {"png", "jpeg", "webp", "bmp", "ico", "tiff"})
        expectHarmlessPicture(QString::fromLatin1(format), encoded(image, format, 80));
    expectHarmlessPicture(u"heic"_s, encodedHeic(image));
}

TEST_F(DamagedFileTest, DocumentsDoNoHarm)
{
    const QByteArray whole = samplePdf(
        {{SamplePage::Kind::text, u"Printed page"_s}, {SamplePage::Kind::scanned, u"Scanned page"_s}});
    for (const QByteArray &file : damaged(whole, 18)) {
        const QString failure = failureOf(u"a.pdf"_s, file);
        EXPECT_THAT(failure.toStdString(), AnyOf("", "Could not open \"a.pdf\" as a PDF.",
                                                 testing::StartsWith("\"a.pdf\" contains no readable text")));
    }
}

} // namespace
} // namespace morvane
