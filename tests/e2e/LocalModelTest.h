#pragma once

#include "MorvaneTest.h"
#include "RuntimeWorld.h"

#include <memory>

namespace morvane {

/// Base of the tests of the local model: the program in a home with a blank and a quote in its path, with a
/// runtime to be downloaded from this computer. No network, no runtime that is installed here.
class LocalModelTest : public MorvaneTest {
protected:
    static constexpr auto opening =
        u"Setting up the local model. This is a one-time download of a few gigabytes.";
    static constexpr auto ready = u"The local model is ready. You can start chatting.";
    static constexpr auto skip = u"Skip local model setup. You can choose a provider in Settings later.";
    static constexpr auto getStarted = u"Get started with the local model";
    static constexpr auto cancelSetup = u"Cancel the local model setup";
    static constexpr auto install = u"Install the built-in local model";

    static QString text(const char16_t *literal) { return QString::fromUtf16(literal); }

    /// A user who has never started the program, on a computer without anything; not started yet.
    MorvaneSession &newcomer();
    /// A user who has been greeted and whose provider is the local model; not started yet.
    MorvaneSession &user();
    /// Waits until the program has begun to download.
    static bool downloads(MorvaneSession &morvane);
    /// Waits until the model stands ready.
    static bool becomesReady(MorvaneSession &morvane);

    void TearDown() override;

    std::unique_ptr<RuntimeWorld> world;

private:
    MorvaneSession &prepareHome();
};

} // namespace morvane
