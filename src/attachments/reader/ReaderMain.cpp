#include "attachments/reader/ProcessLimits.h"
#include "attachments/reader/ReadAttachment.h"

#include "attachments/AttachmentLimits.h"

#include <QCoreApplication>
#include <QFile>
#include <cstdio>

/// morvane-attachment-reader JOB: reads one file from its input and writes one answer to its output. Started
/// by Morvane for each file, so that no decoder ever runs in the program itself.
int main(int argc, char **argv)
{
    using namespace morvane;
    limitThisProcess();
    const QCoreApplication application(argc, argv); // image formats are plugins
    if (argc != 2)
        return 2;
    QFile input;
    QFile output;
    if (!input.open(stdin, QIODevice::ReadOnly) || !output.open(stdout, QIODevice::WriteOnly))
        return 1;
    const QByteArray file = input.read(attachmentLimits::pdfBytes + 1);
    const QByteArray answer = readAttachment(argv[1], file).serialized();
    return output.write(answer) == answer.size() && output.flush() ? 0 : 1;
}
