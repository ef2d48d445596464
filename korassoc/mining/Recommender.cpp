#include "korassoc/mining/Recommender.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "korassoc/mining/RuleOrder.h"

namespace korassoc {

// What is used for one basket after the other, by rank.
struct Recommender::Work {
  explicit Work(std::size_t items) : isGiven(items, false), best(items, kNone) {}

  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  std::vector<bool> isGiven;
  std::vector<std::size_t> best;     // rule for the item
  std::vector<std::uint32_t> given;  // ranks of the basket's items
  std::vector<std::uint32_t> found;  // ranks of the items that have a rule
};

Recommender::Recommender(RuleTable rules, Measure by) : rules_(std::move(rules)), values_(rules_.values(by)) {
  const ItemLists left = rules_.antecedents();
  const ItemLists right = rules_.consequents();
  std::vector<Item> items = left.items;
  items.insert(items.end(), right.items.begin(), right.items.end());
  ranks_ = detail::ItemRanks(items);
  file();
}

// An item is at least as frequent as the most frequent antecedent with it, which is taken for its count.
// Under which item an antecedent is filed decides about the time that a basket takes, and about nothing else.
void Recommender::file() {
  std::vector<std::int64_t> counts(ranks_.size(), 0);
  for (std::size_t rule = 0; rule < rules_.size(); ++rule) {
    for (const Item item : rules_.antecedent(rule)) {
      std::int64_t& count = counts[ranks_.rankOf(item)];
      count = std::max(count, rules_.antecedentCounts()[rule]);
    }
  }
  const auto fileOf = [&](std::size_t rule) {
    auto rarest = static_cast<std::uint32_t>(ranks_.size());  // of the empty antecedent
    for (const Item item : rules_.antecedent(rule)) {
      const std::uint32_t rank = ranks_.rankOf(item);
      if (rarest == ranks_.size() || counts[rank] < counts[rarest]) rarest = rank;
    }
    return rarest;
  };
  std::vector<std::uint32_t> files(rules_.size());
  for (std::size_t rule = 0; rule < rules_.size(); ++rule) files[rule] = fileOf(rule);
  ordered_.resize(rules_.size());
  std::iota(ordered_.begin(), ordered_.end(), 0U);
  std::sort(ordered_.begin(), ordered_.end(), [&](std::uint32_t a, std::uint32_t b) {
    if (files[a] != files[b]) return files[a] < files[b];
    const int order = compareItemsets(rules_.antecedent(a), rules_.antecedent(b));
    return order != 0 ? order < 0 : compareItemsets(rules_.consequent(a), rules_.consequent(b)) < 0;
  });
  firstAntecedent_.assign(ranks_.size() + 2, 0);
  for (std::size_t begin = 0; begin < ordered_.size();) {
    std::size_t end = begin + 1;
    while (end < ordered_.size() &&
           compareItemsets(rules_.antecedent(ordered_[begin]), rules_.antecedent(ordered_[end])) == 0) {
      ++end;
    }
    antecedents_.push_back({begin, end});
    ++firstAntecedent_[files[ordered_[begin]] + std::size_t{1}];
    begin = end;
  }
  std::partial_sum(firstAntecedent_.begin(), firstAntecedent_.end(), firstAntecedent_.begin());
}

std::vector<Recommendation> Recommender::recommend(std::span<const Item> basket, std::size_t atMost) const {
  Work work(ranks_.size());
  std::vector<Recommendation> found;
  recommend(basket, atMost, work, found);
  return found;
}

Recommendations Recommender::recommend(const Baskets& baskets, std::size_t atMost) const {
  Work work(ranks_.size());
  Recommendations all;
  for (std::size_t i = 0; i < baskets.size(); ++i) {
    recommend(baskets[i], atMost, work, all.recommendations);
    all.offsets.push_back(static_cast<std::int64_t>(all.recommendations.size()));
  }
  return all;
}

void Recommender::recommend(std::span<const Item> basket, std::size_t atMost, Work& work,
                            std::vector<Recommendation>& out) const {
  for (const Item item : basket) {
    const std::uint32_t rank = ranks_.rankOf(item);
    if (rank == detail::ItemRanks::kNone || work.isGiven[rank]) continue;
    work.isGiven[rank] = true;
    work.given.push_back(rank);
  }
  // Whether the one comes before the other as the rule for an item.
  const auto isBetter = [this](std::size_t rule, std::size_t other) {
    if (values_[rule] != values_[other]) return values_[rule] > values_[other];
    const int order = compareItemsets(rules_.antecedent(rule), rules_.antecedent(other));
    return order != 0 ? order < 0 : compareItemsets(rules_.consequent(rule), rules_.consequent(other)) < 0;
  };
  const auto offer = [&](std::size_t rule) {
    if (std::isnan(values_[rule])) return;
    for (const Item item : rules_.consequent(rule)) {
      const std::uint32_t rank = ranks_.rankOf(item);
      if (work.isGiven[rank]) continue;
      std::size_t& best = work.best[rank];
      if (best == Work::kNone) work.found.push_back(rank);
      if (best == Work::kNone || isBetter(rule, best)) best = rule;
    }
  };
  const auto look = [&](std::size_t file) {
    for (std::size_t i = firstAntecedent_[file]; i < firstAntecedent_[file + 1]; ++i) {
      const Antecedent& antecedent = antecedents_[i];
      const std::span<const Item> items = rules_.antecedent(ordered_[antecedent.begin]);
      const bool isHeld = std::all_of(items.begin(), items.end(),
                                      [&](Item item) { return work.isGiven[ranks_.rankOf(item)]; });
      for (std::size_t j = antecedent.begin; isHeld && j < antecedent.end; ++j) offer(ordered_[j]);
    }
  };
  for (const std::uint32_t rank : work.given) look(rank);
  look(ranks_.size());

  const std::size_t begin = out.size();
  for (const std::uint32_t rank : work.found) {
    const std::size_t rule = std::exchange(work.best[rank], Work::kNone);
    out.push_back({ranks_.item(rank), rule, values_[rule]});
  }
  const auto first = out.begin() + static_cast<std::ptrdiff_t>(begin);
  std::sort(first, out.end(), [](const Recommendation& a, const Recommendation& b) {
    return a.value != b.value ? a.value > b.value : a.item < b.item;
  });
  if (out.size() - begin > atMost) out.resize(begin + atMost);
  for (const std::uint32_t rank : work.given) work.isGiven[rank] = false;
  work.given.clear();
  work.found.clear();
}

}  // namespace korassoc
