#include "base/Json.h"

#include <cstdlib>

/// Every value that was read survives being written and read again.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    const auto value = parseJson(QByteArrayView(data, static_cast<qsizetype>(size)));
    if (!value) {
        if (value.error().isEmpty())
            std::abort();
        return 0;
    }
    const auto again = parseJson(serializeJson(*value));
    if (!again || *again != *value)
        std::abort();
    return 0;
}
