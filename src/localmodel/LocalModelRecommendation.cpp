#include "localmodel/LocalModelRecommendation.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QList<LocalModelRecommendation> forLargeMachines()
{
    return {
        {u"qwen2.5:14b"_s, 9.4, 16, u"Best quality"_s,
         u"Excellent reasoning, coding, and tool use. The smartest model that runs smoothly on your Mac."_s},
        {u"llama3.1:8b"_s, 4.9, 8, u"Fast & smart"_s,
         u"A strong all-rounder that leaves plenty of RAM for other apps."_s},
        {u"qwen3:8b"_s, 5.2, 8, u"Great value"_s,
         u"A strong new-generation model with excellent tool use for its download size."_s}};
}

QList<LocalModelRecommendation> forMediumMachines()
{
    return {{u"qwen2.5"_s, 4.7, 8, u"Best overall"_s,
             u"Great at reasoning, tool use, and coding. The sweet spot for your Mac."_s},
            {u"llama3.1:8b"_s, 4.9, 8, u"Strong all-rounder"_s,
             u"Very capable and well rounded for a wide range of tasks."_s},
            {u"qwen3:4b"_s, 2.5, 4, u"Fast"_s, u"Quick, snappy responses with up-to-date tool use."_s}};
}

QList<LocalModelRecommendation> forSmallMachines(int ramGB)
{
    QList<LocalModelRecommendation> list{{u"qwen2.5:3b"_s, 2.0, 4, u"Best overall"_s,
                                          u"Good reasoning and tool use without using much RAM."_s},
                                         {u"llama3.2:3b"_s, 2.0, 4, u"Fast"_s,
                                          u"Responsive and easy on your Mac while still being capable."_s}};
    if (ramGB >= 8)
        list.append({u"qwen3:4b"_s, 2.5, 4, u"Great value"_s,
                     u"The most capable tool-using model that still runs comfortably on your Mac."_s});
    else
        list.append({u"llama3.2:1b"_s, 1.3, 2, u"Lightest"_s,
                     u"The smallest model that still understands tool use."_s});
    return list;
}

} // namespace

QList<LocalModelRecommendation> recommendations(int ramGB)
{
    if (ramGB >= 32)
        return forLargeMachines();
    return ramGB >= 16 ? forMediumMachines() : forSmallMachines(ramGB);
}

} // namespace morvane
