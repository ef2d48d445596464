#include "korassoc/mining/Labels.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "tests/mining/ExpectError.h"
#include "tests/support/Dice.h"

namespace korassoc {
namespace {

TEST(Labels, CallItemsByTheirDigitsWhenThereAreNone) {
  const Labels labels;
  EXPECT_TRUE(labels.areNumbers());
  EXPECT_EQ(labels.size(), 0U);
  EXPECT_EQ(labels.text(17), "17");
  EXPECT_EQ(labels.text(-3), "-3");
  EXPECT_EQ(labels.find("17"), 17);
  EXPECT_EQ(labels.find("-3"), -3);
  EXPECT_EQ(labels.find("2147483647"), 2147483647);
  for (const char* none : {"", "017", "-0", "+1", "1 ", "2147483648", "bread"}) {
    EXPECT_EQ(labels.find(none), std::nullopt) << none;
  }
  EXPECT_TRUE(labels.offsets().empty());
}

TEST(Labels, OfSomeNumbersKnowNoOthers) {
  const Labels labels = Labels::numbers({5, 3, 5});
  EXPECT_TRUE(labels.areNumbers());
  EXPECT_EQ(labels.size(), 2U);
  EXPECT_EQ(labels.find("3"), 3);
  EXPECT_EQ(labels.find("4"), std::nullopt);
  EXPECT_EQ(labels.text(4), "4");
}

TEST(Labels, CallItemsByTheirLabels) {
  const Labels labels({"milk", "", "bread"});
  EXPECT_FALSE(labels.areNumbers());
  EXPECT_EQ(labels.size(), 3U);
  EXPECT_EQ(labels.text(0), "milk");
  EXPECT_EQ(labels.text(1), "");
  EXPECT_EQ(labels.find("bread"), 2);
  EXPECT_EQ(labels.find("2"), std::nullopt);
  EXPECT_EQ(labels.describe(std::vector<Item>{2, 0}), "{bread, milk}");
  EXPECT_EQ(labels.describe({}), "{}");
  EXPECT_ERROR(labels.text(3), Error::Kind::kInput, "item 3 has no label");
  EXPECT_ERROR(labels.text(-1), Error::Kind::kInput, "item -1 has no label");
}

TEST(Labels, RefuseALabelForTwoItems) {
  EXPECT_ERROR(Labels({"milk", "bread", "milk"}), Error::Kind::kInput, "\"milk\"");
}

TEST(Labels, LieInMemoryAsAColumnOfStrings) {
  const Labels labels({"milk", "", "bread"});
  EXPECT_EQ(labels.bytes(), "milkbread");
  EXPECT_EQ(std::vector<std::int64_t>(labels.offsets().begin(), labels.offsets().end()),
            (std::vector<std::int64_t>{0, 4, 4, 9}));
}

TEST(Labels, AreEqualWhenTheyCallEveryItemTheSame) {
  EXPECT_EQ(Labels({"a", "bc"}), Labels({"a", "bc"}));
  EXPECT_FALSE(Labels({"a", "bc"}) == Labels({"ab", "c"}));
  EXPECT_FALSE(Labels({"0", "1"}) == Labels());
  EXPECT_EQ(Labels(), Labels::numbers({1}));
}

TEST(LabelBuilder, NumbersLabelsInOrderOfArrivalAndThenOfTheirBytes) {
  LabelBuilder builder;
  EXPECT_EQ(builder.intern("milk"), 0);
  EXPECT_EQ(builder.intern("bread"), 1);
  EXPECT_EQ(builder.intern("milk"), 0);
  EXPECT_EQ(builder.intern("Milk"), 2);
  EXPECT_EQ(builder.size(), 3U);
  EXPECT_EQ(builder.find("bread"), 1);
  EXPECT_EQ(builder.find("butter"), std::nullopt);
  EXPECT_EQ(builder.sort(), (std::vector<Item>{2, 1, 0}));
  EXPECT_EQ(builder.find("Milk"), 0);
  const Labels labels = builder.take();
  EXPECT_EQ(labels.text(0), "Milk");
  EXPECT_EQ(labels.text(1), "bread");
  EXPECT_EQ(labels.text(2), "milk");
  EXPECT_EQ(builder.size(), 0U);
  EXPECT_EQ(builder.intern("new"), 0);
}

TEST(LabelBuilder, AgreesWithStdMapOnRandomLabels) {
  Dice dice(14);
  LabelBuilder builder;
  std::map<std::string, Item> expected;
  for (int step = 0; step < 20000; ++step) {
    std::string label;
    for (int length = dice.below(12); length > 0; --length) label += static_cast<char>(dice.between(97, 99));
    const auto [place, isNew] = expected.try_emplace(label, static_cast<Item>(expected.size()));
    ASSERT_EQ(builder.intern(label), place->second) << "step " << step << ": " << label;
  }
  builder.sort();
  const Labels labels = builder.take();
  ASSERT_EQ(labels.size(), expected.size());
  Item next = 0;  // std::map is in the order of the bytes
  for (const auto& [label, arrival] : expected) {
    ASSERT_EQ(labels.text(next), label);
    ASSERT_EQ(labels.find(label), next);
    ++next;
  }
}

}  // namespace
}  // namespace korassoc
