// The text of one DISPLAY item.
#ifndef ZOR_TEXT_DISPLAY_ITEM_H
#define ZOR_TEXT_DISPLAY_ITEM_H

#include <array>
#include <string_view>

#include "display.h"

namespace zor {

// Room for the longest number: its digits, and sign, point, "E", exponent sign and exponent.
using DisplayBuffer = std::array<char, DISPLAY_MAX_DIGITS + 32>;

// Gives the text of an item, which lies in the item itself or in the buffer, and stores its length
// in item.width. False for an invalid type or size.
bool displayText(DisplayItem &item, char point, DisplayBuffer &buffer, std::string_view &text);

} // namespace zor

#endif
