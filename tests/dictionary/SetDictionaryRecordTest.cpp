// The dictionary's binary record: its bytes, what reading makes of them, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/engine/Exceptions.h"
#include "tests/support/DictionaryComparison.h"
#include "tests/support/RandomDictionary.h"
#include "tests/support/RecordStream.h"
#include "tests/support/StreamCapture.h"

namespace {

using namespace std::string_literals;
using ::testing::StartsWith;

const DictionarySettings& defaults() {
  static const DictionarySettings settings;  // making up a spill file name takes its time
  return settings;
}

// A dictionary with settings of its own.
struct Store {
  explicit Store(int maxLevel) : settings(defaults()), dictionary(maxLevel, &settings, true) {}
  DictionarySettings settings;
  SetDictionary dictionary;
};

std::string written(const SetDictionary& dictionary) {
  RecordStream record;
  const std::uint64_t size = dictionary.writeObject(record.stream());
  EXPECT_EQ(size, record.bytes().size());
  return record.bytes();
}

struct Outcome {
  std::uint64_t bytes = 0;
  bool refused = false;
  std::string out;
  std::string err;
  std::string left;
};

Outcome read(SetDictionary& dictionary, const std::string& bytes) {
  RecordStream record(bytes);
  const StreamCapture out(std::cout);
  const StreamCapture err(std::cerr);
  Outcome outcome;
  try {
    outcome.bytes = dictionary.readObject(record.stream());
  } catch (const IOException* refusal) {
    delete refusal;
    outcome.refused = true;
  }
  outcome.out = out.text();
  outcome.err = err.text();
  outcome.left = record.left();
  return outcome;
}

const std::string kEmptyTable = "HT\0\0\0\0"s;

// maxLevel 2, spillLevel 1, 4 sets in store, room for 2147483647, queue off, 3 fixed sets.
const std::string kSmallHead = "SD\x02\0\0\0\x01\0\0\0\x04\0\0\0\xFF\xFF\xFF\x7F\0\0\0\0\x03\0\0\0"s + "01";

// The sets {} (count 9), {5} (count 7) and {5, 8} (count 6, TID 4, max missed 1).
const std::string kSmallTables =                                                           //
    "HT\x01\0\0\0"s + "IS:\0\0\0\0\0"s + "CSD\x09\0\0\0\0\0\0\0\0\0\0\0"s +                //
    "HT\x02\0\0\0"s + "IS:\0\x01\0\0\0\x05\0\0\0"s + "CSD\x07\0\0\0\x01\0\0\0\0\0\0\0"s +  //
    "IS:\0\x01\0\0\0\x08\0\0\0"s + "CSD\x06\0\0\0\x03\0\0\0\x02\0\0\0"s +                  //
    "HT\x01\0\0\0"s + "IS:\0\x02\0\0\0\x05\0\0\0\x08\0\0\0"s + "CSD\x06\0\0\0\x04\0\0\0\x01\0\0\0"s;

void fillSmall(SetDictionary& dictionary) {
  store(dictionary, {}, std::make_unique<CarmaSetDescriptor>(9, 0, 0));
  store(dictionary, {5}, std::make_unique<CarmaSetDescriptor>(7, 1, 0));
  store(dictionary, {8}, std::make_unique<CarmaSetDescriptor>(6, 3, 2));
  store(dictionary, {5, 8}, std::make_unique<CarmaSetDescriptor>(6, 4, 1));
}

TEST(SetDictionaryRecord, OfAnEmptyDictionaryOfFourLevelsHas52Bytes) {
  Store empty(3);
  empty.settings.SetNumberOfFixedSets(4);
  EXPECT_EQ(written(empty.dictionary), "SD\x03\0\0\0\x01\0\0\0\0\0\0\0\xFF\xFF\xFF\x7F\0\0\0\0\x04\0\0\0"s +
                                           "01" + kEmptyTable + kEmptyTable + kEmptyTable + kEmptyTable);
}

TEST(SetDictionaryRecord, IsItsHeadAndTheTableOfEveryLevel) {
  Store small(2);
  fillSmall(small.dictionary);
  EXPECT_EQ(written(small.dictionary), kSmallHead + kSmallTables);
}

TEST(SetDictionaryRecord, CarriesTheLimitsAndTheFlags) {
  DictionarySettings settings;
  settings.SetMaxInStoreSets(77);
  settings.SetLeaveInMainStoreCount(-5);
  settings.SetNumberOfFixedSets(1);
  settings.SetDiskSpill(true);
  SetDictionary dictionary(0, &settings, true);
  dictionary.setBitsetOff(false);
  EXPECT_EQ(written(dictionary),
            "SD\0\0\0\0\x01\0\0\0\0\0\0\0\x4D\0\0\0\xFB\xFF\xFF\xFF\x01\0\0\0"s + "10" + kEmptyTable);

  Store reader(0);
  EXPECT_FALSE(read(reader.dictionary, written(dictionary)).refused);
  EXPECT_EQ(reader.dictionary.maxInStoreSets(), 77);
  EXPECT_FALSE(reader.dictionary.isBitsetOff());
  EXPECT_EQ(written(reader.dictionary), written(dictionary));
}

TEST(SetDictionaryRecord, IsReadBackAndTheStreamStandsBehindIt) {
  Store reader(2);
  const Outcome outcome = read(reader.dictionary, kSmallHead + kSmallTables + "next");
  EXPECT_FALSE(outcome.refused) << outcome.out;
  EXPECT_EQ(outcome.bytes, 28U + kSmallTables.size());
  EXPECT_EQ(outcome.left, "next");
  EXPECT_EQ(outcome.out + outcome.err, "");
  EXPECT_EQ(reader.dictionary.getEmptySetCount(), 9);
  EXPECT_EQ(reader.dictionary.getCount(5), 7);
  const std::vector<int> both = {5, 8};
  const SetCounter* descriptor = reader.dictionary.getDescriptor(both.data(), 2);
  ASSERT_NE(descriptor, nullptr);
  EXPECT_EQ(descriptor->getTID(), 4);
  EXPECT_EQ(descriptor->getMaxMissed(), 1);
  EXPECT_EQ(reader.dictionary.inStoreCount(), 4);
  EXPECT_EQ(reader.dictionary.getTotalSetCount(), 4);
  EXPECT_EQ(written(reader.dictionary), kSmallHead + kSmallTables);
}

TEST(SetDictionaryRecord, ReplacesEverythingThatWasStored) {
  Store reader(2);
  reader.settings.SetLeaveInMainStoreCount(3);
  store(reader.dictionary, {}, std::make_unique<CarmaSetDescriptor>(1, 1, 1));
  store(reader.dictionary, {1, 2}, std::make_unique<CarmaSetDescriptor>(1, 1, 1));
  reader.dictionary.buildLattice();
  ASSERT_FALSE(read(reader.dictionary, kSmallHead + kSmallTables).refused);
  EXPECT_FALSE(reader.dictionary.isLatticeBuilt());
  EXPECT_TRUE(reader.dictionary.smallQueue().empty());
  const std::vector<int> former = {1, 2};
  EXPECT_EQ(reader.dictionary.getDescriptor(former.data(), 2), nullptr);
  EXPECT_EQ(written(reader.dictionary), kSmallHead + kSmallTables);
}

TEST(SetDictionaryRecord, OnABadStreamIsRefusedOnTheErrorStream) {
  Store empty(0);
  RecordStream record;
  record.stream().setstate(std::ios::badbit);
  const StreamCapture err(std::cerr);
  EXPECT_THROW(
      try { empty.dictionary.writeObject(record.stream()); } catch (const IOException* refusal) {
        delete refusal;
        throw 1;
      },
      int);
  EXPECT_EQ(err.text(), "Bad stream for saving SetDictionary!\n");
  EXPECT_THROW(
      try { empty.dictionary.readObject(record.stream()); } catch (const IOException* refusal) {
        delete refusal;
        throw 1;
      },
      int);
  EXPECT_EQ(err.text(), "Bad stream for saving SetDictionary!\nBad stream for reading SetDictionary!\n");
}

TEST(SetDictionaryRecord, RefusesAnyOtherTwoCharactersAndShowsThem) {
  const std::string rest = (kSmallHead + kSmallTables).substr(2);
  for (const std::string& tag : {"SE"s, "TD"s, "DS"s, "HT"s, "\0D"s, "\xFF\xFE"s}) {
    Store reader(2);
    const Outcome outcome = read(reader.dictionary, tag + rest);
    EXPECT_TRUE(outcome.refused);
    EXPECT_EQ(outcome.out, "Failure reading SetDictionary!\ninputStr: " + tag + "\n");
    EXPECT_EQ(outcome.err, "");
  }
  Store reader(2);
  EXPECT_EQ(read(reader.dictionary, "S").out, "Failure reading SetDictionary!\ninputStr: S\n");
  EXPECT_EQ(read(reader.dictionary, "").out, "Failure reading SetDictionary!\ninputStr: \n");
}

// The record with the int at this place (in bytes) replaced.
std::string withInt(std::size_t place, int value) {
  std::string bytes = kSmallHead + kSmallTables;
  return bytes.replace(place, 4, int32Bytes(value));
}

TEST(SetDictionaryRecord, RefusesNumbersThatNoDictionaryOfTheseSettingsWrites) {
  const std::string refusal = "Failure reading SetDictionary!\ninputStr: SD\n";
  const struct {
    const char* field;
    std::size_t place;
    std::vector<int> refused;
    std::vector<int> taken;
  } cases[] = {
      {"maxLevel", 2, {-1, 0, 1, 3, 1000000, 2147483647, -2147483647 - 1}, {2}},
      {"spillLevel", 6, {-1, -2147483647 - 1}, {0, 1, 1000000, 2147483647}},
      {"inStoreCount", 10, {-1, -2147483647 - 1}, {0, 1000000, 2147483647}},
      {"maxInStoreSets", 14, {}, {-1, 0, 1000000, 2147483647, -2147483647 - 1}},
      {"leaveInMainStoreCount", 18, {}, {-1, 0, 1000000, 2147483647, -2147483647 - 1}},
      {"fixedSetCount", 22, {-1, 4, 1000000, 2147483647, -2147483647 - 1}, {0, 3}},
  };
  for (const auto& c : cases) {
    for (const int value : c.refused) {
      Store reader(2);
      const Outcome outcome = read(reader.dictionary, withInt(c.place, value));
      EXPECT_TRUE(outcome.refused) << c.field << ' ' << value;
      EXPECT_EQ(outcome.out, refusal) << c.field << ' ' << value;
    }
    for (const int value : c.taken) {
      Store reader(2);
      EXPECT_FALSE(read(reader.dictionary, withInt(c.place, value)).refused) << c.field << ' ' << value;
      EXPECT_EQ(written(reader.dictionary), withInt(c.place, value)) << c.field << ' ' << value;
    }
  }
}

TEST(SetDictionaryRecord, WithAWildCountOfSetsStillPrunesAndBuildsItsLattice) {
  for (const int count : {0, 2147483647}) {
    Store reader(2);
    ASSERT_FALSE(read(reader.dictionary, withInt(10, count)).refused);
    EXPECT_EQ(reader.dictionary.removeSmallSets(7), 2);
    Store again(2);
    EXPECT_FALSE(read(again.dictionary, written(reader.dictionary)).refused) << count;
    reader.dictionary.buildLattice();
    EXPECT_EQ(reader.dictionary.getTotalSetCount(), 2);
  }
  // Without an empty set, building the lattice makes one and counts it.
  std::string bytes = withInt(10, 2147483647).substr(0, 28) + kEmptyTable + kEmptyTable + kEmptyTable;
  Store reader(2);
  ASSERT_FALSE(read(reader.dictionary, bytes).refused);
  reader.dictionary.buildLattice();
  EXPECT_EQ(reader.dictionary.inStoreCount(), 2147483647);
}

TEST(SetDictionaryRecord, TakesAFlagAsTrueWhenItIsTheCharacterOneAlone) {
  for (int value = 0; value < 256; ++value) {
    std::string bytes = kSmallHead + kEmptyTable + kEmptyTable + kEmptyTable;
    bytes[27] = static_cast<char>(value);
    Store reader(2);
    EXPECT_FALSE(read(reader.dictionary, bytes).refused);
    EXPECT_EQ(reader.dictionary.isBitsetOff(), value == '1');
    bytes = kSmallHead + kEmptyTable + kEmptyTable + kEmptyTable;
    bytes[26] = static_cast<char>(value);
    Store other(2);
    EXPECT_FALSE(read(other.dictionary, bytes).refused);
    EXPECT_EQ(written(other.dictionary)[26], value == '1' ? '1' : '0');
  }
}

TEST(SetDictionaryRecord, WithTheBitsetOnHoldsPlainCountersAndMarksTheLevelBelowTheSpillLevel) {
  std::string head = kSmallHead;
  head[27] = '0';
  const std::string tables = kEmptyTable + "HT" + int32Bytes(1) + "IS:\0"s + int32Bytes({1, 5}) + "SC" +
                             int32Bytes({7, 1}) + kEmptyTable;
  Store reader(2);
  ASSERT_FALSE(read(reader.dictionary, head + tables).refused);
  EXPECT_FALSE(reader.dictionary.isMarked(5)) << "the level below level 1 holds no items";
  head[6] = 2;
  ASSERT_FALSE(read(reader.dictionary, head + tables).refused);
  EXPECT_TRUE(reader.dictionary.isMarked(5));
  EXPECT_FALSE(reader.dictionary.isMarked(6));

  const Outcome outcome = read(reader.dictionary, head + kSmallTables);
  EXPECT_EQ(outcome.out, "Error reading SetCounter!\nProblem reading Hashtable.\n");
}

TEST(SetDictionaryRecord, CutShortAnywhereIsRefusedButWithinTheLastNumberOfEntries) {
  const std::string bytes = kSmallHead + kEmptyTable + kSmallTables.substr(29);
  const std::size_t lastTable = bytes.rfind("HT");
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    Store reader(2);
    const Outcome outcome = read(reader.dictionary, bytes.substr(0, size));
    if (size >= lastTable + 2 && size < lastTable + 6) {
      EXPECT_FALSE(outcome.refused) << "a table without a number of entries is empty";
      continue;
    }
    ASSERT_TRUE(outcome.refused) << size;
    EXPECT_THAT(outcome.out, ::testing::AnyOf(StartsWith("Failure reading "), StartsWith("Error reading ")));
    EXPECT_EQ(outcome.err, "");
  }
  // What follows such a dictionary in a state cannot be read then.
  const std::string empty = kSmallHead + kEmptyTable + kEmptyTable + kEmptyTable;
  for (std::size_t size = 0; size < empty.size(); ++size) {
    Store reader(2);
    EXPECT_EQ(read(reader.dictionary, empty.substr(0, size)).refused, size < empty.size() - 4) << size;
  }
}

TEST(SetDictionaryRecord, ChangedInOneByteIsAnotherDictionaryOrRefused) {
  const std::string original = kSmallHead + kSmallTables;
  int taken = 0;
  Store reader(2);
  for (std::size_t place = 0; place < original.size(); ++place) {
    for (int value = 0; value < 256; ++value) {
      std::string bytes = original;
      bytes[place] = static_cast<char>(value);
      const Outcome outcome = read(reader.dictionary, bytes);
      EXPECT_EQ(outcome.err, "");
      if (outcome.refused) {
        EXPECT_THAT(outcome.out,
                    ::testing::AnyOf(StartsWith("Failure reading "), StartsWith("Error reading "),
                                     StartsWith("Problem reading ")));
        continue;
      }
      EXPECT_EQ(outcome.out, "");
      if (++taken % 16 != 0) continue;
      Store again(2);
      EXPECT_FALSE(read(again.dictionary, written(reader.dictionary)).refused);
      EXPECT_EQ(stateText(again.dictionary), stateText(reader.dictionary));
    }
  }
  EXPECT_GT(taken, 5000) << "items, counts and limits may be anything";
}

TEST(SetDictionaryRecord, WithALyingNumberSomewhereIsTakenOrRefused) {
  const std::string original = kSmallHead + kSmallTables;
  for (std::size_t place = 0; place + 4 <= original.size(); ++place) {
    for (const int value : kLyingNumbers) {
      Store reader(2);
      const Outcome outcome = read(reader.dictionary, withInt(place, value));
      EXPECT_EQ(outcome.refused, !outcome.out.empty());
    }
  }
}

TEST(SetDictionaryRecord, NeedsNoMemoryForLevelsAndBucketsThatSettingsAskForInVain) {
  DictionarySettings settings;
  settings.SetInitialSetSize(2147483647);
  settings.SetInitialBoundarySearchSize(2147483647);
  settings.SetInitialHashtableSet23Size(2147483647);
  settings.SetNumberOfFixedSets(2147483647);
  SetDictionary dictionary(2147483647, &settings, true);
  constexpr int kLevels = SetDictionary::kLongestSet + 1;
  std::string bytes = "SD" + int32Bytes({kLevels - 1, 1, 1, 2147483647, 0, kLevels}) + "01";
  for (int level = 0; level < kLevels - 1; ++level) bytes += kEmptyTable;
  const Outcome outcome = read(dictionary, bytes);
  EXPECT_TRUE(outcome.refused);
  EXPECT_EQ(outcome.out, "Failure reading Hashtable!\ninputStr: \n");
  // As good as new for counting: a few sets in tables of two thousand million buckets.
  const std::vector<int> items = {1, 2, 3};
  auto descriptor = std::make_unique<CarmaSetDescriptor>(1, 1, 1);
  ASSERT_EQ(dictionary.addSet(items.data(), 3, descriptor.get()), 0);
  descriptor.release();
  EXPECT_EQ(dictionary.levelTable(3).bucketCount(), 2147483647);
  EXPECT_EQ(dictionary.getCount(7), 0);
}

// The chains of a level that is read from these entries: the number of buckets follows from that of the
// entries, and each entry goes to the head of its chain.
std::string expectedOrder(const HashTable& saved) {
  std::vector<std::string> entries;
  std::vector<std::uint32_t> hashes;
  saved.forEach([&](const HashTable::Entry& entry) {
    entries.push_back(entryText(entry));
    hashes.push_back(static_cast<std::uint32_t>(entry.key->hashcode()));
  });
  int buckets = static_cast<int>(static_cast<double>(entries.size()) * 1.55);
  buckets += std::vector<int>{1, 0, -1, 2, 1, 0}[static_cast<std::size_t>(buckets % 6)];
  if (entries.size() == 1) buckets = 3;  // grown at once
  std::vector<std::string> chains(static_cast<std::size_t>(buckets));
  for (std::size_t i = 0; i < entries.size(); ++i) {
    std::string& chain = chains[hashes[i] % static_cast<unsigned>(buckets)];
    chain = entries[i] + "\n" + chain;
  }
  std::string text;
  for (const std::string& chain : chains) text += chain;
  return text;
}

std::string order(const HashTable& table) {
  std::string text;
  table.forEach([&](const HashTable::Entry& entry) { text += entryText(entry) + "\n"; });
  return text;
}

TEST(SetDictionaryRecord, SurvivesTheRoundTripForRandomDictionaries) {
  for (const char type : {'A', 'C'}) {
    for (std::uint64_t seed = 0; seed < 60; ++seed) {
      Dice dice(seed);
      Store saved(dice.between(1, 9));
      saved.dictionary.setBitsetOff(type == 'C');
      fill(saved.dictionary, dice, dice.below(400), type);
      const std::string bytes = written(saved.dictionary);
      Store restored(saved.dictionary.maxLevel());
      const Outcome outcome = read(restored.dictionary, bytes + "next");
      ASSERT_FALSE(outcome.refused) << outcome.out;
      EXPECT_EQ(outcome.bytes, bytes.size());
      EXPECT_EQ(outcome.left, "next");
      EXPECT_EQ(restored.dictionary.inStoreCount(), saved.dictionary.inStoreCount());
      for (int level = 0; level <= saved.dictionary.maxLevel(); ++level) {
        EXPECT_EQ(order(restored.dictionary.levelTable(level)),
                  expectedOrder(saved.dictionary.levelTable(level)))
            << "seed " << seed << " level " << level;
      }
    }
  }
}

TEST(SetDictionaryRecord, OfARandomDictionaryCutShortOrChangedIsRefusedOrTaken) {
  Dice dice(7);
  Store saved(5);
  fill(saved.dictionary, dice, 60, 'C');
  const std::string original = written(saved.dictionary);
  const std::size_t lastTable = original.rfind("HT");
  for (std::size_t size = 0; size < original.size(); ++size) {
    Store reader(5);
    EXPECT_EQ(read(reader.dictionary, original.substr(0, size)).refused,
              size < lastTable + 2 || size >= lastTable + 6)
        << size;
  }
  for (std::size_t place = 0; place < original.size(); ++place) {
    for (int i = 0; i < 2; ++i) {
      std::string bytes = original;
      bytes[place] = static_cast<char>(dice.below(256));
      Store reader(5);
      const Outcome outcome = read(reader.dictionary, bytes);
      EXPECT_EQ(outcome.refused, !outcome.out.empty());
    }
  }
}

TEST(SetDictionaryRecord, StopsAtAStreamThatFails) {
  Store small(2);
  fillSmall(small.dictionary);
  const std::string bytes = kSmallHead + kSmallTables;
  for (std::size_t room = 0; room <= bytes.size(); ++room) {
    FailingRecordStream record(room);
    small.dictionary.writeObject(record.stream());
    EXPECT_EQ(record.bytes(), bytes.substr(0, room));
    EXPECT_EQ(record.stream().good(), room == bytes.size());
  }
  EXPECT_EQ(written(small.dictionary), bytes) << "saving changes nothing";
}

TEST(SetDictionaryDisplay, ShowsEveryLevelBucketByBucket) {
  Store small(3);
  small.settings.SetInitialBoundarySearchSize(5);
  store(small.dictionary, {}, std::make_unique<CarmaSetDescriptor>(9, 0, 0));
  store(small.dictionary, {5}, std::make_unique<CarmaSetDescriptor>(7, 1, 0));  // hash code 35: bucket 0 of 5
  store(small.dictionary, {10}, std::make_unique<CarmaSetDescriptor>(6, 3, 2));    // 70: in front of it
  store(small.dictionary, {1}, std::make_unique<CarmaSetDescriptor>(4, 3, 2));     // 7: bucket 2
  store(small.dictionary, {5, 8}, std::make_unique<CarmaSetDescriptor>(3, 4, 1));  // 35 xor 88 = 123 of 23039
  const StreamCapture out(std::cout);
  static_cast<const SemiLattice&>(small.dictionary).display();
  EXPECT_EQ(out.text(),
            "\nThe DICTIONARY:   total sets: 5\n"
            " ---- LEVEL  0 --------- 1 sets -----------\n"
            "Bucket 0 : ISCPair: count=9, ItemSet:  End of Set \n"
            "\n"
            "End of Hashtable.\n"
            " ---- LEVEL  1 --------- 3 sets -----------\n"
            "Bucket 0 : ISCPair: count=6, ItemSet:  10 End of Set \n"
            "ISCPair: count=7, ItemSet:  5 End of Set \n"
            "\n"
            "Bucket 2 : ISCPair: count=4, ItemSet:  1 End of Set \n"
            "\n"
            "End of Hashtable.\n"
            " ---- LEVEL  2 --------- 1 sets -----------\n"
            "Bucket 123 : ISCPair: count=3, ItemSet:  5 8 End of Set \n"
            "\n"
            "End of Hashtable.\n");
}

TEST(SetDictionaryDisplay, OfAnEmptyDictionaryShowsATableWithoutBuckets) {
  Store empty(3);
  const StreamCapture out(std::cout);
  empty.dictionary.display();
  EXPECT_EQ(out.text(),
            "\nThe DICTIONARY:   total sets: 0\n"
            " ---- LEVEL  0 --------- 0 sets -----------\n"
            "End of Hashtable.\n");
}

}  // namespace
