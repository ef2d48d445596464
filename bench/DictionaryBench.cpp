// The dictionary and the step of phase I in isolation. Seeded, so that every run does the same work.

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <vector>

#include "bench/BenchData.h"
#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/DictionarySettings.h"

namespace {

constexpr int kItems = 1000;

std::vector<int> randomPair(std::mt19937& random) {
  const int a = static_cast<int>(random() % kItems);
  const int b = static_cast<int>(random() % kItems);
  return {std::min(a, b), std::max(a, b) + 1};
}

// Pairs of 1000 items, as many as the argument says; half of those sought are absent.
void SetDictionary_IncrementPairs(benchmark::State& state) {
  DictionarySettings settings;
  SetDictionary dictionary(10, &settings, true);
  std::mt19937 random(1);
  const auto wanted = static_cast<int>(state.range(0));
  std::vector<std::vector<int>> sought;
  while (dictionary.levelTable(2).count() < wanted) {
    const std::vector<int> pair = randomPair(random);
    if (dictionary.getDescriptor(pair.data(), 2) != nullptr) continue;
    dictionary.addSet(pair.data(), 2, new CarmaSetDescriptor(1, 1, 0));
    sought.push_back(pair);
    sought.push_back(randomPair(random));
  }
  std::shuffle(sought.begin(), sought.end(), random);
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(dictionary.incrementSet(sought[next].data(), 2));
    next = next + 1 < sought.size() ? next + 1 : 0;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(SetDictionary_IncrementPairs)->ArgName("pairs")->Range(1 << 10, 1 << 18);

// One phase I over the example baskets; items are transactions.
void Engine_PhaseI(benchmark::State& state) {
  const bench::Transactions transactions = bench::readBaskets(bench::exampleData());
  for (auto _ : state) {
    CarmaSettings settings;
    settings.SetSupportSource(new bench::ConstantSupport(1.0 / static_cast<double>(state.range(0))));
    bench::MemoryTransactions source(transactions);
    CarmaAssociationAlgorithm engine(&settings, &source);
    engine.RunPhaseI(static_cast<int>(transactions.size()));
    benchmark::DoNotOptimize(engine.NumberOfSets());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long>(transactions.size()));
}
BENCHMARK(Engine_PhaseI)->ArgName("oneIn")->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

}  // namespace
