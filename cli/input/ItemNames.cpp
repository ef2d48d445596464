#include "cli/input/ItemNames.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <utility>

namespace korassoc::cli {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

ItemNames ItemNames::numbers(std::vector<int> items) {
  ItemNames names;
  names.items_ = std::move(items);
  return names;
}

ItemNames ItemNames::labels(LabelTable table) {
  ItemNames names;
  names.numbers_ = false;
  names.table_ = std::move(table);
  return names;
}

std::string ItemNames::name(int item) const {
  return numbers_ ? std::to_string(item) : std::string(table_.label(item));
}

std::optional<int> ItemNames::find(std::string_view label) const {
  if (!numbers_) return table_.find(label);
  int item = 0;
  const auto [end, error] = std::from_chars(label.data(), label.data() + label.size(), item);
  const bool whole = error == std::errc() && end == label.data() + label.size();
  if (!whole || std::to_string(item) != label) return std::nullopt;
  if (!std::binary_search(items_.begin(), items_.end(), item)) return std::nullopt;
  return item;
}

std::vector<std::string> ItemNames::nearest(std::string_view label, std::size_t atMost) const {
  struct Candidate {
    std::size_t distance;
    std::string name;
  };
  std::vector<Candidate> best;  // ascending by distance, at most atMost
  for (std::size_t i = 0; i < size() && atMost > 0; ++i) {
    std::string candidate = name(numbers_ ? items_[i] : static_cast<int>(i));
    const bool full = best.size() == atMost;
    const std::size_t limit = full ? best.back().distance : label.size() + candidate.size();
    if (full && limit == 0) break;
    const std::size_t distance = editDistance(label, candidate, full ? limit - 1 : limit);
    if (full && distance >= limit) continue;
    if (full) best.pop_back();
    const auto place = std::upper_bound(best.begin(), best.end(), distance,
                                        [](std::size_t d, const Candidate& c) { return d < c.distance; });
    best.insert(place, {distance, std::move(candidate)});
  }
  std::vector<std::string> names;
  names.reserve(best.size());
  for (Candidate& candidate : best) names.push_back(std::move(candidate.name));
  return names;
}

std::size_t editDistance(std::string_view a, std::string_view b, std::size_t atMost) {
  const std::size_t difference = a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
  if (difference > atMost) return atMost + 1;
  std::vector<std::size_t> row(b.size() + 1);  // distances of the prefixes of b from a's prefix so far
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    std::size_t smallest = row[0];
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
      diagonal = std::exchange(row[j + 1], std::min({replaced, row[j] + 1, row[j + 1] + 1}));
      smallest = std::min(smallest, row[j + 1]);
    }
    if (smallest > atMost) return atMost + 1;
  }
  return std::min(row.back(), atMost + 1);
}

}  // namespace korassoc::cli
