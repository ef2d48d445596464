#include "tests/oracle/PlainRules.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "tests/oracle/PlainQueue.h"
#include "tests/oracle/Rounding.h"

namespace oracle {

namespace {

int antecedentBound(int count, double minConfidence) {
  return minConfidence <= 0 ? std::numeric_limits<int>::max() : roundedDown(count / minConfidence);
}

// The antecedents of one frequent set, walking down from the set itself, the most frequent candidate first.
PlainTable findAntecedents(PlainDictionary& dictionary, const PlainSettings& settings, const Items& frequent,
                           double minConfidence, bool minimalOnly) {
  PlainTable antecedents(settings.initialBoundarySize);
  PlainTable visited(settings.initialBoundarySearchSize);
  PlainQueue queue;
  const Counter* counter = dictionary.find(frequent);
  const int bound = antecedentBound(counter->count, minConfidence);
  queue.push(frequent, counter);
  while (!queue.empty()) {
    const Items candidate = queue.pop().set;
    visited.put(candidate, {});
    bool minimal = true;
    for (std::size_t position = 0; position < candidate.size(); ++position) {
      const Items smaller = without(candidate, position);
      const Counter* smallerCounter = dictionary.find(smaller);
      if (smallerCounter == nullptr) throw std::logic_error("the lattice lacks a subset of a stored set");
      if (smallerCounter->count > bound) continue;
      minimal = false;
      if (visited.put(smaller, {})) queue.push(smaller, smallerCounter);
    }
    if (minimal || !minimalOnly) antecedents.put(candidate, {});
  }
  return antecedents;
}

}  // namespace

std::vector<PlainRule> createRules(PlainDictionary& dictionary, const PlainSettings& settings,
                                   double minSupport, double minConfidence, bool pruneRedundant) {
  std::vector<PlainRule> rules;
  if (dictionary.highestLevel() == 0) return rules;
  const int transactions = dictionary.emptySetCount();
  const int minCount = roundedDown(transactions * minSupport);

  PlainTable frequentTable(settings.initialRulesSize);
  int index = 0;
  for (int size = 0; size <= dictionary.highestLevel(); ++size) {
    for (PlainTable::Entry* entry : dictionary.level(size).entries()) {
      if (entry->counter.count < minCount) continue;
      entry->counter.tid = index++;
      frequentTable.put(entry->key, entry->counter);
    }
  }
  const std::vector<PlainTable::Entry*> frequent = frequentTable.entries();

  std::vector<PlainTable> antecedents(frequent.size(), PlainTable(1));  // by index
  for (const PlainTable::Entry* entry : frequent) {
    antecedents[static_cast<std::size_t>(entry->counter.tid)] =
        findAntecedents(dictionary, settings, entry->key, minConfidence, pruneRedundant);
  }

  std::vector<PlainTable> emitted = antecedents;
  if (pruneRedundant) {
    for (const PlainTable::Entry* entry : frequent) {
      for (int item : entry->counter.adjacent) {
        const Counter* larger = frequentTable.find(with(entry->key, item));
        if (larger == nullptr) continue;
        for (PlainTable::Entry* antecedent : antecedents[static_cast<std::size_t>(larger->tid)].entries()) {
          emitted[static_cast<std::size_t>(entry->counter.tid)].remove(antecedent->key);
        }
      }
    }
  }

  for (const PlainTable::Entry* entry : frequent) {
    for (PlainTable::Entry* kept : emitted[static_cast<std::size_t>(entry->counter.tid)].entries()) {
      const Items consequent = difference(entry->key, kept->key);
      if (consequent.empty()) continue;
      const Counter* consequentCounter = dictionary.find(consequent);
      const int consequentCount = consequentCounter == nullptr ? 0 : consequentCounter->count;
      const double support = static_cast<double>(entry->counter.count) / transactions;
      const double confidence = static_cast<double>(entry->counter.count) / dictionary.find(kept->key)->count;
      rules.push_back(
          {kept->key, consequent, support, confidence, confidence / consequentCount * transactions});
    }
  }
  return rules;
}

void sortByConfidence(std::vector<PlainRule>& rules) {
  std::sort(rules.begin(), rules.end(), [](const PlainRule& a, const PlainRule& b) {
    if (a.confidence != b.confidence) return a.confidence > b.confidence;
    if (a.support != b.support) return a.support > b.support;
    if (a.antecedent != b.antecedent) return comesBefore(a.antecedent, b.antecedent);
    return comesBefore(a.consequent, b.consequent);
  });
}

}  // namespace oracle
