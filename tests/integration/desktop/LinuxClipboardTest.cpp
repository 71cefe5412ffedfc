#include "platform/linux/desktop/LinuxClipboard.h"

#include "async/OffMain.h"
#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "platform/linux/desktop/XDisplay.h"
#include "support/ClipboardOwner.h"
#include "support/RunTask.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class LinuxClipboardTest : public testing::Test {
protected:
    std::optional<QString> read() { return read(m_clipboard); }
    std::optional<QString> read(LinuxClipboard &clipboard)
    {
        return runTask(m_scheduler, runOffMain([&clipboard] { return clipboard.text({}); }));
    }

    SystemClock m_clock;
    Scheduler m_scheduler{m_clock};
    LinuxClipboard m_clipboard{std::chrono::seconds(15)};
};

TEST_F(LinuxClipboardTest, WhatWasSetIsReadEvenIfItComesInManyParts)
{
    // One question to the server holds 16 MB.
    for (const QString &text :
         {u"short ü 😀"_s, QString(5'000'000, u'x') + u"end"_s, QString(20'000'000, u'x') + u"end"_s}) {
        m_clipboard.setText(text);
        EXPECT_EQ(read(), text);
    }
}

TEST_F(LinuxClipboardTest, WhatWasSetCountsHowOftenItIsAskedFor)
{
    m_clipboard.setText(u"words"_s);
    EXPECT_EQ(m_clipboard.readings(), 0);
    for (int time = 1; time <= 2; ++time) {
        EXPECT_EQ(read(), u"words"_s);
        EXPECT_EQ(m_clipboard.readings(), time);
    }
    const ClipboardOwner owner(qEnvironmentVariable("DISPLAY"), {{"UTF8_STRING", "fünf"}});
    EXPECT_EQ(read(), u"fünf"_s);
    EXPECT_EQ(m_clipboard.readings(), 2);
}

TEST_F(LinuxClipboardTest, AnotherProgramsTextIsRead)
{
    const ClipboardOwner owner(qEnvironmentVariable("DISPLAY"), {{"UTF8_STRING", "fünf"}});
    EXPECT_EQ(read(), u"fünf"_s);
}

TEST_F(LinuxClipboardTest, ATextThatIsOnlyThereUnderItsNewerNameIsRead)
{
    const ClipboardOwner owner(qEnvironmentVariable("DISPLAY"), {{"text/plain;charset=utf-8", "fünf"}});
    EXPECT_EQ(read(), u"fünf"_s);
}

TEST_F(LinuxClipboardTest, AnOldProgramsTextIsRead)
{
    const ClipboardOwner owner(qEnvironmentVariable("DISPLAY"), {{"STRING", "f\xfcnf"}});
    EXPECT_EQ(read(), u"fünf"_s);
}

TEST_F(LinuxClipboardTest, APictureIsNoText)
{
    const ClipboardOwner owner(qEnvironmentVariable("DISPLAY"), {{"image/png", "\x89PNG"}});
    EXPECT_EQ(read(), std::nullopt);
}

TEST_F(LinuxClipboardTest, AnOwnerThatHangsIsGivenUp)
{
    const XConnection frozen(qEnvironmentVariable("DISPLAY"));
    const xcb_window_t window = frozen.openHiddenWindow();
    xcb_set_selection_owner(frozen.handle(), window, frozen.atom("CLIPBOARD"), XCB_CURRENT_TIME);
    static_cast<void>(frozen.activeWindow());
    LinuxClipboard impatient(std::chrono::milliseconds(100));
    EXPECT_EQ(read(impatient), std::nullopt);
}

TEST_F(LinuxClipboardTest, ATextThatIsTooLargeIsNotAskedForUnderItsOtherNames)
{
    const QByteArray part(8'000'000, 'x');
    const ClipboardOwner endless(qEnvironmentVariable("DISPLAY"), {{"UTF8_STRING", part}, {"STRING", part}},
                                 ClipboardOwner::Manner::pours);
    EXPECT_EQ(read(), std::nullopt);
    constexpr int tooLarge = 13;
    EXPECT_GE(endless.dripped(), tooLarge);
    EXPECT_LT(endless.dripped(), 2 * tooLarge);
}

TEST_F(LinuxClipboardTest, AStopEndsTheWaitForAnOwnerThatHangs)
{
    const XConnection frozen(qEnvironmentVariable("DISPLAY"));
    const xcb_window_t window = frozen.openHiddenWindow();
    xcb_set_selection_owner(frozen.handle(), window, frozen.atom("CLIPBOARD"), XCB_CURRENT_TIME);
    static_cast<void>(frozen.activeWindow());
    LinuxClipboard patient(std::chrono::minutes(1));
    std::stop_source stop;
    auto reading =
        m_scheduler.spawn(runOffMain([&patient, token = stop.get_token()] { return patient.text(token); }));
    EXPECT_TRUE(waitUntil([&] {
        const auto event = xReply(xcb_poll_for_event(frozen.handle()));
        return event && (event->response_type & 0x7f) == XCB_SELECTION_REQUEST;
    }));
    stop.request_stop();
    ASSERT_TRUE(waitUntil([&] { return reading.done(); }));
    EXPECT_EQ(reading.result(), std::nullopt);
}

} // namespace
} // namespace morvane
