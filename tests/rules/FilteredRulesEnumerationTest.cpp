// Filtered rules against the enumeration of all splits of all itemsets, and under calls that make no sense.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"
#include "tests/oracle/Rounding.h"
#include "tests/support/RandomCounts.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TestLattice.h"

namespace {

using oracle::brute::Counts;
using oracle::brute::Set;

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

struct Filter {
  double minConfidence = 0, maxConfidence = 1, minSupport = 0, maxSupport = 1, minLift = 0;
  char sortBy = 'C';
  std::optional<Set> antecedentRequired, antecedentAllowed;
  int minAntecedentLength = 0, maxAntecedentLength = 10;
  std::optional<Set> consequentRequired, consequentAllowed;
  int minConsequentLength = 1, maxConsequentLength = 10;
  int maxRules = -1;
  bool minimal = false;
};

// An optional set in the form of an argument.
class Argument {
 public:
  explicit Argument(const std::optional<Set>& items) {
    if (items) set_ = itemSet(*items);
    isGiven_ = items.has_value();
  }
  ItemSet* get() { return isGiven_ ? &set_ : nullptr; }

 private:
  ItemSet set_;
  bool isGiven_ = false;
};

KorAssoc::KorStatus ask(SetDictionary& dictionary, const Filter& f, std::vector<AssociationRule>& out) {
  Argument antecedentRequired(f.antecedentRequired), antecedentAllowed(f.antecedentAllowed);
  Argument consequentRequired(f.consequentRequired), consequentAllowed(f.consequentAllowed);
  return dictionary.createFilteredRules(
      f.minConfidence, f.maxConfidence, f.minSupport, f.maxSupport, f.minLift, f.sortBy,
      antecedentRequired.get(), antecedentAllowed.get(), f.minAntecedentLength, f.maxAntecedentLength,
      consequentRequired.get(), consequentAllowed.get(), f.minConsequentLength, f.maxConsequentLength,
      f.maxRules, f.minimal, out, nullptr);
}

struct Rule {
  Set antecedent, consequent;
  double support, confidence, lift;
  bool operator==(const Rule& o) const {
    return std::tie(antecedent, consequent, support, confidence, lift) ==
           std::tie(o.antecedent, o.consequent, o.support, o.confidence, o.lift);
  }
};

std::string braces(const Set& set) {
  std::string text = "{";
  for (const int item : set) text += " " + std::to_string(item);
  return text + " }";
}

void PrintTo(const Rule& r, std::ostream* out) {
  *out << braces(r.antecedent) << " > " << braces(r.consequent) << " " << r.support << " " << r.confidence
       << " " << r.lift;
}

bool includes(const Set& set, const Set& subset) {
  return std::includes(set.begin(), set.end(), subset.begin(), subset.end());
}

bool isWithin(const Set& set, const std::optional<Set>& allowed) {
  return !allowed || includes(*allowed, set);
}

Set minus(const Set& a, const Set& b) {
  Set result;
  std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(result));
  return result;
}

Set plus(const Set& a, const Set& b) {
  Set result;
  std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(result));
  return result;
}

std::vector<Set> subsets(const Set& set) {
  std::vector<Set> result;
  for (std::uint32_t mask = 0; mask < 1U << set.size(); ++mask)
    result.push_back(oracle::brute::pick(set, mask));
  return result;
}

// Says of every itemset and every split of it whether it belongs to the answer; searches nothing.
class Enumeration {
 public:
  Enumeration(const Counts& counts, const Filter& filter) : counts_(counts), f_(filter), n_(counts.at({})) {}

  std::vector<Rule> rules() const {
    std::vector<Rule> result;
    for (const auto& [whole, count] : counts_) {
      if (!isCandidate(whole)) continue;
      for (const Set& antecedent : subsets(whole)) {
        if (!isAntecedent(whole, antecedent)) continue;
        if (f_.minimal && (!isMinimal(whole, antecedent) || reachesMore(whole, antecedent))) continue;
        addIfWanted(whole, antecedent, result);
      }
    }
    return result;
  }

 private:
  int count(const Set& set) const { return counts_.at(set); }
  int upper(const Set& whole) const {
    return f_.minConfidence <= 0 ? kMax : oracle::roundedDown(count(whole) / f_.minConfidence);
  }
  int lowest(const Set& whole) const {
    return std::max(static_cast<int>(whole.size()) - f_.maxConsequentLength, f_.minAntecedentLength);
  }

  bool isCandidate(const Set& whole) const {
    const Set required = plus(f_.antecedentRequired.value_or(Set()), f_.consequentRequired.value_or(Set()));
    const double most = n_ * f_.maxSupport;
    const int nearest = static_cast<int>(most + 0.5);
    const int maxCount =
        oracle::almostEqual(n_ * f_.minSupport, nearest, 100.0) ? nearest : static_cast<int>(most);
    if (count(whole) < oracle::roundedDown(n_ * f_.minSupport) || count(whole) > maxCount) return false;
    const auto length = static_cast<int>(whole.size());
    const int longest = f_.maxAntecedentLength + f_.maxConsequentLength;
    if (length < f_.minAntecedentLength + f_.minConsequentLength) return false;
    const bool oneAllowed = f_.antecedentAllowed.has_value() != f_.consequentAllowed.has_value();
    if (required.empty() && oneAllowed) {
      const Set& allowed = f_.antecedentAllowed ? *f_.antecedentAllowed : *f_.consequentAllowed;
      return (length == 1 || length <= longest) && minus(whole, allowed).size() < whole.size();
    }
    if (length > longest || !includes(whole, required)) return false;
    if (!f_.antecedentAllowed || !f_.consequentAllowed) return true;
    return includes(plus(*f_.antecedentAllowed, *f_.consequentAllowed), minus(whole, required));
  }

  Set largestAntecedent(const Set& whole) const {
    Set result = minus(whole, f_.consequentRequired.value_or(Set()));
    if (f_.antecedentAllowed) result = minus(result, minus(result, *f_.antecedentAllowed));
    return result;
  }

  bool mayLeave(int item) const {
    if (f_.antecedentRequired && includes(*f_.antecedentRequired, {item})) return false;
    return !f_.consequentAllowed || includes(*f_.consequentAllowed, {item});
  }

  // Whether the search for the antecedents of whole meets this one.
  bool isAntecedent(const Set& whole, const Set& antecedent) const {
    const Set largest = largestAntecedent(whole);
    const auto length = static_cast<int>(antecedent.size());
    if (!includes(largest, antecedent)) return false;
    if (largest != whole) {
      if (count(largest) > upper(whole) || static_cast<int>(largest.size()) < lowest(whole)) return false;
      if (!isWithin(minus(whole, largest), f_.consequentAllowed)) return false;
    }
    if (antecedent == largest) return true;
    const Set left = minus(largest, antecedent);
    return std::all_of(left.begin(), left.end(), [this](int item) { return mayLeave(item); }) &&
           count(antecedent) <= upper(whole) && length >= lowest(whole);
  }

  bool isMinimal(const Set& whole, const Set& antecedent) const {
    if (static_cast<int>(antecedent.size()) <= lowest(whole)) return true;
    return std::none_of(antecedent.begin(), antecedent.end(), [&](int item) {
      return mayLeave(item) && count(minus(antecedent, {item})) <= upper(whole);
    });
  }

  bool isKept(const Set& whole, const Set& antecedent) const {
    const int highest =
        std::min(static_cast<int>(whole.size()) - f_.minConsequentLength, f_.maxAntecedentLength);
    return count(antecedent) >= count(whole) / f_.maxConfidence &&
           static_cast<int>(antecedent.size()) <= highest;
  }

  // Whether the same antecedent serves a candidate one item larger.
  bool reachesMore(const Set& whole, const Set& antecedent) const {
    return std::any_of(counts_.begin(), counts_.end(), [&](const auto& other) {
      const Set& larger = other.first;
      return larger.size() == whole.size() + 1 && includes(larger, whole) && isCandidate(larger) &&
             isAntecedent(larger, antecedent) && isMinimal(larger, antecedent) && isKept(larger, antecedent);
    });
  }

  void addIfWanted(const Set& whole, const Set& antecedent, std::vector<Rule>& result) const {
    const Set consequent = minus(whole, antecedent);
    const auto antecedentLength = static_cast<int>(antecedent.size());
    const auto consequentLength = static_cast<int>(consequent.size());
    if (consequent.empty() || !isKept(whole, antecedent)) return;
    if (antecedentLength < f_.minAntecedentLength || antecedentLength > f_.maxAntecedentLength) return;
    if (consequentLength < f_.minConsequentLength || consequentLength > f_.maxConsequentLength) return;
    if (!includes(antecedent, f_.antecedentRequired.value_or(Set()))) return;
    if (!includes(consequent, f_.consequentRequired.value_or(Set()))) return;
    if (!isWithin(antecedent, f_.antecedentAllowed) || !isWithin(consequent, f_.consequentAllowed)) return;
    const double support = static_cast<double>(count(whole)) / n_;
    const double confidence = static_cast<double>(count(whole)) / count(antecedent);
    const double lift = confidence / count(consequent) * n_;
    if (support < f_.minSupport || support > f_.maxSupport || lift < f_.minLift) return;
    if (confidence < f_.minConfidence || confidence > f_.maxConfidence) return;
    result.push_back({antecedent, consequent, support, confidence, lift});
  }

  const Counts& counts_;
  const Filter& f_;
  int n_;
};

bool setBefore(const Set& a, const Set& b) { return a.size() != b.size() ? a.size() < b.size() : a < b; }

void sort(std::vector<Rule>& rules, char sortBy) {
  std::sort(rules.begin(), rules.end(), [sortBy](const Rule& a, const Rule& b) {
    const auto figures = [sortBy](const Rule& r) {
      if (sortBy == 'S') return std::pair(r.support, r.confidence);
      if (sortBy == 'L') return std::pair(r.lift, r.confidence);
      return std::pair(r.confidence, r.support);
    };
    if (figures(a) != figures(b)) return figures(a) > figures(b);
    if (a.antecedent != b.antecedent) return setBefore(a.antecedent, b.antecedent);
    return setBefore(a.consequent, b.consequent);
  });
}

std::vector<Rule> asked(SetDictionary& dictionary, const Filter& filter) {
  std::vector<AssociationRule> out;
  EXPECT_TRUE(ask(dictionary, filter, out).IsOK());
  std::vector<Rule> rules;
  for (const AssociationRule& r : out) {
    rules.push_back({itemVector(r.getAntecedent()), itemVector(r.getConsequent()), r.getSupport(),
                     r.getConfidence(), r.getLift()});
  }
  return rules;
}

const std::vector<int>& allItems() {
  static const std::vector<int> items = {-3, 0, 2, 5, 11, 1000};
  return items;
}

std::optional<Set> someItems(Dice& dice, int given, int chance) {
  if (!dice.chance(given)) return std::nullopt;
  Set items;
  for (const int item : allItems()) {
    if (dice.chance(chance)) items.push_back(item);
  }
  return items;
}

// Bounds mostly meet values that occur, exactly.
Filter randomFilter(Dice& dice, int n) {
  Filter f;
  const auto fraction = [&] {
    return dice.chance(70) ? static_cast<double>(dice.between(0, n)) / dice.between(1, n) : dice.fraction();
  };
  if (dice.chance(80)) f.minConfidence = fraction();
  if (dice.chance(30)) f.maxConfidence = fraction();
  if (dice.chance(60)) f.minSupport = static_cast<double>(dice.between(0, n / 2 + 1)) / n;
  if (dice.chance(30))
    f.maxSupport = dice.chance(20) ? f.minSupport : static_cast<double>(dice.between(0, n)) / n;
  if (dice.chance(20)) f.minLift = 2 * dice.fraction();
  f.sortBy = "CSLX"[dice.below(4)];
  f.antecedentRequired = someItems(dice, 30, 20);
  f.antecedentAllowed = someItems(dice, 30, 70);
  f.consequentRequired = someItems(dice, 30, 20);
  f.consequentAllowed = someItems(dice, 30, 70);
  f.minAntecedentLength = dice.between(-1, 2);
  f.maxAntecedentLength = dice.between(0, 6);
  f.minConsequentLength = dice.between(-1, 2);
  f.maxConsequentLength = dice.between(0, 6);
  if (dice.chance(30)) f.maxRules = dice.between(-2, 5);
  f.minimal = dice.chance(30);
  return f;
}

class FilteredRules : public testing::TestWithParam<int> {};

TEST_P(FilteredRules, AreTheSplitsThatFulfilEveryCondition) {
  Dice dice(static_cast<std::uint64_t>(GetParam()));
  std::size_t rules = 0;
  for (int data = 0; data < 30; ++data) {
    const Counts counts = randomCounts(dice, allItems(), 25, 5, dice.between(1, 2));
    if (counts.size() < 2) continue;
    TestLattice lattice(counts);
    for (int query = 0; query < 40; ++query) {
      Filter filter = randomFilter(dice, counts.at({}));
      std::vector<Rule> expected = Enumeration(counts, filter).rules();
      rules += expected.size();
      std::vector<Rule> found = asked(lattice.dictionary, filter);
      if (filter.sortBy == 'X') {
        if (filter.maxRules >= 0) continue;  // which ones are left depends on the order of emission
        sort(found, 'X');
      }
      sort(expected, filter.sortBy);
      if (filter.maxRules >= 0 && expected.size() > static_cast<std::size_t>(filter.maxRules)) {
        expected.resize(static_cast<std::size_t>(filter.maxRules));
      }
      ASSERT_EQ(found, expected) << "seed " << GetParam() << ", data " << data << ", query " << query;
    }
  }
  EXPECT_GT(rules, 1500U);  // the filters let something through
}

using Figures = std::tuple<int, double, double, double>;  // item, support, confidence, lift

// Of the sorted rules the first one of each item, as many as are wanted; a negative number wants all.
std::vector<Figures> firstOfEachItem(const std::vector<Rule>& sorted, int wanted) {
  std::vector<Figures> result;
  for (const Rule& rule : sorted) {
    if (wanted >= 0 && result.size() >= static_cast<std::size_t>(wanted)) break;
    const int item = rule.consequent.at(0);
    if (std::none_of(result.begin(), result.end(),
                     [&](const Figures& f) { return std::get<0>(f) == item; })) {
      result.emplace_back(item, rule.support, rule.confidence, rule.lift);
    }
  }
  return result;
}

TEST_P(FilteredRules, WithOneItemGiveTheFilteredConsequents) {
  Dice dice(static_cast<std::uint64_t>(GetParam()) + 1000);
  std::size_t items = 0;
  for (int data = 0; data < 30; ++data) {
    const Counts counts = randomCounts(dice, allItems(), 25, 5, dice.between(1, 2));
    if (counts.size() < 2) continue;
    TestLattice lattice(counts);
    for (int query = 0; query < 30; ++query) {
      Filter f = randomFilter(dice, counts.at({}));
      f.sortBy = "CSL"[dice.below(3)];
      f.consequentRequired.reset();
      f.minConsequentLength = f.maxConsequentLength = 1;
      f.minimal = false;
      std::vector<Rule> rules = Enumeration(counts, f).rules();
      sort(rules, f.sortBy);
      const std::vector<Figures> expected = firstOfEachItem(rules, f.maxRules);
      Argument required(f.antecedentRequired), allowed(f.antecedentAllowed), consequents(f.consequentAllowed);
      std::vector<ConsequentDescriptor> out;
      ASSERT_TRUE(lattice.dictionary
                      .createFilteredConsequents(f.minConfidence, f.maxConfidence, f.minSupport, f.maxSupport,
                                                 f.minLift, f.sortBy, required.get(), allowed.get(),
                                                 f.minAntecedentLength, f.maxAntecedentLength,
                                                 consequents.get(), f.maxRules, out, nullptr)
                      .IsOK());
      std::vector<Figures> found;
      for (const ConsequentDescriptor& c : out) {
        found.emplace_back(c.getItem(), c.getSupport(), c.getConfidence(), c.getLift());
      }
      ASSERT_EQ(found, expected) << "seed " << GetParam() << ", data " << data << ", query " << query;
      items += found.size();
    }
  }
  EXPECT_GT(items, 300U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, FilteredRules, testing::Range(0, 4));

// A figure out of everything that a double can be.
double anyFigure(Dice& dice) {
  const double figures[] = {0,     -0.0,
                            0.5,   1,
                            -1,    1e-320,
                            1e300, -1e300,
                            2e9,   std::numeric_limits<double>::infinity(),
                            0.1,   -std::numeric_limits<double>::infinity(),
                            0.9,   std::numeric_limits<double>::quiet_NaN()};
  return figures[dice.below(14)];
}

int anyNumber(Dice& dice) {
  const int numbers[] = {kMin, kMin + 1, -1, 0, 1, 2, 3, 10, kMax - 1, kMax};
  return numbers[dice.below(10)];
}

TEST(HostileRuleQueries, NeverAnswerWhatWasNotAskedFor) {
  Dice dice(99);
  const Counts counts = randomCounts(dice, allItems(), 25, 5, 1);
  TestLattice lattice(counts);
  for (int query = 0; query < 3000; ++query) {
    Filter f;
    f.minConfidence = anyFigure(dice);
    f.maxConfidence = anyFigure(dice);
    f.minSupport = anyFigure(dice);
    f.maxSupport = anyFigure(dice);
    f.minLift = anyFigure(dice);
    f.sortBy = static_cast<char>(dice.below(256));
    f.antecedentRequired = someItems(dice, 40, 20);
    f.antecedentAllowed = someItems(dice, 40, 70);
    f.consequentRequired = someItems(dice, 40, 20);
    f.consequentAllowed = someItems(dice, 40, 70);
    f.minAntecedentLength = anyNumber(dice);
    f.maxAntecedentLength = anyNumber(dice);
    f.minConsequentLength = anyNumber(dice);
    f.maxConsequentLength = anyNumber(dice);
    f.maxRules = anyNumber(dice);
    f.minimal = dice.chance(50);
    for (const Rule& rule : asked(lattice.dictionary, f)) {
      const Set whole = plus(rule.antecedent, rule.consequent);
      ASSERT_EQ(whole.size(), rule.antecedent.size() + rule.consequent.size());
      ASSERT_FALSE(rule.consequent.empty());
      ASSERT_EQ(rule.confidence, static_cast<double>(counts.at(whole)) / counts.at(rule.antecedent));
      ASSERT_TRUE(rule.confidence >= f.minConfidence && rule.confidence <= f.maxConfidence);
      ASSERT_TRUE(rule.support >= f.minSupport && rule.support <= f.maxSupport);
      ASSERT_TRUE(rule.lift >= f.minLift);
      ASSERT_TRUE(isWithin(rule.antecedent, f.antecedentAllowed) &&
                  isWithin(rule.consequent, f.consequentAllowed));
    }
    std::vector<ConsequentDescriptor> items;
    Argument required(f.antecedentRequired), allowed(f.antecedentAllowed), consequents(f.consequentAllowed);
    lattice.dictionary.createFilteredConsequents(f.minConfidence, f.maxConfidence, f.minSupport, f.maxSupport,
                                                 f.minLift, f.sortBy, required.get(), allowed.get(),
                                                 f.minAntecedentLength, f.maxAntecedentLength,
                                                 consequents.get(), f.maxRules, items, nullptr);
    ASSERT_LE(items.size(), allItems().size());
  }
}

TEST(HostileRuleQueries, PlainCreationTakesAnyBounds) {
  Dice dice(98);
  const Counts counts = randomCounts(dice, allItems(), 25, 4, 1);
  TestLattice lattice(counts);
  for (int query = 0; query < 600; ++query) {
    const double minSupport = anyFigure(dice);
    const double minConfidence = anyFigure(dice);
    std::vector<AssociationRule> rules;
    ASSERT_TRUE(
        lattice.dictionary.createRules(minSupport, minConfidence, rules, nullptr, dice.chance(50)).IsOK());
    for (const AssociationRule& rule : rules) {
      // Bounds that are no numbers count as 0; a minimum of a fraction is cut to the count below.
      if (!std::isnan(minSupport)) {
        ASSERT_GT(rule.getSupport() * counts.at({}) + 1, minSupport * counts.at({}));
      }
      ASSERT_FALSE(std::isnan(minConfidence)) << "no count of an antecedent is 0";
      ASSERT_GE(rule.getConfidence(), minConfidence - 1e-9);
    }
  }
}

TEST(HostileRuleQueries, MeetCountsThatDoNotFallWithLength) {
  // Counts as evictions in phase I can leave them: a superset counted more often than its subset, sets
  // missing.
  Dice dice(97);
  for (int data = 0; data < 60; ++data) {
    Counts counts = randomCounts(dice, allItems(), 25, 5, 1);
    for (auto& [set, count] : counts) count = dice.chance(20) ? 0 : dice.between(1, 30);
    if (data % 2 == 0)
      std::erase_if(counts, [&](const auto& entry) { return !entry.first.empty() && dice.chance(10); });
    const StreamCapture complaints(std::cout);
    TestLattice lattice(counts);
    for (int query = 0; query < 30; ++query) {
      const Filter filter = randomFilter(dice, 25);
      std::vector<AssociationRule> rules;
      ask(lattice.dictionary, filter, rules);
      ItemSet antecedent = itemSet(someItems(dice, 100, 50).value());
      std::vector<ConsequentDescriptor> items;
      lattice.dictionary.createConsequents(&antecedent, anyNumber(dice), items);
      lattice.dictionary.createRules(dice.fraction() - 0.1, dice.fraction() - 0.1, rules, nullptr,
                                     dice.chance(50));
      for (const AssociationRule& rule : rules) ASSERT_GT(rule.getConsequent().length(), 0);
    }
  }
}

}  // namespace
