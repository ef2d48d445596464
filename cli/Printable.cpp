#include "cli/Printable.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace korassoc::cli {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

template <std::size_t N>
bool within(const Range (&ranges)[N], char32_t c) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [c](const Range& range) { return range.first <= c && c <= range.last; });
}

// Controls, separators that end a line, characters that turn the direction of the text, and what has no shape
// of its own: Unicode's default-ignorable characters, but for those below.
constexpr Range kEscaped[] = {{0x00, 0x1F},       {0x7F, 0x9F},       {0xAD, 0xAD},      {0x034F, 0x034F},
                              {0x061C, 0x061C},   {0x115F, 0x1160},   {0x17B4, 0x17B5},  {0x200B, 0x200B},
                              {0x200E, 0x200F},   {0x2028, 0x202E},   {0x2060, 0x206F},  {0x3164, 0x3164},
                              {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},   {0xFFF0, 0xFFFB},  {0x1BCA0, 0x1BCA3},
                              {0x1D173, 0x1D17A}, {0xE0000, 0xE00FF}, {0xE01F0, 0xE0FFF}};

// Joiners and variation selectors. Persian, the scripts of India and emoji are not spelt without them;
// between Latin letters they hide.
constexpr Range kShaping[] = {{0x180B, 0x180F}, {0x200C, 0x200D}, {0xFE00, 0xFE0F}, {0xE0100, 0xE01EF}};
constexpr char32_t kEmojiSelector = 0xFE0F;
constexpr char32_t kKeycap = 0x20E3;

// What those give another shape to: Arabic to Sinhala, Tibetan and Myanmar, Khmer and Mongolian, symbols,
// ideographs, emoji.
constexpr Range kShaped[] = {{0xA9, 0xA9},     {0xAE, 0xAE},     {0x0600, 0x0DFF},   {0x0F00, 0x109F},
                             {0x1780, 0x180A}, {0x1810, 0x18AF}, {0x2100, 0x2BFF},   {0x3001, 0x9FFF},
                             {0xA840, 0xA87F}, {0xF900, 0xFAFF}, {0x1F000, 0x1FAFF}, {0x20000, 0x3FFFF}};

constexpr Range kZeroWidth[] = {{0x0300, 0x036F}, {0x0483, 0x0489},  {0x0591, 0x05BD}, {0x064B, 0x065F},
                                {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},  {0x180B, 0x180F}, {0x1AB0, 0x1AFF},
                                {0x1DC0, 0x1DFF}, {0x200B, 0x200F},  {0x20D0, 0x20FF}, {0xFE00, 0xFE0F},
                                {0xFE20, 0xFE2F}, {0xE0100, 0xE01EF}};

constexpr Range kWide[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0x33FF},  {0x3400, 0x4DBF},
                           {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},   {0xAC00, 0xD7A3},  {0xF900, 0xFAFF},
                           {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F},
                           {0x1F900, 0x1F9FF}, {0x20000, 0x2FFFD}, {0x30000, 0x3FFFD}};

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

// Whether c, which is kShaping, changes what is seen: previous is the character before it, 0 when that was
// escaped or there is none, and rest follows it.
bool isSeen(char32_t c, char32_t previous, std::string_view rest) {
  const bool joiner = c == 0x200C || c == 0x200D;
  if (joiner) return within(kShaped, previous) || previous == kEmojiSelector;
  return within(kShaped, previous) || (c == kEmojiSelector && firstCodePoint(rest).value == kKeycap);
}

void appendEscaped(char32_t c, std::string& out) {
  if (c == '\t') {
    out += "\\t";
  } else if (c == '\n') {
    out += "\\n";
  } else if (c == '\r') {
    out += "\\r";
  } else if (c < 0x80) {
    out += fmt::format("\\x{:02X}", static_cast<unsigned>(c));
  } else {
    out += fmt::format("\\u{{{:04X}}}", static_cast<unsigned>(c));
  }
}

}  // namespace

CodePoint firstCodePoint(std::string_view text) {
  if (text.empty()) return {};
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const char32_t lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  std::size_t length = 0;
  char32_t value = 0;
  char32_t smallest = 0;
  if ((lead & 0xE0U) == 0xC0U) {
    length = 2, value = lead & 0x1FU, smallest = 0x80;
  } else if ((lead & 0xF0U) == 0xE0U) {
    length = 3, value = lead & 0x0FU, smallest = 0x800;
  } else if ((lead & 0xF8U) == 0xF0U) {
    length = 4, value = lead & 0x07U, smallest = 0x10000;
  } else {
    return {};
  }
  if (text.size() < length) return {};
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuation(text[i])) return {};
    value = (value << 6U) | (byte(i) & 0x3FU);
  }
  const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
  if (value < smallest || value > 0x10FFFF || surrogate) return {};
  return {value, length};
}

std::string printable(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  char32_t previous = 0;
  while (!text.empty()) {
    const CodePoint c = firstCodePoint(text);
    const std::string_view bytes = text.substr(0, std::max<std::size_t>(c.bytes, 1));
    text.remove_prefix(bytes.size());
    const bool ordinary = c.value >= 0x20 && c.value < 0x7F;  // nearly all
    const bool shown = ordinary || (c.bytes > 0 && !within(kEscaped, c.value) &&
                                    (!within(kShaping, c.value) || isSeen(c.value, previous, text)));
    previous = shown ? c.value : 0;
    if (shown) {
      out += bytes;
    } else if (c.bytes == 0) {
      out += fmt::format("\\x{:02X}", static_cast<unsigned char>(bytes[0]));
    } else {
      appendEscaped(c.value, out);
    }
  }
  return out;
}

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const CodePoint c = firstCodePoint(text);
    const bool narrow = c.value < 0x300 || !(within(kWide, c.value) || within(kZeroWidth, c.value));
    if (narrow) {
      width += 1;
    } else if (within(kWide, c.value)) {
      width += 2;
    }
    text.remove_prefix(std::max<std::size_t>(c.bytes, 1));
  }
  return width;
}

}  // namespace korassoc::cli
