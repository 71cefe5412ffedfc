#include "ui/sheets/AnswerGuard.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using namespace std::chrono_literals;

class AnswerGuardTest : public testing::Test {
protected:
    AnswerGuardTest() { guard.restart(); }

    std::chrono::steady_clock::time_point now{1h};
    AnswerGuard guard{[this] { return now; }};
};

TEST_F(AnswerGuardTest, DropsInputRightAfterTheSheetAppeared)
{
    EXPECT_FALSE(guard.takesInput());
    now += AnswerGuard::quietTime - 1ms;
    EXPECT_FALSE(guard.takesInput());
}

TEST_F(AnswerGuardTest, TakesInputAfterThePause)
{
    now += AnswerGuard::quietTime;
    EXPECT_TRUE(guard.takesInput());
}

TEST_F(AnswerGuardTest, RunningTypingKeepsItClosedHoweverLongItGoesOn)
{
    for (int key = 0; key < 100; ++key) {
        now += 150ms;
        EXPECT_FALSE(guard.takesInput());
    }
    now += AnswerGuard::quietTime;
    EXPECT_TRUE(guard.takesInput());
}

TEST_F(AnswerGuardTest, OnceOpenItTakesFastInput)
{
    now += AnswerGuard::quietTime;
    EXPECT_TRUE(guard.takesInput());
    EXPECT_TRUE(guard.takesInput());
    now += 1ms;
    EXPECT_TRUE(guard.takesInput());
}

TEST_F(AnswerGuardTest, WhatFollowsTheAnswerWithoutAPauseBelongsToIt)
{
    now += AnswerGuard::quietTime;
    EXPECT_TRUE(guard.isQuiet());
    EXPECT_TRUE(guard.takesInput());
    EXPECT_FALSE(guard.isQuiet());
    guard.lingerOn();
    now += AnswerGuard::quietTime - 1ms;
    EXPECT_FALSE(guard.takesInput());
    now += AnswerGuard::quietTime;
    EXPECT_TRUE(guard.isQuiet());
    EXPECT_TRUE(guard.takesInput());
}

TEST_F(AnswerGuardTest, BeginsAnewForTheNextRequest)
{
    now += AnswerGuard::quietTime;
    EXPECT_TRUE(guard.takesInput());
    guard.restart();
    EXPECT_FALSE(guard.takesInput());
}

} // namespace
} // namespace morvane
