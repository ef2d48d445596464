// The itemset's record in an XML state, line by line and damaged in every way.

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <vector>

#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/itemsets/OrderedArray.h"
#include "tests/support/Dice.h"
#include "tests/support/FailingBuffer.h"
#include "tests/support/InputText.h"
#include "tests/support/StreamCapture.h"

namespace {

const std::string kFailure = "Failure reading ItemSet!\n";

ItemSet setOf(const std::vector<int>& items) { return ItemSet(items.data(), static_cast<int>(items.size())); }

std::vector<int> itemsOf(const ItemSet& set) {
  return set.length() == 0 ? std::vector<int>()
                           : std::vector<int>(set.getTheArray(), set.getTheArray() + set.length());
}

const std::string kThreeEight =
    "\n\t<Obj name=\"ItemSet\">"
    "\n\t\t<Int value=\"2\"/>"
    "\n\t\t<Int value=\"3\"/>"
    "\n\t\t<Int value=\"8\"/>"
    "\n\t</Obj>";

TEST(ItemSetXML, IsAnObjectWithTheLengthAndTheItems) {
  std::ostringstream out;
  EXPECT_EQ(setOf({3, 8}).writeObjectXML(out, 1), 5U);
  EXPECT_EQ(out.str(), kThreeEight);
}

TEST(ItemSetXML, OfAnEmptySetHasThreeLines) {
  std::ostringstream out;
  EXPECT_EQ(ItemSet().writeObjectXML(out, 4), 3U);
  EXPECT_EQ(out.str(),
            "\n\t\t\t\t<Obj name=\"ItemSet\">"
            "\n\t\t\t\t\t<Int value=\"0\"/>"
            "\n\t\t\t\t</Obj>");
}

TEST(ItemSetXML, IsReadBackWithHashCodeAndWithoutLinks) {
  InputText in(kThreeEight + "\nnext");
  ItemSet other;
  ItemSet set(5);
  set.setNext(&other);
  set.setPrev(&other);
  EXPECT_EQ(set.readObjectXML(in.stream()), 5U);
  EXPECT_EQ(itemsOf(set), (std::vector<int>{3, 8}));
  EXPECT_EQ(set.hashcode(), (7 * 3) ^ (11 * 8));
  EXPECT_EQ(set.getNext(), nullptr);
  EXPECT_EQ(set.getPrev(), nullptr);
  std::string next;
  std::getline(in.stream(), next);
  EXPECT_EQ(next, "next");
}

TEST(ItemSetXML, KeepsTheItemsWhenTheLengthIsNegativeAndExpectsTheEndAtOnce) {
  InputText in("<Obj name=\"ItemSet\">\n<Int value=\"-1\"/>\n</Obj>\n");
  ItemSet set = setOf({1, 2});
  EXPECT_EQ(set.readObjectXML(in.stream()), 3U);
  EXPECT_EQ(itemsOf(set), (std::vector<int>{1, 2}));

  InputText longer("<Obj name=\"ItemSet\">\n<Int value=\"-1\"/>\n<Int value=\"3\"/>\n</Obj>\n");
  const StreamCapture out(std::cout);
  EXPECT_EQ(set.readObjectXML(longer.stream()), 0U);
  EXPECT_EQ(out.text(), kFailure);
}

TEST(ItemSetXML, RefusesWhatIsNotItsRecord) {
  const char* const texts[] = {
      "",
      "<Obj name=\"CeilArray\">\n<Int value=\"0\"/>\n</Obj>\n",            // another object
      "<Obj name=\"ItemSet\">\n<Double value=\"0\"/>\n</Obj>\n",           // another element
      "<Obj name=\"ItemSet\">\n<Int value=\"1\"/>\n</Obj>\n",              // an item is missing
      "<Obj name=\"ItemSet\">\n<Int value=\"0\"/>\n<Int value=\"1\"/>\n",  // an item too many
      "<Obj name=\"ItemSet\">\n<Int value=\"1\"/>\n<Int value=\"1\"/>\n",  // no end
      "<Obj name=\"ItemSet\">\n<Int value=\"2147483647\"/>\n</Obj>\n",     // a length beyond the end
      "<Obj name=\"ItemSet\">\n<Int value=\"1000000\"/>\n<Int value=\"1\"/>\n",
  };
  for (const char* text : texts) {
    InputText in(text);
    const StreamCapture out(std::cout);
    ItemSet set(5);
    EXPECT_EQ(set.readObjectXML(in.stream()), 0U) << text;
    EXPECT_EQ(out.text(), kFailure) << text;
    EXPECT_EQ(itemsOf(set), std::vector<int>{5}) << text;
  }
}

TEST(ItemSetXML, RefusesToBeCutShortAnywhereButInsideItsLastLine) {
  const std::size_t complete = kThreeEight.size() - 1;  // "</Obj" ends the object as well as "</Obj>" does
  for (std::size_t size = 0; size < complete; ++size) {
    InputText in(kThreeEight.substr(0, size));
    const StreamCapture out(std::cout);
    EXPECT_EQ(ItemSet().readObjectXML(in.stream()), 0U) << size;
    EXPECT_EQ(out.text(), kFailure) << size;
  }
  InputText in(kThreeEight.substr(0, complete));
  EXPECT_EQ(ItemSet().readObjectXML(in.stream()), 5U);
}

TEST(ItemSetXML, GivesAFailedStreamNoFurtherItems) {
  for (std::size_t room = 0; room <= kThreeEight.size(); ++room) {
    FailingBuffer buffer(room);
    std::ostream out(&buffer);
    EXPECT_EQ(setOf({3, 8}).writeObjectXML(out, 1), 5U);
    EXPECT_EQ(buffer.text(), kThreeEight.substr(0, room));
    EXPECT_EQ(out.good(), room == kThreeEight.size());
  }
}

TEST(ItemSetXML, SurvivesTheRoundTripForRandomSets) {
  Dice dice(21);
  std::ostringstream out;
  std::vector<ItemSet> sets;
  for (int i = 0; i < 100; ++i) {
    OrderedArray items(4, 4);
    for (int n = dice.below(70); n > 0; --n) items.Add(dice.anyInt());
    sets.emplace_back(items);
    EXPECT_EQ(sets.back().writeObjectXML(out, i % 5), static_cast<unsigned>(items.count) + 3U);
  }
  InputText in(out.str().substr(1));
  for (const ItemSet& expected : sets) {
    ItemSet set;
    ASSERT_EQ(set.readObjectXML(in.stream()), static_cast<unsigned>(expected.length()) + 3U);
    EXPECT_TRUE(set == expected);
  }
}

}  // namespace
