#include "providers/AIService.h"

#include <algorithm>
#include <array>

namespace morvane {

bool AIService::visionModelHeuristic(const QString &model)
{
    static constexpr std::array<QLatin1StringView, 16> marks{
        QLatin1StringView("gemini"),  QLatin1StringView("gpt-4o"),      QLatin1StringView("gpt-5"),
        QLatin1StringView("gpt-4.1"), QLatin1StringView("gpt-4-turbo"), QLatin1StringView("claude"),
        QLatin1StringView("llava"),   QLatin1StringView("moondream"),   QLatin1StringView("minicpm"),
        QLatin1StringView("pixtral"), QLatin1StringView("internvl"),    QLatin1StringView("vision"),
        QLatin1StringView("-vl"),     QLatin1StringView("vl-"),         QLatin1StringView("o3"),
        QLatin1StringView("o4")};
    const QString name = model.toLower();
    return std::ranges::any_of(marks, [&name](QLatin1StringView mark) { return name.contains(mark); });
}

} // namespace morvane
