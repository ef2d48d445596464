// What the library needs of the operating system beyond the standard library. All of it stands here.

#pragma once

#include <string>
#include <string_view>

namespace korassoc::detail {

// Text in the program's narrow character set as UTF-8. On Windows that set is the ANSI code page; elsewhere
// strings are UTF-8 already and are copied byte for byte, bytes that are no valid UTF-8 included. Text that
// the system cannot convert is copied likewise, so nothing is ever lost.
std::string utf8FromNarrow(std::string_view text);

// UTF-16 as UTF-8: one byte below 0x80, two below 0x800, else three; a surrogate pair makes four. A surrogate
// without its partner is encoded in three bytes like any other unit.
std::string utf8FromUtf16(std::u16string_view text);

}  // namespace korassoc::detail
