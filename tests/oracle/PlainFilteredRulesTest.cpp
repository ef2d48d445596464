#include "tests/oracle/PlainFilteredRules.h"

#include <gtest/gtest.h>

#include "tests/oracle/PlainSearch.h"
#include "tests/oracle/SmallLattice.h"

namespace oracle {
namespace {

// A filter that lets every rule of the small lattice through, in the order of emission.
PlainFilter open() {
  PlainFilter filter;
  filter.sortBy = 'X';
  return filter;
}

Names filtered(const PlainFilter& filter) {
  PlainDictionary dictionary = smallLattice();
  return names(createFilteredRules(dictionary, PlainSettings{}, filter));
}

TEST(PlainFilteredRules, EmitsByWholeSetThenByAntecedentTable) {
  // Whole sets in their order: a, b, c, ab, ac, bc, abc; antecedents by hash code.
  EXPECT_EQ(filtered(open()), Names({">a", ">b", ">c", ">ab", "a>b", "b>a", ">ac", "a>c", "c>a", ">bc", "b>c",
                                     "c>b", ">abc", "a>bc", "b>ac", "ab>c", "c>ab", "ac>b", "bc>a"}));
}

TEST(PlainFilteredRules, AppliesEachBound) {
  PlainFilter filter = open();
  filter.minConfidence = 2.0 / 3;
  EXPECT_EQ(filtered(filter), Names({"a>b", "b>a", "c>a", "ac>b", "bc>a"}));
  filter.maxConfidence = 0.8;
  EXPECT_EQ(filtered(filter), Names({"a>b", "b>a", "c>a", "ac>b"}));
  filter.maxSupport = 0.3;
  EXPECT_EQ(filtered(filter), Names({"c>a", "ac>b"}));
  filter.minSupport = 0.3;
  EXPECT_EQ(filtered(filter), Names({"c>a"}));
  filter.minLift = 1.26;  // c>a: 0.75 / 6 * 10 = 1.25
  EXPECT_EQ(filtered(filter), Names());
}

TEST(PlainFilteredRules, KeepsToTheItemsOfEachSide) {
  PlainFilter filter = open();
  filter.antecedentRequired = Items({3});
  EXPECT_EQ(filtered(filter), Names({"c>a", "c>b", "c>ab", "ac>b", "bc>a"}));
  filter.consequentRequired = Items({1});
  EXPECT_EQ(filtered(filter), Names({"c>a", "c>ab", "bc>a"}));
  filter.consequentAllowed = Items({1});
  EXPECT_EQ(filtered(filter), Names({"c>a", "bc>a"}));
  filter.antecedentAllowed = Items({1, 3});
  EXPECT_EQ(filtered(filter), Names({"c>a"}));
}

TEST(PlainFilteredRules, KeepsToTheLengthsOfEachSide) {
  PlainFilter filter = open();
  filter.minAntecedentLength = 1;
  filter.maxAntecedentLength = 1;
  filter.minConsequentLength = 2;
  EXPECT_EQ(filtered(filter), Names({"a>bc", "b>ac", "c>ab"}));
}

TEST(PlainFilteredRules, SortsAndCuts) {
  PlainFilter filter = open();
  filter.minConfidence = 0.6;
  filter.sortBy = 'S';
  EXPECT_EQ(filtered(filter), Names({">a", "b>a", "a>b", "c>a", "bc>a", "ac>b"}));
  filter.sortBy = 'L';  // 1.667; 1.333 three times, by confidence, then by antecedent; 1.25; 1
  EXPECT_EQ(filtered(filter).front(), "bc>a");
  EXPECT_EQ(filtered(filter).back(), ">a");
  filter.maxRules = 2;
  EXPECT_EQ(filtered(filter).size(), 2U);
  filter.maxRules = 0;
  EXPECT_EQ(filtered(filter), Names());
}

TEST(PlainSearch, WalksUpWithinBounds) {
  PlainDictionary dictionary = smallLattice();
  EXPECT_EQ(findItemSets2(dictionary, {1}, {2, 5, 0, 10}), ItemsSet({{1, 2}, {1, 3}, {1, 2, 3}}));
  EXPECT_EQ(findItemSets2(dictionary, {1}, {2, 10, 0, 1}), ItemsSet({{1}}));
  EXPECT_EQ(findItemSets2(dictionary, {1}, {7, 10, 0, 10}), ItemsSet());
  EXPECT_EQ(findItemSets3(dictionary, {1}, {2}, {2, 10, 0, 10}), ItemsSet({{1}, {1, 2}}));
  EXPECT_EQ(findItemSetsWithin(dictionary, {3}, {2, 10, 2, 2}), ItemsSet({{1, 3}, {2, 3}}));
}

TEST(PlainSearch, FindsTheSupportOfTheKthSet) {
  PlainDictionary dictionary = smallLattice();
  EXPECT_EQ(findSupport(dictionary, {1}, 1), 0.6);
  EXPECT_EQ(findSupport(dictionary, {1}, 3), 0.3);
  EXPECT_EQ(findSupport(dictionary, {1}, 5), 0.2);  // abc was reached from ab and from ac
  EXPECT_EQ(findSupport(dictionary, {1}, 6), -1.0);
  EXPECT_EQ(findSupport(dictionary, {9}, 1), -1.0);
}

TEST(PlainConsequents, GivesEachItemItsBestConfidence) {
  PlainDictionary dictionary = smallLattice();
  const std::vector<PlainConsequent> all = createConsequents(dictionary, std::nullopt, -1);
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all[0].item, 1);
  EXPECT_EQ(all[0].confidence, 0.6);
  EXPECT_EQ(all[0].lift, 1.0);
  // From b and c: a follows b with 4/5, c with 3/4 and bc with 2/2.
  const std::vector<PlainConsequent> a = createConsequents(dictionary, Items({2, 3}), -1);
  ASSERT_EQ(a.size(), 1U);
  EXPECT_EQ(a[0].item, 1);
  EXPECT_EQ(a[0].confidence, 1.0);
  EXPECT_EQ(a[0].support, 0.2);
  EXPECT_DOUBLE_EQ(a[0].lift, 10.0 / 6);
}

TEST(PlainConsequents, TakesTheFirstRuleOfEachItem) {
  PlainDictionary dictionary = smallLattice();
  PlainFilter filter;
  filter.minAntecedentLength = 1;
  const std::vector<PlainConsequent> found =
      createFilteredConsequents(dictionary, PlainSettings{}, filter, -1);
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(found[0].item, 1);  // bc>a 1, a>b 0.667, then a>c 0.5 before ab>c 0.5 by its support
  EXPECT_EQ(found[1].item, 2);
  EXPECT_EQ(found[1].support, 0.4);
  EXPECT_EQ(found[2].item, 3);
  EXPECT_EQ(found[2].support, 0.3);
  EXPECT_EQ(createFilteredConsequents(dictionary, PlainSettings{}, filter, 1).size(), 1U);
}

}  // namespace
}  // namespace oracle
