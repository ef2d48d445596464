#include "cli/LabelList.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/CliError.h"
#include "cli/Printable.h"
#include "cli/output/ItemText.h"

namespace korassoc::cli {
namespace {

[[noreturn]] void fail(const std::string& option, std::string_view text, std::string_view what) {
  throw CliError(ExitCode::kUsage, fmt::format("{} {}: {}", option,
                                               text.empty() ? std::string("\"\"") : printable(text), what));
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// Reads the quoted label whose opening quote stands at position at; returns the position behind the closing
// one.
std::size_t readQuoted(const std::string& option, std::string_view text, std::size_t at, std::string& label) {
  for (std::size_t i = at + 1; i < text.size(); ++i) {
    if (text[i] == '"') {
      const bool doubled = i + 1 < text.size() && text[i + 1] == '"';
      if (!doubled) return i + 1;
      ++i;
    }
    label += text[i];
  }
  fail(option, text, "a quote is not closed");
}

}  // namespace

std::vector<std::string> parseLabels(const std::string& option, std::string_view text) {
  std::vector<std::string> labels;
  std::size_t at = 0;  // the start of an entry; an entry ends at a comma or at the end
  while (at <= text.size()) {
    at = std::min(text.find_first_not_of(" \t", at), text.size());
    std::string label;
    std::size_t behind = at;
    if (at < text.size() && text[at] == '"') behind = readQuoted(option, text, at, label);
    const std::size_t comma = std::min(text.find(',', behind), text.size());
    const std::string_view rest = trimmed(text.substr(behind, comma - behind));
    if (behind == at) {
      label = rest;
    } else if (!rest.empty()) {
      fail(option, text, "text follows a closing quote; put a comma between labels");
    }
    if (!label.empty()) labels.push_back(std::move(label));
    at = comma + 1;
  }
  if (labels.empty()) fail(option, text, "names no label; write labels separated by commas");
  return labels;
}

std::vector<int> itemsOf(const std::string& option, const std::vector<std::string>& labels,
                         const ItemNames& names) {
  std::vector<int> items;
  for (const std::string& label : labels) {
    const auto item = names.find(label);
    if (!item) {
      std::string nearest;
      for (const std::string& name : names.nearest(label, 3)) {
        nearest += (nearest.empty() ? "" : ", ") + labelText(name);
      }
      fail(option, label, fmt::format("no basket holds this label; the nearest are {}", nearest));
    }
    items.push_back(*item);
  }
  std::sort(items.begin(), items.end());
  items.erase(std::unique(items.begin(), items.end()), items.end());
  return items;
}

}  // namespace korassoc::cli
