#include "providers/AIService.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace morvane {

bool AIService::visionModelHeuristic(const QString &model)
{
    static constexpr std::array<QLatin1StringView, 16> marks{
        "gemini"_L1, "gpt-4o"_L1,    "gpt-5"_L1,   "gpt-4.1"_L1, "gpt-4-turbo"_L1, "claude"_L1,
        "llava"_L1,  "moondream"_L1, "minicpm"_L1, "pixtral"_L1, "internvl"_L1,    "vision"_L1,
        "-vl"_L1,    "vl-"_L1,       "o3"_L1,      "o4"_L1};
    const QString name = model.toLower();
    return std::ranges::any_of(marks, [&name](QLatin1StringView mark) { return name.contains(mark); });
}

} // namespace morvane
