// What single items follow from given items.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"
#include "tests/support/Hosts.h"
#include "tests/support/RandomCounts.h"
#include "tests/support/TestLattice.h"

namespace {

using oracle::brute::Counts;

constexpr int kMax = std::numeric_limits<int>::max();

// Ten transactions: a 6, b 5, c 4, ab 4, ac 3, bc 2, abc 2 (a = 1, b = 2, c = 3).
const Counts& smallCounts() {
  static const Counts counts = {{{}, 10},    {{1}, 6},    {{2}, 5},    {{3}, 4},
                                {{1, 2}, 4}, {{1, 3}, 3}, {{2, 3}, 2}, {{1, 2, 3}, 2}};
  return counts;
}

std::vector<int> items(const std::vector<ConsequentDescriptor>& consequents) {
  std::vector<int> result;
  for (const ConsequentDescriptor& consequent : consequents) result.push_back(consequent.getItem());
  return result;
}

using Consequents = std::vector<ConsequentDescriptor>;

// All figures of each, to be compared.
std::vector<std::vector<double>> all(const Consequents& consequents) {
  std::vector<std::vector<double>> result;
  for (const ConsequentDescriptor& c : consequents) {
    result.push_back({static_cast<double>(c.getItem()), c.getConfidence(), c.getSupport(), c.getLift()});
  }
  return result;
}

Consequents consequentsOf(TestLattice& lattice, const std::vector<int>& antecedent, int maxItems = -1) {
  Consequents out;
  ItemSet set = itemSet(antecedent);
  EXPECT_TRUE(lattice.dictionary.createConsequents(&set, maxItems, out).IsOK());
  return out;
}

TEST(CreateConsequents, NoAntecedentGivesEveryItemByItsSupport) {
  TestLattice lattice({{{}, 8}, {{9}, 4}, {{2}, 4}, {{5}, 6}, {{1}, 2}});
  Consequents out;
  ASSERT_TRUE(lattice.dictionary.createConsequents(nullptr, -1, out).IsOK());
  EXPECT_EQ(items(out), (std::vector<int>{5, 2, 9, 1}));
  for (const ConsequentDescriptor& consequent : out) {
    EXPECT_EQ(consequent.getLift(), 1.0);
    EXPECT_EQ(consequent.getSupport(), consequent.getConfidence());
    EXPECT_EQ(consequent.getSupport(), lattice.dictionary.getCount(consequent.getItem()) / 8.0);
  }
}

TEST(CreateConsequents, TheBestSubsetOfTheAntecedentSpeaks) {
  TestLattice lattice(smallCounts());
  // Of a and b: a>c 3/6, b>c 2/5, ab>c 2/4. a>c came first; the equal ab>c changes nothing.
  const Consequents out = consequentsOf(lattice, {1, 2});
  ASSERT_EQ(items(out), std::vector<int>{3});
  EXPECT_EQ(out[0].getConfidence(), 0.5);
  EXPECT_EQ(out[0].getSupport(), 0.3);
  EXPECT_DOUBLE_EQ(out[0].getLift(), 0.5 / 4 * 10);
}

TEST(CreateConsequents, AnItemOfTheAntecedentNeverFollows) {
  TestLattice lattice(smallCounts());
  EXPECT_EQ(items(consequentsOf(lattice, {1})), (std::vector<int>{2, 3}));
  EXPECT_EQ(items(consequentsOf(lattice, {1, 2, 3})), std::vector<int>());
  EXPECT_EQ(items(consequentsOf(lattice, {2, 77})), (std::vector<int>{1, 3}));
}

TEST(CreateConsequents, MaxItemsCutsAsAnUnsignedNumber) {
  TestLattice lattice(smallCounts());
  EXPECT_EQ(items(consequentsOf(lattice, {1}, 0)), std::vector<int>());
  EXPECT_EQ(items(consequentsOf(lattice, {1}, 1)), std::vector<int>{2});
  EXPECT_EQ(items(consequentsOf(lattice, {1}, -1)), (std::vector<int>{2, 3}));
  EXPECT_EQ(items(consequentsOf(lattice, {1}, kMax)), (std::vector<int>{2, 3}));
}

TEST(CreateConsequents, AnEmptyAntecedentAndALatticeOfOneLevelAnswerNothing) {
  TestLattice lattice(smallCounts());
  EXPECT_EQ(items(consequentsOf(lattice, {})), std::vector<int>());
  TestLattice flat({{{}, 8}, {{1}, 4}, {{2}, 4}});
  EXPECT_EQ(items(consequentsOf(flat, {1})), std::vector<int>());
}

TEST(CreateConsequents, WithoutItemsInStoreItWarnsAndLeavesTheResultAlone) {
  TestLattice lattice(Counts{{std::vector<int>(), 8}});
  Consequents out(2, ConsequentDescriptor(1, 0, 0, 0));
  ItemSet set(1);
  EXPECT_EQ(shortForm(lattice.dictionary.createConsequents(&set, 1, out)), "W40002");
  EXPECT_EQ(shortForm(lattice.dictionary.createConsequents(nullptr, 1, out)), "W40002");
  EXPECT_EQ(out.size(), 2U);
}

TEST(CreateConsequents, SortsAndCutsWhatTheCallerLeftToo) {
  TestLattice lattice(smallCounts());
  Consequents out = {ConsequentDescriptor(8, 0.1, 0.1, 1), ConsequentDescriptor(7, 0.1, 0.6, 1)};
  ItemSet set(1);
  lattice.dictionary.createConsequents(&set, 3, out);  // b 4/6, c 3/6
  EXPECT_EQ(items(out), (std::vector<int>{2, 7, 3}));
}

TEST(CreateConsequents, ADictionaryWithoutTransactionsCountsOne) {
  TestLattice lattice({{{}, 0}, {{1}, 3}, {{2}, 2}});
  Consequents out;
  ASSERT_TRUE(lattice.dictionary.createConsequents(nullptr, -1, out).IsOK());
  ASSERT_EQ(out.size(), 2U);
  EXPECT_EQ(out[0].getSupport(), 3.0);
}

TEST(CreateConsequents, ABrokenLinkWithinTheAntecedentRaises) {
  TestLattice lattice(smallCounts());
  static_cast<LatticeSetDescriptor*>(lattice.dictionary.getDescriptor(3))->adjacent.Add(7);
  Consequents out;
  ItemSet set = itemSet({3, 7});
  EXPECT_EQ(shortForm(lattice.dictionary.createConsequents(&set, 1, out)), "E40001");
  EXPECT_TRUE(out.empty());
}

TEST(CreateConsequents, ABrokenLinkOutOfTheAntecedentCountsZero) {
  TestLattice lattice(smallCounts());
  static_cast<LatticeSetDescriptor*>(lattice.dictionary.getDescriptor(3))->adjacent.Add(7);
  const Consequents out = consequentsOf(lattice, {3});  // c>a 3/4, c>b 2/4
  ASSERT_EQ(items(out), (std::vector<int>{1, 2, 7}));
  EXPECT_EQ(out[2].getConfidence(), 0.0);
  EXPECT_EQ(out[2].getSupport(), 0.0);
}

// For every item the best of all rules from a subset of the antecedent, by enumeration.
TEST(CreateConsequents, AgreesWithTheRulesOfAllSubsets) {
  Dice dice(5);
  for (int data = 0; data < 150; ++data) {
    const Counts counts = randomCounts(dice, {-3, 0, 2, 5, 11, 1000}, 25, 5, dice.between(1, 3));
    if (counts.size() < 2) continue;
    TestLattice lattice(counts);
    const int highest = lattice.dictionary.getHighestLevel();
    for (int query = 0; query < 10; ++query) {
      std::vector<int> antecedent;
      for (const int item : {-3, 0, 2, 5, 11, 1000, 2000}) {
        if (dice.chance(40)) antecedent.push_back(item);
      }
      std::map<int, double> best;  // by item: confidence
      for (const auto& [set, count] : counts) {
        if (set.empty() || highest < 2) continue;
        if (!std::includes(antecedent.begin(), antecedent.end(), set.begin(), set.end())) continue;
        for (const int item : {-3, 0, 2, 5, 11, 1000}) {
          if (std::binary_search(antecedent.begin(), antecedent.end(), item)) continue;
          std::vector<int> both = set;
          both.insert(std::lower_bound(both.begin(), both.end(), item), item);
          const auto found = counts.find(both);
          if (found == counts.end()) continue;
          double& confidence = best[item];
          confidence = std::max(confidence, static_cast<double>(found->second) / count);
        }
      }
      const Consequents out = consequentsOf(lattice, antecedent);
      std::map<int, double> answered;
      for (const ConsequentDescriptor& consequent : out) {
        answered[consequent.getItem()] = consequent.getConfidence();
        const int count = lattice.dictionary.getCount(consequent.getItem());
        EXPECT_EQ(consequent.getLift(), consequent.getConfidence() / count * counts.at({}));
      }
      ASSERT_EQ(answered, best);
      ASSERT_EQ(answered.size(), out.size()) << "an item twice";
      for (std::size_t wanted = 0; wanted <= out.size(); ++wanted) {
        const Consequents first = consequentsOf(lattice, antecedent, static_cast<int>(wanted));
        ASSERT_EQ(all(first),
                  all(Consequents(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(wanted))));
      }
    }
  }
}

TEST(CreateConsequents, ReadsCountsThatHaveRisenSinceItWasAsked) {
  TestLattice lattice(smallCounts());
  EXPECT_EQ(items(consequentsOf(lattice, {1})), (std::vector<int>{2, 3}));  // ab 4, ac 3
  const int both[] = {1, 3};
  lattice.dictionary.incrementSet(both, 2);
  lattice.dictionary.incrementSet(both, 2);
  const Consequents out = consequentsOf(lattice, {1});
  EXPECT_EQ(items(out), (std::vector<int>{3, 2}));
  EXPECT_EQ(out[0].getConfidence(), 5.0 / 6);
  EXPECT_EQ(out[0].getSupport(), 0.5);
}

struct Query {
  double minConfidence = 0, maxConfidence = 1, minSupport = 0, maxSupport = 1, minLift = 0;
  char sortBy = 'C';
  ItemSet* required = nullptr;
  ItemSet* allowed = nullptr;
  int minLength = 1, maxLength = 10;
  ItemSet* consequents = nullptr;
  int maxItems = -1;
};

KorAssoc::KorStatus ask(TestLattice& lattice, const Query& q, Consequents& out,
                        ProgressListener* listener = nullptr) {
  return lattice.dictionary.createFilteredConsequents(
      q.minConfidence, q.maxConfidence, q.minSupport, q.maxSupport, q.minLift, q.sortBy, q.required,
      q.allowed, q.minLength, q.maxLength, q.consequents, q.maxItems, out, listener);
}

std::string figures(const ConsequentDescriptor& c) {
  return std::to_string(c.getItem()) + " " + std::to_string(c.getConfidence()) + " " +
         std::to_string(c.getSupport());
}

TEST(CreateFilteredConsequents, AnItemCarriesTheFiguresOfItsFirstRule) {
  // a>c 3/6 (lift 1.25), b>c 2/5 with support 0.2, ab>c 2/4; d>c is surer but rarer: 1/1.
  Counts counts = smallCounts();
  counts[{4}] = 1;
  counts[{3, 4}] = 1;
  TestLattice lattice(counts);
  ItemSet onlyC(3);
  Query query;
  query.consequents = &onlyC;
  struct Case {
    char sortBy;
    std::string first;
  };
  for (const Case& c : {Case{'C', "3 1.000000 0.100000"}, Case{'S', "3 0.500000 0.300000"},
                        Case{'L', "3 1.000000 0.100000"}, Case{'X', "3 0.500000 0.300000"}}) {
    query.sortBy = c.sortBy;
    Consequents out;
    ASSERT_TRUE(ask(lattice, query, out).IsOK());
    ASSERT_EQ(out.size(), 1U) << c.sortBy;
    EXPECT_EQ(figures(out[0]), c.first) << c.sortBy;
  }
}

TEST(CreateFilteredConsequents, ItemsComeInTheOrderOfTheirFirstRules) {
  TestLattice lattice(smallCounts());
  Query query;
  query.maxLength = 1;
  // b>a 0.8, c>a 0.75, a>b 0.667, ...
  Consequents out;
  ASSERT_TRUE(ask(lattice, query, out).IsOK());
  EXPECT_EQ(items(out), (std::vector<int>{1, 2, 3}));
  query.sortBy = 'S';  // a>b and b>a have 0.4; b>a is surer
  out.clear();
  ASSERT_TRUE(ask(lattice, query, out).IsOK());
  EXPECT_EQ(items(out), (std::vector<int>{1, 2, 3}));
}

TEST(CreateFilteredConsequents, MaxItemsCountsDistinctItems) {
  TestLattice lattice(smallCounts());
  struct Case {
    int maxItems;
    std::size_t found;
  };
  for (const Case& c :
       {Case{0, 0}, Case{1, 1}, Case{2, 2}, Case{3, 3}, Case{4, 3}, Case{-1, 3}, Case{kMax, 3}}) {
    Query query;
    query.maxItems = c.maxItems;
    Consequents out;
    ASSERT_TRUE(ask(lattice, query, out).IsOK());
    EXPECT_EQ(out.size(), c.found) << c.maxItems;
  }
}

TEST(CreateFilteredConsequents, AppendsToWhatTheCallerLeft) {
  TestLattice lattice(smallCounts());
  Consequents out = {ConsequentDescriptor(1, 0, 0, 0)};
  ASSERT_TRUE(ask(lattice, Query(), out).IsOK());
  EXPECT_EQ(items(out), (std::vector<int>{1, 1, 2, 3}));
}

TEST(CreateFilteredConsequents, FailuresOfTheRuleCreationAreItsOwn) {
  TestLattice lattice(smallCounts());
  Consequents out = {ConsequentDescriptor(9, 0, 0, 0)};
  lattice.dictionary.setRestartFailed();
  EXPECT_EQ(shortForm(ask(lattice, Query(), out)), "E1");
  EXPECT_EQ(items(out), std::vector<int>{9});
  TestLattice empty(Counts{{std::vector<int>(), 8}});
  EXPECT_EQ(shortForm(ask(empty, Query(), out)), "W40002");
  EXPECT_EQ(items(out), std::vector<int>{9});
}

TEST(CreateFilteredConsequents, ReportsToTheListener) {
  TestLattice lattice(smallCounts());
  std::vector<int> totals;
  TestListener listener([&](ProgressReport& report) { totals.push_back(report.GetIntValue("setTotal")); });
  Consequents out;
  ASSERT_TRUE(ask(lattice, Query(), out, &listener).IsOK());
  EXPECT_EQ(totals, (std::vector<int>{4, 4}));  // the four sets of two items and more
}

}  // namespace
