#include "tools/screen/KeyTable.h"

#include <gtest/gtest.h>
#include <map>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(KeyTableTest, EveryNameHasItsCode)
{
    const std::map<QString, int> named{
        {u"return"_s, 36}, {u"enter"_s, 36},     {u"tab"_s, 48},       {u"space"_s, 49},
        {u"escape"_s, 53}, {u"esc"_s, 53},       {u"delete"_s, 51},    {u"end"_s, 119},
        {u"up"_s, 126},    {u"backspace"_s, 51}, {u"down"_s, 125},     {u"left"_s, 123},
        {u"home"_s, 115},  {u"right"_s, 124},    {u"pagedown"_s, 121}, {u"pageup"_s, 116}};
    for (const auto &[name, code] : named)
        EXPECT_EQ(keyCode(name), code) << name.toStdString();
}

TEST(KeyTableTest, LettersAndDigitsAreWhereTheyAreOnAUsKeyboard)
{
    // By code from 0 on; blanks are keys that the table does not have.
    const QString keys = u"asdfhgzxcv bqweryt123465 97 80 ou ip lj k    nm"_s;
    int count = 0;
    for (int code = 0; code < keys.size(); ++code) {
        if (keys.at(code) == u' ')
            continue;
        EXPECT_EQ(keyCode(keys.at(code)), code) << keys.mid(code, 1).toStdString();
        ++count;
    }
    EXPECT_EQ(count, 36);
}

TEST(KeyTableTest, WhatIsInNoTableHasNoCode)
{
    for (const QString &name : {u"f5"_s, u""_s, u"A"_s, u"Return"_s, u"-"_s, u"command"_s})
        EXPECT_EQ(keyCode(name), std::nullopt) << name.toStdString();
    for (const QString &name : {u"Cmd"_s, u""_s, u"meta"_s, u"return"_s})
        EXPECT_EQ(modifierFlag(name), std::nullopt) << name.toStdString();
}

TEST(KeyTableTest, EveryModifierHasItsFlag)
{
    const std::map<QString, quint32> flags{
        {u"cmd"_s, 0x100000},  {u"command"_s, 0x100000}, {u"ctrl"_s, 0x40000},   {u"control"_s, 0x40000},
        {u"shift"_s, 0x20000}, {u"alt"_s, 0x80000},      {u"option"_s, 0x80000}, {u"fn"_s, 0x800000}};
    for (const auto &[name, flag] : flags)
        EXPECT_EQ(modifierFlag(name), flag) << name.toStdString();
}

} // namespace
} // namespace morvane
