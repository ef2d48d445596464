#include "cli/input/LabelTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

namespace korassoc::cli {
namespace {

TEST(LabelTable, NumbersLabelsInOrderOfArrival) {
  LabelTable table;
  EXPECT_EQ(table.intern("milk"), 0);
  EXPECT_EQ(table.intern("bread"), 1);
  EXPECT_EQ(table.intern("milk"), 0);
  EXPECT_EQ(table.size(), 2U);
  EXPECT_EQ(table.label(0), "milk");
  EXPECT_EQ(table.label(1), "bread");
  EXPECT_EQ(table.find("bread"), 1);
  EXPECT_FALSE(table.find("beer"));
}

TEST(LabelTable, TellsPrefixesAndZeroBytesApart) {
  LabelTable table;
  EXPECT_EQ(table.intern(std::string_view("a", 1)), 0);
  EXPECT_EQ(table.intern(std::string_view("a\0", 2)), 1);
  EXPECT_EQ(table.intern("aaaaaaaa"), 2);
  EXPECT_EQ(table.intern("aaaaaaaaa"), 3);
  EXPECT_EQ(table.intern(std::string_view("a\0", 2)), 1);
}

TEST(LabelTable, AgreesWithAMapThroughGrowth) {
  LabelTable table;
  std::map<std::string, int> expected;
  std::mt19937 random(7);
  for (int step = 0; step < 50000; ++step) {
    const std::string label = "item " + std::to_string(random() % 20000);
    const auto [entry, isNew] = expected.try_emplace(label, static_cast<int>(expected.size()));
    ASSERT_EQ(table.intern(label), entry->second) << "step " << step;
  }
  for (const auto& [label, number] : expected) {
    ASSERT_EQ(table.label(number), label);
    ASSERT_EQ(table.find(label), number);
  }
}

TEST(LabelTable, SortsByBytesAndKeepsFinding) {
  LabelTable table;
  for (const char* label : {"milk", "Zwieback", "bread", "\xC3\xA4pfel"}) table.intern(label);
  EXPECT_THAT(table.sort(), ::testing::ElementsAre(2, 0, 1, 3));
  const char* const sorted[] = {"Zwieback", "bread", "milk", "\xC3\xA4pfel"};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(table.label(i), sorted[i]);
    EXPECT_EQ(table.find(sorted[i]), i);
  }
  EXPECT_EQ(table.intern("beer"), 4);
}

}  // namespace
}  // namespace korassoc::cli
