#include "base/IniReader.h"
#include "base/IniText.h"

#include <cstdlib>

/// Whatever was read survives being written and read again.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    const QVariantMap values = IniReader(QByteArrayView(data, static_cast<qsizetype>(size))).read().values;
    if (iniItems(values) > IniReader::maximumItems)
        std::abort();
    const QByteArray text = iniText(values);
    const IniReader::Content again = IniReader(text).read();
    if (again.isDamaged || again.values != values || iniText(again.values) != text)
        std::abort();
    return 0;
}
