// Finds the antecedents of the rules that an itemset gives.

#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "korassoc/mining/FlatLattice.h"

namespace korassoc::detail {

// Which antecedents of an itemset are looked for.
struct AntecedentBounds {
  std::int64_t highestCount = 0;  // transactions: the confidence is reached up to it
  std::size_t shortest = 0;       // sets of this length or less lose no further item
  bool minimalOnly = false;  // only those that can lose no item: what remained would be above highestCount
};

// An antecedent, and its length.
struct Antecedent {
  FlatLattice::Node node;
  std::uint32_t length;
};

// Goes down from a set to ever smaller subsets as long as the confidence is reached. What leaves is the
// consequent: where it does not reach the confidence, no larger consequent of the same set does, for the
// antecedent that is left is a subset, and counted at least as often.
class AntecedentFinder {
 public:
  using Node = FlatLattice::Node;

  explicit AntecedentFinder(const FlatLattice& lattice) : lattice_(lattice) {}

  // Appends the antecedents found below start, and start itself, to found. start reaches the confidence.
  // removable: the positions, ascending, of the items of start that may leave it.
  void run(Node start, std::size_t length, const std::vector<std::uint32_t>& removable,
           const AntecedentBounds& bounds, std::vector<Antecedent>& found);

 private:
  // An item that has left, by its position in the start, and what is left then.
  struct Step {
    std::uint32_t position;
    Node left;
  };

  void runRegular(Node start, std::size_t length, const std::vector<std::uint32_t>& removable,
                  std::vector<Antecedent>& found);
  void extend(std::size_t begin, std::size_t end, std::size_t length, std::vector<Antecedent>& found);
  bool canLoseEarlierItem(Node left, std::size_t length) const;
  void runOdd(Node start, std::size_t length, const std::vector<std::uint32_t>& removable,
              std::vector<Antecedent>& found);
  bool reaches(Node node) const {
    return node != FlatLattice::kNone && lattice_.count(node) <= bounds_.highestCount;
  }

  const FlatLattice& lattice_;
  AntecedentBounds bounds_;
  std::vector<Step> steps_;                // of all depths, one after the other
  std::size_t firstSteps_ = 0;             // how many of them belong to the start
  std::vector<std::uint32_t> consequent_;  // positions of what has left
  std::vector<std::uint32_t> met_;         // by node: the run that met it; made when first needed
  std::uint32_t run_ = 0;
  std::vector<Antecedent> stack_;
};

}  // namespace korassoc::detail
