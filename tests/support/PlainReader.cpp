#include "tests/support/PlainReader.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "cli/CliError.h"
#include "cli/input/LineReader.h"
#include "tests/support/MemorySource.h"

namespace {

using korassoc::cli::Separator;

// Thrown at the first thing that cannot be understood.
struct Refusal {
  std::size_t position;
};

unsigned char byteAt(std::string_view text, std::size_t i) {
  return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
}

// How many bytes the UTF-8 character at i has, by the table of well-formed sequences; 0 when there is none.
std::size_t lengthOfCharacter(std::string_view text, std::size_t i) {
  const auto within = [&](std::size_t at, int low, int high) {
    return byteAt(text, at) >= low && byteAt(text, at) <= high;
  };
  const auto follows = [&](std::size_t count) {
    for (std::size_t k = 2; k < count; ++k) {
      if (!within(i + k, 0x80, 0xBF)) return std::size_t{0};
    }
    return count;
  };
  if (within(i, 0x00, 0x7F)) return 1;
  if (within(i, 0xC2, 0xDF) && within(i + 1, 0x80, 0xBF)) return 2;
  if (within(i, 0xE0, 0xE0) && within(i + 1, 0xA0, 0xBF)) return follows(3);
  if (within(i, 0xED, 0xED) && within(i + 1, 0x80, 0x9F)) return follows(3);
  if (within(i, 0xE1, 0xEF) && !within(i, 0xED, 0xED) && within(i + 1, 0x80, 0xBF)) return follows(3);
  if (within(i, 0xF0, 0xF0) && within(i + 1, 0x90, 0xBF)) return follows(4);
  if (within(i, 0xF1, 0xF3) && within(i + 1, 0x80, 0xBF)) return follows(4);
  if (within(i, 0xF4, 0xF4) && within(i + 1, 0x80, 0x8F)) return follows(4);
  return 0;
}

// Refuses what is no text in lines.
void checkText(std::string_view text) {
  if (text.empty() || text.starts_with("PK\x03\x04")) throw Refusal{0};
  for (std::size_t i = 0; i < text.size();) {
    const unsigned char c = byteAt(text, i);
    const std::size_t length = lengthOfCharacter(text, i);
    const bool endsLine = c == '\n' || (c == '\r' && (i + 1 == text.size() || text[i + 1] == '\n'));
    const bool control = c < 0x20 || c == 0x7F || (c == 0xC2 && byteAt(text, i + 1) < 0xA0);
    if (length == 0 || (control && c != '\t' && !endsLine)) throw Refusal{i};
    i += length;
  }
}

struct Line {
  std::string_view text;  // without its end
  std::size_t position;   // of its first byte
};

std::vector<Line> linesOf(std::string_view text) {
  std::vector<Line> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    std::string_view line = text.substr(at, end - at);
    if (line.ends_with('\r')) line.remove_suffix(1);
    lines.push_back({line, at});
    at = end + 1;
  }
  return lines;
}

// The line without what stands between quotes.
std::string unquoted(std::string_view line) {
  std::string rest;
  bool quoted = false;
  for (const char c : line) {
    if (c == '"') quoted = !quoted;
    if (!quoted) rest += c;  // a closing quote stays
  }
  return rest;
}

Separator recognise(const std::vector<Line>& lines) {
  const auto holding = [&lines](char c) {
    return std::count_if(lines.begin(), lines.end(),
                         [c](const Line& line) { return unquoted(line.text).find(c) != std::string::npos; });
  };
  const auto commas = holding(',');
  const auto semicolons = holding(';');
  const auto tabs = holding('\t');
  const auto most = std::max({commas, semicolons, tabs});
  if (most == 0) return Separator::kBlanks;
  const bool onlyNumbers = std::all_of(lines.begin(), lines.end(), [](const Line& line) {
    return line.text.find_first_not_of("0123456789 \t") == std::string_view::npos;
  });
  if (onlyNumbers && holding(' ') > 0) return Separator::kBlanks;
  return tabs == most ? Separator::kTab : semicolons == most ? Separator::kSemicolon : Separator::kComma;
}

// One line cut into its items, the empty ones included.
class Cutter {
 public:
  Cutter(const Line& line, Separator separator) : line_(line), separator_(separator) {}

  std::vector<std::string> items() {
    std::vector<std::string> items;
    skipBlanks();
    while (at_ < line_.text.size() || (separator_ != Separator::kBlanks && !items.empty())) {
      items.push_back(item());
      skipBlanks();
      if (at_ == line_.text.size()) break;
      if (separator_ != Separator::kBlanks) ++at_;
      skipBlanks();
    }
    return items;
  }

 private:
  Line line_;
  Separator separator_;
  std::size_t at_ = 0;

  char here() const { return at_ < line_.text.size() ? line_.text[at_] : '\0'; }
  bool atBlank() const { return here() == ' ' || (here() == '\t' && separator_ != Separator::kTab); }
  bool atMark() const {
    switch (separator_) {
      case Separator::kComma:
        return here() == ',';
      case Separator::kSemicolon:
        return here() == ';';
      case Separator::kTab:
        return here() == '\t';
      case Separator::kBlanks:
        break;
    }
    return atBlank();
  }
  void skipBlanks() {
    while (atBlank()) ++at_;
  }
  [[noreturn]] void refuse(std::size_t at) const { throw Refusal{line_.position + at}; }

  std::string item() {
    const std::size_t first = at_;
    const std::string label = here() == '"' ? quotedItem() : plainItem();
    if (label.size() > 4096) refuse(first);
    if (first < line_.text.size() && line_.text[first] == '"') {
      const std::size_t behind = at_;
      if (separator_ != Separator::kBlanks) skipBlanks();
      if (at_ < line_.text.size() && !atMark()) refuse(behind);
    }
    return label;
  }

  std::string quotedItem() {
    std::string label;
    for (const std::size_t opening = at_++;; ++at_) {
      if (at_ >= line_.text.size()) refuse(opening);
      if (here() != '"') {
        label += here();
      } else if (at_ + 1 < line_.text.size() && line_.text[at_ + 1] == '"') {
        label += '"';
        ++at_;
      } else {
        ++at_;
        return label;
      }
    }
  }

  std::string plainItem() {
    std::string label;
    for (; at_ < line_.text.size() && !atMark(); ++at_) {
      if (here() == '"') refuse(at_);
      label += here();
    }
    while (!label.empty() && (label.back() == ' ' || (label.back() == '\t' && separator_ != Separator::kTab)))
      label.pop_back();
    return label;
  }
};

bool isPlainInteger(const std::string& label) {
  if (label.empty() || label.size() > 10 || label.find_first_not_of("0123456789") != std::string::npos) {
    return false;
  }
  return std::to_string(std::stoll(label)) == label && std::stoll(label) <= 2147483647;
}

std::string placeOf(std::string_view text, std::size_t position) {
  int line = 1;
  int column = 1;
  for (std::size_t i = 0; i < position; ++i) {
    if (text[i] == '\n') {
      ++line;
      column = 1;
    } else if (byteAt(text, i) < 0x80 || byteAt(text, i) >= 0xC0) {
      ++column;
    }
  }
  return std::to_string(line) + ":" + std::to_string(column);
}

void readLines(std::string_view text, std::optional<Separator> wanted, PlainBaskets& read) {
  checkText(text);
  const std::vector<Line> lines = linesOf(text);
  read.separator = wanted ? *wanted : recognise(lines);
  read.areNumbers = true;
  for (const Line& line : lines) {
    std::vector<std::string> items = Cutter(line, read.separator).items();
    const auto empty = static_cast<std::size_t>(std::erase(items, ""));
    if (items.empty()) {
      ++read.emptyLines;
      continue;
    }
    read.emptyItems += empty;
    for (const std::string& item : items) read.areNumbers = read.areNumbers && isPlainInteger(item);
    read.baskets.emplace_back(items.begin(), items.end());
    if (read.baskets.back().size() < items.size()) ++read.basketsWithRepeats;
  }
  if (read.baskets.empty()) throw Refusal{0};
}

std::string differenceIn(const korassoc::cli::BasketInput& input, const PlainBaskets& plain,
                         bool recognised) {
  if (!plain.refusedAt.empty()) return "it was read, and plainly refused at " + plain.refusedAt;
  const std::string format = std::string(plain.areNumbers ? "integers" : "labels") + " separated by " +
                             std::string(separatorName(plain.separator)) +
                             (recognised ? " (recognised)" : " (as asked)");
  if (input.format != format) return "its format is " + input.format + ", and plainly " + format;
  if (input.emptyLines != plain.emptyLines) return "the number of empty lines";
  if (input.emptyItems != plain.emptyItems) return "the number of empty items";
  if (input.basketsWithRepeats != plain.basketsWithRepeats) return "the number of baskets with repeats";
  if (input.baskets.size() != plain.baskets.size()) return "the number of baskets";
  if (input.names.areNumbers() != plain.areNumbers) return "whether the items are numbers";
  std::set<std::string> labels;
  for (std::size_t i = 0; i < plain.baskets.size(); ++i) {
    const auto items = input.baskets[i];
    const std::string where = "basket " + std::to_string(i + 1);
    if (!std::is_sorted(items.begin(), items.end())) return where + " is not ascending";
    std::set<std::string> basket;
    for (const int item : items) {
      const std::string name = input.names.name(item);
      if (input.names.find(name) != item) return where + ": its item " + name + " is not found by its name";
      basket.insert(name);
    }
    if (basket != plain.baskets[i] || basket.size() != items.size()) return where + " holds other items";
    labels.insert(basket.begin(), basket.end());
  }
  if (input.names.size() != labels.size()) return "the number of items";
  if (input.names.areNumbers()) return {};
  int number = 0;
  for (const std::string& label : labels) {
    if (input.names.find(label) != number++) return "the number of the label " + label;
  }
  return {};
}

std::string differenceOf(const PlainBaskets& plain, korassoc::cli::Input input,
                         std::optional<Separator> wanted) {
  using namespace korassoc::cli;
  try {
    return differenceIn(LineReader(wanted).read(std::move(input)), plain, !wanted);
  } catch (const CliError& error) {
    const std::string message = error.what();
    if (error.code() != ExitCode::kInput) return "another exit code: " + message;
    if (message.find('\n') != std::string::npos) return "more than one line: " + message;
    if (plain.refusedAt.empty()) return "plainly it is read, but: " + message;
    if (message.starts_with("FILE:" + plain.refusedAt + ": ")) return {};
    return "it is plainly refused at " + plain.refusedAt + ": " + message;
  }
}

}  // namespace

PlainBaskets readPlainly(std::string_view text, std::optional<Separator> wanted) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  PlainBaskets read;
  try {
    readLines(text, wanted, read);
  } catch (const Refusal& refusal) {
    read.refusedAt = placeOf(text, refusal.position);
  }
  return read;
}

std::string differenceFromPlain(std::string_view text, std::optional<Separator> wanted,
                                std::size_t longestBlock) {
  const PlainBaskets plain = readPlainly(text, wanted);
  for (const bool restarts : {true, false}) {
    auto source = std::make_unique<MemorySource>(text, longestBlock, restarts);
    const std::string difference =
        differenceOf(plain, korassoc::cli::Input(std::move(source), "FILE"), wanted);
    if (!difference.empty()) return difference;
  }
  return {};
}
