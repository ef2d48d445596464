#include "cli/input/ItemNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace korassoc::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

ItemNames labelled(std::initializer_list<const char*> labels) {
  LabelTable table;
  for (const char* label : labels) table.intern(label);
  table.sort();
  return ItemNames::labels(std::move(table));
}

TEST(ItemNames, CallsNumbersByTheirDigits) {
  const ItemNames names = ItemNames::numbers({0, 7, 39});
  EXPECT_TRUE(names.areNumbers());
  EXPECT_EQ(names.size(), 3U);
  EXPECT_EQ(names.name(39), "39");
  EXPECT_EQ(names.find("7"), 7);
  for (const char* unknown : {"8", "07", "+7", "-7", "7 ", "", "7a", "99999999999"}) {
    EXPECT_FALSE(names.find(unknown)) << unknown;
  }
}

TEST(ItemNames, NumbersLabelsAlphabetically) {
  const ItemNames names = labelled({"milk", "bread", "beer"});
  EXPECT_FALSE(names.areNumbers());
  EXPECT_EQ(names.name(0), "beer");
  EXPECT_EQ(names.find("milk"), 2);
  EXPECT_FALSE(names.find("Milk"));
}

TEST(ItemNames, FindsTheNearestLabels) {
  const ItemNames names = labelled({"milk", "bread", "beer", "butter", "brie", "buttermilk"});
  EXPECT_THAT(names.nearest("buter", 3), ElementsAre("butter", "beer", "brie"));  // 1, 2, 3
  EXPECT_THAT(names.nearest("MILK", 1), ElementsAre("milk"));
  EXPECT_THAT(names.nearest("x", 0), IsEmpty());
  EXPECT_EQ(names.nearest("x", 99).size(), 6U);
  EXPECT_THAT(ItemNames::numbers({1, 12, 123}).nearest("13", 2), ElementsAre("1", "12"));
}

TEST(ItemNames, OrdersEquallyNearLabelsByItem) {
  EXPECT_THAT(labelled({"cat", "bat", "rat", "hat"}).nearest("at", 3), ElementsAre("bat", "cat", "hat"));
}

TEST(EditDistance, CountsInsertionsDeletionsAndReplacements) {
  struct Case {
    const char *a, *b;
    std::size_t distance;
  };
  const Case cases[] = {
      {"", "", 0},         {"", "abc", 3},        {"abc", "", 3},     {"kitten", "sitting", 3},
      {"milk", "Milk", 0}, {"bread", "berad", 2}, {"flaw", "lawn", 2}};
  for (const Case& c : cases) EXPECT_EQ(editDistance(c.a, c.b, 99), c.distance) << c.a << ' ' << c.b;
}

TEST(EditDistance, StopsBeyondItsLimit) {
  EXPECT_EQ(editDistance("kitten", "sitting", 2), 3U);
  EXPECT_EQ(editDistance("kitten", "sitting", 3), 3U);
  EXPECT_EQ(editDistance("a", "abcdefgh", 3), 4U);
  EXPECT_EQ(editDistance("a", "b", 0), 1U);
}

// Straight from the definition.
std::size_t slowDistance(std::string_view a, std::string_view b) {
  if (a.empty() || b.empty()) return a.size() + b.size();
  const std::size_t replaced = slowDistance(a.substr(1), b.substr(1)) + (a[0] == b[0] ? 0 : 1);
  return std::min({replaced, slowDistance(a.substr(1), b) + 1, slowDistance(a, b.substr(1)) + 1});
}

TEST(EditDistance, AgreesWithItsDefinitionOnRandomWords) {
  std::mt19937 random(3);
  const auto word = [&random] {
    std::string text(random() % 6, ' ');
    for (char& c : text) c = static_cast<char>('a' + random() % 3);
    return text;
  };
  for (int step = 0; step < 500; ++step) {
    const std::string a = word();
    const std::string b = word();
    const std::size_t limit = random() % 7;
    ASSERT_EQ(editDistance(a, b, limit), std::min(slowDistance(a, b), limit + 1)) << a << ' ' << b;
  }
}

}  // namespace
}  // namespace korassoc::cli
