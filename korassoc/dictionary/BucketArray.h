// The chain heads of a hash table.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "korassoc/base/Prefetch.h"

namespace korassoc::detail {

// An array of chain heads that takes memory for those in use, as long as they are few among very many:
// settings, and saved states above all, may ask for any number of buckets. Up to kAlwaysDense of them it is a
// plain array; beyond, the heads in use stand in a map, until there are enough of them to pay for the array.
//
// Cost: O(1) as an array, O(log heads in use) as a map.
template <typename Node>
class BucketArray {
 public:
  BucketArray() = default;
  // Requires size > 0.
  explicit BucketArray(std::size_t size) : size_(size) {
    if (size <= kAlwaysDense) dense_.resize(size, nullptr);
  }

  bool empty() const { return size_ == 0; }
  std::size_t size() const { return size_; }

  // The first node of a chain, or null.
  Node* head(std::size_t index) const {
    if (!dense_.empty()) return dense_[index];
    const auto found = sparse_.find(index);
    return found != sparse_.end() ? found->second : nullptr;
  }
  // The head itself, to be changed; it stays where it is until the next call.
  Node*& link(std::size_t index) { return !dense_.empty() ? dense_[index] : sparse_[index]; }

  // Starts to fetch a head that is going to be asked for.
  void prefetchLink(std::size_t index) const {
    if (!dense_.empty()) prefetch(&dense_[index]);
  }

  // Tells that a table is going to hold so many nodes.
  void prepareFor(std::size_t nodes) {
    if (dense_.empty() && std::max(nodes, sparse_.size()) > size_ / kBucketsPaidByANode) makeDense();
  }

  // Calls visit(Node*&) for the heads in order of index; null ones may be left out.
  template <typename Visitor>
  void forEachHead(Visitor&& visit) {
    visitHeads(dense_, sparse_, visit);
  }
  template <typename Visitor>
  void forEachHead(Visitor&& visit) const {
    visitHeads(dense_, sparse_, visit);
  }

 private:
  static constexpr std::size_t kAlwaysDense = 1U << 18;  // 2 MiB of heads
  static constexpr std::size_t kBucketsPaidByANode = 64;

  // The nodes lie scattered, so the chains of a group are fetched side by side before they are visited: one
  // after the other, each node would be waited for.
  template <typename Dense, typename Sparse, typename Visitor>
  static void visitHeads(Dense& dense, Sparse& sparse, Visitor& visit) {
    const std::size_t size = dense.size();
    for (std::size_t i = 0; i < size; i += kGroup) {
      const std::size_t end = std::min(i + kGroup, size);
      fetchChains(dense.data() + i, end - i);
      for (std::size_t k = i; k < end; ++k) visit(dense[k]);
    }
    for (auto& [index, head] : sparse) visit(head);
  }

  static void fetchChains(Node* const* heads, std::size_t count) {
    constexpr std::size_t kDeepest = 64;  // beyond, what was fetched first would have to go
    std::array<const Node*, kGroup> nodes;
    std::size_t open = 0;
    const auto reach = [&nodes](std::size_t place, const Node* node) {
      if (node == nullptr) return false;
      nodes[place] = node;
      prefetch(node);
      prefetch(reinterpret_cast<const char*>(node) + kNodeReach);
      return true;
    };
    for (std::size_t i = 0; i < count; ++i) open += reach(open, heads[i]) ? 1 : 0;
    for (std::size_t depth = 1; open > 0 && depth < kDeepest; ++depth) {
      std::size_t stillOpen = 0;
      for (std::size_t i = 0; i < open; ++i) stillOpen += reach(stillOpen, nodes[i]->next) ? 1 : 0;
      open = stillOpen;
    }
  }

  static constexpr std::size_t kGroup = 32;
  static constexpr std::size_t kNodeReach = 64;  // what lies beside the node is looked at, too

  void makeDense() {
    std::vector<Node*> heads(size_, nullptr);
    for (const auto& [index, head] : sparse_) heads[index] = head;
    dense_ = std::move(heads);
    sparse_.clear();
  }

  std::size_t size_ = 0;
  std::vector<Node*> dense_;             // empty while the map is in use
  std::map<std::size_t, Node*> sparse_;  // the heads that were asked for
};

}  // namespace korassoc::detail
