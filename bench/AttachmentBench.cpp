// What attached files cost: preparing a photograph of 48 megapixels, reading a document of 200 pages,
// recognising a scanned page, and sending 10 MB of pictures, with the longest hold of the main thread while
// that happens. Prints JSON.

#include "BenchAgent.h"
#include "Median.h"

#include "attachments/AttachmentProcessor.h"
#include "base/InstalledFiles.h"
#include "support/SamplePdf.h"
#include "support/SamplePictures.h"
#include "support/ScriptedModel.h"

#include <QGuiApplication>
#include <cstdio>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

constexpr int runs = 5;
constexpr qsizetype largestPhoto = 10'000'000;
constexpr int pictures = 5; // of 2 MB each
constexpr qsizetype pictureBytes = 2'000'000;

/// The largest reader so far, in megabytes.
double readerMegabytes()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return double(usage.ru_maxrss) / 1024;
}

QByteArray photoOf48Megapixels()
{
    const QImage photo = samplePhoto({8'000, 6'000});
    QByteArray jpeg;
    for (int quality = 85; jpeg.isEmpty() || jpeg.size() > largestPhoto; quality -= 10)
        jpeg = encoded(photo, "jpeg", quality);
    return jpeg;
}

ChatAttachment picture()
{
    ChatAttachment attachment;
    attachment.id = QUuid::createUuid();
    attachment.filename = u"photo.png"_s;
    attachment.kind = AttachmentKind::image;
    attachment.data = QByteArray(pictureBytes, '\x5A');
    attachment.mimeType = u"image/png"_s;
    attachment.byteSize = pictureBytes;
    return attachment;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    const TemporaryHome home;
    const StopFlag stop;
    const AttachmentProcessor processor{
        ReaderProcess(InstalledFiles::aroundProgram().helper(u"morvane-attachment-reader"_s))};
    const auto millisecondsFor = [&](const char *name, const QByteArray &content) {
        const QUrl file = QUrl::fromLocalFile(home.write(QString::fromLatin1(name), content));
        return medianMilliseconds(runs, [&] { static_cast<void>(processor.process(file, stop)); });
    };

    const double smallPicture = millisecondsFor("small.png", encoded(samplePhoto({300, 200}), "png"));
    const QByteArray photo = photoOf48Megapixels();
    const double largePhoto = millisecondsFor("photo.jpg", photo);
    const double photoMegabytes = readerMegabytes();
    QList<SamplePage> pages;
    for (int page = 1; page <= 200; ++page)
        pages.append({SamplePage::Kind::text, u"Page %1 says a few words."_s.arg(page)});
    const double document = millisecondsFor("document.pdf", samplePdf(pages));
    const QString letter = u"The quick brown fox jumps over the lazy dog and runs away.\n"_s.repeated(36);
    const double scan = millisecondsFor("scan.pdf", samplePdf({{SamplePage::Kind::scanned, letter}}));

    ModelScript script;
    script.afterwards = ScriptedTurn::saying({"Seen."});
    ScriptedModel server(script);
    BenchAgent agent(server.baseURL());
    agent.settings.setModel(u"scripted-vision"_s);
    const QList<ChatAttachment> files(pictures, picture());
    double longestStall = 0;
    double longestWork = 0;
    const double sending = medianMilliseconds(runs, [&] {
        agent.model.newConversation();
        const StallWatch stalls;
        agent.ask(u"What do you see?"_s, files);
        longestStall = std::max(longestStall, stalls.milliseconds());
        longestWork = std::max(longestWork, stalls.processorMilliseconds());
    });
    const std::size_t bodyBytes = server.requests().front().body.size();

    std::printf("{\"small_picture_ms\": %.0f, \"photo_48mp_ms\": %.0f, \"photo_bytes\": %lld, "
                "\"photo_reader_mb\": %.0f,\n \"document_200_pages_ms\": %.0f, \"scanned_page_ms\": %.0f, "
                "\"largest_reader_mb\": %.0f,\n \"send_10mb\": {\"body_bytes\": %zu, \"until_answer_ms\": "
                "%.0f, \"longest_stall_ms\": %.2f, \"longest_work_ms\": %.2f}}\n",
                smallPicture, largePhoto, static_cast<long long>(photo.size()), photoMegabytes, document,
                scan, readerMegabytes(), bodyBytes, sending, longestStall, longestWork);
    return 0;
}
