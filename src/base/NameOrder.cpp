#include "base/NameOrder.h"

#include <QString>
#include <algorithm>
#include <limits>
#include <string_view>
#include <unicode/ucol.h>
#include <unicode/uloc.h>

namespace morvane {

namespace {

/// The language without a language orders by code points, capitals first, which is no order for people.
const char *orderLocale()
{
    const char *locale = uloc_getDefault();
    return std::string_view(locale) == "en_US_POSIX" ? "" : locale;
}

} // namespace

void NameOrder::Close::operator()(UCollator *collator) const
{
    ucol_close(collator);
}

NameOrder::NameOrder()
{
    UErrorCode status = U_ZERO_ERROR;
    m_collator.reset(ucol_open(orderLocale(), &status));
    if (U_FAILURE(status))
        m_collator.reset();
    else
        ucol_setStrength(m_collator.get(), UCOL_SECONDARY);
}

NameOrder::~NameOrder() = default;

QByteArray NameOrder::sortKey(QStringView name) const
{
    // Without the library's data files any order must do.
    if (!m_collator)
        return name.toString().toCaseFolded().toUtf8();
    constexpr qsizetype most = std::numeric_limits<int32_t>::max() / 16;
    const auto length = static_cast<int32_t>(std::min(name.size(), most));
    const char16_t *text = name.utf16();
    QByteArray key(4 * length + 16, Qt::Uninitialized);
    const auto get = [&] {
        return ucol_getSortKey(m_collator.get(), text, length, reinterpret_cast<uint8_t *>(key.data()),
                               static_cast<int32_t>(key.size()));
    };
    int32_t needed = get();
    if (needed > key.size()) {
        key.resize(needed);
        needed = get();
    }
    key.truncate(needed);
    return key;
}

} // namespace morvane
