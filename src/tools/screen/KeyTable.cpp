#include "tools/screen/KeyTable.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace morvane {

std::optional<int> keyCode(const QString &name)
{
    static const QHash<QString, int> codes{
        {u"return"_s, 36},  {u"enter"_s, 36},  {u"tab"_s, 48},       {u"space"_s, 49},  {u"escape"_s, 53},
        {u"esc"_s, 53},     {u"delete"_s, 51}, {u"backspace"_s, 51}, {u"end"_s, 119},   {u"pagedown"_s, 121},
        {u"up"_s, 126},     {u"down"_s, 125},  {u"left"_s, 123},     {u"right"_s, 124}, {u"home"_s, 115},
        {u"pageup"_s, 116}, {u"a"_s, 0},       {u"b"_s, 11},         {u"c"_s, 8},       {u"d"_s, 2},
        {u"e"_s, 14},       {u"f"_s, 3},       {u"g"_s, 5},          {u"h"_s, 4},       {u"i"_s, 34},
        {u"j"_s, 38},       {u"k"_s, 40},      {u"l"_s, 37},         {u"m"_s, 46},      {u"n"_s, 45},
        {u"o"_s, 31},       {u"p"_s, 35},      {u"q"_s, 12},         {u"r"_s, 15},      {u"s"_s, 1},
        {u"t"_s, 17},       {u"u"_s, 32},      {u"v"_s, 9},          {u"w"_s, 13},      {u"x"_s, 7},
        {u"y"_s, 16},       {u"z"_s, 6},       {u"0"_s, 29},         {u"1"_s, 18},      {u"2"_s, 19},
        {u"3"_s, 20},       {u"4"_s, 21},      {u"5"_s, 23},         {u"6"_s, 22},      {u"7"_s, 26},
        {u"8"_s, 28},       {u"9"_s, 25}};
    const auto code = codes.constFind(name);
    return code != codes.cend() ? std::optional(*code) : std::nullopt;
}

std::optional<quint32> modifierFlag(const QString &name)
{
    static const QHash<QString, quint32> flags{{u"cmd"_s, commandFlag},   {u"command"_s, commandFlag},
                                               {u"ctrl"_s, controlFlag},  {u"control"_s, controlFlag},
                                               {u"shift"_s, shiftFlag},   {u"alt"_s, optionFlag},
                                               {u"option"_s, optionFlag}, {u"fn"_s, functionFlag}};
    const auto flag = flags.constFind(name);
    return flag != flags.cend() ? std::optional(*flag) : std::nullopt;
}

} // namespace morvane
