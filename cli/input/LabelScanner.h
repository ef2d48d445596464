// The general path of LineReader: lines of labels, quoted or not.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cli/input/Baskets.h"
#include "cli/input/LabelTable.h"
#include "cli/input/Separator.h"

namespace korassoc::cli {

// LabelScanner cuts lines into items and interns them. The text is known to be UTF-8 without control
// characters (findTextFault).
class LabelScanner {
 public:
  static constexpr std::size_t kLongestLabel = 4096;  // bytes

  // name is what messages call the input.
  LabelScanner(const std::string& name, std::string_view text, Separator separator)
      : name_(name), text_(text), separator_(separator) {}

  // Scans the whole text. Throws CliError (kInput) at the first line that cannot be understood.
  void scan(BasketBuilder& baskets, LabelTable& labels);

  std::size_t emptyItems() const { return emptyItems_; }

 private:
  const std::string& name_;
  std::string_view text_;
  Separator separator_;
  std::size_t emptyItems_ = 0;
  std::string unquoted_;  // the last quoted item with its doubled quotes made single

  void scanLine(const char* p, const char* end, BasketBuilder::Lines& lines, LabelTable& labels);
  // Reads the quoted item whose opening quote is at p; moves p behind the closing one.
  std::string_view readQuoted(const char*& p, const char* end);
  // Reads an item that is not quoted; moves p to the separator or the end of the line.
  std::string_view readPlain(const char*& p, const char* end) const;
  bool isBlank(char c) const { return c == ' ' || (c == '\t' && separator_ != Separator::kTab); }
  [[noreturn]] void fail(const char* at, const std::string& what) const;
};

}  // namespace korassoc::cli
