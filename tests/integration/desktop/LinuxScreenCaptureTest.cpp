#include "platform/linux/desktop/LinuxScreenCapture.h"

#include "support/TestProgram.h"
#include "support/WaitUntil.h"
#include "support/XConnection.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <array>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(LinuxScreenCaptureTest, AServerThatSharesNoMemoryIsSeenAsWell)
{
    const QTemporaryDir folder;
    TestProgram server(u"Xvfb"_s,
                       {u"-displayfd"_s, u"2"_s, u"-screen"_s, u"0"_s, u"320x200x24"_s, u"-nolisten"_s,
                        u"tcp"_s, u"-noreset"_s, u"-extension"_s, u"MIT-SHM"_s},
                       QProcessEnvironment::systemEnvironment(), folder.filePath(u"log"_s));
    QString number;
    ASSERT_TRUE(waitUntil([&] {
        number = QRegularExpression(u"^(\\d+)\\n"_s, QRegularExpression::MultilineOption)
                     .match(server.log())
                     .captured(1);
        return !number.isEmpty();
    })) << server.log().toStdString();
    const XConnection painter(u':' + number);
    const std::array<uint32_t, 2> colours{0x102030, 1};
    const xcb_window_t window = xcb_generate_id(painter.handle());
    xcb_create_window(painter.handle(), XCB_COPY_FROM_PARENT, window, painter.root(), 100, 50, 20, 10, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, colours.data());
    xcb_map_window(painter.handle(), window);
    painter.activeWindow(); // By then it has been drawn.
    const QByteArray before = qgetenv("DISPLAY");
    qputenv("DISPLAY", (u':' + number).toUtf8());
    const QImage picture = LinuxScreenCapture().capture({90, 40, 60, 40}, {});
    qputenv("DISPLAY", before);
    ASSERT_EQ(picture.size(), QSize(60, 40));
    EXPECT_EQ(picture.pixel(10, 10), 0xff102030);
    EXPECT_EQ(picture.pixel(29, 19), 0xff102030);
    EXPECT_NE(picture.pixel(9, 10), 0xff102030);
    EXPECT_NE(picture.pixel(30, 20), 0xff102030);
}

} // namespace
} // namespace morvane
