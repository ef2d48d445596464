// A packed level beside a hash table that is given the same sets.

#include "korassoc/dictionary/PackedLevel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/HashTable.h"
#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "tests/support/Dice.h"

namespace {

using korassoc::detail::PackedLevel;
using korassoc::detail::PackedRecord;

std::string text(const ItemSet& set, const CarmaSetDescriptor& descriptor) {
  std::string line;
  for (int i = 0; i < set.length(); ++i) line += std::to_string(set.getItemAt(i)) + " ";
  return line + ": " + std::to_string(descriptor.count) + " " + std::to_string(descriptor.TID) + " " +
         std::to_string(descriptor.maxMissed) + "\n";
}

std::string text(const HashTable& table) {
  std::string lines = std::to_string(table.bucketCount()) + " buckets, grown " +
                      std::to_string(table.modCount()) + " times\n";
  table.forEach([&lines](const HashTable::Entry& entry) {
    lines += text(*entry.key, static_cast<const CarmaSetDescriptor&>(*entry.descriptor));
  });
  return lines;
}

std::string setsOf(const PackedLevel& level) {
  std::string lines;
  level.forEach(
      [&lines](const ItemSet& set, const CarmaSetDescriptor& descriptor) { lines += text(set, descriptor); });
  return lines;
}

std::string filled(const PackedLevel& level) {
  HashTable table(1);
  level.fill(table);
  return text(table);
}

std::vector<int> randomItems(Dice& dice, int length) {
  std::vector<int> items;
  while (static_cast<int>(items.size()) < length) {
    const int item = dice.between(-20, 40);
    if (std::find(items.begin(), items.end(), item) == items.end()) items.push_back(item);
  }
  std::sort(items.begin(), items.end());
  return items;
}

bool addToBoth(PackedLevel& level, HashTable& table, const ItemSetView& set,
               const CarmaSetDescriptor& descriptor) {
  if (table.find(set) != nullptr) return false;
  level.add(set, descriptor);
  table.emplace(set, descriptor);
  return true;
}

void pruneBoth(PackedLevel& level, HashTable& table, int bound) {
  const int before = table.count();
  table.sweep([bound](const HashTable::Entry& entry) { return entry.descriptor->count < bound; },
              [&table](HashTable::Entry* entry) { table.release(entry); });
  ASSERT_EQ(level.removeBelow(bound), before - table.count());
}

}  // namespace

TEST(PackedLevel, HasTheOrderOfAHashTableAfterAnyAdditionsAndPrunings) {
  for (std::uint64_t seed = 0; seed < 60; ++seed) {
    Dice dice(seed);
    const int length = dice.between(1, 6);
    const int buckets = dice.oneOf<int>({0, 1, 3, 10, 101});
    PackedLevel level(length, buckets);
    HashTable table(buckets);
    const int additions = dice.between(1, 400);
    for (int i = 0; i < additions; ++i) {
      const std::vector<int> items = randomItems(dice, length);
      addToBoth(level, table, ItemSetView(items.data(), length),
                CarmaSetDescriptor(dice.between(1, 9), i + 1, dice.between(0, 5)));
      if (dice.chance(2)) {
        ASSERT_NO_FATAL_FAILURE(pruneBoth(level, table, dice.between(0, 10)));
      }
      if (!dice.chance(5)) continue;
      ASSERT_EQ(level.count(), table.count());
      const std::string expected = text(table);
      ASSERT_EQ(filled(level), expected) << "seed " << seed;
      ASSERT_EQ(setsOf(level), expected.substr(expected.find('\n') + 1)) << "seed " << seed;
    }
    ASSERT_EQ(filled(level), text(table)) << "seed " << seed;
  }
}

TEST(PackedLevel, FindsWhatItHoldsAndNothingElse) {
  PackedLevel level(2, 7);
  EXPECT_FALSE(level.find(ItemSetView(std::vector<int>{1, 2}.data(), 2)).isStored());
  for (int item = 2; item < 200; ++item) {
    const std::vector<int> items{1, item};
    level.add(ItemSetView(items.data(), 2), CarmaSetDescriptor(item, item + 1, item + 2));
  }
  EXPECT_EQ(level.removeBelow(100), 98);
  EXPECT_EQ(level.count(), 100);
  for (int item = 2; item < 200; ++item) {
    const std::vector<int> items{1, item};
    const PackedRecord set = level.find(ItemSetView(items.data(), 2));
    ASSERT_EQ(set.isStored(), item >= 100) << item;
    if (!set.isStored()) continue;
    EXPECT_EQ(set.items()[1], item);
    EXPECT_EQ(set.count(), item);
    EXPECT_EQ(set.transaction(), item + 1);
    EXPECT_EQ(set.upperBound(), 2 * item + 2);
    EXPECT_EQ(set.descriptor().maxMissed, item + 2);
  }
}

TEST(PackedLevel, LeavesACountAtTheTopOfItsRangeThere) {
  PackedLevel level(1, 7);
  const int item = 5;
  level.add(ItemSetView(&item, 1), CarmaSetDescriptor(SetCounter::kMaxCount - 1, 1, 0));
  PackedRecord set = level.find(ItemSetView(&item, 1));
  for (int i = 0; i < 3; ++i) set.increment();
  EXPECT_EQ(level.find(ItemSetView(&item, 1)).count(), SetCounter::kMaxCount);
}

TEST(PackedLevel, KeepsTheNoteOfASupersetThroughPruningAndShowsItNowhere) {
  PackedLevel level(1, 7);
  for (const int item : {5, 6, 7}) level.add(ItemSetView(&item, 1), CarmaSetDescriptor(item, 30 + item, 0));
  const auto find = [&level](int item) { return level.find(ItemSetView(&item, 1)); };
  find(6).noteExtended();
  EXPECT_FALSE(find(5).isExtended());
  EXPECT_TRUE(find(6).isExtended());
  EXPECT_FALSE(find(7).isExtended());
  EXPECT_EQ(find(6).transaction(), 36);
  ASSERT_EQ(level.removeBelow(6), 1);
  EXPECT_TRUE(find(6).isExtended());
  EXPECT_FALSE(find(7).isExtended());
  HashTable table(1);
  level.fill(table);
  const int noted = 6;
  EXPECT_EQ(table.find(ItemSetView(&noted, 1))->descriptor->getTID(), 36);
}

TEST(PackedLevel, HoldsNothingButSetsOfItsLengthAsPhaseIStoresThem) {
  const std::vector<int> items{1, 2};
  const ItemSet pair(items.data(), 2);
  const PackedLevel pairs(2, 7);
  const CarmaSetDescriptor usual(1, 0, 0);
  EXPECT_TRUE(pairs.canHold(pair, usual));
  EXPECT_FALSE(pairs.canHold(ItemSet(1), usual));
  EXPECT_FALSE(PackedLevel(3, 7).canHold(pair, usual));
  EXPECT_FALSE(pairs.canHold(pair, CarmaSetDescriptor(1, -1, 0)));
  EXPECT_FALSE(pairs.canHold(pair, SetCounter(1, 1)));
  EXPECT_FALSE(pairs.canHold(pair, LatticeSetDescriptor(1, 1, 0)));
}

TEST(PackedLevel, HoldsSetsOfAnyLength) {
  std::vector<int> items(100000);
  std::iota(items.begin(), items.end(), -50000);
  PackedLevel level(100000, 7);
  for (int i = 0; i < 5; ++i) {
    items.back() = 1000000 + i;
    level.add(ItemSetView(items.data(), 100000), CarmaSetDescriptor(i, 1, 0));
  }
  for (int i = 0; i < 5; ++i) {
    items.back() = 1000000 + i;
    const PackedRecord set = level.find(ItemSetView(items.data(), 100000));
    ASSERT_TRUE(set.isStored());
    EXPECT_EQ(set.count(), i);
  }
}
