#include "attachments/reader/Cage.h"
#include "attachments/reader/PdfLibrary.h"
#include "attachments/reader/PictureDecoder.h"
#include "attachments/reader/ProcessLimits.h"
#include "attachments/reader/ReadAttachment.h"
#include "attachments/reader/RecognitionData.h"

#include "attachments/AttachmentLimits.h"
#include "base/WriteWhole.h"

#include <QCoreApplication>
#include <QFile>
#include <cstdio>
#include <optional>
#include <unistd.h>

#if __has_feature(address_sanitizer)
/// The search for leaks at the end takes another process, which the cage refuses. Leaks of the decoders are
/// found by the fuzz target.
extern "C" int __lsan_is_turned_off()
{
    return 1;
}
#endif

/// morvane-attachment-reader JOB: reads one file from its input and writes one answer to its output. Started
/// by Morvane for each file, so that no decoder ever runs in the program itself. Whatever the decoders want
/// of the system is loaded or opened first; then the process gives the rest up, and only then looks at the
/// file.
int main(int argc, char **argv)
{
    using namespace morvane;
    limitThisProcess();
    qputenv("QT_NO_GLIB", "1");                     // there is no event loop to drive
    const QCoreApplication application(argc, argv); // image formats are plugins
    if (argc != 2)
        return 2;
    const QByteArrayView job(argv[1]);
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return 1;
    DataFiles data;
    std::optional<PdfLibrary> library;
    if (job == "document") {
        library.emplace();
        library->addData(data);
    } else {
        PictureDecoder::prepare();
    }
    if (job == "document" || job == "recognition")
        RecognitionData::addTo(data);
    data.sort();
    if (!closeCage(data))
        return writeWhole(STDOUT_FILENO, ReaderAnswer{ReaderAnswer::Kind::unprotected, {}}.serialized()) ? 0
                                                                                                         : 1;
    const QByteArray file = input.read(attachmentLimits::pdfBytes + 1);
    return writeWhole(STDOUT_FILENO, readAttachment(job, file).serialized()) ? 0 : 1;
}
