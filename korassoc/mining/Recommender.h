// What goes with the items of a basket, by rules.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/mining/Baskets.h"
#include "korassoc/mining/Item.h"
#include "korassoc/mining/ItemRanks.h"
#include "korassoc/mining/Measure.h"
#include "korassoc/mining/RuleTable.h"

namespace korassoc {

// An item, and the rule that speaks for it.
struct Recommendation {
  Item item;
  std::size_t rule;  // row of the recommender's rules
  double value;      // of the measure
};

// Recommendations for many baskets: those of basket i are recommendations[offsets[i] .. offsets[i + 1]).
struct Recommendations {
  std::vector<std::int64_t> offsets = {0};
  std::vector<Recommendation> recommendations;
};

// A Recommender knows some rules. A rule speaks for the items of its consequent to every basket that holds
// its antecedent. Of the rules for an item the one with the highest measure counts, of equal ones the one
// with the smaller antecedent (fewer items first, then item by item), then with the smaller consequent.
//
// Antecedents are filed under their rarest item, so a basket looks at few of them:
//
//   rarest item    antecedents, each with its rules
//   caviar         {caviar}  {bread, caviar}
//   bread          {bread}
//
// Best made of rules with one item in the consequent: those with more have no higher confidence. A rule whose
// measure is not defined speaks for nothing.
// Threads: any number of readers. Cost of a basket: the antecedents filed under its items. Memory: about 20
// bytes a rule, beside the rules.
class KORASSOC_EXPORT Recommender {
 public:
  explicit Recommender(RuleTable rules, Measure by = Measure::kConfidence);

  const RuleTable& rules() const { return rules_; }

  // The best items for a basket (in any order, repeats make no difference) that it does not hold, the best
  // first and of equal ones the smaller item; at most so many.
  std::vector<Recommendation> recommend(std::span<const Item> basket, std::size_t atMost) const;
  // The same for each basket.
  Recommendations recommend(const Baskets& baskets, std::size_t atMost) const;

 private:
  // The rules [begin, end) of ordered_ have the same antecedent.
  struct Antecedent {
    std::size_t begin;
    std::size_t end;
  };
  struct Work;

  void file();
  void recommend(std::span<const Item> basket, std::size_t atMost, Work& work,
                 std::vector<Recommendation>& out) const;

  RuleTable rules_;
  std::vector<double> values_;           // by rule
  detail::ItemRanks ranks_;              // of all items of the rules
  std::vector<std::uint32_t> ordered_;   // rules, by antecedent
  std::vector<Antecedent> antecedents_;  // by rarest item, then in order
  std::vector<std::size_t>
      firstAntecedent_;  // by rank of the rarest item, and one more; the empty one is last
};

}  // namespace korassoc
