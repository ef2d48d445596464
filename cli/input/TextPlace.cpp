#include "cli/input/TextPlace.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "cli/CliError.h"
#include "cli/Printable.h"

namespace korassoc::cli {
namespace {

// How many of the next bytes are surely ordinary: printable ASCII, whole words of eight at a time.
std::size_t ordinaryPrefix(const char* at, const char* end) {
  constexpr std::uint64_t kHigh = 0x8080808080808080U;
  constexpr std::uint64_t kOnes = 0x0101010101010101U;
  const char* p = at;
  while (end - p >= 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, p, 8);
    const std::uint64_t below20 = (word - kOnes * 0x20U) & ~word;  // exact for bytes below 0x80
    const std::uint64_t rubout = word ^ (kOnes * 0x7FU);           // a zero byte where a byte is 0x7F
    const std::uint64_t anyRubout = (rubout - kOnes) & ~rubout;
    if (((word | below20 | anyRubout) & kHigh) != 0) break;
    p += 8;
  }
  return static_cast<std::size_t>(p - at);
}

std::string describeControl(unsigned char c) {
  if (c == '\r') {
    return "a carriage return that no line feed follows; convert the line ends (tr '\\r' '\\n') or remove it";
  }
  return fmt::format("control character 0x{:02X}; this is not a text file of baskets", c);
}

// What binary formats betray themselves by at their first bytes.
std::optional<std::string> knownBinary(std::string_view text) {
  const auto starts = [text](std::string_view magic) { return text.substr(0, magic.size()) == magic; };
  if (starts("\xFF\xFE") || starts("\xFE\xFF")) {
    return "the text is UTF-16; convert it to UTF-8 (iconv -f UTF-16 -t UTF-8)";
  }
  if (starts("\x1F\x8B")) return "the file is compressed; unpack it first (gzip -dc FILE | korassoc mine -)";
  if (starts("PK\x03\x04")) {
    return "the file is a zip archive or a spreadsheet; save the baskets as text (CSV) first";
  }
  return std::nullopt;
}

}  // namespace

TextPlace placeOf(std::string_view text, std::size_t position) {
  const std::string_view before = text.substr(0, position);
  TextPlace place;
  place.line += static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
  const std::size_t lineEnd = before.rfind('\n');
  const std::string_view line = lineEnd == std::string_view::npos ? before : before.substr(lineEnd + 1);
  for (const char c : line) {
    if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80U) ++place.column;
  }
  return place;
}

void failAt(const std::string& name, std::string_view text, std::size_t position, const std::string& what) {
  const TextPlace place = placeOf(text, position);
  throw CliError(ExitCode::kInput, fmt::format("{}:{}:{}: {}", name, place.line, place.column, what));
}

std::optional<TextFault> findTextFault(std::string_view text) {
  if (auto known = knownBinary(text)) return TextFault{0, *known};
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  const char* p = begin;
  while (p != end) {
    p += ordinaryPrefix(p, end);
    if (p == end) break;
    const auto c = static_cast<unsigned char>(*p);
    const auto position = static_cast<std::size_t>(p - begin);
    const bool lineEnd =
        c == '\n' || (c == '\r' && end - p > 1 && p[1] == '\n') || (c == '\r' && end - p == 1);
    if (c < 0x80) {
      if ((c < 0x20 && c != '\t' && !lineEnd) || c == 0x7F) return TextFault{position, describeControl(c)};
      ++p;
      continue;
    }
    const CodePoint code = firstCodePoint(text.substr(position, 4));
    if (code.bytes == 0) {
      return TextFault{position, fmt::format("byte 0x{:02X} is not UTF-8; convert the file "
                                             "(for example iconv -f ISO-8859-1 -t UTF-8)",
                                             c)};
    }
    if (code.value < 0xA0) {
      return TextFault{position, fmt::format("control character U+{:04X}; this is not a text file of baskets",
                                             static_cast<unsigned>(code.value))};
    }
    p += code.bytes;
  }
  return std::nullopt;
}

}  // namespace korassoc::cli
