#include "localmodel/MarketingNames.h"

namespace morvane {
namespace {

struct Row {
    const char *identifier;
    const char *name;
};

// From Apple's published lists of models, with the chip where two identifiers would share a name. The 2018
// and 2019 models of one line share an identifier.
constexpr Row rows[] = {
    {"Mac17,3", "MacBook Air (13-inch, M5)"},
    {"Mac17,4", "MacBook Air (15-inch, M5)"},
    {"Mac17,2", "MacBook Pro (14-inch, M5)"},
    {"Mac17,6", "MacBook Pro (16-inch, M5 Max)"},
    {"Mac17,7", "MacBook Pro (14-inch, M5 Max)"},
    {"Mac17,8", "MacBook Pro (16-inch, M5 Pro)"},
    {"Mac17,9", "MacBook Pro (14-inch, M5 Pro)"},
    {"Mac16,12", "MacBook Air (13-inch, M4, 2025)"},
    {"Mac16,13", "MacBook Air (15-inch, M4, 2025)"},
    {"Mac16,1", "MacBook Pro (14-inch, M4, 2024)"},
    {"Mac16,5", "MacBook Pro (16-inch, M4 Max, 2024)"},
    {"Mac16,6", "MacBook Pro (14-inch, M4 Max, 2024)"},
    {"Mac16,7", "MacBook Pro (16-inch, M4 Pro, 2024)"},
    {"Mac16,8", "MacBook Pro (14-inch, M4 Pro, 2024)"},
    {"Mac16,2", "iMac (24-inch, 2024, Two ports)"},
    {"Mac16,3", "iMac (24-inch, 2024, Four ports)"},
    {"Mac16,10", "Mac mini (M4, 2024)"},
    {"Mac16,11", "Mac mini (M4 Pro, 2024)"},
    {"Mac16,9", "Mac Studio (M4 Max, 2025)"},
    {"Mac16,14", "Mac Studio (2025)"},
    {"Mac15,12", "MacBook Air (13-inch, M3, 2024)"},
    {"Mac15,13", "MacBook Air (15-inch, M3, 2024)"},
    {"Mac15,3", "MacBook Pro (14-inch, M3, Nov 2023)"},
    {"Mac15,6", "MacBook Pro (14-inch, M3 Pro, Nov 2023)"},
    {"Mac15,7", "MacBook Pro (16-inch, M3 Pro, Nov 2023)"},
    {"Mac15,8", "MacBook Pro (14-inch, M3 Max, Nov 2023)"},
    {"Mac15,9", "MacBook Pro (16-inch, M3 Max, Nov 2023)"},
    {"Mac15,10", "MacBook Pro (14-inch, M3 Max, Nov 2023)"},
    {"Mac15,11", "MacBook Pro (16-inch, M3 Max, Nov 2023)"},
    {"Mac15,4", "iMac (24-inch, 2023, Two ports)"},
    {"Mac15,5", "iMac (24-inch, 2023, Four ports)"},
    {"Mac14,2", "MacBook Air (M2, 2022)"},
    {"Mac14,15", "MacBook Air (15-inch, M2, 2023)"},
    {"Mac14,7", "MacBook Pro (13-inch, M2, 2022)"},
    {"Mac14,5", "MacBook Pro (14-inch, M2 Max, 2023)"},
    {"Mac14,9", "MacBook Pro (14-inch, M2 Pro, 2023)"},
    {"Mac14,6", "MacBook Pro (16-inch, M2 Max, 2023)"},
    {"Mac14,10", "MacBook Pro (16-inch, M2 Pro, 2023)"},
    {"Mac14,3", "Mac mini (M2, 2023)"},
    {"Mac14,12", "Mac mini (M2 Pro, 2023)"},
    {"Mac14,8", "Mac Pro (2023)"},
    {"Mac14,13", "Mac Studio (M2 Max, 2023)"},
    {"Mac14,14", "Mac Studio (M2 Ultra, 2023)"},
    {"MacBookAir10,1", "MacBook Air (M1, 2020)"},
    {"MacBookPro17,1", "MacBook Pro (13-inch, M1, 2020)"},
    {"MacBookPro18,1", "MacBook Pro (16-inch, M1 Pro, 2021)"},
    {"MacBookPro18,2", "MacBook Pro (16-inch, M1 Max, 2021)"},
    {"MacBookPro18,3", "MacBook Pro (14-inch, M1 Pro, 2021)"},
    {"MacBookPro18,4", "MacBook Pro (14-inch, M1 Max, 2021)"},
    {"Mac13,1", "Mac Studio (M1 Max, 2022)"},
    {"Mac13,2", "Mac Studio (M1 Ultra, 2022)"},
    {"Macmini9,1", "Mac mini (M1, 2020)"},
    {"iMac21,1", "iMac (24-inch, M1, 2021)"},
    {"iMac21,2", "iMac (24-inch, M1, 2021)"},
    {"MacBookPro16,1", "MacBook Pro (16-inch, 2019)"},
    {"MacBookPro16,2", "MacBook Pro (13-inch, 2020, Four Thunderbolt 3 ports)"},
    {"MacBookPro16,3", "MacBook Pro (13-inch, 2020, Two Thunderbolt 3 ports)"},
    {"MacBookPro15,1", "MacBook Pro (15-inch, 2018 or 2019)"},
    {"MacBookPro15,2", "MacBook Pro (13-inch, 2018 or 2019, Four Thunderbolt 3 ports)"},
    {"MacBookAir8,1", "MacBook Air (Retina, 13-inch, 2018)"},
    {"MacBookAir8,2", "MacBook Air (Retina, 13-inch, 2019)"},
    {"Macmini8,1", "Mac mini (2018)"},
    {"iMac19,1", "iMac (Retina 5K, 27-inch, 2019)"},
    {"MacPro7,1", "Mac Pro (2019)"},
};

} // namespace

QString marketingName(const QString &identifier)
{
    for (const Row &row : rows)
        if (identifier == QLatin1StringView(row.identifier))
            return QString::fromLatin1(row.name);
    return identifier;
}

} // namespace morvane
