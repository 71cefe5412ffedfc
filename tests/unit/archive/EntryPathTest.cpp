#include "archive/EntryPath.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(EntryPathTest, NamesAreCutAtSlashes)
{
    EXPECT_EQ(entryPath("bin/ollama"), (EntryPath{"bin", "ollama"}));
    EXPECT_EQ(entryPath("./lib//ollama/./x/"), (EntryPath{"lib", "ollama", "x"}));
    EXPECT_EQ(entryPath("./"), EntryPath());
    EXPECT_EQ(entryPath("..a/b..c"), (EntryPath{"..a", "b..c"}));
}

TEST(EntryPathTest, WhatLeavesTheFolderIsNoPath)
{
    for (const char *path : {"", "/", "/etc/passwd", "..", "../x", "a/../../x", "a/..", "a/../b"})
        EXPECT_FALSE(entryPath(path)) << path;
    EXPECT_FALSE(entryPath(std::string(longestEntryPath + 1, 'a')));
    EXPECT_TRUE(entryPath(std::string(longestEntryPath, 'a')));
}

TEST(EntryPathTest, LinksMayGoUpAsFarAsTheFolder)
{
    const EntryPath link{"lib", "ollama", "x.so"};
    EXPECT_TRUE(staysInside(link, "x.so.1"));
    EXPECT_TRUE(staysInside(link, "../../bin/ollama"));
    EXPECT_TRUE(staysInside(link, "../.."));
    EXPECT_FALSE(staysInside(link, "../../.."));
    EXPECT_FALSE(staysInside(link, "../../../lib/x"));
    EXPECT_FALSE(staysInside(link, "/lib/x"));
    EXPECT_FALSE(staysInside(link, ""));
    EXPECT_FALSE(staysInside({}, "x"));
    EXPECT_FALSE(staysInside({"x"}, "a/../../b"));
}

} // namespace
} // namespace morvane
