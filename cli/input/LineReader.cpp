#include "cli/input/LineReader.h"

#include <fmt/format.h>

#include <charconv>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/CliError.h"
#include "cli/input/IntegerScanner.h"
#include "cli/input/LabelScanner.h"
#include "cli/input/TextPlace.h"

namespace korassoc::cli {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kShape =
    "give one transaction a line, its items separated by commas, semicolons, "
    "tabs or blanks";

// The integer that the label spells, when it is the only spelling of one that an item may have.
std::optional<int> plainInteger(std::string_view label) {
  int value = 0;
  const char* const end = label.data() + label.size();
  const auto [stopped, error] = std::from_chars(label.data(), end, value);
  if (error != std::errc() || stopped != end || label[0] == '-') return std::nullopt;
  if (label[0] == '0' && label.size() > 1) return std::nullopt;
  return value;
}

// The integer of each label, when all of them are plain ones.
std::optional<std::vector<int>> plainIntegers(const LabelTable& labels) {
  std::vector<int> integers;
  for (int i = 0; i < static_cast<int>(labels.size()); ++i) {
    const auto integer = plainInteger(labels.label(i));
    if (!integer) return std::nullopt;
    integers.push_back(*integer);
  }
  return integers;
}

}  // namespace

BasketInput LineReader::read(const FileContent& content) const {
  std::string_view text = content.bytes();
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
  if (text.empty()) failAt(content.name(), text, 0, fmt::format("the input is empty; {}", kShape));

  BasketInput input;
  BasketBuilder builder;
  std::optional<Separator> separator = scanIntegers(text, separator_, builder);
  if (!separator) {
    builder = BasketBuilder();
    if (const auto fault = findTextFault(text)) failAt(content.name(), text, fault->position, fault->what);
    separator = separator_ ? separator_ : recogniseSeparator(text);
    LabelTable labels;
    LabelScanner scanner(content.name(), text, *separator);
    scanner.scan(builder, labels);
    input.emptyItems = scanner.emptyItems();
    if (const auto integers = plainIntegers(labels)) {
      builder.renumber(*integers);
    } else {
      builder.renumber(labels.sort());
      input.names = ItemNames::labels(std::move(labels));
    }
  }
  input.emptyLines = builder.emptyLines();
  input.basketsWithRepeats = builder.basketsWithRepeats();
  input.baskets = builder.take();
  if (input.baskets.size() == 0) {
    failAt(content.name(), text, 0,
           fmt::format("no line holds an item (lines: {}); {}", input.emptyLines, kShape));
  }
  if (input.baskets.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    throw CliError(ExitCode::kInput, fmt::format("{}: {} transactions, more than 2147483647; split the input",
                                                 content.name(), input.baskets.size()));
  }
  if (input.names.areNumbers()) input.names = ItemNames::numbers(input.baskets.distinctItems());
  input.format = fmt::format("{} separated by {} ({})", input.names.areNumbers() ? "integers" : "labels",
                             separatorName(*separator), separator_ ? "as asked" : "recognised");
  return input;
}

}  // namespace korassoc::cli
