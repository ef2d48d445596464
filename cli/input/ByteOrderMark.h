// What some editors put in front of a UTF-8 text.

#pragma once

#include <string_view>

namespace korassoc::cli {

inline std::string_view withoutByteOrderMark(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
  return text;
}

}  // namespace korassoc::cli
