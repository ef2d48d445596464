#include "korassoc/mining/WholeItemsets.h"

#include <algorithm>
#include <limits>
#include <span>

namespace korassoc::detail {
namespace {

std::size_t sumOf(std::size_t a, std::size_t b) {
  constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
  return a > kMost - b ? kMost : a + b;
}

}  // namespace

WholeItemsets::WholeItemsets(const FlatLattice& lattice, const RuleQuery& query, const SideRoles& roles,
                             std::int64_t minCount, std::int64_t maxCount)
    : lattice_(lattice),
      query_(query),
      roles_(roles),
      minCount_(minCount),
      maxCount_(maxCount),
      shortest_(sumOf(query.antecedent.minLength, query.consequent.minLength)),
      longest_(longestOf(query, lattice)) {}

std::size_t WholeItemsets::longestOf(const RuleQuery& query, const FlatLattice& lattice) {
  return std::min(sumOf(query.antecedent.maxLength, query.consequent.maxLength), lattice.longest());
}

std::vector<FlatLattice::Node> WholeItemsets::find() const {
  if (lattice_.isRegular()) return roles_.required().empty() ? findAll() : findAboveRequired();
  if (query_.selection != RuleSelection::kNonRedundant) return findAlongChains();
  // Every frequent set may make another one redundant, whatever the filters.
  std::vector<Node> found;
  for (Node node = 1; node < lattice_.size(); ++node) {
    if (lattice_.count(node) >= minCount_) found.push_back(node);
  }
  return found;
}

bool WholeItemsets::isWithin(Node node, std::size_t length) const {
  const std::int64_t count = lattice_.count(node);
  return count >= minCount_ && count <= maxCount_ &&
         (roles_.areFree() || roles_.fit(lattice_.items(node, length)));
}

std::vector<FlatLattice::Node> WholeItemsets::findAll() const {
  std::vector<Node> found;
  for (std::size_t length = shortest_; length <= longest_; ++length) {
    for (Node node = lattice_.levelBegin(length); node < lattice_.levelBegin(length + 1); ++node) {
      if (isWithin(node, length)) found.push_back(node);
    }
  }
  return found;
}

// Items are added in ascending order, so each superset is met once. What is not frequent has no frequent
// supersets.
std::vector<FlatLattice::Node> WholeItemsets::findAboveRequired() const {
  struct Met {
    Node node;
    std::size_t length;
    Item added;  // last
  };
  const std::vector<Item>& required = roles_.required();
  const Node least = lattice_.find(required);
  if (least == FlatLattice::kNone || lattice_.count(least) < minCount_) return {};
  std::vector<Met> met = {{least, required.size(), std::numeric_limits<Item>::min()}};
  std::vector<Node> found;
  for (std::size_t i = 0; i < met.size(); ++i) {
    const Met from = met[i];
    if (from.length >= shortest_ && from.length <= longest_ && isWithin(from.node, from.length)) {
      found.push_back(from.node);
    }
    if (from.length >= longest_) continue;
    for (const FlatLattice::UpLink& link : lattice_.up(from.node)) {
      const bool isLater = i == 0 || link.item > from.added;
      if (isLater && lattice_.count(link.node) >= minCount_)
        met.push_back({link.node, from.length + 1, link.item});
    }
  }
  std::sort(found.begin(), found.end());
  return found;
}

std::vector<FlatLattice::Node> WholeItemsets::findAlongChains() const {
  std::vector<Node> found;
  std::vector<bool> isReached = starts();
  for (std::size_t length = 0; length <= longest_; ++length) {
    for (Node node = lattice_.levelBegin(length); node < lattice_.levelBegin(length + 1); ++node) {
      const std::span<const Node> down = lattice_.down(node, length);
      const bool hasChain =
          isReached[node] || std::any_of(down.begin(), down.end(), [&isReached](Node smaller) {
            return smaller != FlatLattice::kNone && isReached[smaller];
          });
      isReached[node] = hasChain && lattice_.count(node) >= minCount_ &&
                        (isReached[node] || roles_.areFree() || roles_.fit(lattice_.items(node, length)));
      if (isReached[node] && length >= shortest_ && isWithin(node, length)) found.push_back(node);
    }
  }
  return found;
}

// Where chains begin: with the required items; else, where one side alone has a list, with each item of it;
// else with nothing.
std::vector<bool> WholeItemsets::starts() const {
  std::vector<bool> isStart(lattice_.size(), false);
  const auto start = [&](std::span<const Item> items) {
    const Node node = lattice_.find(items);
    if (node != FlatLattice::kNone) isStart[node] = true;
  };
  const std::optional<std::vector<Item>>& left = query_.antecedent.allowed;
  const std::optional<std::vector<Item>>& right = query_.consequent.allowed;
  if (!roles_.required().empty() || left.has_value() == right.has_value()) {
    start(roles_.required());
  } else {
    for (const Item& item : left ? *left : *right) start({&item, 1});
  }
  return isStart;
}

}  // namespace korassoc::detail
