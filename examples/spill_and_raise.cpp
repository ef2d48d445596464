// Counts the articles of a large catalogue under a memory limit with the help of the spill file, and shows
// what it takes for that to work.
//
//   spill_and_raise
//
// A shop sells 300 articles regularly and has a tail of 30,000 that sell once in a while. Between two
// prunings the tail fills the memory with sets that the next pruning will remove. With spilling on they go to
// the disk instead, and so do the regular articles that come when the memory is full already. At the pruning
// the disk's tail is dropped and its regular articles come back, and for that there must be room in memory:
// so the host raises the limit for the pruning alone and lowers it again after. It does that in HasNext(),
// which the engine calls before it reads each transaction and once more when there are no more.
//
// The spill file takes sets of one item, so that is what is counted here; who wants pairs mines the baskets
// again, reduced to the articles that this run has found.
//
// Three runs over the same baskets: with the limit alone, with the limit raised for the prunings, and without
// limit. The last two must agree in every frequent article and its count; the exit code says whether they do.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <limits>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "korassoc/korassoc.h"

namespace {

constexpr int kBaskets = 6000;
constexpr int kRegular = 300;
constexpr int kTail = 30000;
constexpr int kPruneEvery = 500;
constexpr int kMostSets = 200;
constexpr int kUnlimited = std::numeric_limits<int>::max();
constexpr double kSupport = 0.02;

class Basket final : public Transaction {
 public:
  int GetItem(int position) const override { return items[static_cast<std::size_t>(position)]; }
  int GetTransactionID() const override { return 0; }
  int GetLength() const override { return static_cast<int>(items.size()); }

  std::vector<int> items;
};

// Every basket has ten draws of the regular articles, 1 to kRegular, and four of the tail behind them.
std::vector<Basket> makeBaskets() {
  std::vector<Basket> baskets(kBaskets);
  std::uint64_t state = 2026;
  const auto draw = [&state](int from, int to) {
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    return from + static_cast<int>((state >> 33) % static_cast<std::uint64_t>(to - from + 1));
  };
  for (Basket& basket : baskets) {
    std::set<int> items;
    for (int i = 0; i < 10; ++i) items.insert(draw(1, kRegular));
    for (int i = 0; i < 4; ++i) items.insert(draw(kRegular + 1, kRegular + kTail));
    basket.items.assign(items.begin(), items.end());
  }
  return baskets;
}

class Support final : public SupportSource {
 public:
  double GetSupport(int) override { return kSupport; }
};

// The host's transactions, and the place from which it steers the limit.
class Baskets final : public MultiPassTransIter {
 public:
  explicit Baskets(std::vector<Basket> baskets) : baskets_(std::move(baskets)) {}
  // From now on the engine's limit is `most` sets, and none at all while it prunes.
  void steer(CarmaAssociationAlgorithm* engine, int most) {
    engine_ = engine;
    most_ = most;
  }
  // The most sets that were in memory and on the disk together.
  int peak() const { return peak_; }

  bool HasNext() override {
    const bool more = position_ < baskets_.size();
    if (engine_ != nullptr) {
      peak_ = std::max(peak_, engine_->NumberOfSets());
      const bool prunesNext = !more || (position_ + 1) % kPruneEvery == 0;
      engine_->SetMaxInStoreSets(prunesNext ? kUnlimited : most_);
    }
    return more;
  }
  Transaction* Next() override { return position_ < baskets_.size() ? &baskets_[position_++] : nullptr; }
  int Rewind() override { return Restart(); }
  int Restart() override {
    position_ = 0;
    return 0;
  }

 private:
  std::vector<Basket> baskets_;
  std::size_t position_ = 0;
  CarmaAssociationAlgorithm* engine_ = nullptr;
  int most_ = kUnlimited;
  int peak_ = 0;
};

struct Outcome {
  KorAssoc::KorStatus phaseI;
  KorAssoc::KorStatus phaseII;
  int peak = 0;                 // sets
  int read = 0;                 // baskets
  std::map<int, int> frequent;  // article, and in how many baskets
};

Outcome run(int mostSets, bool raises) {
  CarmaSettings settings;
  settings.SetSupportSource(new Support);
  settings.SetRemoveSmallFreq(kPruneEvery);
  settings.SetMaxLengthSet(1);
  DictionarySettings& memory = settings.GetDictionarySettings();
  memory.SetMaxInStoreSets(mostSets);
  memory.SetLeaveInMainStoreCount(1);  // what was met a second time stays
  memory.SetDiskSpill(mostSets != kUnlimited);

  Baskets baskets(makeBaskets());
  CarmaAssociationAlgorithm engine(&settings, &baskets);
  if (raises) baskets.steer(&engine, mostSets);

  Outcome outcome;
  outcome.phaseI = engine.RunPhaseI(kBaskets + 1);
  outcome.peak = baskets.peak();
  outcome.read = engine.NumberOfTransactions();
  if (!outcome.phaseI.IsOK()) return outcome;
  outcome.phaseII = engine.RunPhaseII();
  if (!outcome.phaseII.IsOK()) return outcome;

  const auto* sets = dynamic_cast<const SetDictionary*>(engine.GetLattice());
  if (sets == nullptr) return outcome;
  sets->levelTable(1).forEach([&outcome](const HashTable::Entry& entry) {
    outcome.frequent[entry.key->getItemAt(0)] = entry.descriptor->count;
  });
  return outcome;
}

}  // namespace

int main() {
  std::cout << "Limit of " << kMostSets << " sets, left as it is:" << std::endl;
  const Outcome limited = run(kMostSets, false);
  std::cout << "  phase I ends with code " << limited.phaseI.GetCode() << " after " << limited.read << " of "
            << kBaskets << " baskets" << std::endl;
  const Outcome raised = run(kMostSets, true);
  std::cout << "Limit of " << kMostSets << " sets, raised for the prunings:\n  " << raised.frequent.size()
            << " frequent articles; at the most " << raised.peak << " sets, in memory and on disk"
            << std::endl;
  const Outcome unlimited = run(kUnlimited, false);
  std::cout << "No limit:\n  " << unlimited.frequent.size() << " frequent articles" << std::endl;
  const bool same = raised.frequent == unlimited.frequent && !unlimited.frequent.empty();
  std::cout << (same ? "The same articles with the same counts.\n" : "The results differ.\n");
  return same && !limited.phaseI.IsOK() ? 0 : 1;
}
