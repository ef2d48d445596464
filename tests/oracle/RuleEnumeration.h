// The answers of the filtered queries by enumeration: every split of every itemset is looked at by itself.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "tests/oracle/BruteForce.h"
#include "tests/oracle/PlainFilteredRules.h"
#include "tests/oracle/Rounding.h"

namespace oracle::brute {

inline bool includes(const Set& set, const Set& subset) {
  return std::includes(set.begin(), set.end(), subset.begin(), subset.end());
}

inline bool isWithin(const Set& set, const std::optional<Set>& allowed) {
  return !allowed || includes(*allowed, set);
}

inline Set minus(const Set& a, const Set& b) {
  Set result;
  std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(result));
  return result;
}

inline Set plus(const Set& a, const Set& b) {
  Set result;
  std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(result));
  return result;
}

inline std::vector<Set> subsets(const Set& set) {
  std::vector<Set> result;
  for (std::uint32_t mask = 0; mask < 1U << set.size(); ++mask) result.push_back(pick(set, mask));
  return result;
}

// Says of every itemset and every split of it whether it belongs to the answer; searches nothing.
class RuleEnumeration {
 public:
  // counts holds every subset of its sets, the empty set with the number of transactions among them. Both are
  // lent. Bounds can be any numbers.
  RuleEnumeration(const Counts& counts, const PlainFilter& filter)
      : counts_(counts), f_(filter), n_(counts.at({})) {}

  // In no particular order, and not cut.
  std::vector<PlainRule> rules() const {
    std::vector<PlainRule> result;
    for (const auto& [whole, count] : counts_) {
      if (!isCandidate(whole)) continue;
      for (const Set& antecedent : subsets(whole)) {
        if (!isAntecedent(whole, antecedent)) continue;
        if (f_.minimalAntecedentsOnly && (!isMinimal(whole, antecedent) || reachesMore(whole, antecedent)))
          continue;
        addIfWanted(whole, antecedent, result);
      }
    }
    return result;
  }

 private:
  static long long length(const Set& set) { return static_cast<long long>(set.size()); }
  int count(const Set& set) const { return counts_.at(set); }
  int upper(const Set& whole) const {
    return f_.minConfidence <= 0 ? std::numeric_limits<int>::max()
                                 : roundedDown(count(whole) / f_.minConfidence);
  }
  long long lowest(const Set& whole) const {
    return std::max<long long>(length(whole) - f_.maxConsequentLength, f_.minAntecedentLength);
  }

  bool isCandidate(const Set& whole) const {
    const Set required = plus(f_.antecedentRequired.value_or(Set()), f_.consequentRequired.value_or(Set()));
    const double most = n_ * f_.maxSupport;
    const int nearest = toInt(most + 0.5);
    const int maxCount = almostEqual(n_ * f_.minSupport, nearest, 100.0) ? nearest : toInt(most);
    if (count(whole) < roundedDown(n_ * f_.minSupport) || count(whole) > maxCount) return false;
    const long long longest = static_cast<long long>(f_.maxAntecedentLength) + f_.maxConsequentLength;
    if (length(whole) < static_cast<long long>(f_.minAntecedentLength) + f_.minConsequentLength) return false;
    const bool oneAllowed = f_.antecedentAllowed.has_value() != f_.consequentAllowed.has_value();
    if (required.empty() && oneAllowed) {
      const Set& allowed = f_.antecedentAllowed ? *f_.antecedentAllowed : *f_.consequentAllowed;
      return (length(whole) == 1 || length(whole) <= longest) && minus(whole, allowed).size() < whole.size();
    }
    if (length(whole) > longest || !includes(whole, required)) return false;
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
    if (!includes(largest, antecedent)) return false;
    if (largest != whole) {
      if (count(largest) > upper(whole) || length(largest) < lowest(whole)) return false;
      if (!isWithin(minus(whole, largest), f_.consequentAllowed)) return false;
    }
    if (antecedent == largest) return true;
    const Set left = minus(largest, antecedent);
    return std::all_of(left.begin(), left.end(), [this](int item) { return mayLeave(item); }) &&
           count(antecedent) <= upper(whole) && length(antecedent) >= lowest(whole);
  }

  bool isMinimal(const Set& whole, const Set& antecedent) const {
    if (length(antecedent) <= lowest(whole)) return true;
    return std::none_of(antecedent.begin(), antecedent.end(), [&](int item) {
      return mayLeave(item) && count(minus(antecedent, {item})) <= upper(whole);
    });
  }

  bool isKept(const Set& whole, const Set& antecedent) const {
    const long long highest =
        std::min<long long>(length(whole) - f_.minConsequentLength, f_.maxAntecedentLength);
    return count(antecedent) >= count(whole) / f_.maxConfidence && length(antecedent) <= highest;
  }

  // Whether the same antecedent serves a candidate one item larger.
  bool reachesMore(const Set& whole, const Set& antecedent) const {
    return std::any_of(counts_.begin(), counts_.end(), [&](const auto& other) {
      const Set& larger = other.first;
      return larger.size() == whole.size() + 1 && includes(larger, whole) && isCandidate(larger) &&
             isAntecedent(larger, antecedent) && isMinimal(larger, antecedent) && isKept(larger, antecedent);
    });
  }

  void addIfWanted(const Set& whole, const Set& antecedent, std::vector<PlainRule>& result) const {
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
    // Written so that a bound that is no number lets nothing through.
    if (!(support >= f_.minSupport && support <= f_.maxSupport && lift >= f_.minLift)) return;
    if (!(confidence >= f_.minConfidence && confidence <= f_.maxConfidence)) return;
    result.push_back({antecedent, consequent, support, confidence, lift});
  }

  const Counts& counts_;
  const PlainFilter& f_;
  int n_;
};

inline bool setBefore(const Set& a, const Set& b) {
  return a.size() != b.size() ? a.size() < b.size() : a < b;
}

// Into the order of sortBy; anything but 'S' and 'L': by confidence.
inline void sortRules(std::vector<PlainRule>& rules, char sortBy) {
  std::sort(rules.begin(), rules.end(), [sortBy](const PlainRule& a, const PlainRule& b) {
    const auto figures = [sortBy](const PlainRule& r) {
      if (sortBy == 'S') return std::pair(r.support, r.confidence);
      if (sortBy == 'L') return std::pair(r.lift, r.confidence);
      return std::pair(r.confidence, r.support);
    };
    if (figures(a) != figures(b)) return figures(a) > figures(b);
    if (a.antecedent != b.antecedent) return setBefore(a.antecedent, b.antecedent);
    return setBefore(a.consequent, b.consequent);
  });
}

// Of sorted rules with consequents of one item the first one of each item, as many as are wanted; a negative
// number wants all.
inline std::vector<PlainConsequent> firstOfEachItem(const std::vector<PlainRule>& sorted, int wanted) {
  std::vector<PlainConsequent> result;
  for (const PlainRule& rule : sorted) {
    if (wanted >= 0 && result.size() >= static_cast<std::size_t>(wanted)) break;
    const int item = rule.consequent.at(0);
    if (std::none_of(result.begin(), result.end(), [&](const PlainConsequent& c) { return c.item == item; }))
      result.push_back({item, rule.support, rule.confidence, rule.lift});
  }
  return result;
}

// The best items first, as many as are wanted; a negative number wants all.
inline std::vector<PlainConsequent> best(std::vector<PlainConsequent> items, int wanted) {
  std::sort(items.begin(), items.end(), [](const PlainConsequent& a, const PlainConsequent& b) {
    return a.confidence != b.confidence ? a.confidence > b.confidence : a.item < b.item;
  });
  if (wanted >= 0 && items.size() > static_cast<std::size_t>(wanted))
    items.resize(static_cast<std::size_t>(wanted));
  return items;
}

// Every item, with its support for confidence.
inline std::vector<PlainConsequent> itemsBySupport(const Counts& counts, int wanted) {
  std::vector<PlainConsequent> items;
  for (const auto& [set, count] : counts) {
    const double support = static_cast<double>(count) / counts.at({});
    if (set.size() == 1) items.push_back({set[0], support, support, 1.0});
  }
  return best(items, wanted);
}

// The items that follow from some part of the antecedent that is in counts, the empty set aside, each with
// its best confidence; of equally good parts the shortest and first speaks. The best items first, as many as
// are wanted.
inline std::vector<PlainConsequent> itemsThatFollow(const Counts& counts, const Set& antecedent, int wanted) {
  const int n = counts.at({});
  std::vector<Set> parts = subsets(antecedent);
  std::sort(parts.begin(), parts.end(), setBefore);
  std::map<int, PlainConsequent> found;
  for (const Set& part : parts) {
    if (part.empty() || counts.count(part) == 0) continue;
    for (const auto& [whole, count] : counts) {
      if (whole.size() != part.size() + 1 || !includes(whole, part)) continue;
      const int item = minus(whole, part).at(0);
      if (includes(antecedent, {item})) continue;
      const double confidence = static_cast<double>(count) / counts.at(part);
      const auto known = found.find(item);
      if (known != found.end() && known->second.confidence >= confidence) continue;
      found[item] = {item, static_cast<double>(count) / n, confidence, confidence / counts.at({item}) * n};
    }
  }
  std::vector<PlainConsequent> items;
  for (const auto& [item, consequent] : found) items.push_back(consequent);
  return best(items, wanted);
}

}  // namespace oracle::brute
