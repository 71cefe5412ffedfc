#include "attachments/reader/ReadAttachment.h"

#include <QCoreApplication>
#include <cstdlib>

/// The first byte chooses the job: pictures and documents. The answer is always of the form that the program
/// takes; that no file harms the reader is the sanitizers' affair.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    static int argumentCount = 1;
    static char name[] = "fuzz";
    static char *arguments[] = {name, nullptr};
    static const QCoreApplication application(argumentCount, arguments); // image formats are plugins
    if (size == 0)
        return 0;
    const QByteArray file(reinterpret_cast<const char *>(data) + 1, static_cast<qsizetype>(size) - 1);
    const ReaderAnswer answer = readAttachment(data[0] == 'd' ? "document" : "picture", file);
    if (ReaderAnswer::parse(answer.serialized()) != answer)
        std::abort();
    return 0;
}
