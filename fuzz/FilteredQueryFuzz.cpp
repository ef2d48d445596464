// The filtered queries, and GetItems, answer any arguments as an enumeration of all splits of all itemsets
// does: figures, order and cut. Input: a few transactions over six items, then queries. Seeds lie in
// tests/corpus/FilteredQueryFuzz; every test run replays them.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/Bytes.h"
#include "fuzz/Checks.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/itemsets/ItemSet.h"
#include "tests/oracle/RuleEnumeration.h"
#include "tests/support/RuleComparison.h"
#include "tests/support/VectorTransactions.h"

namespace {

using fuzz::Bytes;
using fuzz::check;
using oracle::PlainConsequent;
using oracle::PlainFilter;
using oracle::PlainRule;
using oracle::brute::Counts;
using oracle::brute::Set;

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

// Ascending, and of every kind.
const std::vector<int>& items() {
  static const std::vector<int> items = {kMin, -3, 0, 5, 368644, kMax};
  return items;
}

// The items whose bits are set.
Set itemsOfMask(int mask) { return oracle::brute::pick(items(), static_cast<std::uint32_t>(mask) & 0x3FU); }

Transactions transactions(Bytes& bytes) {
  Transactions result(static_cast<std::size_t>(bytes.between(1, 24)));
  for (std::vector<int>& transaction : result) {
    const int mask = bytes.byte();
    transaction = itemsOfMask(mask);
    if (mask % 4 == 3) std::reverse(transaction.begin(), transaction.end());
  }
  return result;
}

// A bound on a figure: one that occurs, exactly; an odd one; anything.
double figure(Bytes& bytes, int n) {
  constexpr double kOdd[] = {0,      -0.0,
                             1,      -1,
                             1e-320, 1e300,
                             1e-9,   std::numeric_limits<double>::infinity(),
                             2,      -std::numeric_limits<double>::infinity(),
                             0.1,    std::numeric_limits<double>::quiet_NaN()};
  switch (bytes.below(4)) {
    case 0:
    case 1: {
      const int numerator = bytes.below(n + 1);
      return static_cast<double>(numerator) / bytes.between(1, n);
    }
    case 2:
      return kOdd[bytes.below(12)];
    default:
      return bytes.anyDouble();
  }
}

int length(Bytes& bytes) {
  const int kind = bytes.byte();
  if (kind < 240) return kind % 9 - 1;
  constexpr int kOdd[] = {kMin, kMin + 1, kMax, kMax - 1};
  return kind < 250 ? kOdd[kind % 4] : bytes.anyInt();
}

std::optional<Set> someItems(Bytes& bytes) {
  const int mask = bytes.byte();
  if (mask % 2 == 0) return std::nullopt;
  return itemsOfMask(mask / 2);
}

PlainFilter filter(Bytes& bytes, int n) {
  PlainFilter f;
  const int given = bytes.byte();  // what differs from the defaults, which let nearly everything through
  if ((given & 1) != 0) f.minConfidence = figure(bytes, n);
  if ((given & 2) != 0) f.maxConfidence = figure(bytes, n);
  if ((given & 4) != 0) f.minSupport = figure(bytes, n);
  if ((given & 8) != 0) f.maxSupport = figure(bytes, n);
  if ((given & 16) != 0) f.minLift = figure(bytes, n);
  f.sortBy = "CSLX"[bytes.below(4)];
  if ((given & 32) != 0) {
    f.antecedentRequired = someItems(bytes);
    f.antecedentAllowed = someItems(bytes);
    f.consequentRequired = someItems(bytes);
    f.consequentAllowed = someItems(bytes);
  }
  if ((given & 64) != 0) {
    f.minAntecedentLength = length(bytes);
    f.maxAntecedentLength = length(bytes);
    f.minConsequentLength = length(bytes);
    f.maxConsequentLength = length(bytes);
  }
  if ((given & 128) != 0) {
    f.maxRules = length(bytes);
    f.minimalAntecedentsOnly = bytes.flag();
  }
  return f;
}

// A set in the form of an argument.
class Argument {
 public:
  explicit Argument(const std::optional<Set>& items) : isGiven_(items.has_value()) {
    if (items) set_ = ItemSet(items->data(), static_cast<int>(items->size()));
  }
  ItemSet* get() { return isGiven_ ? &set_ : nullptr; }

 private:
  ItemSet set_;
  bool isGiven_;
};

// An engine with the exact lattice of the transactions, and the same counts by enumeration.
class Lattice {
 public:
  explicit Lattice(Bytes& bytes) {
    const Transactions data = transactions(bytes);
    for (const auto& transaction : data) source_.add(transaction);
    n_ = static_cast<int>(data.size());
    const int longest = bytes.between(1, 6);
    const int minCount = std::min(bytes.between(1, 3), n_);
    settings_.SetMaxLengthSet(longest);
    settings_.GetDictionarySettings().SetInitialHashtableSet23Size(11);  // for more inputs a second
    settings_.GetDictionarySettings().SetInitialBoundarySearchSize(11);
    engine_.emplace(&settings_, &source_);
    check(engine_->RunPhaseIIcomplete(static_cast<double>(minCount) / n_).IsOK(), "there is no lattice");
    counts_ = oracle::brute::atLeast(oracle::brute::countSubsets(data, longest), minCount);
    counts_[{}] = n_;
    check(engine_->NumberOfSets() == static_cast<int>(counts_.size()), "a wrong number of itemsets");
  }

  int transactionCount() const { return n_; }

  void askForRules(const PlainFilter& f) {
    Argument antecedentRequired(f.antecedentRequired), antecedentAllowed(f.antecedentAllowed);
    Argument consequentRequired(f.consequentRequired), consequentAllowed(f.consequentAllowed);
    std::vector<AssociationRule> out;
    checkStatus(engine_->GetRulesSpecial(
        f.minConfidence, f.maxConfidence, f.minSupport, f.maxSupport, f.minLift, f.sortBy,
        antecedentRequired.get(), antecedentAllowed.get(), f.minAntecedentLength, f.maxAntecedentLength,
        consequentRequired.get(), consequentAllowed.get(), f.minConsequentLength, f.maxConsequentLength,
        f.maxRules, f.minimalAntecedentsOnly, out));
    std::vector<PlainRule> found = plainRules(out);
    std::vector<PlainRule> expected = expectedRules(f);
    if (f.sortBy == 'X') {  // in order of emission, which the enumeration knows nothing of
      checkUnsorted(found, expected, f.maxRules);
      return;
    }
    if (f.maxRules >= 0 && expected.size() > static_cast<std::size_t>(f.maxRules)) {
      expected.resize(static_cast<std::size_t>(f.maxRules));
    }
    const std::string difference = firstDifference(found, expected);
    if (!difference.empty()) fuzz::fail(difference);
  }

  void askForItems(PlainFilter f) {
    f.consequentRequired.reset();
    f.minConsequentLength = f.maxConsequentLength = 1;
    f.minimalAntecedentsOnly = false;
    if (f.sortBy == 'X') f.sortBy = 'C';
    Argument required(f.antecedentRequired), allowed(f.antecedentAllowed), consequents(f.consequentAllowed);
    std::vector<ConsequentDescriptor> out;
    checkStatus(engine_->GetItemsSpecial(
        f.minConfidence, f.maxConfidence, f.minSupport, f.maxSupport, f.minLift, f.sortBy, required.get(),
        allowed.get(), f.minAntecedentLength, f.maxAntecedentLength, consequents.get(), f.maxRules, out));
    compare(out, oracle::brute::firstOfEachItem(expectedRules(f), f.maxRules));
  }

  void askForFollowers(const std::optional<Set>& antecedent, int wanted) {
    Argument argument(antecedent);
    std::vector<ConsequentDescriptor> out;
    checkStatus(engine_->GetItems(argument.get(), wanted, out));
    if (counts_.size() > 1)
      compare(out, antecedent ? oracle::brute::itemsThatFollow(counts_, *antecedent, wanted)
                              : oracle::brute::itemsBySupport(counts_, wanted));
  }

 private:
  // Without a set of one item there is nothing to ask.
  void checkStatus(const KorAssoc::KorStatus& status) const {
    if (counts_.size() > 1) {
      check(status.IsOK(), "a query failed");
    } else {
      check(status.IsWarning() && status.GetCode() == 40002, "an empty lattice was not reported");
    }
  }

  std::vector<PlainRule> expectedRules(const PlainFilter& f) const {
    std::vector<PlainRule> rules = oracle::brute::RuleEnumeration(counts_, f).rules();
    oracle::brute::sortRules(rules, f.sortBy);
    return rules;
  }

  static void checkUnsorted(const std::vector<PlainRule>& found, const std::vector<PlainRule>& expected,
                            int most) {
    const std::size_t size =
        most < 0 ? expected.size() : std::min(expected.size(), static_cast<std::size_t>(most));
    check(found.size() == size, "a wrong number of unsorted rules");
    std::set<std::pair<Set, Set>> met;
    for (const PlainRule& rule : found) {
      check(met.insert({rule.antecedent, rule.consequent}).second, "an unsorted rule twice");
      check(std::any_of(expected.begin(), expected.end(),
                        [&rule](const PlainRule& other) { return isSame(rule, other); }),
            "an unsorted rule that was not asked for, or other figures");
    }
  }

  static void compare(const std::vector<ConsequentDescriptor>& found,
                      const std::vector<PlainConsequent>& expected) {
    check(std::equal(found.begin(), found.end(), expected.begin(), expected.end(),
                     [](const ConsequentDescriptor& a, const PlainConsequent& b) {
                       return a.getItem() == b.item && a.getSupport() == b.support &&
                              a.getConfidence() == b.confidence && a.getLift() == b.lift;
                     }),
          "other items, or other figures");
  }

  CarmaSettings settings_;
  VectorTransactions source_;
  std::optional<CarmaAssociationAlgorithm> engine_;
  Counts counts_;
  int n_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::Silence silence;
  Bytes bytes(data, size);
  Lattice lattice(bytes);
  const int n = lattice.transactionCount();
  for (int query = 0; query < 12 && !bytes.isEmpty(); ++query) {
    switch (bytes.below(4)) {
      case 0:
        lattice.askForItems(filter(bytes, n));
        break;
      case 1: {
        const std::optional<Set> antecedent = someItems(bytes);
        lattice.askForFollowers(antecedent, length(bytes));
        break;
      }
      default:
        lattice.askForRules(filter(bytes, n));
    }
  }
  return 0;
}
