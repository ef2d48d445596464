#include "korassoc/mining/RuleQuery.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "korassoc/mining/Error.h"

namespace korassoc {
namespace {

[[noreturn]] void refuse(const std::string& sentence) { throw Error(Error::Kind::kInput, sentence); }

bool isAmong(Item item, const std::vector<Item>& items) {
  return std::find(items.begin(), items.end(), item) != items.end();
}

void checkSide(const SideFilter& side, const std::string& name) {
  if (side.minLength > side.maxLength) {
    refuse("the " + name + " is to have at least " + std::to_string(side.minLength) + " items and at most " +
           std::to_string(side.maxLength));
  }
  for (const Item item : side.required) {
    if (isAmong(item, side.excluded)) {
      refuse("item " + std::to_string(item) + " is required in the " + name + " and excluded from it");
    }
  }
}

}  // namespace

void checkRuleQuery(const RuleQuery& query) {
  if (!(query.minConfidence >= 0 && query.minConfidence <= query.maxConfidence && query.maxConfidence <= 1)) {
    refuse("the confidence is to be from " + std::to_string(query.minConfidence) + " to " +
           std::to_string(query.maxConfidence) + ", which is no range within 0 and 1");
  }
  for (const MeasureBounds& bounds : query.bounds) {
    if (std::isnan(bounds.least) || std::isnan(bounds.most)) {
      refuse("a bound of " + std::string(bounds.measure.name()) + " is no number");
    }
  }
  checkSide(query.antecedent, "antecedent");
  checkSide(query.consequent, "consequent");
  if (query.consequent.minLength == 0)
    refuse("the consequent is to have 0 items, and a rule has at least 1 there");
  for (const Item item : query.antecedent.required) {
    if (isAmong(item, query.consequent.required)) {
      refuse("item " + std::to_string(item) +
             " is required on both sides, and an item stands on one of them");
    }
  }
}

}  // namespace korassoc
