// Rules and consequents of a large lattice: that of generated baskets, or retail.dat where it is present.

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <vector>

#include "bench/BenchData.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"

namespace {

// An engine with the lattice of about 240,000 itemsets.
struct Lattice {
  Lattice() {
    const std::string retail = bench::optionalData("retail.dat");
    const std::string path = retail.empty() ? bench::exampleData() : retail;
    transactions = bench::readBaskets(path);
    source = std::make_unique<bench::MemoryTransactions>(transactions);
    settings.SetSupportSource(new bench::ConstantSupport(2.0));
    engine = std::make_unique<CarmaAssociationAlgorithm>(&settings, source.get());
    engine->RunPhaseIIcomplete(retail.empty() ? 3.0 / 10000 : 0.0001);
  }

  bench::Transactions transactions;
  std::unique_ptr<bench::MemoryTransactions> source;
  CarmaSettings settings;
  std::unique_ptr<CarmaAssociationAlgorithm> engine;
};

Lattice& lattice() {
  static Lattice instance;
  return instance;
}

void note(benchmark::State& state, std::size_t rules) {
  state.counters["sets"] = lattice().engine->NumberOfSets();
  state.counters["rules"] = static_cast<double>(rules);
  state.SetItemsProcessed(state.iterations() * static_cast<long>(rules));
}

// What the rules take is taken out of what the heap grows by while they are made; "work" is the rest, as a
// part of what the lattice takes.
void CreateNgetRules(benchmark::State& state) {
  std::size_t count = 0;
  for (auto _ : state) {
    std::vector<AssociationRule> rules;
    lattice().engine->CreateNgetRules(0.0, 0.5, rules);
    count = rules.size();
  }
  note(state, count);
}
BENCHMARK(CreateNgetRules)->Unit(benchmark::kMillisecond);

void AllRules(benchmark::State& state) {
  std::size_t count = 0;
  for (auto _ : state) {
    std::vector<AssociationRule> rules;
    lattice().engine->GetRulesSpecial(0.5, 1.0, 0.0, 1.0, 0.0, 'C', nullptr, nullptr, 1, 10, nullptr, nullptr,
                                      1, 10, -1, false, rules);
    count = rules.size();
  }
  note(state, count);
}
BENCHMARK(AllRules)->Unit(benchmark::kMillisecond);

void RulesWithARequiredItem(benchmark::State& state) {
  ItemSet required(38);
  std::size_t count = 0;
  lattice();  // made outside the loop
  for (auto _ : state) {
    std::vector<AssociationRule> rules;
    lattice().engine->GetRulesSpecial(0.5, 1.0, 0.0, 1.0, 0.0, 'L', &required, nullptr, 1, 2, nullptr,
                                      nullptr, 1, 1, 100, false, rules);
    count = rules.size();
  }
  note(state, count);
}
BENCHMARK(RulesWithARequiredItem)->Unit(benchmark::kMicrosecond);

void GetItems(benchmark::State& state) {
  const int items[] = {39, 41, 48};
  ItemSet antecedent(items, 3);
  std::size_t count = 0;
  for (auto _ : state) {
    std::vector<ConsequentDescriptor> consequents;
    lattice().engine->GetItems(&antecedent, 10, consequents);
    count = consequents.size();
  }
  note(state, count);
}
BENCHMARK(GetItems)->Unit(benchmark::kMicrosecond);

}  // namespace
