#pragma once

#include "MainWindowFixture.h"

#include "ui/controls/DownloadProgressBar.h"

namespace morvane {

/// The main window of a user who has chosen the local model, beside a runtime that does what the test says.
class LocalModelFixture : public MainWindowFixture {
protected:
    LocalModelFixture()
    {
        settings->setProviderID(ProviderID::ollama);
        settings->setModel(QStringLiteral("qwen2.5"));
    }

    /// The model is there and answers.
    void haveModel()
    {
        localModel.serverRunning = true;
        localModel.models = {QStringLiteral("qwen2.5")};
        service.willTurn(FakeAIService::Turn{}); // the request that loads the model
    }
    void install()
    {
        model->localModel().installLocalModelIfNeeded();
        settle();
    }
    /// What the runtime tells of its work.
    void report(const QString &label, std::optional<double> fraction)
    {
        localModel.progress(label, fraction);
        settle();
    }

    template <class View> static DownloadProgressBar *bar(const View *view)
    {
        auto *found = view->template findChild<DownloadProgressBar *>();
        return found && found->isVisible() ? found : nullptr;
    }
};

} // namespace morvane
