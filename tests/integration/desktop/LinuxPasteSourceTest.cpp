#include "platform/linux/desktop/LinuxPasteSource.h"

#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "support/ClipboardOwner.h"
#include "support/RunTask.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Selection = PasteSource::Selection;

class LinuxPasteSourceTest : public testing::Test {
protected:
    std::expected<PasteContent, PasteFailure> read(Selection selection = Selection::clipboard)
    {
        return readWithin(std::chrono::seconds(30), selection);
    }
    std::expected<PasteContent, PasteFailure> readWithin(std::chrono::milliseconds patience,
                                                         Selection selection = Selection::clipboard)
    {
        return runTask(m_scheduler, LinuxPasteSource(patience).read(selection), std::chrono::seconds(60));
    }
    static ClipboardOwner owner(const QMap<QByteArray, QByteArray> &contents)
    {
        return {qEnvironmentVariable("DISPLAY"), contents};
    }

    SystemClock m_clock;
    Scheduler m_scheduler{m_clock};
};

TEST_F(LinuxPasteSourceTest, ATextComesAsItIsFromWhereverItStands)
{
    EXPECT_TRUE(LinuxPasteSource().isReachable());
    {
        const ClipboardOwner other = owner({{"UTF8_STRING", "f\u00fcnf"}, {"image/png", "a picture of it"}});
        const auto content = read();
        ASSERT_TRUE(content.has_value());
        EXPECT_EQ(content->text, u"f\u00fcnf"_s);
        EXPECT_TRUE(content->picture.isEmpty() && content->uriList.isEmpty());
    }
    const ClipboardOwner old = owner({{"STRING", "f\xfcnf"}});
    const auto content = read();
    ASSERT_TRUE(content.has_value());
    EXPECT_EQ(content->text, u"f\u00fcnf"_s);
}

TEST_F(LinuxPasteSourceTest, LineEndsAreLineFeeds)
{
    const ClipboardOwner other = owner({{"text/plain;charset=utf-8", "one\r\ntwo\rthree\n"}});
    const auto content = read();
    ASSERT_TRUE(content.has_value());
    EXPECT_EQ(content->text, u"one\ntwo\nthree\n"_s);
}

TEST_F(LinuxPasteSourceTest, FilesComeWithTheirText)
{
    const QByteArray files = uriList({u"/tmp/one.txt"_s});
    const ClipboardOwner other = owner({{"text/uri-list", files}, {"UTF8_STRING", "/tmp/one.txt"}});
    const auto content = read();
    ASSERT_TRUE(content.has_value());
    EXPECT_EQ(content->uriList, files);
    EXPECT_EQ(content->text, u"/tmp/one.txt"_s);
}

TEST_F(LinuxPasteSourceTest, AListOfMoreFilesThanAnybodyChoosesIsText)
{
    auto *data = new QMimeData;
    data->setData(u"text/uri-list"_s, uriList({u"/tmp/one.txt"_s}).repeated(60'000));
    data->setText(u"names"_s);
    QGuiApplication::clipboard()->setMimeData(data);
    const auto content = read();
    ASSERT_TRUE(content.has_value());
    EXPECT_TRUE(content->uriList.isEmpty());
    EXPECT_EQ(content->text, u"names"_s);
}

TEST_F(LinuxPasteSourceTest, APictureComesInTheBestFormat)
{
    const ClipboardOwner other = owner({{"image/bmp", "large"}, {"image/png", "small"}});
    const auto content = read();
    ASSERT_TRUE(content.has_value());
    EXPECT_EQ(content->picture, "small");
    EXPECT_EQ(content->pictureFormat, u"png"_s);
    EXPECT_TRUE(content->text.isEmpty());
}

TEST_F(LinuxPasteSourceTest, WhatIsSelectedIsNotWhatWasCopied)
{
    QGuiApplication::clipboard()->setText(u"selected"_s, QClipboard::Selection);
    const ClipboardOwner other = owner({{"UTF8_STRING", "copied"}});
    EXPECT_EQ(read(Selection::primary).value_or(PasteContent()).text, u"selected"_s);
    EXPECT_EQ(read().value_or(PasteContent()).text, u"copied"_s);
}

TEST_F(LinuxPasteSourceTest, ALongTextComesInParts)
{
    const QString text = u"a line\n"_s.repeated(1'500'000);
    QGuiApplication::clipboard()->setText(text);
    EXPECT_EQ(read().value_or(PasteContent()).text, text);
}

TEST_F(LinuxPasteSourceTest, AnEmptyClipboardIsAnAnswer)
{
    const XConnection other(qEnvironmentVariable("DISPLAY"));
    xcb_set_selection_owner(other.handle(), XCB_NONE, other.atom("CLIPBOARD"), XCB_CURRENT_TIME);
    static_cast<void>(other.activeWindow());
    const auto content = read();
    ASSERT_TRUE(content.has_value());
    EXPECT_TRUE(content->text.isEmpty());
}

TEST_F(LinuxPasteSourceTest, AnOwnerThatHangsIsGivenUp)
{
    const XConnection frozen(qEnvironmentVariable("DISPLAY"));
    const xcb_window_t window = frozen.openHiddenWindow();
    xcb_set_selection_owner(frozen.handle(), window, frozen.atom("CLIPBOARD"), XCB_CURRENT_TIME);
    static_cast<void>(frozen.activeWindow());
    const auto content = readWithin(std::chrono::milliseconds(100));
    ASSERT_FALSE(content.has_value());
    EXPECT_EQ(content.error(), PasteFailure::silent);
}

TEST_F(LinuxPasteSourceTest, AnOwnerThatDripsIsGivenUpThoughItIsNeverSilent)
{
    const ClipboardOwner dripping(qEnvironmentVariable("DISPLAY"), {{"UTF8_STRING", "drip "}},
                                  ClipboardOwner::Manner::drips);
    const auto content = readWithin(std::chrono::milliseconds(300));
    ASSERT_FALSE(content.has_value());
    EXPECT_EQ(content.error(), PasteFailure::tooSlow);
    EXPECT_GT(dripping.dripped(), 1);
}

TEST_F(LinuxPasteSourceTest, MoreThanAHundredMegabytesIsTooMuch)
{
    // Thirteen times this is 4 bytes more.
    const ClipboardOwner other(qEnvironmentVariable("DISPLAY"), {{"UTF8_STRING", QByteArray(7'692'308, 'x')}},
                               ClipboardOwner::Manner::pours);
    const auto content = read();
    ASSERT_FALSE(content.has_value());
    EXPECT_EQ(content.error(), PasteFailure::tooLarge);
    EXPECT_GE(other.dripped(), 13);
}

} // namespace
} // namespace morvane
