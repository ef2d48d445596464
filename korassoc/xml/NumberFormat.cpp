#include "korassoc/xml/NumberFormat.h"

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <version>

#if !defined(__cpp_lib_to_chars)
#include <algorithm>
#include <locale>
#include <sstream>
#endif

namespace korassoc::detail {
namespace {

constexpr int kSignificantDigits = 15;
constexpr long long kScientificFrom = 1'000'000'000'000'000;  // 10^15: more than 15 digits
static_assert(kScientificFrom < (1LL << 53), "below it, every whole number is a double");

}  // namespace

NumberText::NumberText(double value) {
  if (std::abs(value) < static_cast<double>(kScientificFrom)) {
    const auto truncated = static_cast<long long>(value);
    const bool negativeZero = truncated == 0 && std::signbit(value);
    if (static_cast<double>(truncated) == value && !negativeZero) {
      whole(truncated);
      return;
    }
  }
  general(value);
}

NumberText::NumberText(long long value) {
  if (value > -kScientificFrom && value < kScientificFrom) {
    whole(value);
  } else {
    general(static_cast<double>(value));
  }
}

void NumberText::whole(long long value) {
  const std::to_chars_result end = std::to_chars(text_.data(), text_.data() + text_.size(), value);
  size_ = static_cast<std::size_t>(end.ptr - text_.data());
}

#if defined(__cpp_lib_to_chars)

void NumberText::general(double value) {
  const std::to_chars_result end = std::to_chars(text_.data(), text_.data() + text_.size(), value,
                                                 std::chars_format::general, kSignificantDigits);
  size_ = static_cast<std::size_t>(end.ptr - text_.data());
}

#else  // a standard library without to_chars for doubles

void NumberText::general(double value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream.precision(kSignificantDigits);
  stream << value;
  const std::string text = stream.str();
  size_ = std::min(text.size(), text_.size());
  std::copy_n(text.data(), size_, text_.data());
}

#endif

}  // namespace korassoc::detail

namespace KorAssocXML {
namespace {

constexpr const char* kDefaultFormat = "%.15g";
constexpr int kFieldDigits = 6;  // of a width or a precision

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Skips the digits of a width or a precision. False when there are too many.
bool skipField(std::string_view format, std::size_t& i) {
  const std::size_t start = i;
  while (i < format.size() && isDigit(format[i])) ++i;
  return i - start <= static_cast<std::size_t>(kFieldDigits);
}

// Whether printf with this format reads at most one argument, and that as a double.
bool takesOneDouble(std::string_view format) {
  int conversions = 0;
  std::size_t i = 0;
  while (i < format.size()) {
    if (format[i++] != '%') continue;
    if (i < format.size() && format[i] == '%') {
      ++i;
      continue;
    }
    i = format.find_first_not_of("-+ #0", i);
    if (i == std::string_view::npos || !skipField(format, i)) return false;
    if (i < format.size() && format[i] == '.' && !skipField(format, ++i)) return false;
    constexpr std::string_view kDoubleConversions = "aAeEfFgG";
    if (i >= format.size() || kDoubleConversions.find(format[i]) == std::string_view::npos) return false;
    ++i;
    if (++conversions > 1) return false;
  }
  return true;
}

}  // namespace

std::string Format(double value, bool useFormat, const char* format) {
  if (!useFormat) return ReplaceSep(value, format);
  if (format == nullptr || !takesOneDouble(format)) format = kDefaultFormat;
  std::string text(64, '\0');
  for (;;) {
    const int length = std::snprintf(text.data(), text.size(), format, value);
    if (length < 0) return ReplaceSep(value, format);
    const bool complete = static_cast<std::size_t>(length) < text.size();
    text.resize(static_cast<std::size_t>(length) + (complete ? 0 : 1));  // printf ends the text with a zero
    if (complete) return text;
  }
}

std::string Format(long value) { return Format(static_cast<double>(value), true, nullptr); }

std::string ReplaceSep(double value, const char*) {
  return std::string(korassoc::detail::NumberText(value).view());
}

std::string GetDecimalCharacter() { return std::localeconv()->decimal_point; }

std::string GetListSeparator() { return ";"; }

std::string GetDefaultNumericFormat() { return kDefaultFormat; }

}  // namespace KorAssocXML
