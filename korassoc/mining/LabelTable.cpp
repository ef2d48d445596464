#include "korassoc/mining/LabelTable.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "korassoc/mining/Error.h"

namespace korassoc::detail {
namespace {

constexpr std::size_t kFirstSlotCount = 1024;

// Eight bytes at a time, each multiplied in and folded: a good spread for short labels at little cost.
std::uint32_t hashOf(std::string_view text) {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;
  std::uint64_t hash = text.size() * kFactor;
  const auto mix = [&hash](std::uint64_t word) {
    hash = (hash ^ word) * kFactor;
    hash ^= hash >> 32U;
  };
  while (text.size() >= 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data(), 8);
    mix(word);
    text.remove_prefix(8);
  }
  std::uint64_t rest = 0;
  if (!text.empty()) std::memcpy(&rest, text.data(), text.size());
  mix(rest);
  return static_cast<std::uint32_t>(hash);
}

// The first eight bytes as a number that orders as they do, the missing ones as zeros.
std::uint64_t prefixOf(std::string_view text) {
  std::uint64_t prefix = 0;
  for (std::size_t i = 0; i < 8; ++i) {
    prefix = prefix << 8U | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0U);
  }
  return prefix;
}

}  // namespace

LabelTable::LabelTable() : slots_(kFirstSlotCount) {}

std::size_t LabelTable::slotOf(std::string_view text, std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = hash & mask;
  while (slots_[at].number != kFree && !(slots_[at].hash == hash && label(slots_[at].number) == text)) {
    at = (at + 1) & mask;
  }
  return at;
}

Item LabelTable::intern(std::string_view text) {
  const std::uint32_t hash = hashOf(text);
  Slot& slot = slots_[slotOf(text, hash)];
  if (slot.number != kFree) return slot.number;
  if (size() >= static_cast<std::size_t>(std::numeric_limits<Item>::max())) {
    throw Error(Error::Kind::kLimit, "there are more than 2147483647 different labels");
  }
  const auto number = static_cast<Item>(size());
  bytes_.append(text);
  offsets_.push_back(static_cast<std::int64_t>(bytes_.size()));
  slot = {hash, number};
  if (size() * 2 > slots_.size()) rebuild(slots_.size() * 2);
  return number;
}

std::optional<Item> LabelTable::find(std::string_view text) const {
  const Slot& slot = slots_[slotOf(text, hashOf(text))];
  if (slot.number == kFree) return std::nullopt;
  return slot.number;
}

std::string_view LabelTable::label(Item number) const {
  const auto i = static_cast<std::size_t>(number);
  const auto begin = static_cast<std::size_t>(offsets_[i]);
  return {bytes_.data() + begin, static_cast<std::size_t>(offsets_[i + 1]) - begin};
}

std::vector<Item> LabelTable::sort() {
  struct Entry {
    std::uint64_t prefix;  // decides most comparisons without a look at the label
    Item number;
  };
  std::vector<Entry> order;
  order.reserve(size());
  for (Item i = 0; i < static_cast<Item>(size()); ++i) order.push_back({prefixOf(label(i)), i});
  std::sort(order.begin(), order.end(), [this](const Entry& a, const Entry& b) {
    return a.prefix != b.prefix ? a.prefix < b.prefix : label(a.number) < label(b.number);
  });
  std::vector<Item> newNumber(size());
  std::string bytes;
  bytes.reserve(bytes_.size());
  std::vector<std::int64_t> offsets = {0};
  offsets.reserve(offsets_.size());
  for (const Entry& entry : order) {
    newNumber[static_cast<std::size_t>(entry.number)] = static_cast<Item>(offsets.size() - 1);
    bytes.append(label(entry.number));
    offsets.push_back(static_cast<std::int64_t>(bytes.size()));
  }
  bytes_ = std::move(bytes);
  offsets_ = std::move(offsets);
  for (Slot& slot : slots_) {
    if (slot.number != kFree) slot.number = newNumber[static_cast<std::size_t>(slot.number)];
  }
  return newNumber;
}

void LabelTable::rebuild(std::size_t slotCount) {
  const std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(slotCount));
  const std::size_t mask = slotCount - 1;
  for (const Slot& slot : old) {
    if (slot.number == kFree) continue;
    std::size_t at = slot.hash & mask;
    while (slots_[at].number != kFree) at = (at + 1) & mask;
    slots_[at] = slot;
  }
}

}  // namespace korassoc::detail
