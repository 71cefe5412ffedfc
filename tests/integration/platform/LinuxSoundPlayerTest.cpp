#include "platform/linux/notifications/LinuxSoundPlayer.h"

#include "base/InstalledFiles.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

namespace morvane {
namespace {

using namespace std::chrono_literals;

constexpr auto limit = 20s;

/// Plays through ALSA, whose default device here is a file.
class LinuxSoundPlayerTest : public testing::Test {
protected:
    LinuxSoundPlayerTest()
    {
        const QString configuration = home.write(
            "asound.conf", "pcm.!default { type file slave.pcm null file \"" +
                               home.path("heard.raw").toUtf8() + "\" format raw }\npcm.null { type null }\n");
        qputenv("ALSA_CONFIG_PATH", configuration.toUtf8());
        qputenv("CANBERRA_DRIVER", "alsa");
    }
    ~LinuxSoundPlayerTest() override
    {
        qunsetenv("ALSA_CONFIG_PATH");
        qunsetenv("CANBERRA_DRIVER");
    }

    /// The loudest sample that has reached the device.
    int loudest() const
    {
        const QByteArray bytes = home.read("heard.raw");
        int most = 0;
        for (qsizetype at = 0; at + 1 < bytes.size(); at += 2) {
            qint16 sample = 0;
            std::memcpy(&sample, bytes.constData() + at, sizeof sample);
            most = std::max(most, std::abs(int(sample)));
        }
        return most;
    }

    TemporaryHome home;
};

TEST_F(LinuxSoundPlayerTest, EverySoundOfTheProgramIsHeard)
{
    for (const char *name : {"MorvaneDone", "MorvaneError", "MorvaneCancelled"}) {
        QFile::remove(home.path("heard.raw"));
        LinuxSoundPlayer player(InstalledFiles::aroundProgram().sounds());
        player.play(name);
        player.waitUntilHeard(limit);
        EXPECT_GT(loudest(), 5000) << name;
    }
}

TEST_F(LinuxSoundPlayerTest, AnUnknownSoundIsSilent)
{
    LinuxSoundPlayer player(InstalledFiles::aroundProgram().sounds());
    player.play("../sounds/NoSuchSound");
    player.waitUntilHeard(limit);
    EXPECT_EQ(loudest(), 0);
}

TEST_F(LinuxSoundPlayerTest, WithoutAudioNothingHappensAndTheNextSoundIsTried)
{
    LinuxSoundPlayer player(InstalledFiles::aroundProgram().sounds());
    qputenv("CANBERRA_DRIVER", "no-such-driver");
    player.play("MorvaneDone");
    player.waitUntilHeard(limit);
    EXPECT_EQ(loudest(), 0);
    qputenv("CANBERRA_DRIVER", "alsa");
    player.play("MorvaneDone");
    player.waitUntilHeard(limit);
    EXPECT_GT(loudest(), 5000);
}

TEST_F(LinuxSoundPlayerTest, ManySoundsAtOnceAreNotAQueue)
{
    LinuxSoundPlayer player(InstalledFiles::aroundProgram().sounds());
    for (int sound = 0; sound < 1000; ++sound)
        player.play("MorvaneCancelled");
    player.waitUntilHeard(limit);
    // Four of some 21 kB each, however the device counts its channels.
    EXPECT_LT(home.read("heard.raw").size(), 8 * 21'212);
}

TEST_F(LinuxSoundPlayerTest, EndingJustWhenASoundEndsIsHarmless)
{
    for (int round = 0; round < 100; ++round) {
        LinuxSoundPlayer player(InstalledFiles::aroundProgram().sounds());
        player.play("MorvaneCancelled");
        player.waitUntilHeard(limit);
    }
}

TEST_F(LinuxSoundPlayerTest, EndingWhileASoundPlaysIsHarmless)
{
    LinuxSoundPlayer player(InstalledFiles::aroundProgram().sounds());
    player.play("MorvaneDone");
}

} // namespace
} // namespace morvane
