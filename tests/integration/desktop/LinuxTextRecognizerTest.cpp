#include "platform/linux/desktop/LinuxTextRecognizer.h"

#include "support/WaitUntil.h"

#include <QFile>
#include <QTemporaryDir>
#include <future>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(LinuxTextRecognizerTest, AStopEndsTheReadingOfAPicture)
{
    const QTemporaryDir folder;
    const QString begun = folder.filePath(u"begun"_s);
    QFile program(folder.filePath(u"program"_s));
    ASSERT_TRUE(program.open(QIODevice::WriteOnly));
    program.write((u"#!/bin/sh\n: > "_s + begun + u"\nexec tail -f /dev/null\n"_s).toUtf8());
    program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    program.close();
    LinuxTextRecognizer recognizer(program.fileName());
    std::stop_source stop;
    QImage picture(10, 10, QImage::Format_Grayscale8);
    picture.fill(Qt::white);
    const auto reading = std::async(
        std::launch::async, [&] { EXPECT_TRUE(recognizer.recognize(picture, stop.get_token()).isEmpty()); });
    EXPECT_TRUE(waitUntil([&] { return QFile::exists(begun); }));
    stop.request_stop();
    // Sooner than a program that hangs is given up.
    EXPECT_TRUE(
        waitUntil([&] { return reading.wait_for(std::chrono::seconds(0)) == std::future_status::ready; },
                  std::chrono::seconds(10)));
}

} // namespace
} // namespace morvane
