#include "platform/linux/desktop/KeyPositions.h"

#include <array>

namespace morvane {
namespace {

/// By virtual key code; 0 for none. X servers number keys as the kernel does, plus 8.
constexpr std::array<uint8_t, 128> positions = [] {
    std::array<uint8_t, 128> keys{};
    constexpr struct {
        uint8_t code;
        uint8_t key;
    } table[] = {
        {0, 38},    {1, 39},    {2, 40},    {3, 41},    {4, 43},    {5, 42},    {6, 52},    {7, 53},
        {8, 54},    {9, 55},    {10, 94},   {11, 56},   {12, 24},   {13, 25},   {14, 26},   {15, 27},
        {16, 29},   {17, 28},   {18, 10},   {19, 11},   {20, 12},   {21, 13},   {22, 15},   {23, 14},
        {24, 21},   {25, 18},   {26, 16},   {27, 20},   {28, 17},   {29, 19},   {30, 35},   {31, 32},
        {32, 30},   {33, 34},   {34, 31},   {35, 33},   {36, 36},   {37, 46},   {38, 44},   {39, 48},
        {40, 45},   {41, 47},   {42, 51},   {43, 59},   {44, 61},   {45, 57},   {46, 58},   {47, 60},
        {48, 23},   {49, 65},   {50, 49},   {51, 22},   {53, 9},    {115, 110}, {116, 112}, {119, 115},
        {121, 117}, {123, 113}, {124, 114}, {125, 116}, {126, 111},
    };
    for (const auto &entry : table)
        keys[entry.code] = entry.key;
    return keys;
}();

} // namespace

std::optional<uint8_t> keyAtPosition(int virtualKeyCode)
{
    if (virtualKeyCode < 0 || virtualKeyCode >= int(positions.size()))
        return std::nullopt;
    const uint8_t key = positions[std::size_t(virtualKeyCode)];
    return key != 0 ? std::optional(key) : std::nullopt;
}

std::optional<xkb_keysym_t> numberPadSymbol(int virtualKeyCode)
{
    // 90 is no key of a number pad.
    if (virtualKeyCode >= 82 && virtualKeyCode <= 92 && virtualKeyCode != 90)
        return xkb_keysym_t('0' + virtualKeyCode - (virtualKeyCode < 90 ? 82 : 83));
    return std::nullopt;
}

} // namespace morvane
