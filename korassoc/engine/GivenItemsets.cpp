#include "korassoc/engine/GivenItemsets.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>
#include <stdexcept>

#include "korassoc/engine/ItemsetWalk.h"
#include "korassoc/engine/TransactionIndex.h"

namespace korassoc::detail {

namespace {

// As of the complete pass: small enough to stay near the processor while it is counted.
constexpr int kBlockTransactions = 1 << 15;
constexpr std::uint64_t kBlockBytes = std::uint64_t{1} << 23;

}  // namespace

// Leads an ItemsetWalk along the tree and takes the counts of the sets in it.
class GivenItemsets::Guide {
 public:
  explicit Guide(GivenItemsets& sets) : sets_(sets), firstNode_(1, 0) {}

  int* enter(std::size_t depth, std::uint32_t column, std::size_t rows) {
    const Node& node = sets_.nodes_[firstNode_[depth] + column];
    if (rows == 0 || node.childCount == 0) return nullptr;
    if (firstNode_.size() < depth + 2) firstNode_.resize(depth + 2);
    firstNode_[depth + 1] = node.firstChild;
    child_ = sets_.nodes_.data() + node.firstChild;
    end_ = child_ + node.childCount;
    counts_.assign(std::max<std::size_t>(counts_.size(), column), 0);
    return counts_.data();
  }

  std::uint32_t nextKept(std::size_t /*depth*/, std::uint32_t /*from*/, std::uint32_t end) {
    if (child_ == end_ || child_->column >= end) return end;
    child_->count += counts_[child_->column];
    return (child_++)->column;
  }

  bool goesOn() {
    if (sets_.cancelled_()) stopped_ = true;
    return !stopped_;
  }
  bool stopped() const { return stopped_; }

 private:
  GivenItemsets& sets_;
  bool stopped_ = false;
  std::vector<std::size_t> firstNode_;  // by depth: the node of column 0
  Node* child_ = nullptr;               // the next one to be kept
  Node* end_ = nullptr;
  std::vector<int> counts_;  // by column, of the rows swept last
};

GivenItemsets::GivenItemsets(std::span<const std::int64_t> offsets, std::span<const int> items,
                             const Cancelled& cancelled)
    : offsets_(offsets.begin(), offsets.end()), cancelled_(cancelled) {
  if (items.size() > std::numeric_limits<std::uint32_t>::max())
    throw std::length_error("too many items to count");
  ranks_.reserve(items.size());
  for (const int item : items) ranks_.push_back(codes_.codeOf(item));
  for (std::size_t set = 0; set + 1 < offsets_.size(); ++set) {
    longest_ = std::max(longest_, static_cast<std::size_t>(offsets_[set + 1] - offsets_[set]));
  }
  itemCounts_.resize(codes_.size(), 0);
  lastSeen_.resize(codes_.size(), 0);
}

// --- Transactions ---

bool GivenItemsets::add(const Transaction& transaction) {
  const int length = transaction.GetLength();
  ++transactions_;
  row_.clear();
  for (int i = 0; i < length; ++i) {
    const std::uint32_t code = codes_.find(transaction.GetItem(i));
    if (code == ItemCodes::kNone || lastSeen_[code] == transactions_) continue;
    lastSeen_[code] = transactions_;
    ++itemCounts_[code];
    row_.push_back(code);
  }
  if (rankOf_.empty()) {
    unranked_.insert(unranked_.end(), row_.begin(), row_.end());
    unranked_.push_back(RankedRows::kRowEnd);
  } else {
    addRow();
  }
  ++blockTransactions_;
  const std::size_t cells = std::max(unranked_.size(), block_.cells().size());
  const bool isFull =
      blockTransactions_ >= kBlockTransactions || TransactionIndex::bytesFor(cells, 0) >= kBlockBytes;
  return !isFull || offsets_.size() < 2 || countBlock();
}

// Adds the codes in row_ to the block, as ranks.
void GivenItemsets::addRow() {
  if (row_.size() < 2) return;
  for (std::uint32_t& cell : row_) cell = rankOf_[cell];
  std::sort(row_.begin(), row_.end());
  block_.addRow(row_);
}

bool GivenItemsets::finish() { return offsets_.size() < 2 || countBlock(); }

bool GivenItemsets::countBlock() {
  if (rankOf_.empty()) {
    rankItems();
    plant();
    row_.clear();
    for (const std::uint32_t code : unranked_) {
      if (code != RankedRows::kRowEnd) {
        row_.push_back(code);
        continue;
      }
      addRow();
      row_.clear();
    }
    unranked_ = {};
  }
  block_.listOccurrences(rankOf_.size());
  Guide guide(*this);
  ItemsetWalk<Guide>(guide, longest_).walk(block_, 0, rankOf_.size());
  block_.clear();
  blockTransactions_ = 0;
  return !guide.stopped();
}

std::vector<int> GivenItemsets::counts() const {
  std::vector<int> counts;
  counts.reserve(nodeOf_.size());
  for (std::size_t set = 0; set < nodeOf_.size(); ++set) {
    const bool isSingle = offsets_[set + 1] - offsets_[set] == 1;
    const auto item = static_cast<std::size_t>(offsets_[set]);
    counts.push_back(isSingle ? itemCounts_[codeOf_[ranks_[item]]] : nodes_[nodeOf_[set]].count);
  }
  return counts;
}

// --- The tree ---

// The most frequent item first. Replaces the codes of the sets by ranks, falling.
void GivenItemsets::rankItems() {
  codeOf_.resize(codes_.size());
  std::iota(codeOf_.begin(), codeOf_.end(), 0U);
  std::stable_sort(codeOf_.begin(), codeOf_.end(),
                   [this](std::uint32_t a, std::uint32_t b) { return itemCounts_[a] > itemCounts_[b]; });
  rankOf_.resize(codes_.size());
  for (std::uint32_t rank = 0; rank < codeOf_.size(); ++rank) rankOf_[codeOf_[rank]] = rank;
  for (std::uint32_t& code : ranks_) code = rankOf_[code];
  for (std::size_t set = 0; set + 1 < offsets_.size(); ++set) {
    std::sort(ranks_.begin() + offsets_[set], ranks_.begin() + offsets_[set + 1], std::greater<>());
  }
}

void GivenItemsets::plant() {
  const std::size_t sets = offsets_.size() - 1;
  nodeOf_.assign(sets, 0);
  std::vector<Rest> rests;
  rests.reserve(sets);
  for (std::uint32_t set = 0; set < sets; ++set) {
    rests.push_back(
        {set, static_cast<std::uint32_t>(offsets_[set]), static_cast<std::uint32_t>(offsets_[set + 1])});
  }
  std::sort(rests.begin(), rests.end(), [this](const Rest& a, const Rest& b) {
    return std::lexicographical_compare(ranks_.begin() + a.begin, ranks_.begin() + a.end,
                                        ranks_.begin() + b.begin, ranks_.begin() + b.end);
  });
  const auto singles = static_cast<std::uint32_t>(rankOf_.size());
  for (std::uint32_t rank = 0; rank < singles; ++rank) {
    nodes_.push_back({rank, 0, 0, 0});
    rankOfNode_.push_back(rank);
  }
  buildChildren(0, singles, rests);
  rankOfNode_ = {};
}

// Gives some siblings, [first, end), their children. Each rest begins with the item of one of them; they are
// in the order of these.
void GivenItemsets::buildChildren(std::uint32_t first, std::uint32_t end, std::span<Rest> rests) {
  std::vector<std::uint32_t> added;
  for (std::uint32_t node = first; node < end && !rests.empty(); ++node) {
    std::size_t own = 0;
    while (own < rests.size() && ranks_[rests[own].begin] == rankOfNode_[node]) ++own;
    std::span<Rest> longer = rests.first(own);
    rests = rests.subspan(own);
    for (; !longer.empty() && longer.front().begin + 1 == longer.front().end; longer = longer.subspan(1)) {
      nodeOf_[longer.front().set] = node;
    }
    added.clear();
    for (Rest& rest : longer) {
      ++rest.begin;
      added.insert(added.end(), ranks_.begin() + rest.begin, ranks_.begin() + rest.end);
    }
    std::sort(added.begin(), added.end());
    added.erase(std::unique(added.begin(), added.end()), added.end());
    const auto firstChild = static_cast<std::uint32_t>(nodes_.size());
    nodes_[node].firstChild = firstChild;
    nodes_[node].childCount = static_cast<std::uint32_t>(added.size());
    for (const std::uint32_t rank : added) {
      const auto sibling = std::lower_bound(rankOfNode_.begin() + first, rankOfNode_.begin() + end, rank);
      nodes_.push_back({static_cast<std::uint32_t>(sibling - rankOfNode_.begin()) - first, 0, 0, 0});
      rankOfNode_.push_back(rank);
    }
    buildChildren(firstChild, static_cast<std::uint32_t>(nodes_.size()), longer);
  }
}

}  // namespace korassoc::detail
