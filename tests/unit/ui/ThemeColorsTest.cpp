#include "ui/theme/ThemeColors.h"

#include "ui/theme/Contrast.h"
#include "ui/theme/Theme.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using Preference = ColorScheme::Preference;

/// Our palettes, and desktops' palettes that are hard to be legible on.
QList<QPalette> palettes()
{
    QPalette gray(QColor(0x80, 0x80, 0x80));
    gray.setColor(QPalette::Base, QColor(0x90, 0x90, 0x90));
    QPalette loud(QColor(0xff, 0xee, 0x00), QColor(0xff, 0xff, 0x80));
    loud.setColor(QPalette::Highlight, QColor(0xff, 0xff, 0x00));
    QPalette highContrast(Qt::black);
    highContrast.setColor(QPalette::Base, Qt::black);
    highContrast.setColor(QPalette::Text, Qt::white);
    highContrast.setColor(QPalette::Highlight, QColor(0x00, 0xff, 0xff));
    return {lightPalette(), darkPalette(), gray, loud, highContrast};
}

TEST(ThemeColorsTest, TextIsLegibleOnEveryGroundThatItStandsOn)
{
    for (const QPalette &palette : {lightPalette(), darkPalette()}) {
        const ThemeColors colors = ThemeColors::fromPalette(palette);
        for (const QColor &ground : {colors.surface, colors.window, colors.userBubble, colors.codeGround}) {
            EXPECT_GE(contrastRatio(colors.text, ground), textContrast);
            EXPECT_GE(contrastRatio(colors.secondaryText, ground), textContrast);
        }
        for (const QColor &color : {colors.accent, colors.error, colors.success, colors.warning})
            EXPECT_GE(contrastRatio(color, colors.surface), textContrast);
        EXPECT_GE(contrastRatio(colors.onAccent, colors.accent), textContrast);
        EXPECT_GE(contrastRatio(colors.onSelection, colors.selection), textContrast);
    }
}

TEST(ThemeColorsTest, FocusAndControlsAreVisible)
{
    for (const QPalette &palette : {lightPalette(), darkPalette()}) {
        const ThemeColors colors = ThemeColors::fromPalette(palette);
        for (const QColor &ground : {colors.surface, colors.window}) {
            EXPECT_GE(contrastRatio(colors.focusRing, ground), graphicsContrast);
            EXPECT_GE(contrastRatio(colors.controlBorder, ground), graphicsContrast);
        }
    }
}

TEST(ThemeColorsTest, AnyDesktopPaletteGivesLegibleText)
{
    for (const QPalette &palette : palettes()) {
        const ThemeColors colors = ThemeColors::fromPalette(palette);
        EXPECT_GE(contrastRatio(colors.text, colors.surface), textContrast);
        EXPECT_GE(contrastRatio(colors.secondaryText, colors.surface), textContrast);
        EXPECT_GE(contrastRatio(colors.error, colors.surface), textContrast);
        EXPECT_GE(contrastRatio(colors.onAccent, colors.accent), textContrast);
    }
}

TEST(ThemeColorsTest, KnowsLightFromDark)
{
    EXPECT_FALSE(ThemeColors::fromPalette(lightPalette()).isDark());
    EXPECT_TRUE(ThemeColors::fromPalette(darkPalette()).isDark());
}

TEST(ThemeTest, ADesktopPaletteThatAgreesIsKept)
{
    QPalette desktop = darkPalette();
    desktop.setColor(QPalette::Highlight, Qt::green);
    EXPECT_EQ(Theme::chosen(desktop, Theme::Origin::desktop, Preference::dark), desktop);
    EXPECT_EQ(Theme::chosen(desktop, Theme::Origin::desktop, Preference::none), desktop);
}

TEST(ThemeTest, TheDesktopsWishForLightOrDarkWins)
{
    EXPECT_EQ(Theme::chosen(darkPalette(), Theme::Origin::desktop, Preference::light), lightPalette());
    EXPECT_EQ(Theme::chosen(lightPalette(), Theme::Origin::desktop, Preference::dark), darkPalette());
}

TEST(ThemeTest, ADesktopWithoutAPaletteGetsOurs)
{
    QPalette toolkit(QColor(0xef, 0xef, 0xef));
    EXPECT_EQ(Theme::chosen(toolkit, Theme::Origin::toolkitDefault, Preference::none), lightPalette());
    EXPECT_EQ(Theme::chosen(toolkit, Theme::Origin::toolkitDefault, Preference::dark), darkPalette());
}

TEST(ContrastTest, KnowsTheEndsOfTheScale)
{
    EXPECT_NEAR(contrastRatio(Qt::black, Qt::white), 21, 0.01);
    EXPECT_NEAR(contrastRatio(Qt::red, Qt::red), 1, 0.01);
    EXPECT_NEAR(contrastRatio(QColor(0x76, 0x76, 0x76), Qt::white), 4.54, 0.01);
}

TEST(ContrastTest, AColourThatIsLegibleStaysAsItIs)
{
    EXPECT_EQ(readable(Qt::black, Qt::white, textContrast).rgb(), QColor(Qt::black).rgb());
    EXPECT_GE(contrastRatio(readable(Qt::yellow, Qt::white, textContrast), Qt::white), textContrast);
}

} // namespace
} // namespace morvane
