#include "cli/input/LineReader.h"

#include <fmt/format.h>

#include <charconv>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/CliError.h"
#include "cli/input/ByteOrderMark.h"
#include "cli/input/FileContent.h"
#include "cli/input/IntegerScanner.h"
#include "cli/input/LabelScanner.h"
#include "cli/input/TextPlace.h"

namespace korassoc::cli {
namespace {

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

// What the lines of an input hold.
struct Reading {
  BasketBuilder baskets;
  ItemNames names;  // when they are labels
  Separator separator = Separator::kBlanks;
  std::size_t emptyItems = 0;
};

// Reads a text as labels, which may all be plain integers.
Reading readLabels(const std::string& name, std::string_view text, std::optional<Separator> wanted) {
  if (const auto fault = findTextFault(text)) failAt(name, text, fault->position, fault->what);
  Reading lines;
  lines.separator = wanted ? *wanted : recogniseSeparator(text);
  LabelTable labels;
  LabelScanner scanner(name, text, lines.separator);
  scanner.scan(lines.baskets, labels);
  lines.emptyItems = scanner.emptyItems();
  if (const auto integers = plainIntegers(labels)) {
    lines.baskets.renumber(*integers);
  } else {
    lines.baskets.renumber(labels.sort());
    lines.names = ItemNames::labels(std::move(labels));
  }
  return lines;
}

Reading readLines(Input& input, std::optional<Separator> wanted) {
  if (input.restart()) {  // what may be read a second time need not be kept the first time
    Reading lines;
    if (const auto separator = scanIntegers(input, wanted, lines.baskets)) {
      lines.separator = *separator;
      return lines;
    }
    if (!input.restart()) {
      throw CliError(ExitCode::kInput, input.name() +
                                           ": cannot be read again from its start; give it through a "
                                           "pipe (cat FILE | korassoc mine -)");
    }
  }
  const FileContent content(input);
  const std::string_view text = withoutByteOrderMark(content.bytes());
  if (text.empty()) failAt(content.name(), text, 0, fmt::format("the input is empty; {}", kShape));
  Reading lines;
  if (const auto separator = scanIntegers(text, wanted, lines.baskets)) {
    lines.separator = *separator;
    return lines;
  }
  return readLabels(content.name(), text, wanted);
}

}  // namespace

BasketInput LineReader::read(Input input) const {
  Reading lines = readLines(input, separator_);
  BasketInput read;
  read.names = std::move(lines.names);
  read.emptyItems = lines.emptyItems;
  read.emptyLines = lines.baskets.emptyLines();
  read.basketsWithRepeats = lines.baskets.basketsWithRepeats();
  read.baskets = lines.baskets.take();
  if (read.baskets.size() == 0) {
    failAt(input.name(), {}, 0,
           fmt::format("no line holds an item (lines: {}); {}", read.emptyLines, kShape));
  }
  if (read.baskets.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    throw CliError(ExitCode::kInput, fmt::format("{}: {} transactions, more than 2147483647; split the input",
                                                 input.name(), read.baskets.size()));
  }
  if (read.names.areNumbers()) read.names = ItemNames::numbers(read.baskets.distinctItems());
  read.format = fmt::format("{} separated by {} ({})", read.names.areNumbers() ? "integers" : "labels",
                            separatorName(lines.separator), separator_ ? "as asked" : "recognised");
  return read;
}

}  // namespace korassoc::cli
