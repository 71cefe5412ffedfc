#include "support/AppFixture.h"

#include "async/Sleep.h"

#include <QThreadPool>

using namespace Qt::StringLiterals;

namespace morvane {

AppFixture::AppFixture()
{
    settings = std::make_unique<SettingsStore>(home.path() + u"/config/Morvane.conf"_s, keychain);
    settings->setProviderID(ProviderID::custom);
    settings->setModel(u"scripted"_s);
    settings->setValue(u"hasCompletedOnboarding"_s, true);
    store = std::make_unique<ConversationStore>(home.path() + u"/data/Conversations"_s);
    services.reset(new AppServices(
        servicesAround({.scheduler = scheduler,
                        .settings = *settings,
                        .conversations = *store,
                        .executeTool = [this](ToolPermit permit) { return executeTool(std::move(permit)); },
                        .machine = u"Test machine."_s})));
    settingsServices.reset(new SettingsServices(settingsServicesAround(*services, 16)));
    start();
}

AppFixture::~AppFixture()
{
    if (model)
        model->prepareToQuit();
    scheduler.shutdown(std::chrono::seconds(5));
}

void AppFixture::start()
{
    if (model) { // no work of the old one may outlive it
        model->prepareToQuit();
        model->cancelLocalModelWork();
        EXPECT_TRUE(waitUntil([this] { return !model->localModel().isWorking(); }));
    }
    model = std::make_unique<AppModel>(*services);
    EXPECT_TRUE(waitUntil([this] { return model->isReady(); }));
}

void AppFixture::settle()
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    for (;;) {
        // First, so that what they brought is seen by the look at what is ready.
        const bool atRest = store->isIdle() && QThreadPool::globalInstance()->activeThreadCount() == 0;
        if (!morvane::settle() && atRest)
            return;
        if (std::chrono::steady_clock::now() >= deadline)
            throw std::runtime_error("the program does not come to rest");
    }
}

void AppFixture::finishRun()
{
    settle();
    EXPECT_TRUE(waitUntil([this] { return !model->isBusy(); }));
    settle();
}

void AppFixture::sendAndFinish(const QString &text)
{
    EXPECT_TRUE(model->send(text, {}));
    finishRun();
}

void AppFixture::neverAnswer()
{
    FakeAIService::Turn turn;
    turn.silence = std::chrono::hours(1);
    service.willTurn(turn);
}

QStringList AppFixture::activityTexts() const
{
    QStringList texts;
    for (const ActivityStep &step : model->activity().steps())
        texts.append(step.text);
    return texts;
}

Task<ToolResult> AppFixture::executeTool(ToolPermit permit)
{
    if (tool)
        co_return co_await tool(std::move(permit));
    executed.append(permit.call().name);
    if (toolTime.count() > 0)
        co_await sleepFor(toolTime);
    co_return toolResults.isEmpty() ? u"tool result"_s : toolResults.takeFirst();
}

} // namespace morvane
