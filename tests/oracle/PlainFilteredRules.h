// Rules from the plain engine's lattice under a detailed filter, and what single items follow from others.

#pragma once

#include <limits>
#include <optional>
#include <vector>

#include "tests/oracle/PlainDictionary.h"
#include "tests/oracle/PlainRules.h"
#include "tests/oracle/PlainSettings.h"

namespace oracle {

// What a rule must fulfil, all bounds included; an absent set demands nothing.
struct PlainFilter {
  double minConfidence = 0;
  double maxConfidence = 1;
  double minSupport = 0;
  double maxSupport = 1;
  double minLift = 0;
  char sortBy = 'C';
  std::optional<Items> antecedentRequired;
  std::optional<Items> antecedentAllowed;
  int minAntecedentLength = 0;
  int maxAntecedentLength = 10;
  std::optional<Items> consequentRequired;
  std::optional<Items> consequentAllowed;
  int minConsequentLength = 1;
  int maxConsequentLength = 10;
  int maxRules = -1;  // negative: all
  bool minimalAntecedentsOnly = false;
};

// The rules in the order of their emission, or sorted ('C', 'S', 'L'), then cut.
// The lattice must be built and hold every subset of its sets; throws std::logic_error where one is missing.
std::vector<PlainRule> createFilteredRules(PlainDictionary& dictionary, const PlainSettings& settings,
                                           const PlainFilter& filter);

struct PlainConsequent {
  int item;
  double support;
  double confidence;
  double lift;
};

// For each item its first rule with the item as whole consequent. Of the filter the lengths of the
// consequent, its required items, maxRules and minimalAntecedentsOnly are not looked at.
std::vector<PlainConsequent> createFilteredConsequents(PlainDictionary& dictionary,
                                                       const PlainSettings& settings, PlainFilter filter,
                                                       int maxItems);

// The items that follow from some stored subset of the antecedent, each with its best confidence, the best
// first; an absent antecedent: every stored item with its support.
std::vector<PlainConsequent> createConsequents(PlainDictionary& dictionary,
                                               const std::optional<Items>& antecedent, int maxItems);

}  // namespace oracle
