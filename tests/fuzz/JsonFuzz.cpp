#include "base/Json.h"
#include "base/JsonInPlace.h"

#include <cstdlib>
#include <vector>

/// Every value that was read survives being written and read again, and is the same when it is read in place.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    const auto value = parseJson(QByteArrayView(data, static_cast<qsizetype>(size)));
    std::vector<char> room(data, data + size);
    const auto object = parseJsonObjectInPlace(room);
    if (object.has_value() != (value && value->is_object()) || (object && *object != value->get_object()))
        std::abort();
    if (!value) {
        if (value.error().isEmpty() || object.error() != value.error())
            std::abort();
        return 0;
    }
    const auto again = parseJson(serializeJson(*value));
    if (!again || *again != *value)
        std::abort();
    return 0;
}
