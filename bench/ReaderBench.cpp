// Reading basket files: the bytes of the file a second, from opening it to the baskets in memory.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <optional>
#include <string>

#include "bench/BenchData.h"
#include "cli/input/Input.h"
#include "cli/input/LineReader.h"

namespace {

void readFile(benchmark::State& state, const std::string& path) {
  using namespace korassoc::cli;
  if (path.empty()) {
    state.SkipWithError("the file is not there");
    return;
  }
  std::size_t baskets = 0;
  for (auto _ : state) {
    const BasketInput input = LineReader(std::nullopt).read(Input::open(path));
    baskets = input.baskets.size();
  }
  state.counters["baskets"] = static_cast<double>(baskets);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(path)));
}

void ReadIntegers_T10(benchmark::State& state) { readFile(state, bench::optionalData("T10I4D100K.dat")); }
BENCHMARK(ReadIntegers_T10)->Unit(benchmark::kMillisecond);

void ReadIntegers_Retail(benchmark::State& state) { readFile(state, bench::optionalData("retail.dat")); }
BENCHMARK(ReadIntegers_Retail)->Unit(benchmark::kMillisecond);

void ReadLabels_Example(benchmark::State& state) { readFile(state, bench::exampleData()); }
BENCHMARK(ReadLabels_Example)->Unit(benchmark::kMillisecond);

}  // namespace
