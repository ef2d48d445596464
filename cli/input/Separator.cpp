#include "cli/input/Separator.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace korassoc::cli {
namespace {

constexpr std::string_view kNames[] = {"comma", "semicolon", "tab", "blanks"};
constexpr Separator kAll[] = {Separator::kComma, Separator::kSemicolon, Separator::kTab, Separator::kBlanks};

// What a character means to the count below, as bits, so that one look-up sorts out the ordinary ones.
enum CharacterClass : unsigned char {
  kPlain = 0,
  kDigit = 1,
  kSpace = 2,
  kTab = 4,
  kSemi = 8,
  kComma = 16,
  kQuote = 32,
  kLineEnd = 64
};

constexpr std::array<unsigned char, 256> makeClasses() {
  std::array<unsigned char, 256> classes{};
  for (unsigned char c = '0'; c <= '9'; ++c) classes[c] = kDigit;
  classes[' '] = kSpace;
  classes['\t'] = kTab;
  classes[';'] = kSemi;
  classes[','] = kComma;
  classes['"'] = kQuote;
  classes['\n'] = classes['\r'] = kLineEnd;
  return classes;
}
constexpr auto kClasses = makeClasses();

}  // namespace

std::string_view separatorName(Separator separator) { return kNames[static_cast<std::size_t>(separator)]; }

std::optional<Separator> separatorFromName(std::string_view name) {
  for (const Separator separator : kAll) {
    if (separatorName(separator) == name) return separator;
  }
  return std::nullopt;
}

char separatorCharacter(Separator separator) { return ",;\t "[static_cast<std::size_t>(separator)]; }

Separator recogniseSeparator(std::string_view text) {
  std::size_t commaLines = 0;
  std::size_t semicolonLines = 0;
  std::size_t tabLines = 0;
  unsigned seenInText = 0;
  unsigned seenInLine = 0;
  bool plainSeen = false;
  bool quoted = false;
  const auto endLine = [&] {
    commaLines += (seenInLine & kComma) != 0 ? 1 : 0;
    semicolonLines += (seenInLine & kSemi) != 0 ? 1 : 0;
    tabLines += (seenInLine & kTab) != 0 ? 1 : 0;
    seenInText |= seenInLine;
    seenInLine = 0;
    quoted = false;
  };
  for (const char c : text) {
    const unsigned kind = kClasses[static_cast<unsigned char>(c)];
    if (c == '\n') {
      endLine();
    } else if (kind == kQuote) {
      quoted = !quoted;
      plainSeen = true;
    } else if (!quoted) {
      seenInLine |= kind;
      plainSeen |= kind == kPlain;
    }
  }
  endLine();
  const std::size_t most = std::max({commaLines, semicolonLines, tabLines});
  if (most == 0) return Separator::kBlanks;
  const bool onlyNumbersAndBlanks = !plainSeen && (seenInText & (kComma | kSemi)) == 0;
  if (onlyNumbersAndBlanks && (seenInText & kSpace) != 0) return Separator::kBlanks;
  if (tabLines == most) return Separator::kTab;
  return semicolonLines == most ? Separator::kSemicolon : Separator::kComma;
}

}  // namespace korassoc::cli
