#include "korassoc/mining/AntecedentFinder.h"

#include <algorithm>
#include <span>

namespace korassoc::detail {

void AntecedentFinder::run(Node start, std::size_t length, const std::vector<std::uint32_t>& removable,
                           const AntecedentBounds& bounds, std::vector<Antecedent>& found) {
  bounds_ = bounds;
  if (lattice_.isRegular()) {
    runRegular(start, length, removable, found);
  } else {
    runOdd(start, length, removable, found);
  }
}

// --- Regular lattices ---

// Consequents grow by items at ever higher positions, so each is met once. Of two consequents that differ in
// their last item, both within the confidence, the union is tried; all others are sure to miss it.
void AntecedentFinder::runRegular(Node start, std::size_t length, const std::vector<std::uint32_t>& removable,
                                  std::vector<Antecedent>& found) {
  steps_.clear();
  consequent_.clear();
  if (length > bounds_.shortest) {
    const std::span<const Node> down = lattice_.down(start, length);
    for (const std::uint32_t position : removable) {
      if (reaches(down[position])) steps_.push_back({position, down[position]});
    }
  }
  firstSteps_ = steps_.size();
  if (!bounds_.minimalOnly || steps_.empty()) {
    found.push_back({start, static_cast<std::uint32_t>(length)});
  }
  if (!steps_.empty()) extend(0, steps_.size(), length - 1, found);
}

// Reports what the steps [begin, end) leave, sets of so many items, and goes on from each.
void AntecedentFinder::extend(std::size_t begin, std::size_t end, std::size_t length,
                              std::vector<Antecedent>& found) {
  const std::size_t gone = consequent_.size() + 1;  // all at lower positions than the later steps
  for (std::size_t i = begin; i < end; ++i) {
    const Node left = steps_[i].left;
    const std::size_t next = steps_.size();
    consequent_.push_back(steps_[i].position);
    if (length > bounds_.shortest) {
      const std::span<const Node> down = lattice_.down(left, length);
      for (std::size_t j = i + 1; j < end; ++j) {
        const std::uint32_t position = steps_[j].position;
        const Node smaller = down[position - gone];
        if (reaches(smaller)) steps_.push_back({position, smaller});
      }
    }
    const bool isMinimal =
        !bounds_.minimalOnly || (steps_.size() == next && !canLoseEarlierItem(left, length));
    if (isMinimal) found.push_back({left, static_cast<std::uint32_t>(length)});
    if (steps_.size() > next) extend(next, steps_.size(), length - 1, found);
    steps_.resize(next);
    consequent_.pop_back();
  }
}

// Whether an item before the last one that has left could follow it. Only those can that could leave the
// start alone.
bool AntecedentFinder::canLoseEarlierItem(Node left, std::size_t length) const {
  if (length <= bounds_.shortest) return false;
  const std::span<const Node> down = lattice_.down(left, length);
  std::size_t gone = 0;
  for (std::size_t i = 0; i < firstSteps_; ++i) {
    const std::uint32_t position = steps_[i].position;
    if (position == consequent_.back()) return false;
    if (position == consequent_[gone]) {
      ++gone;
    } else if (reaches(down[position - gone])) {
      return true;
    }
  }
  return false;
}

// --- Lattices with gaps, or with counts that do not fall ---

// Every set is met along whatever chain of links leads to it.
void AntecedentFinder::runOdd(Node start, std::size_t length, const std::vector<std::uint32_t>& removable,
                              std::vector<Antecedent>& found) {
  if (met_.empty()) met_.resize(lattice_.size(), 0);
  if (++run_ == 0) {
    std::fill(met_.begin(), met_.end(), 0U);
    run_ = 1;
  }
  const std::span<const Item> all = lattice_.items(start, length);
  stack_.assign(1, {start, static_cast<std::uint32_t>(length)});
  while (!stack_.empty()) {
    const Antecedent set = stack_.back();
    stack_.pop_back();
    bool canLose = false;
    if (set.length > bounds_.shortest) {
      const std::span<const Item> items = lattice_.items(set.node, set.length);
      const std::span<const Node> down = lattice_.down(set.node, set.length);
      auto next = removable.begin();
      for (std::uint32_t i = 0; i < set.length; ++i) {
        while (next != removable.end() && all[*next] < items[i]) ++next;
        if (next == removable.end() || all[*next] != items[i] || !reaches(down[i])) continue;
        canLose = true;
        if (met_[down[i]] == run_) continue;
        met_[down[i]] = run_;
        stack_.push_back({down[i], set.length - 1});
      }
    }
    if (!bounds_.minimalOnly || !canLose) found.push_back(set);
  }
}

}  // namespace korassoc::detail
