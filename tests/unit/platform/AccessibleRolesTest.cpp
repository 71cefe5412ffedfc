#include "platform/linux/desktop/AccessibleRoles.h"

#include "platform/linux/desktop/AccessibleWindow.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

// Numbers of the accessibility protocol.
constexpr uint32_t button = 43;
constexpr uint32_t passwordField = 40;
constexpr uint32_t spinButton = 52;
constexpr uint32_t terminal = 60;
constexpr uint32_t text = 61;
constexpr uint32_t entry = 79;

TEST(AccessibleRolesTest, EachRoleHasTheNameThatTheToolsKnow)
{
    const std::pair<uint32_t, QString> roles[] = {{7, u"AXCheckBox"_s},
                                                  {8, u"AXMenuItem"_s},
                                                  {10, u"AXHeader"_s},
                                                  {11, u"AXComboBox"_s},
                                                  {26, u"AXImage"_s},
                                                  {27, u"AXImage"_s},
                                                  {29, u"AXStaticText"_s},
                                                  {32, u"AXCell"_s},
                                                  {33, u"AXMenuItem"_s},
                                                  {35, u"AXMenuItem"_s},
                                                  {37, u"AXTabGroup"_s},
                                                  {passwordField, u"AXTextField"_s},
                                                  {button, u"AXButton"_s},
                                                  {44, u"AXRadioButton"_s},
                                                  {45, u"AXMenuItem"_s},
                                                  {51, u"AXSlider"_s},
                                                  {spinButton, u"AXIncrementor"_s},
                                                  {56, u"AXCell"_s},
                                                  {terminal, u"AXTextArea"_s},
                                                  {62, u"AXButton"_s},
                                                  {73, u"AXStaticText"_s},
                                                  {88, u"AXLink"_s},
                                                  {91, u"AXCell"_s},
                                                  {116, u"AXStaticText"_s},
                                                  {129, u"AXMenuButton"_s},
                                                  {0, u"AXGroup"_s},
                                                  {39, u"AXGroup"_s},
                                                  {4'000'000'000, u"AXGroup"_s}};
    for (const auto &[role, name] : roles)
        EXPECT_EQ(accessibleRoleName(role, false), name) << role;
}

TEST(AccessibleRolesTest, AFieldOfSeveralLinesIsAnArea)
{
    for (const uint32_t role : {text, entry}) {
        EXPECT_EQ(accessibleRoleName(role, true), u"AXTextArea"_s);
        EXPECT_EQ(accessibleRoleName(role, false), u"AXTextField"_s);
    }
    EXPECT_EQ(accessibleRoleName(passwordField, true), u"AXTextField"_s);
    EXPECT_EQ(accessibleRoleName(button, true), u"AXButton"_s);
}

TEST(AccessibleRolesTest, TheActionThatIsLikestToAPressIsTaken)
{
    EXPECT_EQ(clickAction({u"SetFocus"_s, u"Press"_s}, button), 1);
    EXPECT_EQ(clickAction({u"activate"_s, u"click"_s}, button), 1);
    EXPECT_EQ(clickAction({u"ShowMenu"_s, u"Toggle"_s}, button), 1);
    EXPECT_EQ(clickAction({u"jump"_s}, button), 0);
    EXPECT_EQ(clickAction({u"expand or contract"_s}, button), 0);
}

TEST(AccessibleRolesTest, WhatOnlyMovesTheFocusOrScrollsIsNoPress)
{
    EXPECT_EQ(clickAction({}, button), -1);
    EXPECT_EQ(clickAction({u"SetFocus"_s, u"scrollDown"_s, u"menu"_s}, button), -1);
}

TEST(AccessibleRolesTest, TheActionOfAFieldIsItsReturnKeyAndNoPress)
{
    for (const uint32_t role : {text, entry, passwordField, spinButton, terminal})
        EXPECT_EQ(clickAction({u"activate"_s}, role), -1) << role;
}

TEST(AccessibleWindowTest, PlacesOfTheScreenAreCountedFromThePrimaryMonitor)
{
    AccessibleWindow window;
    window.offset = {100, 200};
    EXPECT_EQ(window.toScreen({700, 20, 30, 40}, {640, 0}), QRectF(60, 20, 30, 40));
    window.scale = 2;
    EXPECT_EQ(window.toScreen({350, 10, 15, 20}, {640, 0}), QRectF(60, 20, 30, 40));
}

TEST(AccessibleWindowTest, PlacesOfTheWindowAreMovedToWhereItIs)
{
    AccessibleWindow window;
    window.isRelative = true;
    window.offset = {-100, 200};
    EXPECT_EQ(window.toScreen({7, 20, 30, 40}, {640, 0}), QRectF(-93, 220, 30, 40));
    window.scale = 2;
    EXPECT_EQ(window.toScreen({7, 20, 30, 40}, {640, 0}), QRectF(-86, 240, 60, 80));
}

} // namespace
} // namespace morvane
