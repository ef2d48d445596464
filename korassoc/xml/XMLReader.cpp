#include "korassoc/xml/XMLReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <locale>
#include <sstream>
#include <string_view>
#include <system_error>
#include <version>

#include "korassoc/itemsets/KorMV.h"

namespace KorAssocXML {
namespace {

// The characters that separate tokens, as a table that one look answers from.
class Delimiters {
 public:
  constexpr explicit Delimiters(std::string_view characters) : is_{} {
    for (const char c : characters) is_[static_cast<unsigned char>(c)] = true;
  }
  constexpr bool holds(char c) const { return is_[static_cast<unsigned char>(c)]; }

 private:
  std::array<bool, 256> is_;
};

constexpr Delimiters kHead(" \t\r\n<>=\"");
constexpr Delimiters kElement(" \t\r\n=<\"");
constexpr Delimiters kAttribute("=\"");
constexpr Delimiters kText("\r\n\"");
constexpr Delimiters kQuote("\"");
constexpr Delimiters kEnd(" \t\r\n<>");

// One line of the file, taken apart from left to right.
//
//   \t \t < I n t   v a l u e = " 5 " / > \0        token(kElement) gives "Int",
//               ^cursor_                  ^end_     the next one starts behind the blank that ended it
class Line {
 public:
  // Takes the next line from the stream. False when there is none or it is too long.
  bool read(std::ifstream& in) {
    in.getline(text_, sizeof(text_));
    if (in.fail()) return false;
    cursor_ = text_;
    end_ = text_ + std::strlen(text_);
    return true;
  }

  bool empty() const { return cursor_ == end_; }

  // Skips delimiters and gives the characters up to the next one, which is skipped too and becomes a zero, so
  // that the token is also a C string. Empty when nothing but delimiters is left.
  std::string_view token(const Delimiters& delimiters) {
    while (cursor_ != end_ && delimiters.holds(*cursor_)) ++cursor_;
    const char* const start = cursor_;
    while (cursor_ != end_ && !delimiters.holds(*cursor_)) ++cursor_;
    const std::string_view found(start, static_cast<std::size_t>(cursor_ - start));
    if (cursor_ != end_) *cursor_++ = '\0';
    return found;
  }

  // What stands in the line in front of a token, with a zero in place of the delimiter that ended each
  // earlier token.
  std::string_view before(std::string_view found) const {
    return {text_, static_cast<std::size_t>(found.data() - text_)};
  }

 private:
  char text_[256];  // 255 characters and a zero
  char* cursor_ = text_;
  char* end_ = text_;
};

// Takes a line that must be a number of the element, and gives the number's text. The text lies in the line.
bool readNumber(std::ifstream& in, std::string_view element, Line& line, std::string_view& text) {
  if (!line.read(in) || line.token(kElement) != element || line.token(kAttribute) != "value") return false;
  text = line.token(kElement);
  return !text.empty();
}

// The text in front of which the line stands. In value=""/> both quotes are skipped as delimiters, and what
// looks like the text is the end of the element: that is the empty text.
std::string_view takeText(Line& line) {
  const std::string_view text = line.token(kText);
  if (text == "/>" && line.before(text).ends_with("\"\"")) return {};
  return text;
}

// What atoi and atol do: spaces, a sign, digits; 0 without digits, and the nearest value beyond the range.
template <class Integer>
Integer parseInteger(std::string_view text) {
  using Limits = std::numeric_limits<long long>;
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return 0;
  }
  long long number = 0;
  const std::from_chars_result end = std::from_chars(text.data(), text.data() + text.size(), number);
  if (end.ec == std::errc::result_out_of_range) {
    number = text.starts_with('-') ? Limits::min() : Limits::max();
  }
  constexpr long long kLeast = std::numeric_limits<Integer>::min();
  constexpr long long kMost = std::numeric_limits<Integer>::max();
  return static_cast<Integer>(std::clamp(number, kLeast, kMost));
}

// Truncates; beyond the range the nearest value in it, and 0 for what is not a number.
unsigned int truncateToUnsigned(double number) {
  constexpr unsigned int kMost = std::numeric_limits<unsigned int>::max();
  if (!(number > 0)) return 0;
  return number < static_cast<double>(kMost) ? static_cast<unsigned int>(number) : kMost;
}

[[maybe_unused]] bool isPlainDecimal(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  return !text.empty() && text.front() >= '0' && text.front() <= '9';
}

// What a stream in the classic locale reads. Text as this format writes it takes the short way, which gives
// the same number; signs, spaces, trailing text, overflow and underflow are left to the stream.
bool parseDouble(std::string_view text, double& value) {
#if defined(__cpp_lib_to_chars)
  if (isPlainDecimal(text)) {
    double number = 0.0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    if (result.ec == std::errc() && result.ptr == end) {
      value = number;
      return true;
    }
  }
#endif
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  double number = 0.0;
  if (!(stream >> number)) return false;
  value = number;
  return true;
}

bool isElementOf(std::string_view found, std::initializer_list<std::string_view> allowed) {
  return std::find(allowed.begin(), allowed.end(), found) != allowed.end();
}

bool parseText(std::ifstream& in, std::initializer_list<std::string_view> elements, std::string& value) {
  Line line;
  if (!line.read(in) || !isElementOf(line.token(kElement), elements) || line.token(kAttribute) != "value") {
    return false;
  }
  value = takeText(line);
  return true;
}

// The place of the object's name among the names, or -1.
int startedObject(std::ifstream& in, std::initializer_list<std::string_view> names) {
  Line line;
  if (!line.read(in)) return -1;
  if (line.empty() && !line.read(in)) return -1;
  if (line.token(kElement) != "Obj" || line.token(kElement) != "name") return -1;
  const std::string_view found = line.token(kQuote);
  const auto* place = std::find(names.begin(), names.end(), found);
  return found.empty() || place == names.end() ? -1 : static_cast<int>(place - names.begin());
}

// Takes one line of the document head.
bool readHeadLine(std::ifstream& in, std::string_view firstToken) {
  Line line;
  return line.read(in) && line.token(kHead) == firstToken;
}

}  // namespace

bool ParseStartXML(std::ifstream& in) {
  const bool declaration = readHeadLine(in, "?xml");
  const bool docType = readHeadLine(in, "!DOCTYPE");
  const bool root = readHeadLine(in, "KorXMLRoot");
  return declaration && docType && root;
}

bool ParseStartObj(std::ifstream& in, const std::string& name) {
  return korassoc::detail::parseStartObj(in, {name}) == 0;
}

bool ParseValue(std::ifstream& in, int& value) {
  Line line;
  std::string_view text;
  if (!readNumber(in, "Int", line, text)) return false;
  value = parseInteger<int>(text);
  return true;
}

bool ParseValue(std::ifstream& in, unsigned int& value) {
  Line line;
  std::string_view text;
  if (!readNumber(in, "Int", line, text)) return false;
  value = truncateToUnsigned(std::strtod(text.data(), nullptr));  // the line keeps each token a C string
  return true;
}

bool ParseValue(std::ifstream& in, long& value) {
  Line line;
  std::string_view text;
  if (!readNumber(in, "Long", line, text)) return false;
  value = parseInteger<long>(text);
  return true;
}

bool ParseValue(std::ifstream& in, double& value) {
  Line line;
  std::string_view text;
  if (!readNumber(in, "Double", line, text)) return false;
  if (text == "Missing") {
    value = KorMV::Missing();
    return true;
  }
  return parseDouble(text, value);
}

bool ParseValue(std::ifstream& in, std::string& value) { return parseText(in, {"String"}, value); }

bool ParseValue(std::ifstream& in, bool& value) {
  int number = 0;
  if (!ParseValue(in, number) || number < 0 || number > 1) return false;
  value = number == 1;
  return true;
}

bool ParseEndObj(std::ifstream& in) {
  Line line;
  return line.read(in) && line.token(kEnd) == "/Obj";
}

}  // namespace KorAssocXML

namespace korassoc::detail {

int parseStartObj(std::ifstream& in, std::initializer_list<std::string_view> names) {
  return KorAssocXML::startedObject(in, names);
}

bool parseTextOrFlag(std::ifstream& in, std::string& value) {
  return KorAssocXML::parseText(in, {"String", "Int"}, value);
}

}  // namespace korassoc::detail
