#include "korassoc/mining/Labels.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "korassoc/mining/Error.h"
#include "korassoc/mining/LabelTable.h"

namespace korassoc {

using detail::LabelTable;

Labels Labels::numbers(std::vector<Item> items) {
  std::sort(items.begin(), items.end());
  items.erase(std::unique(items.begin(), items.end()), items.end());
  Labels labels;
  labels.numbers_ = std::make_shared<const std::vector<Item>>(std::move(items));
  return labels;
}

Labels::Labels(const std::vector<std::string>& labels) {
  auto table = std::make_shared<LabelTable>();
  for (const std::string& label : labels) {
    const std::size_t before = table->size();
    table->intern(label);
    if (table->size() == before) {
      throw Error(Error::Kind::kInput, "two items have the label \"" + label + "\"");
    }
  }
  table_ = std::move(table);
}

std::size_t Labels::size() const {
  if (table_ != nullptr) return table_->size();
  return numbers_ != nullptr ? numbers_->size() : 0;
}

std::string Labels::text(Item item) const {
  if (table_ == nullptr) return std::to_string(item);
  if (item < 0 || static_cast<std::size_t>(item) >= table_->size()) {
    throw Error(Error::Kind::kInput, "item " + std::to_string(item) + " has no label");
  }
  return std::string(table_->label(item));
}

std::optional<Item> Labels::find(std::string_view text) const {
  if (table_ != nullptr) return table_->find(text);
  Item item = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), item);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  // One spelling for each number: neither "017" nor "-0" is a label.
  if (!whole || std::to_string(item) != text) return std::nullopt;
  if (numbers_ != nullptr && !std::binary_search(numbers_->begin(), numbers_->end(), item))
    return std::nullopt;
  return item;
}

std::string Labels::describe(std::span<const Item> items) const {
  std::string described = "{";
  for (const Item item : items) {
    if (described.size() > 1) described += ", ";
    described += text(item);
  }
  return described + "}";
}

std::span<const std::int64_t> Labels::offsets() const {
  return table_ != nullptr ? table_->offsets() : std::span<const std::int64_t>();
}

std::string_view Labels::bytes() const { return table_ != nullptr ? table_->bytes() : std::string_view(); }

bool operator==(const Labels& a, const Labels& b) {
  if (a.areNumbers() != b.areNumbers()) return false;
  if (a.areNumbers()) return true;
  if (a.table_ == b.table_) return true;
  const std::span<const std::int64_t> ends = a.offsets();
  const std::span<const std::int64_t> others = b.offsets();
  return a.bytes() == b.bytes() && std::equal(ends.begin(), ends.end(), others.begin(), others.end());
}

LabelBuilder::LabelBuilder() : table_(std::make_unique<LabelTable>()) {}
LabelBuilder::LabelBuilder(LabelBuilder&&) noexcept = default;
LabelBuilder& LabelBuilder::operator=(LabelBuilder&&) noexcept = default;
LabelBuilder::~LabelBuilder() = default;

Item LabelBuilder::intern(std::string_view label) { return table_->intern(label); }

std::optional<Item> LabelBuilder::find(std::string_view label) const { return table_->find(label); }

std::size_t LabelBuilder::size() const { return table_->size(); }

std::vector<Item> LabelBuilder::sort() { return table_->sort(); }

Labels LabelBuilder::take() {
  Labels labels;
  labels.table_ = std::exchange(table_, std::make_unique<LabelTable>());
  return labels;
}

}  // namespace korassoc
