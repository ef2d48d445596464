#include "cli/input/IntegerScanner.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "cli/input/ByteOrderMark.h"

namespace korassoc::cli {
namespace {

constexpr std::size_t kSampleBytes = std::size_t{1} << 16;
constexpr std::size_t kBlockBytes = std::size_t{1} << 18;

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

}  // namespace

bool IntegerScanner::scan(std::string_view lines, std::uint64_t textBytes) {
  if (lines.empty()) return true;
  if (!separator_) begin(lines.substr(0, kSampleBytes), textBytes);
  const char* const begin = lines.data();
  const char* const end = begin + lines.size();
  if (*separator_ == Separator::kComma || *separator_ == Separator::kSemicolon) {
    return MarkedLines::scan(begin, end, separatorCharacter(*separator_), baskets_);
  }
  if (!BlankLines::scan(begin, end, ' ', baskets_)) return false;
  tabs_ = tabs_ || lines.find('\t') != std::string_view::npos;
  spaces_ = spaces_ || lines.find(' ') != std::string_view::npos;
  return wanted_ != Separator::kTab || !spaces_;  // asked for tabs, spaces are part of labels
}

std::optional<Separator> IntegerScanner::separator() const {
  if (wanted_ || separator_ != Separator::kBlanks) return separator_;
  return tabs_ && !spaces_ ? Separator::kTab : Separator::kBlanks;
}

void IntegerScanner::begin(std::string_view sample, std::uint64_t textBytes) {
  separator_ = wanted_;
  if (!separator_) {
    const std::size_t mark = sample.find_first_of(",;");
    separator_ = mark == std::string_view::npos ? Separator::kBlanks
                 : sample[mark] == ','          ? Separator::kComma
                                                : Separator::kSemicolon;
  }
  const auto separators = static_cast<std::size_t>(
      std::count_if(sample.begin(), sample.end(), [](char c) { return digitOf(c) > 9; }));
  baskets_.reserve(static_cast<double>(separators + 1) *
                   (1.03 * static_cast<double>(textBytes) / static_cast<double>(sample.size())));
}

std::optional<Separator> scanIntegers(std::string_view text, std::optional<Separator> wanted,
                                      BasketBuilder& baskets) {
  IntegerScanner scanner(wanted, baskets);
  const std::size_t lastEnd = text.rfind('\n');
  const std::size_t whole = lastEnd == std::string_view::npos ? 0 : lastEnd + 1;
  if (!scanner.scan(text.substr(0, whole), text.size())) return std::nullopt;
  if (whole == text.size()) return scanner.separator();
  std::string lastLine(text.substr(whole));
  lastLine += '\n';
  return scanner.scan(lastLine, lastLine.size()) ? scanner.separator() : std::nullopt;
}

std::optional<Separator> scanIntegers(Input& input, std::optional<Separator> wanted, BasketBuilder& baskets) {
  IntegerScanner scanner(wanted, baskets);
  // With room for a line feed behind the last line.
  const auto block = std::make_unique_for_overwrite<char[]>(kBlockBytes + 1);
  std::size_t filled = 0;  // the beginning of a line, and what came last
  bool first = true;
  const auto scanUpTo = [&](std::size_t end) {
    std::string_view lines(block.get(), end);
    if (std::exchange(first, false)) lines = withoutByteOrderMark(lines);
    return scanner.scan(lines, std::max<std::uint64_t>(input.expectedBytes(), lines.size()));
  };
  for (;;) {
    if (filled == kBlockBytes) return std::nullopt;  // a line of more is left to those who see it whole
    const std::size_t got = input.read(block.get() + filled, kBlockBytes - filled);
    if (got == 0) break;
    const std::size_t lastEnd = std::string_view(block.get() + filled, got).rfind('\n');
    filled += got;
    if (lastEnd == std::string_view::npos) continue;
    const std::size_t whole = filled - got + lastEnd + 1;
    if (!scanUpTo(whole)) return std::nullopt;
    std::memmove(block.get(), block.get() + whole, filled - whole);
    filled -= whole;
  }
  input.finish();
  const bool anyLeft = first ? !withoutByteOrderMark({block.get(), filled}).empty() : filled > 0;
  block[filled] = '\n';
  if (anyLeft && !scanUpTo(filled + 1)) return std::nullopt;
  return scanner.separator();
}

}  // namespace korassoc::cli
