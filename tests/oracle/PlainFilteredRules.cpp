#include "tests/oracle/PlainFilteredRules.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

#include "tests/oracle/PlainQueue.h"
#include "tests/oracle/PlainSearch.h"
#include "tests/oracle/Rounding.h"

namespace oracle {

namespace {

bool holds(const Items& items, int item) { return std::binary_search(items.begin(), items.end(), item); }

bool isSubset(const Items& items, const Items& of) {
  return std::all_of(items.begin(), items.end(), [&](int item) { return holds(of, item); });
}

bool isWithin(const Items& items, const std::optional<Items>& allowed) {
  return !allowed.has_value() || isSubset(items, *allowed);
}

Items unionOf(const Items& a, const Items& b) {
  std::set<int> items(a.begin(), a.end());
  items.insert(b.begin(), b.end());
  return Items(items.begin(), items.end());
}

Items intersection(const Items& a, const Items& b) {
  Items result;
  std::copy_if(a.begin(), a.end(), std::back_inserter(result), [&](int item) { return holds(b, item); });
  return result;
}

int sum(int a, int b) {
  const long long total = static_cast<long long>(a) + b;
  return static_cast<int>(
      std::clamp<long long>(total, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

int length(const Items& items) { return static_cast<int>(items.size()); }

const Counter& stored(PlainDictionary& dictionary, const Items& set) {
  const Counter* counter = dictionary.find(set);
  if (counter == nullptr) throw std::logic_error("the lattice lacks a subset of a stored set");
  return *counter;
}

ItemsSet candidates(PlainDictionary& dictionary, const PlainFilter& filter, const Items& required) {
  const int transactions = dictionary.emptySetCount();
  // The quirk of the maximum: whether it is rounded or cut is decided by the minimum.
  const double most = transactions * filter.maxSupport;
  const int nearest = toInt(most + 0.5);
  const int maxCount = almostEqual(transactions * filter.minSupport, nearest, 100.0) ? nearest : toInt(most);
  const SearchBounds bounds{roundedDown(transactions * filter.minSupport), maxCount,
                            sum(filter.minAntecedentLength, filter.minConsequentLength),
                            sum(filter.maxAntecedentLength, filter.maxConsequentLength)};
  const std::optional<Items>& antecedent = filter.antecedentAllowed;
  const std::optional<Items>& consequent = filter.consequentAllowed;
  if (antecedent.has_value() && consequent.has_value()) {
    return findItemSets3(dictionary, required, unionOf(*antecedent, *consequent), bounds);
  }
  if (required.empty() && (antecedent.has_value() || consequent.has_value())) {
    return findItemSetsWithin(dictionary, antecedent.has_value() ? *antecedent : *consequent, bounds);
  }
  return findItemSets2(dictionary, required, bounds);
}

PlainTable findAntecedents(PlainDictionary& dictionary, const PlainSettings& settings,
                           const PlainFilter& filter, const Items& whole) {
  PlainTable antecedents(settings.initialBoundarySize);
  const int count = stored(dictionary, whole).count;
  // In a wider type: the length bounds are the host's.
  const long long size = length(whole);
  const long long lowest = std::max<long long>(size - filter.maxConsequentLength, filter.minAntecedentLength);
  const long long highest =
      std::min<long long>(size - filter.minConsequentLength, filter.maxAntecedentLength);
  const int upper =
      filter.minConfidence <= 0 ? std::numeric_limits<int>::max() : roundedDown(count / filter.minConfidence);
  const double lower = count / filter.maxConfidence;

  Items start = whole;
  if (filter.consequentRequired.has_value()) start = difference(whole, *filter.consequentRequired);
  if (filter.antecedentAllowed.has_value()) start = intersection(start, *filter.antecedentAllowed);
  if (start != whole) {
    if (stored(dictionary, start).count > upper || length(start) < lowest) return antecedents;
    if (!isWithin(difference(whole, start), filter.consequentAllowed)) return antecedents;
  }

  std::set<Items> visited;
  PlainQueue queue;
  queue.push(start, &stored(dictionary, start));
  while (!queue.empty()) {
    const PlainQueue::Candidate candidate = queue.pop();
    visited.insert(candidate.set);
    bool minimal = true;
    if (length(candidate.set) > lowest) {
      for (std::size_t position = 0; position < candidate.set.size(); ++position) {
        const int item = candidate.set[position];
        if (filter.antecedentRequired.has_value() && holds(*filter.antecedentRequired, item)) continue;
        if (filter.consequentAllowed.has_value() && !holds(*filter.consequentAllowed, item)) continue;
        const Items smaller = without(candidate.set, position);
        const Counter& smallerCounter = stored(dictionary, smaller);
        if (smallerCounter.count > upper) continue;
        minimal = false;
        if (visited.insert(smaller).second) queue.push(smaller, &smallerCounter);
      }
    }
    if (filter.minimalAntecedentsOnly && !minimal) continue;
    if (candidate.counter->count >= lower && length(candidate.set) <= highest)
      antecedents.put(candidate.set, {});
  }
  return antecedents;
}

void sortRules(std::vector<PlainRule>& rules, char sortBy) {
  if (sortBy == 'C') {
    sortByConfidence(rules);
  } else if (sortBy == 'S' || sortBy == 'L') {
    std::sort(rules.begin(), rules.end(), [sortBy](const PlainRule& a, const PlainRule& b) {
      const double figureA = sortBy == 'S' ? a.support : a.lift;
      const double figureB = sortBy == 'S' ? b.support : b.lift;
      if (figureA != figureB) return figureA > figureB;
      if (a.confidence != b.confidence) return a.confidence > b.confidence;
      if (a.antecedent != b.antecedent) return comesBefore(a.antecedent, b.antecedent);
      return comesBefore(a.consequent, b.consequent);
    });
  }
}

template <typename Result>
void cut(std::vector<Result>& results, int most) {
  while (most >= 0 && results.size() > static_cast<std::size_t>(most)) results.pop_back();
}

}  // namespace

std::vector<PlainRule> createFilteredRules(PlainDictionary& dictionary, const PlainSettings& settings,
                                           const PlainFilter& filter) {
  std::vector<PlainRule> rules;
  if (dictionary.highestLevel() == 0) return rules;
  const Items antecedentRequired = filter.antecedentRequired.value_or(Items{});
  const Items consequentRequired = filter.consequentRequired.value_or(Items{});
  const ItemsSet found = candidates(dictionary, filter, unionOf(antecedentRequired, consequentRequired));

  std::map<Items, PlainTable> antecedents;
  for (const Items& whole : found)
    antecedents.emplace(whole, findAntecedents(dictionary, settings, filter, whole));

  std::map<Items, PlainTable> emitted = antecedents;
  if (filter.minimalAntecedentsOnly) {
    for (const Items& whole : found) {
      for (int item : stored(dictionary, whole).adjacent) {
        const auto larger = antecedents.find(with(whole, item));
        if (larger == antecedents.end()) continue;
        for (PlainTable::Entry* antecedent : larger->second.entries())
          emitted.at(whole).remove(antecedent->key);
      }
    }
  }

  const int transactions = dictionary.emptySetCount();
  for (const Items& whole : found) {
    for (const PlainTable::Entry* entry : emitted.at(whole).entries()) {
      const Items& antecedent = entry->key;
      const int size = length(antecedent);
      if (size < filter.minAntecedentLength || size > filter.maxAntecedentLength) continue;
      if (!isSubset(antecedentRequired, antecedent) || !isWithin(antecedent, filter.antecedentAllowed))
        continue;
      const double support = static_cast<double>(stored(dictionary, whole).count) / transactions;
      const double confidence =
          static_cast<double>(stored(dictionary, whole).count) / stored(dictionary, antecedent).count;
      if (support < filter.minSupport || support > filter.maxSupport) continue;
      if (confidence < filter.minConfidence || confidence > filter.maxConfidence) continue;
      const Items consequent = difference(whole, antecedent);
      if (consequent.empty()) continue;
      if (length(consequent) < filter.minConsequentLength || length(consequent) > filter.maxConsequentLength)
        continue;
      if (!isWithin(consequent, filter.consequentAllowed) || !isSubset(consequentRequired, consequent))
        continue;
      const Counter* counter = dictionary.find(consequent);
      const double lift = counter == nullptr ? 0.0 : confidence / counter->count * transactions;
      if (lift < filter.minLift) continue;
      rules.push_back({antecedent, consequent, support, confidence, lift});
    }
  }
  sortRules(rules, filter.sortBy);
  cut(rules, filter.maxRules);
  return rules;
}

std::vector<PlainConsequent> createFilteredConsequents(PlainDictionary& dictionary,
                                                       const PlainSettings& settings, PlainFilter filter,
                                                       int maxItems) {
  filter.consequentRequired = Items{};
  filter.minConsequentLength = 1;
  filter.maxConsequentLength = 1;
  filter.maxRules = std::numeric_limits<int>::max();
  filter.minimalAntecedentsOnly = false;
  std::vector<PlainConsequent> consequents;
  std::set<int> collected;
  for (const PlainRule& rule : createFilteredRules(dictionary, settings, filter)) {
    if (maxItems >= 0 && collected.size() >= static_cast<std::size_t>(maxItems)) break;
    if (!collected.insert(rule.consequent[0]).second) continue;
    consequents.push_back({rule.consequent[0], rule.support, rule.confidence, rule.lift});
  }
  return consequents;
}

std::vector<PlainConsequent> createConsequents(PlainDictionary& dictionary,
                                               const std::optional<Items>& antecedent, int maxItems) {
  std::vector<PlainConsequent> consequents;
  if (dictionary.highestLevel() == 0) return consequents;
  const int transactions = std::max(dictionary.emptySetCount(), 1);
  if (!antecedent.has_value()) {
    for (const PlainTable::Entry* entry : dictionary.level(1).entries()) {
      const double support = static_cast<double>(entry->counter.count) / transactions;
      consequents.push_back({entry->key[0], support, support, 1.0});
    }
  } else if (dictionary.highestLevel() >= 2) {
    std::map<int, PlainConsequent> best;
    std::deque<Items> queue;
    for (int item : *antecedent) {
      if (dictionary.find({item}) != nullptr) queue.push_back({item});
    }
    for (; !queue.empty(); queue.pop_front()) {
      const Items set = queue.front();
      const Counter& counter = stored(dictionary, set);
      for (int item : counter.adjacent) {
        const Items larger = with(set, item);
        if (holds(*antecedent, item)) {
          if (item > set.back()) queue.push_back(larger);
          continue;
        }
        const int count = stored(dictionary, larger).count;
        const double confidence = static_cast<double>(count) / counter.count;
        const auto known = best.find(item);
        if (known != best.end() && confidence <= known->second.confidence) continue;
        best[item] = {item, static_cast<double>(count) / transactions, confidence,
                      confidence / stored(dictionary, {item}).count * transactions};
      }
    }
    for (const auto& [item, consequent] : best) consequents.push_back(consequent);
  }
  std::sort(consequents.begin(), consequents.end(), [](const PlainConsequent& a, const PlainConsequent& b) {
    if (a.confidence != b.confidence) return a.confidence > b.confidence;
    return a.item < b.item;
  });
  cut(consequents, maxItems);
  return consequents;
}

}  // namespace oracle
