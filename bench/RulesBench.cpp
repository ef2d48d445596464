// Rules and consequents of large lattices: retail.dat has many sets and few rules, mushroom.dat many rules.
// Where they are not present, those of the baskets that come with the source.
//
//   sets     stored itemsets                rules    what a call gives
//   lattice  MB of heap that the engine holds before the first query
//   graph    MB that the first query adds and later ones find
//   candidates  sets that hold the required item and can be split into the rules asked for
//   work     MB that a call takes at its peak beyond the graph and the rules themselves

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "bench/BenchData.h"
#include "bench/HeapBytes.h"
#include "korassoc/dictionary/SemiLattice.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"

namespace {

constexpr double kMega = 1e6;

// An engine with a lattice, and the graph that its first query makes.
class Lattice {
 public:
  Lattice(const std::string& file, double minSupport) {
    const std::string path = bench::optionalData(file);
    transactions_ = bench::readBaskets(path.empty() ? bench::exampleData() : path);
    source_ = std::make_unique<bench::MemoryTransactions>(transactions_);
    settings_.SetSupportSource(new bench::ConstantSupport(2.0));
    const std::size_t before = bench::heapBytes();
    engine_ = std::make_unique<CarmaAssociationAlgorithm>(&settings_, source_.get());
    engine_->RunPhaseIIcomplete(path.empty() ? 3.0 / 10000 : minSupport);
    const std::size_t made = bench::heapBytes();
    std::vector<ConsequentDescriptor> items;
    engine_->GetItems(nullptr, 0, items);
    ItemSet everyItem(0);
    std::vector<AssociationRule> rules;
    engine_->GetRulesSpecial(1.0, 1.0, 1.0, 1.0, 0.0, 'C', &everyItem, nullptr, 1, 1, nullptr, nullptr, 1, 1,
                             0, true, rules);
    latticeBytes_ = made - before;
    graphBytes_ = bench::heapBytes() - made;
  }

  CarmaAssociationAlgorithm& engine() { return *engine_; }
  const bench::Transactions& transactions() const { return transactions_; }

  // The item that is in the most transactions (0), the next (1), ... among those of the lattice; a rank
  // beyond the last counts as the last.
  int itemOfRank(std::size_t rank) {
    std::vector<ConsequentDescriptor> items;
    engine_->GetItems(nullptr, -1, items);
    return items[std::min(rank, items.size() - 1)].getItem();
  }

  void note(benchmark::State& state, std::size_t rules) const {
    state.counters["sets"] = engine_->NumberOfSets();
    state.counters["rules"] = static_cast<double>(rules);
    state.counters["lattice"] = static_cast<double>(latticeBytes_) / kMega;
    state.counters["graph"] = static_cast<double>(graphBytes_) / kMega;
    state.SetItemsProcessed(state.iterations() * static_cast<long>(rules));
  }

 private:
  bench::Transactions transactions_;
  std::unique_ptr<bench::MemoryTransactions> source_;
  CarmaSettings settings_;
  std::unique_ptr<CarmaAssociationAlgorithm> engine_;
  std::size_t latticeBytes_ = 0;
  std::size_t graphBytes_ = 0;
};

// 240,791 sets.
Lattice& retail() {
  static Lattice instance("retail.dat", 0.0001);
  return instance;
}

// 114,029 sets.
Lattice& mushroom() {
  static Lattice instance("mushroom.dat", 0.125);
  return instance;
}

using LatticeOf = Lattice& (*)();

// The peak of one more call, made after those that are timed.
template <typename Query>
void noteWork(benchmark::State& state, Query&& query) {
  std::vector<AssociationRule> rules;
  const std::size_t before = bench::heapBytes();
  bench::resetHeapPeak();
  query(rules);
  const std::size_t grown = bench::heapBytes() - before;
  state.counters["work"] = static_cast<double>(bench::heapPeak() - before - grown) / kMega;
}

template <typename Query>
void runQuery(benchmark::State& state, Lattice& lattice, Query&& query) {
  std::size_t count = 0;
  for (auto _ : state) {
    std::vector<AssociationRule> rules;
    query(rules);
    count = rules.size();
  }
  lattice.note(state, count);
  noteWork(state, query);
}

void CreateNgetRules(benchmark::State& state, LatticeOf latticeOf) {
  Lattice& lattice = latticeOf();
  runQuery(state, lattice,
           [&](std::vector<AssociationRule>& rules) { lattice.engine().CreateNgetRules(0.0, 0.5, rules); });
}
BENCHMARK_CAPTURE(CreateNgetRules, retail, retail)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(CreateNgetRules, mushroom, mushroom)->Unit(benchmark::kMillisecond);

void AllRules(benchmark::State& state, LatticeOf latticeOf) {
  Lattice& lattice = latticeOf();
  runQuery(state, lattice, [&](std::vector<AssociationRule>& rules) {
    lattice.engine().GetRulesSpecial(0.5, 1.0, 0.0, 1.0, 0.0, 'C', nullptr, nullptr, 1, 10, nullptr, nullptr,
                                     1, 10, -1, false, rules);
  });
}
BENCHMARK_CAPTURE(AllRules, retail, retail)->Unit(benchmark::kMillisecond);

// From an item of thousands of sets to one of a few: the time must go down with the number of sets that hold
// the item, whatever the size of the lattice.
void RulesWithARequiredItem(benchmark::State& state) {
  Lattice& lattice = retail();
  ItemSet required(lattice.itemOfRank(static_cast<std::size_t>(state.range(0))));
  runQuery(state, lattice, [&](std::vector<AssociationRule>& rules) {
    lattice.engine().GetRulesSpecial(0.2, 1.0, 0.0, 1.0, 0.0, 'L', &required, nullptr, 1, 2, nullptr, nullptr,
                                     1, 1, 100, false, rules);
  });
  std::set<ItemSet> sets;
  lattice.engine().GetLattice()->findItemSets(required, 0, 1, 3, sets);
  state.counters["candidates"] = static_cast<double>(sets.size());
}
BENCHMARK(RulesWithARequiredItem)
    ->Arg(0)
    ->Arg(10)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond);

// What the three most frequent items lead to: the longest lists that a query of three items can have.
void GetItemsOfFrequentItems(benchmark::State& state) {
  Lattice& lattice = retail();
  const int items[] = {39, 41, 48};
  ItemSet antecedent(items, 3);
  std::vector<ConsequentDescriptor> consequents;
  for (auto _ : state) {
    consequents.clear();
    lattice.engine().GetItems(&antecedent, 10, consequents);
  }
  lattice.note(state, consequents.size());
}
BENCHMARK(GetItemsOfFrequentItems)->Unit(benchmark::kMicrosecond);

// What the baskets of the data themselves lead to, one after the other.
void GetItemsOfBaskets(benchmark::State& state) {
  Lattice& lattice = retail();
  std::vector<ItemSet> baskets;
  for (std::size_t i = 0; i < 1000; ++i) {
    std::vector<int> items = lattice.transactions()[i * 7919 % lattice.transactions().size()];
    std::sort(items.begin(), items.end());
    items.erase(std::unique(items.begin(), items.end()), items.end());
    baskets.emplace_back(items.data(), static_cast<int>(items.size()));
  }
  std::size_t next = 0;
  std::vector<ConsequentDescriptor> consequents;
  for (auto _ : state) {
    consequents.clear();
    lattice.engine().GetItems(&baskets[next], 10, consequents);
    next = (next + 1) % baskets.size();
  }
  lattice.note(state, consequents.size());
}
BENCHMARK(GetItemsOfBaskets)->Unit(benchmark::kMicrosecond);

}  // namespace
