// The table's record: what is written, what order reading gives, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <iostream>
#include <memory>
#include <sstream>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/HashTable.h"
#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/engine/Exceptions.h"
#include "tests/support/RecordStream.h"
#include "tests/support/StreamCapture.h"

namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;

const std::string kItemSetFailure = "Failure reading ItemSet!\n";
const std::string kEntryFailure = "Problem reading Hashtable.\n";

std::string itemSetBytes(const std::vector<int>& items) {
  std::string bytes = "IS:\0"s + int32Bytes(static_cast<int>(items.size()));
  for (const int item : items) bytes += int32Bytes(item);
  return bytes;
}

std::string carmaBytes(int count, int transaction, int missed) {
  return "CSD" + int32Bytes({count, transaction, missed});
}

// A record of one-item sets with the counts 1, 2, ...
std::string tableBytes(const std::vector<int>& items) {
  std::string bytes = "HT" + int32Bytes(static_cast<int>(items.size()));
  int count = 0;
  for (const int item : items) bytes += itemSetBytes({item}) + carmaBytes(++count, 0, 0);
  return bytes;
}

void put(HashTable& table, const std::vector<int>& items, std::unique_ptr<SetCounter> descriptor) {
  auto set = std::make_unique<ItemSet>(items.data(), static_cast<int>(items.size()));
  ASSERT_TRUE(table.put(set.get(), descriptor.get()));
  set.release();
  descriptor.release();
}

void put(HashTable& table, int item) { put(table, {item}, std::make_unique<CarmaSetDescriptor>(1, 2, 3)); }

std::string written(const HashTable& table) {
  RecordStream record;
  const std::uint64_t size = table.writeObject(record.stream());
  EXPECT_EQ(size, record.bytes().size());
  return record.bytes();
}

// What became of reading: the bytes it took, or what was printed when it was refused.
struct Outcome {
  std::uint64_t bytes = 0;
  bool refused = false;
  std::string out;
  std::string err;
  std::string left;
};

Outcome read(HashTable& table, const std::string& bytes, char type = 'C') {
  RecordStream record(bytes);
  const StreamCapture out(std::cout);
  const StreamCapture err(std::cerr);
  Outcome outcome;
  try {
    outcome.bytes = table.readObject(record.stream(), type);
  } catch (const IOException* refusal) {
    delete refusal;
    outcome.refused = true;
  }
  outcome.out = out.text();
  outcome.err = err.text();
  outcome.left = record.left();
  return outcome;
}

// The first items of the sets of a chain.
std::vector<int> chain(const HashTable& table, int bucket) {
  std::vector<int> items;
  for (const auto* entry = table.bucket(bucket); entry != nullptr; entry = entry->next) {
    items.push_back(entry->key->getItemAt(0));
  }
  return items;
}

TEST(HashTableRecord, OfAnEmptyTableHasSixBytes) { EXPECT_EQ(written(HashTable(5)), "HT\0\0\0\0"s); }

TEST(HashTableRecord, HoldsTheEntriesInTableOrder) {
  HashTable table(5);                                                 // threshold 3
  put(table, {1}, std::make_unique<CarmaSetDescriptor>(10, 20, 30));  // hash code 7: bucket 2
  put(table, {2}, std::make_unique<SetCounter>(11, 21));              // 14: bucket 4
  put(table, {3}, std::make_unique<CarmaSetDescriptor>(12, 22, 32));  // 21: bucket 1
  EXPECT_EQ(written(table), "HT\x03\0\0\0"s +                         //
                                "IS:\0\x01\0\0\0\x03\0\0\0"s + "CSD\x0C\0\0\0\x16\0\0\0\x20\0\0\0"s +
                                "IS:\0\x01\0\0\0\x01\0\0\0"s + "CSD\x0A\0\0\0\x14\0\0\0\x1E\0\0\0"s +
                                "IS:\0\x01\0\0\0\x02\0\0\0"s + "SC\x0B\0\0\0\x15\0\0\0"s);
}

TEST(HashTableRecord, WritesAChainFromItsHead) {
  HashTable table(5);
  put(table, 5);   // all in bucket 0
  put(table, 10);  // in front of it
  const std::string descriptor = carmaBytes(1, 2, 3);
  EXPECT_EQ(written(table),
            "HT" + int32Bytes(2) + itemSetBytes({10}) + descriptor + itemSetBytes({5}) + descriptor);
}

TEST(HashTableRecord, LetsADescriptorOfTheHostWriteItself) {
  class HostCounter : public SetCounter {
   public:
    std::uint64_t writeObject(std::fstream& stream) const override {
      stream.write("host", 4);
      return 4;
    }
  };
  HashTable table(5);
  put(table, {1}, std::make_unique<HostCounter>());
  put(table, {2}, std::make_unique<SetCounter>(3, 4));
  EXPECT_EQ(written(table), "HT" + int32Bytes(2) + itemSetBytes({1}) + "host" + itemSetBytes({2}) + "SC" +
                                int32Bytes({3, 4}));
}

TEST(HashTableRecord, ReadsIntoBucketsByTheNumberOfEntries) {
  // n * 1.55, truncated; then 0 and 4 of the remainders of 6 give one more, 2 one less, 3 two more.
  const std::pair<int, int> buckets[] = {{2, 5},   {3, 5},   {4, 7},   {5, 7},   {6, 11},
                                         {7, 11},  {8, 13},  {9, 13},  {10, 17}, {11, 17},
                                         {12, 19}, {13, 19}, {14, 23}, {20, 31}, {100, 155}};
  for (const auto& [entries, expected] : buckets) {
    std::vector<int> items;
    for (int i = 1; i <= entries; ++i) items.push_back(i);
    HashTable table(1000);
    const Outcome outcome = read(table, tableBytes(items) + "next");
    EXPECT_EQ(outcome.bytes, 6U + 27U * static_cast<unsigned>(entries));
    EXPECT_EQ(outcome.left, "next");
    EXPECT_EQ(table.count(), entries);
    EXPECT_EQ(table.bucketCount(), expected) << entries;
    EXPECT_EQ(table.threshold(), expected * 3 / 4);
    EXPECT_EQ(table.modCount(), 0);
  }
}

TEST(HashTableRecord, ReadsOneEntryIntoATableThatGrewAtOnce) {
  HashTable table(1000);
  read(table, tableBytes({8}));
  EXPECT_EQ(table.bucketCount(), 3);  // from 1, whose threshold is 0
  EXPECT_EQ(table.modCount(), 1);
  EXPECT_THAT(chain(table, 56 % 3), ElementsAre(8));
}

TEST(HashTableRecord, TurnsTheOrderWithinAChainRound) {
  HashTable table(1000);
  read(table, tableBytes({5, 10, 15}));  // five buckets, all hash codes multiples of 5
  EXPECT_THAT(chain(table, 0), ElementsAre(15, 10, 5));
  HashTable again(1000);
  read(again, written(table));
  EXPECT_THAT(chain(again, 0), ElementsAre(5, 10, 15));
}

TEST(HashTableRecord, ReplacesWhatTheTableHeld) {
  HashTable table(5);
  put(table, 1);
  put(table, 2);
  read(table, tableBytes({4, 7, 9, 11}));
  EXPECT_EQ(table.count(), 4);
  EXPECT_EQ(table.bucketCount(), 7);
  const ItemSet one(1);
  EXPECT_FALSE(table.contains(&one));
}

TEST(HashTableRecord, OfLessThanOneEntryEmptiesTheTableAndLeavesItsBuckets) {
  for (const std::string& number : {int32Bytes(0), int32Bytes(-1), int32Bytes(-2147483647 - 1), "\x01\0"s}) {
    HashTable table(5);
    put(table, 1);
    const Outcome outcome = read(table, "HT" + number);
    EXPECT_FALSE(outcome.refused);
    EXPECT_EQ(outcome.bytes, 6U);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(table.count(), 0);
    EXPECT_EQ(table.bucketCount(), 5);
    put(table, 1);
    EXPECT_EQ(table.count(), 1);
  }
}

TEST(HashTableRecord, GivesItsTypeToTheDescriptors) {
  const std::string set = "HT" + int32Bytes(1) + itemSetBytes({5});
  const ItemSet key(5);
  HashTable table(5);

  EXPECT_EQ(read(table, set + "SC" + int32Bytes({1, 2}), 'A').bytes, 28U);
  const SetCounter& plain = *table.find(&key)->descriptor;
  EXPECT_EQ(typeid(plain), typeid(SetCounter));

  EXPECT_EQ(read(table, set + "CSD" + int32Bytes({1, 2, 3}), 'C').bytes, 33U);
  EXPECT_EQ(table.find(&key)->descriptor->getMaxMissed(), 3);

  EXPECT_EQ(read(table, set + "LSD" + int32Bytes({1, 2, 3, 2, 7, 9}), 'L').bytes, 45U);
  EXPECT_EQ(dynamic_cast<LatticeSetDescriptor&>(*table.find(&key)->descriptor).adjacent.data[1], 9);
}

TEST(HashTableRecord, TakesAPlainCounterAmongCarmaDescriptors) {
  HashTable table(5);
  const Outcome outcome = read(table, "HT" + int32Bytes(2) + itemSetBytes({5}) + "SC" + int32Bytes({1, 2}) +
                                          itemSetBytes({6}) + carmaBytes(3, 4, 5));
  EXPECT_FALSE(outcome.refused);
  const ItemSet five(5);
  const ItemSet six(6);
  const SetCounter& plain = *table.find(&five)->descriptor;
  EXPECT_EQ(typeid(plain), typeid(SetCounter));
  const SetCounter& carma = *table.find(&six)->descriptor;
  EXPECT_EQ(typeid(carma), typeid(CarmaSetDescriptor));
}

TEST(HashTableRecord, RefusesDescriptorsOfAnotherType) {
  const std::string set = "HT" + int32Bytes(1) + itemSetBytes({5});
  const struct {
    char type;
    std::string descriptor;
    const char* message;
  } cases[] = {{'A', "CSD" + int32Bytes({1, 2, 3}), "Error reading SetCounter!\n"},
               {'C', "LSD" + int32Bytes({1, 2, 3, 0}), "Error reading CarmaSetDescriptor!\n"},
               {'C', "CSX" + int32Bytes({1, 2, 3, 0}), "Error reading CarmaSetDescriptor!\n"},
               {'C', "SX" + int32Bytes({1, 2, 3, 0}), "Error reading CarmaSetDescriptor!\n"},
               {'L', "CSD" + int32Bytes({1, 2, 3}), "Error reading LatticeSetDescriptor!\n"},
               {'L', "LSD" + int32Bytes({1, 2, 3, -1}), "Error reading LatticeSetDescriptor!\n"},
               {'X', "CSD" + int32Bytes({1, 2, 3}), "Error in ISCPair::readObject: unknown descType\n"},
               {'c', "CSD" + int32Bytes({1, 2, 3}), "Error in ISCPair::readObject: unknown descType\n"}};
  for (const auto& c : cases) {
    HashTable table(5);
    const Outcome outcome = read(table, set + c.descriptor, c.type);
    EXPECT_TRUE(outcome.refused);
    EXPECT_EQ(outcome.out, c.message + kEntryFailure) << c.type << c.descriptor;
    EXPECT_EQ(table.count(), 0);
  }
}

TEST(HashTableRecord, OfNoEntryNeedsNoType) {
  HashTable table(5);
  EXPECT_EQ(read(table, "HT" + int32Bytes(0), 'X').bytes, 6U);
}

TEST(HashTableRecord, RefusesABadStream) {
  HashTable table(5);
  RecordStream record(tableBytes({1}));
  record.stream().setstate(std::ios::badbit);
  const StreamCapture err(std::cerr);
  try {
    table.readObject(record.stream(), 'C');
    ADD_FAILURE();
  } catch (const IOException* refusal) {
    delete refusal;
  }
  EXPECT_EQ(err.text(), "bad stream in HashtablePair::readObject!\n");
}

TEST(HashTableRecord, RefusesAnotherTagAndShowsIt) {
  HashTable table(5);
  put(table, 1);
  EXPECT_EQ(read(table, "IS: and more").out, "Failure reading Hashtable!\ninputStr: IS\n");
  EXPECT_EQ(read(table, "H").out, "Failure reading Hashtable!\ninputStr: H\n");
  const Outcome outcome = read(table, "");
  EXPECT_TRUE(outcome.refused);
  EXPECT_EQ(outcome.out, "Failure reading Hashtable!\ninputStr: \n");
  EXPECT_EQ(table.count(), 1) << "nothing was read yet";
}

TEST(HashTableRecord, CutShortAnywhereIsRefused) {
  const std::string bytes = tableBytes({4, 7, 9});
  for (std::size_t size = 6; size < bytes.size(); ++size) {
    HashTable table(5);
    put(table, 1);
    const Outcome outcome = read(table, bytes.substr(0, size));
    ASSERT_TRUE(outcome.refused) << size;
    const bool inSet = (size - 6) % 27 < 12;
    EXPECT_EQ(outcome.out, (inSet ? kItemSetFailure : "Error reading CarmaSetDescriptor!\n") + kEntryFailure);
    EXPECT_EQ(table.count(), 0);
    put(table, 2);  // of use as before
  }
}

TEST(HashTableRecord, ClaimingMoreEntriesThanItHasIsRefused) {
  for (const int number : {3, 1000000, 2147483647}) {
    std::string bytes = tableBytes({4, 7});
    bytes.replace(2, 4, int32Bytes(number));
    HashTable table(5);
    EXPECT_EQ(read(table, bytes).out, kItemSetFailure + kEntryFailure);
    EXPECT_EQ(table.bucketCount(), 5) << "no bucket on the word of a number";
    // The next record stands where the third set should.
    EXPECT_EQ(read(table, bytes + "HT" + int32Bytes(0) + std::string(100, 'x')).out,
              kItemSetFailure + kEntryFailure);
  }
}

TEST(HashTableRecord, WithALyingLengthIsRefused) {
  for (const int number : kLyingNumbers) {
    HashTable table(5);
    const Outcome outcome =
        read(table, "HT" + int32Bytes(1) + "IS:\0"s + int32Bytes({number, 4}) + carmaBytes(1, 2, 3));
    EXPECT_TRUE(outcome.refused) << number;
    // Without items the descriptor would begin where the item stands.
    EXPECT_EQ(outcome.out,
              (number <= 0 ? "Error reading CarmaSetDescriptor!\n" : kItemSetFailure) + kEntryFailure);
  }
}

TEST(HashTableRecord, ChangedInOneByteIsAnotherTableOrRefused) {
  const std::string original = tableBytes({4, 7});
  for (std::size_t place = 0; place < original.size(); ++place) {
    for (int value = 0; value < 256; ++value) {
      std::string bytes = original;
      bytes[place] = static_cast<char>(value);
      HashTable table(5);
      const Outcome outcome = read(table, bytes);
      if (outcome.refused) {
        EXPECT_FALSE(outcome.out.empty());
        EXPECT_EQ(table.count(), 0);
      } else {
        EXPECT_EQ(outcome.out, "");
        // A set that was made equal to the other one is dropped.
        EXPECT_EQ(written(table).size(),
                  table.count() == 2 ? outcome.bytes : 6U + 27U * static_cast<unsigned>(table.count()));
      }
    }
  }
}

TEST(HashTableRecord, DropsASetThatComesAgain) {
  HashTable table(5);
  const Outcome outcome = read(table, tableBytes({4, 7, 4, 4, 9}));
  EXPECT_FALSE(outcome.refused);
  EXPECT_EQ(table.count(), 3);
  EXPECT_EQ(table.bucketCount(), 7);
  const ItemSet four(4);
  EXPECT_EQ(table.find(&four)->descriptor->count, 1) << "the first one stays";
}

TEST(HashTableRecord, RefusesASetOfAnotherLevel) {
  const auto readLevel = [](const std::string& bytes, int level) {
    RecordStream record(bytes);
    HashTable table(5);
    const StreamCapture out(std::cout);
    try {
      table.readLevel(record.stream(), 'C', level);
      EXPECT_EQ(out.text(), "");
      return table.count();
    } catch (const IOException* refusal) {
      delete refusal;
      EXPECT_EQ(out.text(), kEntryFailure);
      return -1;
    }
  };
  const std::string mixed = "HT" + int32Bytes(2) + itemSetBytes({5}) + carmaBytes(1, 1, 1) +
                            itemSetBytes({5, 6}) + carmaBytes(1, 1, 1);
  EXPECT_EQ(readLevel(tableBytes({4, 7}), 1), 2);
  EXPECT_EQ(readLevel(tableBytes({4, 7}), 2), -1);
  EXPECT_EQ(readLevel(tableBytes({4, 7}), 0), -1);
  EXPECT_EQ(readLevel(mixed, 1), -1);
  EXPECT_EQ(readLevel(mixed, 2), -1);
  EXPECT_EQ(readLevel("HT" + int32Bytes(1) + "IS:\0"s + int32Bytes(-5) + carmaBytes(1, 1, 1), 0), 1);
}

// 11 times this is 1 in 32 bits.
constexpr std::uint32_t kInverseOfEleven = 3123612579U;
static_assert(11U * kInverseOfEleven == 1U);

TEST(HashTableRecord, IsReadInTimeWhenAllSetsShareABucket) {
  constexpr int kSets = 100000;
  std::string bytes = "HT" + int32Bytes(kSets);
  const std::string descriptor = carmaBytes(1, 1, 1);
  for (std::uint32_t i = 0; i < kSets; ++i) {
    const std::uint32_t second = (7U * i ^ 4711U) * kInverseOfEleven;  // the hash code is 4711
    bytes += itemSetBytes({static_cast<int>(i), static_cast<int>(second)}) + descriptor;
  }
  HashTable table(5);
  const std::clock_t start = std::clock();
  EXPECT_FALSE(read(table, bytes).refused);
  const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  EXPECT_EQ(table.count(), kSets);
  EXPECT_EQ(table.bucket(4711)->key->getItemAt(0), kSets - 1);
  EXPECT_LT(seconds, 10.0) << "comparing every two of them takes far longer";

  // Equal ones are found all the same.
  bytes.replace(2, 4, int32Bytes(2 * kSets));
  bytes += bytes.substr(6);
  EXPECT_FALSE(read(table, bytes).refused);
  EXPECT_EQ(table.count(), kSets);
}

TEST(HashTableRecord, StopsAtAStreamThatFails) {
  HashTable table(5);
  for (int item = 1; item <= 30; ++item) put(table, item);
  const std::string bytes = written(table);
  for (std::size_t room = 0; room <= bytes.size(); ++room) {
    FailingRecordStream record(room);
    table.writeObject(record.stream());
    EXPECT_EQ(record.bytes(), bytes.substr(0, room));
    EXPECT_EQ(record.stream().good(), room == bytes.size());
  }
}

TEST(HashTableOrder, IsTheSameWhereBucketsAreOutOfProportion) {
  // So many buckets that they are not all there: bucket of {x} is 7 x, and the order is that of a plain
  // array.
  HashTable table(2147483647);
  for (const int item : {30000000, 5, 300, 10, -1}) put(table, item);
  EXPECT_EQ(table.bucketCount(), 2147483647);
  std::vector<int> order;
  table.forEach([&](const HashTable::Entry& entry) { order.push_back(entry.key->getItemAt(0)); });
  // -7 as an unsigned number is 4294967289, modulo 2147483647 it is 2147483642.
  EXPECT_THAT(order, ElementsAre(5, 10, 300, 30000000, -1));
  EXPECT_THAT(chain(table, 2100), ElementsAre(300));
  EXPECT_THAT(chain(table, 2101), ElementsAre());
  const ItemSet three(300);
  const HashTable copy(table);
  EXPECT_EQ(copy.find(&three)->key, table.find(&three)->key);
  const_cast<HashTable&>(copy).clear();
  HashTable::Entry* removed = table.remove(&three);
  ASSERT_NE(removed, nullptr);
  delete removed->key;
  delete removed->descriptor;
  table.recycle(removed);
  EXPECT_FALSE(table.contains(&three));
  EXPECT_EQ(table.count(), 4);
}

TEST(HashTableOrder, StaysAsTheMapOfHeadsGivesWayToTheArray) {
  constexpr int kBuckets = 1000003;  // the array comes with about 15600 of them in use
  HashTable table(kBuckets);
  std::vector<std::vector<int>> chains(kBuckets);
  for (int i = 0; i < 40000; ++i) {
    const int item = i * 7919 % 400009;
    put(table, item);
    auto& expected = chains[static_cast<std::size_t>(7 * item) % kBuckets];
    expected.insert(expected.begin(), item);
  }
  std::vector<int> expected;
  for (const auto& items : chains) expected.insert(expected.end(), items.begin(), items.end());
  std::vector<int> order;
  table.forEach([&](const HashTable::Entry& entry) { order.push_back(entry.key->getItemAt(0)); });
  EXPECT_EQ(order, expected);
}

}  // namespace
