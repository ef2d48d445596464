#include "cli/input/IntegerScanner.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace korassoc::cli {
namespace {

constexpr std::size_t kSampleBytes = std::size_t{1} << 16;

unsigned digitOf(char c) { return static_cast<unsigned char>(c) - unsigned{'0'}; }

// Reads the integer at p, which is a digit, and moves p behind it. Returns false for one with a leading zero
// or beyond int. Every line ends in a line feed, so no look at the end is needed.
bool readIntegerByDigits(const char*& p, int& value) {
  const char* const first = p;
  std::uint64_t sum = digitOf(*p++);
  for (unsigned digit = digitOf(*p); digit <= 9; digit = digitOf(*++p)) sum = sum * 10 + digit;
  const auto digits = p - first;
  // Ten digits cannot wrap 64 bits; what is longer is refused by its length.
  if (digits > 10 || sum > std::uint64_t{std::numeric_limits<int>::max()}) return false;
  if (digits > 1 && *first == '0') return false;
  value = static_cast<int>(sum);
  return true;
}

// The same for up to seven digits in a few operations on one word, without a branch on how many they are.
// wordsEnd is the last place from which eight bytes can be read.
inline bool readInteger(const char*& p, const char* wordsEnd, int& value) {
  if (std::endian::native != std::endian::little || p > wordsEnd) return readIntegerByDigits(p, value);
  std::uint64_t word = 0;
  std::memcpy(&word, p, sizeof word);
  word ^= 0x3030303030303030U;  // digits become 0 to 9, the first in the lowest byte
  const std::uint64_t others = (word | (word + 0x7676767676767676U)) & 0x8080808080808080U;
  if (others == 0) return readIntegerByDigits(p, value);
  const int bits = std::countr_zero(others) & ~7;  // 8 for each digit; at least 8 here
  if (bits > 8 && (word & 0xFFU) == 0) return false;
  word <<= 64 - bits;               // the last digit comes to the top, zeros before the first
  word = word * 10 + (word >> 8U);  // two digits in every other byte
  constexpr std::uint64_t kEveryFourth = 0x000000FF000000FFU;
  word = (word & kEveryFourth) * 0x000F424000000064U + ((word >> 16U) & kEveryFourth) * 0x0000271000000001U;
  value = static_cast<int>(word >> 32U);
  p += bits / 8;
  return true;
}

// Whether p, behind the last item of a line and its blanks, is at the line's end; moves p behind it.
inline bool endsLine(const char*& p) {
  if (*p == '\r' && p[1] == '\n') ++p;
  if (*p != '\n') return false;
  ++p;
  return true;
}

// The last place from which a word can be read; one before the first place when there is none.
const char* lastWord(const char* begin, const char* end) { return end - begin >= 8 ? end - 8 : begin - 1; }

// Items separated by runs of spaces and tabs. Runs that hold a tab and anything else are refused: with tabs
// as separators they would hold an empty item.
struct BlankLines {
  static bool scan(const char* p, const char* end, char, BasketBuilder& baskets) {
    const char* const wordsEnd = lastWord(p, end);
    BasketBuilder::Lines lines(baskets);
    while (p != end) {
      while (*p == ' ') ++p;
      for (;;) {
        if (digitOf(*p) > 9) {
          if (!endsLine(p)) return false;
          break;
        }
        int item = 0;
        if (!readInteger(p, wordsEnd, item)) return false;
        lines.add(item);
        if (*p == ' ') {
          ++p;
          while (*p == ' ') ++p;
        } else if (*p == '\t') {
          ++p;
          if (digitOf(*p) > 9) return false;
        }
      }
      lines.endLine();
    }
    return true;
  }
};

// Items separated by one character, with spaces around them. Empty items are refused.
struct MarkedLines {
  static bool scan(const char* p, const char* end, char mark, BasketBuilder& baskets) {
    const char* const wordsEnd = lastWord(p, end);
    BasketBuilder::Lines lines(baskets);
    while (p != end) {
      while (*p == ' ') ++p;
      if (!endsLine(p)) {
        for (;;) {
          if (digitOf(*p) > 9) return false;
          int item = 0;
          if (!readInteger(p, wordsEnd, item)) return false;
          lines.add(item);
          while (*p == ' ') ++p;
          if (*p != mark) break;
          ++p;
          while (*p == ' ') ++p;
        }
        if (!endsLine(p)) return false;
      }
      lines.endLine();
    }
    return true;
  }
};

// Scans the text; its last line is copied when no line feed ends it, so that every line the scanner sees has
// one.
template <typename Lines>
bool scanAll(std::string_view text, char mark, BasketBuilder& baskets) {
  const std::size_t lastEnd = text.rfind('\n');
  const std::size_t whole = lastEnd == std::string_view::npos ? 0 : lastEnd + 1;
  if (!Lines::scan(text.data(), text.data() + whole, mark, baskets)) return false;
  if (whole == text.size()) return true;
  std::string lastLine(text.substr(whole));
  lastLine += '\n';
  return Lines::scan(lastLine.data(), lastLine.data() + lastLine.size(), mark, baskets);
}

}  // namespace

std::optional<Separator> scanIntegers(std::string_view text, std::optional<Separator> wanted,
                                      BasketBuilder& baskets) {
  const std::string_view sample = text.substr(0, kSampleBytes);
  if (sample.empty()) return std::nullopt;
  std::optional<Separator> separator = wanted;
  if (!separator) {
    const std::size_t mark = sample.find_first_of(",;");
    separator = mark == std::string_view::npos ? Separator::kBlanks
                : sample[mark] == ','          ? Separator::kComma
                                               : Separator::kSemicolon;
  }
  const auto separators = static_cast<std::size_t>(
      std::count_if(sample.begin(), sample.end(), [](char c) { return digitOf(c) > 9; }));
  baskets.reserve(static_cast<std::size_t>(
      static_cast<double>(separators + 1) *
      (1.03 * static_cast<double>(text.size()) / static_cast<double>(sample.size()))));
  if (*separator == Separator::kComma || *separator == Separator::kSemicolon) {
    if (!scanAll<MarkedLines>(text, separatorCharacter(*separator), baskets)) return std::nullopt;
    return separator;
  }
  if (!scanAll<BlankLines>(text, ' ', baskets)) return std::nullopt;
  const bool tabs = text.find('\t') != std::string_view::npos;
  const bool spaces = text.find(' ') != std::string_view::npos;
  // Asked for tabs, spaces are part of labels.
  if (wanted == Separator::kTab) return spaces ? std::nullopt : wanted;
  return wanted || spaces || !tabs ? Separator::kBlanks : Separator::kTab;
}

}  // namespace korassoc::cli
