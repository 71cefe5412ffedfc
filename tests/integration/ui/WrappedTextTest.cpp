#include "ui/controls/WrappedText.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

WrappedText wrapped(const QString &text)
{
    return {text, QApplication::font(), 4};
}

TEST(WrappedTextTest, IsLaidOutOnceForEachWidth)
{
    constexpr int width = 200;
    const WrappedText text = wrapped(QString(3'000, QChar(0x6f22)));
    for (int i = 0; i < 3; ++i) {
        EXPECT_GT(text.naturalWidth(), width);
        EXPECT_TRUE(text.isElided(width));
        EXPECT_EQ(text.size(width).width(), width);
        QImage image(width, 100, QImage::Format_ARGB32);
        QPainter painter(&image);
        text.draw(painter, image.rect(), Qt::AlignLeft);
    }
    EXPECT_EQ(text.known.size(), 2);
}

TEST(WrappedTextTest, ATextThatFitsIsLaidOutOnce)
{
    const WrappedText text = wrapped(u"A short answer"_s);
    const int natural = text.naturalWidth();
    EXPECT_EQ(text.size(natural), text.size(natural + 500));
    EXPECT_FALSE(text.isElided(natural));
    EXPECT_EQ(text.known.size(), 1);
}

TEST(WrappedTextTest, LinesBeyondTheLimitAreElidedHoweverWideItIs)
{
    const WrappedText text = wrapped(u"a\nb\nc\nd\ne"_s);
    EXPECT_TRUE(text.isElided(text.naturalWidth()));
    EXPECT_TRUE(text.isElided(10'000));
    EXPECT_FALSE(wrapped(u"a\nb\nc\nd"_s).isElided(10'000));
}

TEST(WrappedTextTest, RemembersFewWidths)
{
    const WrappedText text = wrapped(u"several words "_s.repeated(20));
    for (int width = 100; width < 300; ++width)
        EXPECT_LE(text.size(width).width(), width);
    EXPECT_LE(text.known.size(), 8);
}

} // namespace
} // namespace morvane
