#include "korassoc/dictionary/LatticeGraph.h"

#include <algorithm>
#include <utility>

#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/itemsets/ItemCode.h"

namespace korassoc::detail {

namespace {

// The first two items as one number, in the order of signed numbers: they decide nearly always, and comparing
// them costs less than going to the sets.
std::uint64_t head(const ItemSet& set) {
  const auto ordered = [](int item) { return static_cast<std::uint32_t>(item) ^ 0x80000000U; };
  const std::uint64_t first = set.length() > 0 ? ordered(set.getItemAt(0)) : 0;
  return (first << 32) | (set.length() > 1 ? ordered(set.getItemAt(1)) : 0);
}

int countOf(const SetCounter* descriptor) { return descriptor != nullptr ? descriptor->count : 0; }

// Where an entry stands in its table.
struct Place {
  std::uint64_t head;
  HashTable::Entry* entry;
  int inTable;

  bool operator<(const Place& other) const {
    return head != other.head ? head < other.head : *entry->key < *other.entry->key;
  }
};

}  // namespace

LatticeGraph::LatticeGraph(const SetDictionary& dictionary) {
  const int levels = dictionary.storedLevels() + 1;
  indexes_.reserve(static_cast<std::size_t>(levels));
  levelBegins_.push_back(0);
  for (int level = 0; level < levels; ++level) addLevel(dictionary.levelTable(level), level);
  linkDown();
  linkUp();
  readCounts();
}

void LatticeGraph::readCounts() {
  counts_.resize(descriptors_.size());
  std::transform(descriptors_.begin(), descriptors_.end(), counts_.begin(), countOf);
  for (UpLink& link : up_) link.count = link.node != kNone ? count(link.node) : 0;
}

bool LatticeGraph::hasCurrentCounts() const {
  return std::equal(counts_.begin(), counts_.end(), descriptors_.begin(),
                    [](int count, const SetCounter* descriptor) { return count == countOf(descriptor); });
}

void LatticeGraph::addLevel(const HashTable& table, int level) {
  std::vector<Place> places;
  places.reserve(static_cast<std::size_t>(table.count()));
  table.forEach([&](HashTable::Entry& entry) {
    places.push_back({head(*entry.key), &entry, static_cast<int>(places.size())});
  });
  std::sort(places.begin(), places.end());
  std::vector<HashTable::Entry*> entries;
  entries.reserve(places.size());
  const std::size_t begin = sets_.size();
  tableOrder_.resize(begin + places.size());
  for (const Place& place : places) {
    const ItemSet& set = *place.entry->key;
    tableOrder_[begin + static_cast<std::size_t>(place.inTable)] = size();
    entries.push_back(place.entry);
    sets_.push_back(&set);
    descriptors_.push_back(place.entry->descriptor);
    codes_.push_back(setCode(set.getTheArray(), set.length()));
  }
  indexes_.emplace_back(std::move(entries), level);
  levelBegins_.push_back(size());
}

void LatticeGraph::linkDown() {
  downBegins_.reserve(sets_.size() + 1);
  downBegins_.push_back(0);
  for (int level = 0; level < levels(); ++level) {
    for (int node = levelBegin(level); node < levelBegin(level + 1); ++node) {
      const ItemSet& whole = set(node);
      const std::uint64_t code = codes_[static_cast<std::size_t>(node)];
      for (int omitted = 0; omitted < whole.length(); ++omitted) {
        const int number = indexes_[static_cast<std::size_t>(level - 1)].findWithout(whole, code, omitted);
        down_.push_back(number != SubsetIndex::kNone ? levelBegin(level - 1) + number : kNone);
      }
      downBegins_.push_back(down_.size());
    }
  }
}

// The links are those of the descriptors' lists; the links down, turned round, tell which nodes they lead to.
void LatticeGraph::linkUp() {
  upBegins_.assign(sets_.size() + 1, 0);
  for (std::size_t node = 0; node < sets_.size(); ++node) {
    const auto* lattice = dynamic_cast<const LatticeSetDescriptor*>(descriptors_[node]);
    upBegins_[node + 1] =
        upBegins_[node] + (lattice != nullptr ? static_cast<std::size_t>(lattice->adjacent.count) : 0);
  }
  up_.resize(upBegins_.back());
  for (std::size_t node = 0; node < sets_.size(); ++node) {
    const std::size_t count = upBegins_[node + 1] - upBegins_[node];
    if (count == 0) continue;
    const int* items = static_cast<const LatticeSetDescriptor*>(descriptors_[node])->adjacent.data;
    for (std::size_t i = 0; i < count; ++i) up_[upBegins_[node] + i] = {items[i], kNone, 0};
  }
  // In the order of the nodes, the supersets of a set come in the order of the item that they add.
  std::vector<std::size_t> next(upBegins_.begin(), upBegins_.end() - 1);
  for (int node = 0; node < size(); ++node) {
    const std::span<const int> subsets = down(node);
    for (std::size_t i = 0; i < subsets.size(); ++i) {
      if (subsets[i] == kNone) continue;
      const auto subset = static_cast<std::size_t>(subsets[i]);
      const int item = set(node).getItemAt(static_cast<int>(i));
      std::size_t& link = next[subset];
      const std::size_t end = upBegins_[subset + 1];
      while (link < end && up_[link].item < item) ++link;
      for (std::size_t same = link; same < end && up_[same].item == item; ++same) up_[same].node = node;
    }
  }
}

int LatticeGraph::find(const int* items, int length) const {
  if (length < 0 || length >= levels()) return kNone;
  const int number = indexes_[static_cast<std::size_t>(length)].find(items, length);
  return number != SubsetIndex::kNone ? levelBegin(length) + number : kNone;
}

int LatticeGraph::findDifference(int whole, int subset) const {
  const auto index = static_cast<std::size_t>(length(whole) - length(subset));
  const std::uint64_t code =
      codes_[static_cast<std::size_t>(whole)] - codes_[static_cast<std::size_t>(subset)];
  const int number = indexes_[index].findDifference(set(whole), set(subset), code);
  return number != SubsetIndex::kNone ? levelBegin(static_cast<int>(index)) + number : kNone;
}

LatticeGraph::LentMarks LatticeGraph::lendMarks() const {
  std::unique_ptr<NodeMarks> marks;
  if (marks_.empty()) {
    marks = std::make_unique<NodeMarks>(size());
    marks_.reserve(marks_.capacity() + 1);  // giving it back allocates nothing
  } else {
    marks = std::move(marks_.back());
    marks_.pop_back();
  }
  marks->forget();
  marks->nextRound();
  return LentMarks(marks.release(), GiveBack{this});
}

void LatticeGraph::GiveBack::operator()(NodeMarks* marks) const { graph->marks_.emplace_back(marks); }

}  // namespace korassoc::detail
