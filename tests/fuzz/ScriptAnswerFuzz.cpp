#include "base/Json.h"
#include "browser/pages/PageReading.h"
#include "browser/pages/ScriptAnswer.h"

#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

/// Texts of a page come in UTF-16, whole or not.
QString textOf(const unsigned char *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    if (!bytes.startsWith('\xff'))
        return QString::fromUtf8(bytes);
    QString text;
    for (qsizetype at = 1; at + 1 < bytes.size(); at += 2)
        text.append(QChar(uchar(bytes[at]), uchar(bytes[at + 1])));
    return text;
}

} // namespace

/// Whatever a page answers is an object that reads the same when it is written again, or nothing; and a
/// reading of it has as many marks as it has numbers, and no line more.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    const QVariant answer(textOf(data, size));
    const auto object = readScriptAnswer(answer);
    const auto reading = readPageAnswer(answer);
    if (object.has_value() != reading.has_value())
        std::abort();
    if (!object)
        return 0;
    const auto again = readScriptAnswer(QString::fromUtf8(serializeJson(*object)));
    if (!again || *again != *object)
        std::abort();
    const boost::json::array *const elements = arrayMember(*object, "elements");
    if (reading->refs.size() != qsizetype(elements ? elements->size() : 0))
        std::abort();
    if (!reading->text.startsWith("Page: "_L1) || !reading->text.contains("\nURL: "_L1) ||
        (reading->refs.isEmpty() && !reading->text.endsWith("were found on this page.)"_L1)) ||
        (!reading->refs.isEmpty() && !reading->text.contains(u"\n[%1] "_s.arg(reading->refs.size()))))
        std::abort();
    return 0;
}
