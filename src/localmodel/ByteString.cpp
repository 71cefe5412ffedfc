#include "localmodel/ByteString.h"

using namespace Qt::StringLiterals;

namespace morvane {

QString byteString(qint64 bytes)
{
    constexpr double mebibyte = 1'048'576;
    constexpr double mebibytesInGibibyte = 1024;
    const double size = static_cast<double>(bytes) / mebibyte;
    if (size < mebibytesInGibibyte)
        return u"%1 MB"_s.arg(QString::number(size, 'f', 0));
    return u"%1 GB"_s.arg(QString::number(size / mebibytesInGibibyte, 'f', 1));
}

} // namespace morvane
