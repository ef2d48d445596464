// The itemset's binary record, byte by byte and damaged in every way.

#include <gtest/gtest.h>

#include <iostream>
#include <vector>

#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/itemsets/OrderedArray.h"
#include "tests/support/Dice.h"
#include "tests/support/RecordStream.h"
#include "tests/support/StreamCapture.h"

namespace {

using namespace std::string_literals;

const std::string kFailure = "Failure reading ItemSet!\n";

ItemSet setOf(const std::vector<int>& items) { return ItemSet(items.data(), static_cast<int>(items.size())); }

std::vector<int> itemsOf(const ItemSet& set) {
  return set.length() == 0 ? std::vector<int>()
                           : std::vector<int>(set.getTheArray(), set.getTheArray() + set.length());
}

// {3, 8} as a record.
const std::string kThreeEight = "IS:\0"s + "\x02\0\0\0"s + "\x03\0\0\0"s + "\x08\0\0\0"s;

TEST(ItemSetRecord, IsATagWithItsZeroTheLengthAndTheItems) {
  RecordStream record;
  EXPECT_EQ(setOf({3, 8}).writeObject(record.stream()), 16U);
  EXPECT_EQ(record.bytes(), kThreeEight);
}

TEST(ItemSetRecord, WritesItemsInTwosComplement) {
  RecordStream record;
  EXPECT_EQ(setOf({-2147483647 - 1, -2, 2147483647}).writeObject(record.stream()), 20U);
  EXPECT_EQ(record.bytes(), "IS:\0\x03\0\0\0"s + "\0\0\0\x80"s + "\xFE\xFF\xFF\xFF"s + "\xFF\xFF\xFF\x7F"s);
}

TEST(ItemSetRecord, OfAnEmptySetHasEightBytes) {
  RecordStream record;
  EXPECT_EQ(ItemSet().writeObject(record.stream()), 8U);
  EXPECT_EQ(record.bytes(), "IS:\0\0\0\0\0"s);
}

TEST(ItemSetRecord, IsReadBackWithHashCodeAndWithoutLinks) {
  RecordStream record(kThreeEight + "next");
  ItemSet other;
  ItemSet set(5);
  set.setNext(&other);
  set.setPrev(&other);
  EXPECT_EQ(set.readObject(record.stream()), 16U);
  EXPECT_EQ(itemsOf(set), (std::vector<int>{3, 8}));
  EXPECT_EQ(set.hashcode(), (7 * 3) ^ (11 * 8));
  EXPECT_EQ(set.getNext(), nullptr);
  EXPECT_EQ(set.getPrev(), nullptr);
  EXPECT_EQ(record.left(), "next") << "it must not read beyond its end";
}

TEST(ItemSetRecord, ReadsAShorterSetThanTheOneThatReads) {
  RecordStream record("IS:\0\0\0\0\0"s);
  ItemSet set = setOf({1, 2, 3});
  EXPECT_EQ(set.readObject(record.stream()), 8U);
  EXPECT_EQ(set.length(), 0);
  EXPECT_EQ(set.hashcode(), 0);
}

TEST(ItemSetRecord, RefusesAnotherTagWithAMessageAndZero) {
  for (const std::size_t place : {0U, 1U, 2U, 3U}) {
    std::string bytes = kThreeEight;
    bytes[place] = 'x';
    RecordStream record(bytes);
    const StreamCapture out(std::cout);
    ItemSet set(5);
    EXPECT_EQ(set.readObject(record.stream()), 0U);
    EXPECT_EQ(out.text(), kFailure);
    EXPECT_EQ(itemsOf(set), std::vector<int>{5});
  }
}

TEST(ItemSetRecord, RefusesABadStream) {
  RecordStream record(kThreeEight);
  record.stream().setstate(std::ios::badbit);
  const StreamCapture out(std::cout);
  EXPECT_EQ(ItemSet().readObject(record.stream()), 0U);
  EXPECT_EQ(out.text(), kFailure);
}

TEST(ItemSetRecord, RefusesToBeCutShortAnywhere) {
  for (std::size_t size = 0; size < kThreeEight.size(); ++size) {
    RecordStream record(kThreeEight.substr(0, size));
    const StreamCapture out(std::cout);
    ItemSet set(5);
    EXPECT_EQ(set.readObject(record.stream()), 0U) << size;
    EXPECT_EQ(out.text(), kFailure) << size;
    EXPECT_EQ(itemsOf(set), std::vector<int>{5}) << size;
  }
}

TEST(ItemSetRecord, KeepsTheItemsWhenTheLengthIsNegative) {
  for (const int length : {-1, -2147483647 - 1}) {
    RecordStream record("IS:\0"s + int32Bytes(length) + "next");
    const StreamCapture out(std::cout);
    ItemSet set = setOf({1, 2});
    ItemSet other;
    set.setNext(&other);
    EXPECT_EQ(set.readObject(record.stream()), 8U);
    EXPECT_EQ(itemsOf(set), (std::vector<int>{1, 2}));
    EXPECT_EQ(set.hashcode(), 17);
    EXPECT_EQ(set.getNext(), nullptr);
    EXPECT_EQ(record.left(), "next");
    EXPECT_EQ(out.text(), "");
  }
}

TEST(ItemSetRecord, MendsAStaleHashCodeOfItemsThatStay) {
  ItemSet set = setOf({1, 2});
  set.RemoveItem(1);
  RecordStream record("IS:\0"s + int32Bytes(-1));
  set.readObject(record.stream());
  EXPECT_EQ(set.hashcode(), 7 * 2);
}

TEST(ItemSetRecord, RefusesALengthBeyondTheEnd) {
  for (const int length : {3, 1000000, 2147483647}) {
    RecordStream record("IS:\0"s + int32Bytes(length) + int32Bytes({3, 8}));
    const StreamCapture out(std::cout);
    EXPECT_EQ(ItemSet().readObject(record.stream()), 0U) << length;
    EXPECT_EQ(out.text(), kFailure) << length;
  }
}

TEST(ItemSetRecord, TakesEveryChangedByteAsAnotherItemOrRefusesIt) {
  for (std::size_t place = 0; place < kThreeEight.size(); ++place) {
    for (int value = 0; value < 256; ++value) {
      std::string bytes = kThreeEight;
      bytes[place] = static_cast<char>(value);
      RecordStream record(bytes);
      const StreamCapture out(std::cout);
      ItemSet set;
      const std::uint64_t read = set.readObject(record.stream());
      if (read == 0) {
        EXPECT_EQ(out.text(), kFailure);
      } else if (set.length() == 2) {
        RecordStream again;
        EXPECT_EQ(read, 16U);
        EXPECT_EQ(set.writeObject(again.stream()), 16U);
        EXPECT_EQ(again.bytes(), bytes) << place << ": " << value;
      } else {  // a length changed to 0, 1 or below
        EXPECT_TRUE(place >= 4 && place < 8 && set.length() < 2);
        EXPECT_EQ(read, 8U + 4U * static_cast<unsigned>(set.length()));
      }
    }
  }
}

TEST(ItemSetRecord, CountsNoItemThatAFailedStreamWasNotGiven) {
  // 16 bytes in all. The stream notices with the write that does not fit; that one still counts.
  const std::size_t expected[] = {8, 8, 8, 8, 8, 8, 8, 8, 12, 12, 12, 12, 16, 16, 16, 16, 16};
  for (std::size_t room = 0; room <= 16; ++room) {
    FailingRecordStream record(room);
    EXPECT_EQ(setOf({3, 8}).writeObject(record.stream()), expected[room]) << room;
    EXPECT_EQ(record.bytes(), kThreeEight.substr(0, room));
    EXPECT_EQ(record.stream().good(), room == 16);
  }
}

TEST(ItemSetRecord, SurvivesTheRoundTripForRandomSets) {
  Dice dice(20);
  RecordStream record;
  std::vector<ItemSet> sets;
  for (int i = 0; i < 500; ++i) {
    OrderedArray items(4, 4);
    for (int n = dice.below(i % 50 == 0 ? 3000 : 70); n > 0; --n) items.Add(dice.anyInt());
    sets.emplace_back(items);
    EXPECT_EQ(sets.back().writeObject(record.stream()), 8U + 4U * static_cast<unsigned>(items.count));
  }
  for (const ItemSet& expected : sets) {
    ItemSet set;
    ASSERT_EQ(set.readObject(record.stream()), 8U + 4U * static_cast<unsigned>(expected.length()));
    EXPECT_TRUE(set == expected);
  }
  EXPECT_EQ(record.left(), "");
}

}  // namespace
