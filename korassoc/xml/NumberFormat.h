// Numbers as text: 15 significant digits, independent of the host's locale unless a format is asked for.

#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "korassoc/base/Export.h"

namespace KorAssocXML {

// useFormat false: the number in general notation ("5", "0.1", "1e+15", "nan") with 15 significant digits in
// the classic locale; format is not used.
// useFormat true: the number as printf writes it with format, in the C library's current locale; a null
// format stands for the default one. A format may hold any text, %% and at most one conversion of a double
// (flags, width, precision below 1000000, conversion aAeEfFgG); any other format could read what was not
// passed to it, and the default is used in its stead.
KORASSOC_EXPORT std::string Format(double value, bool useFormat, const char* format);

// The value as a double, through printf with the default format.
KORASSOC_EXPORT std::string Format(long value);

// The conversion of Format(value, false, format). Its decimal separator is always the point.
KORASSOC_EXPORT std::string ReplaceSep(double value, const char* format);

// The decimal point of the C library's current locale.
KORASSOC_EXPORT std::string GetDecimalCharacter();

// Always ";".
KORASSOC_EXPORT std::string GetListSeparator();

// "%.15g".
KORASSOC_EXPORT std::string GetDefaultNumericFormat();

}  // namespace KorAssocXML

namespace korassoc::detail {

// The text of Format(value, false, nullptr) without an allocation. Whole numbers below 10^15 take a short
// way.
class NumberText {
 public:
  explicit NumberText(double value);
  explicit NumberText(long long value);  // the text of the value as a double
  std::string_view view() const { return {text_.data(), size_}; }

 private:
  void whole(long long value);
  void general(double value);

  std::array<char, 32> text_;  // the longest is "-1.23456789012346e-308"
  std::size_t size_ = 0;
};

}  // namespace korassoc::detail
