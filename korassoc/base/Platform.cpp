#include "korassoc/base/Platform.h"

#include <cstddef>
#include <cstdint>
#include <limits>

#if defined(_WIN32)
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#endif

namespace korassoc::detail {
namespace {

bool isHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

char byte(std::uint32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); }

// The last `count` bytes of a sequence, six bits in each.
void appendContinuation(std::string& out, std::uint32_t code, int count) {
  for (int shift = 6 * (count - 1); shift >= 0; shift -= 6) out += byte(0x80U | ((code >> shift) & 0x3FU));
}

}  // namespace

#if defined(_WIN32)

std::string utf8FromNarrow(std::string_view text) {
  if (text.empty() || text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    return std::string(text);
  }
  const int bytes = static_cast<int>(text.size());
  const int units = MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, nullptr, 0);
  if (units <= 0) return std::string(text);
  std::wstring wide(static_cast<std::size_t>(units), L'\0');
  if (MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, wide.data(), units) != units)
    return std::string(text);
  return utf8FromUtf16(std::u16string(wide.begin(), wide.end()));
}

#else

std::string utf8FromNarrow(std::string_view text) { return std::string(text); }

#endif

std::string utf8FromUtf16(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::uint32_t code = text[i];
    if (isHighSurrogate(text[i]) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
      code = 0x10000U + ((code - 0xD800U) << 10) + (text[i + 1] - 0xDC00U);
      ++i;
    }
    if (code < 0x80) {
      out += byte(code);
    } else if (code < 0x800) {
      out += byte(0xC0U | (code >> 6));
      appendContinuation(out, code, 1);
    } else if (code < 0x10000) {
      out += byte(0xE0U | (code >> 12));
      appendContinuation(out, code, 2);
    } else {
      out += byte(0xF0U | (code >> 18));
      appendContinuation(out, code, 3);
    }
  }
  return out;
}

}  // namespace korassoc::detail
