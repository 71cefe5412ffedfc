#include "LocalModelTest.h"

#include "BuildTree.h"

using namespace Qt::StringLiterals;

namespace morvane {

MorvaneSession &LocalModelTest::prepareHome()
{
    MorvaneSession &morvane =
        prepareProgram(build_tree::morvaneOnLoopback(), {}, Hearing::announcements, u"it's a home"_s);
    world = std::make_unique<RuntimeWorld>(morvane);
    return morvane;
}

MorvaneSession &LocalModelTest::newcomer()
{
    MorvaneSession &morvane = prepareHome();
    morvane.forgetSettings();
    return morvane;
}

MorvaneSession &LocalModelTest::user()
{
    MorvaneSession &morvane = prepareHome();
    morvane.setSetting(u"provider"_s, u"ollama"_s);
    morvane.setSetting(u"model"_s, u"qwen2.5"_s);
    return morvane;
}

bool LocalModelTest::downloads(MorvaneSession &morvane)
{
    return morvane.program().shows(
        [](const AccessibleNode &node) { return node.name.contains(u"Downloading Ollama… 2 MB of "_s); });
}

bool LocalModelTest::becomesReady(MorvaneSession &morvane)
{
    return morvane.ear().hears(text(ready)) && morvane.hasStatus(u"Ready"_s);
}

void LocalModelTest::TearDown()
{
    MorvaneTest::TearDown();
    world.reset();
}

} // namespace morvane
