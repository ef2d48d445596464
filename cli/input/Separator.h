// What stands between the items of a line, and how it is recognised.

#pragma once

#include <optional>
#include <string_view>

namespace korassoc::cli {

// Blanks: one or more spaces or tabs. With the other three, blanks around an item do not belong to it.
enum class Separator { kComma, kSemicolon, kTab, kBlanks };

// "comma", "semicolon", "tab", "blanks".
std::string_view separatorName(Separator separator);
std::optional<Separator> separatorFromName(std::string_view name);

// The character of the first three; a space for kBlanks.
char separatorCharacter(Separator separator);

// The separator that the text seems to use. Quoted parts are left out of account.
//   1. Of comma, semicolon and tab, the one that the most lines hold; of equals, tab before semicolon before
//      comma. A single such line decides, since item names hold blanks far more often than these three.
//   2. Blanks when there is none of them, and when the text holds nothing but digits, spaces and tabs, both
//      of these: numbers have no spaces inside.
// Linear in the text.
Separator recogniseSeparator(std::string_view text);

}  // namespace korassoc::cli
