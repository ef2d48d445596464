// The hash table: when it grows, in what order it holds its entries, and who owns what.

#include "korassoc/dictionary/HashTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "korassoc/dictionary/SetCounter.h"
#include "tests/support/TestLattice.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Counts its living objects.
class LivingCounter : public SetCounter {
 public:
  LivingCounter(int initialCount, int* living) : SetCounter(initialCount, 0), living_(living) { ++*living_; }
  LivingCounter(const LivingCounter&) = delete;
  LivingCounter& operator=(const LivingCounter&) = delete;
  ~LivingCounter() override { --*living_; }

 private:
  int* living_;
};

// The hash code of {i} is 7 i.
bool put(HashTable& table, int item) {
  auto set = std::make_unique<ItemSet>(item);
  auto counter = std::make_unique<SetCounter>(1, 0);
  if (!table.put(set.get(), counter.get())) return false;
  static_cast<void>(set.release());
  static_cast<void>(counter.release());
  return true;
}

// The first items of the sets of one bucket, from its head.
std::vector<int> chain(const HashTable& table, int bucket) {
  std::vector<int> items;
  for (const HashTable::Entry* entry = table.bucket(bucket); entry != nullptr; entry = entry->next) {
    items.push_back(entry->key->getItemAt(0));
  }
  return items;
}

std::vector<int> walk(const HashTable& table) {
  std::vector<int> items;
  table.forEach([&](const HashTable::Entry& entry) { items.push_back(entry.key->getItemAt(0)); });
  return items;
}

void deleteRemoved(HashTable::Entry* entry) {
  delete entry->key;
  delete entry->descriptor;
  delete entry;
}

TEST(HashTable, TwoBucketsGrowToFiveElevenAndTwentyThree) {
  HashTable table(2);
  EXPECT_EQ(table.threshold(), 1);
  struct Case {
    int bucketCount, threshold, modCount;
  };
  // After the first, second, ... set; 3.75, 8.25 and 17.25 are cut off.
  const Case cases[] = {{2, 1, 0},  {5, 3, 1},  {5, 3, 1},  {11, 8, 2}, {11, 8, 2},
                        {11, 8, 2}, {11, 8, 2}, {11, 8, 2}, {23, 17, 3}};
  int item = 0;
  for (const Case& c : cases) {
    ASSERT_TRUE(put(table, ++item));
    EXPECT_EQ(table.bucketCount(), c.bucketCount) << item;
    EXPECT_EQ(table.threshold(), c.threshold) << item;
    EXPECT_EQ(table.modCount(), c.modCount) << item;
    EXPECT_EQ(table.count(), item);
  }
}

TEST(HashTable, AnEqualSetLeavesItUnchanged) {
  HashTable table(5);
  ItemSet* const first = new ItemSet(itemSet({1, 2}));
  SetCounter* const counter = new SetCounter(3, 4);
  ASSERT_TRUE(table.put(first, counter));
  ItemSet again = itemSet({1, 2});
  SetCounter other(9, 9);
  EXPECT_FALSE(table.put(&again, &other));
  EXPECT_EQ(table.count(), 1);
  EXPECT_EQ(table.find(&again)->key, first);
  EXPECT_EQ(table.find(&again)->descriptor, counter);
}

TEST(HashTable, DoesNotGrowForAnEqualSet) {
  HashTable table(2);
  put(table, 1);
  EXPECT_FALSE(put(table, 1));
  EXPECT_EQ(table.bucketCount(), 2);
}

TEST(HashTable, GrowsWhenASetIsPutAndNotWhenRoomIsMadeForIt) {
  HashTable table(2);
  put(table, 1);
  table.makeRoomFor(ItemSet(1), 0);
  table.makeRoomFor(ItemSet(2), 1);
  table.makeRoomFor(ItemSet(2), 0);
  EXPECT_EQ(table.bucketCount(), 2);
  EXPECT_EQ(table.modCount(), 0);
  EXPECT_TRUE(put(table, 2));
  EXPECT_EQ(table.bucketCount(), 5);
  EXPECT_EQ(table.modCount(), 1);
}

TEST(HashTable, TellsSetsOfOneHashCodeApartByLengthAndItems) {
  // {} and {0} have the hash code 0.
  HashTable table(5);
  auto* nothing = new ItemSet();
  ASSERT_TRUE(table.put(nothing, new SetCounter(1, 0)));
  ASSERT_TRUE(put(table, 0));
  ItemSet alsoNothing;
  SetCounter counter;
  EXPECT_FALSE(table.put(&alsoNothing, &counter));
  EXPECT_EQ(table.count(), 2);
  EXPECT_EQ(table.find(&alsoNothing)->key, nothing);
  const ItemSet zero(0);
  EXPECT_EQ(table.find(&zero)->key->length(), 1);
}

TEST(HashTable, PutsANewEntryAtTheHeadOfItsChain) {
  HashTable table(5);
  for (const int item : {1, 2, 6, 11}) put(table, item);  // the fourth makes it grow to 11
  EXPECT_EQ(table.bucketCount(), 11);
  HashTable small(7);  // threshold 5
  for (const int item : {1, 8, 15}) put(small, item);
  EXPECT_THAT(chain(small, 0), ElementsAre(15, 8, 1));  // 7, 56 and 105
}

TEST(HashTable, TurnsEachChainRoundWhenItGrows) {
  HashTable table(5);
  for (const int item : {1, 56, 111}) put(table, item);  // 7, 392, 777: 2 mod 5 and 7 mod 11
  EXPECT_THAT(chain(table, 2), ElementsAre(111, 56, 1));
  put(table, 2);  // 14: 3 mod 11
  EXPECT_THAT(chain(table, 7), ElementsAre(1, 56, 111));
  EXPECT_THAT(chain(table, 3), ElementsAre(2));
}

TEST(HashTable, TakesHashCodesAsUnsigned) {
  HashTable table(5);
  put(table, -1);  // 2^32 - 7 = 4294967289: 4 mod 5
  EXPECT_THAT(chain(table, 4), ElementsAre(-1));
  const ItemSet key(-1);
  EXPECT_TRUE(table.contains(&key));
}

TEST(HashTable, WalksBucketsThenChains) {
  HashTable table(7);
  for (const int item : {8, 3, 1, 2}) {  // buckets 0; 21, 14 and 7 are 0 mod 7 too
    put(table, item);
  }
  EXPECT_THAT(walk(table), ElementsAre(2, 1, 3, 8));
  HashTable spread(11);
  for (const int item : {5, 2, 12, 1}) put(spread, item);  // buckets 2, 3, 7, 7
  EXPECT_THAT(walk(spread), ElementsAre(5, 2, 1, 12));
}

TEST(HashTable, RemoveUnlinksTheEntryAndHandsItOver) {
  HashTable table(7);
  for (const int item : {1, 8, 15}) put(table, item);
  const ItemSet key(8);
  HashTable::Entry* entry = table.remove(&key);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->key->getItemAt(0), 8);
  EXPECT_EQ(entry->descriptor->count, 1);
  deleteRemoved(entry);
  EXPECT_THAT(chain(table, 0), ElementsAre(15, 1));
  EXPECT_EQ(table.count(), 2);
  EXPECT_EQ(table.find(&key), nullptr);
  EXPECT_EQ(table.remove(&key), nullptr);
  EXPECT_TRUE(put(table, 8));
  EXPECT_THAT(chain(table, 0), ElementsAre(8, 15, 1));
}

TEST(HashTable, PutReplaceDeletesWhatItReplaces) {
  int living = 0;
  HashTable table(5);
  table.putReplace(new ItemSet(1), new LivingCounter(2, &living));
  EXPECT_EQ(table.count(), 1);
  auto* const key = new ItemSet(1);
  auto* const counter = new LivingCounter(3, &living);
  table.putReplace(key, counter);
  EXPECT_EQ(table.count(), 1);
  EXPECT_EQ(living, 1);
  EXPECT_EQ(table.find(key)->key, key);
  table.putReplace(key, counter);  // the same objects stay
  EXPECT_EQ(living, 1);
  EXPECT_EQ(table.find(key)->descriptor->count, 3);
  auto* const next = new LivingCounter(4, &living);
  table.putReplace(key, next);
  EXPECT_EQ(living, 1);
  EXPECT_EQ(table.find(key)->key, key);
  EXPECT_EQ(table.find(key)->descriptor, next);
}

TEST(HashTable, ClearLetsItsContentsGoAndKeepsItsBuckets) {
  ItemSet one(1), two(2);
  SetCounter counter(5, 6);
  HashTable table(2);
  table.put(&one, &counter);
  table.put(&two, &counter);
  table.clear();
  EXPECT_EQ(table.count(), 0);
  EXPECT_EQ(table.bucketCount(), 5);
  EXPECT_EQ(table.find(&one), nullptr);
  EXPECT_THAT(walk(table), IsEmpty());
  EXPECT_TRUE(table.put(&one, &counter));
  EXPECT_EQ(counter.count, 5);
  table.clear();
}

TEST(HashTable, ACopyHasTheSameChainsAndSharesTheirContents) {
  HashTable table(2);
  for (const int item : {1, 6, 11, 3}) put(table, item);
  ASSERT_EQ(table.modCount(), 2);
  HashTable copy(table);
  EXPECT_EQ(copy.bucketCount(), 11);
  EXPECT_EQ(copy.count(), 4);
  EXPECT_EQ(copy.threshold(), 8);
  EXPECT_EQ(copy.modCount(), 0);
  EXPECT_EQ(walk(copy), walk(table));
  const ItemSet key(6);
  EXPECT_NE(copy.find(&key), table.find(&key));
  EXPECT_EQ(copy.find(&key)->key, table.find(&key)->key);
  EXPECT_EQ(copy.find(&key)->descriptor, table.find(&key)->descriptor);
  copy.clear();
  EXPECT_TRUE(table.contains(&key));
}

TEST(HashTable, DeletesItsContentsInTheEnd) {
  int living = 0;
  {
    HashTable table(2);
    for (int item = 0; item < 20; ++item) table.put(new ItemSet(item), new LivingCounter(1, &living));
    EXPECT_EQ(living, 20);
  }
  EXPECT_EQ(living, 0);
}

}  // namespace
