// Saving and restoring a dictionary of a million sets, which is all but a few bytes of an engine's state. The
// counter of_plain tells how many times as long a plain fwrite or fread of as many bytes takes: 1 would be as
// fast, 10 means a tenth of the speed.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/BenchData.h"
#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/DictionarySettings.h"

namespace {

constexpr int kMaxLevel = 10;
constexpr int kSets = 1000000;

// Itemsets as phase I leaves them on a large file: single items, then mostly pairs and triples, some larger
// ones.
std::unique_ptr<SetDictionary> madeDictionary(DictionarySettings& settings) {
  auto dictionary = std::make_unique<SetDictionary>(kMaxLevel, &settings, true);
  dictionary->addEmptySet(new CarmaSetDescriptor(1000000, 0, 0));
  std::mt19937 random(5);
  constexpr int kItems = 10000;
  for (int item = 0; item < kItems; ++item) {
    dictionary->addSet(&item, 1, new CarmaSetDescriptor(100, item, 0));
  }
  std::vector<int> items;
  while (dictionary->inStoreCount() < kSets) {
    const auto kind = random() % 16;
    items.assign(kind < 9 ? 2 : kind < 14 ? 3 : 4, 0);
    for (int& item : items) item = static_cast<int>(std::min(random() % kItems, random() % kItems));
    std::sort(items.begin(), items.end());
    if (std::adjacent_find(items.begin(), items.end()) != items.end()) continue;
    const int length = static_cast<int>(items.size());
    if (dictionary->getDescriptor(items.data(), length) != nullptr) continue;
    dictionary->addSet(items.data(), length, new CarmaSetDescriptor(3, static_cast<int>(random() >> 8), 2));
  }
  return dictionary;
}

// The dictionary and files with its two records, made once.
class Saved {
 public:
  static Saved& instance() {
    static Saved saved;
    return saved;
  }
  ~Saved() {
    for (const std::string& path : {binary, xml, plain}) std::remove(path.c_str());
  }

  std::fstream writer() const {
    return std::fstream(binary, std::ios::in | std::ios::out | std::ios::binary | std::ios::trunc);
  }

  DictionarySettings settings;
  std::unique_ptr<SetDictionary> dictionary = madeDictionary(settings);
  const std::string binary = path("binary");
  const std::string xml = path("xml");
  const std::string plain = path("plain");

 private:
  Saved() {
    std::fstream stream = writer();
    dictionary->writeObject(stream);
    std::ofstream text(xml);
    dictionary->writeObjectXML(text);
  }
  static std::string path(const char* kind) {
    static const unsigned run = std::random_device()();
    return (std::filesystem::temp_directory_path() / ("korassoc-bench-" + std::to_string(run) + kind))
        .string();
  }
};

std::vector<char> contents(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

double plainWrite(const std::vector<char>& bytes, const std::string& path) {
  const double start = bench::processorSeconds();
  std::FILE* file = std::fopen(path.c_str(), "wb");
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
  return bench::processorSeconds() - start;
}

double plainRead(std::vector<char>& bytes, const std::string& path) {
  const double start = bench::processorSeconds();
  std::FILE* file = std::fopen(path.c_str(), "rb");
  benchmark::DoNotOptimize(std::fread(bytes.data(), 1, bytes.size(), file));
  std::fclose(file);
  return bench::processorSeconds() - start;
}

// Runs the work, as often as it takes, on a file of that size, beside plain work on as many bytes.
template <typename Work>
void measure(benchmark::State& state, const std::string& file, bool writes, Work&& work) {
  std::vector<char> bytes = contents(file);
  double plainSeconds = 1e9;
  for (int i = 0; i < 5; ++i) {
    const double written = plainWrite(bytes, Saved::instance().plain);
    const double read = plainRead(bytes, Saved::instance().plain);
    plainSeconds = std::min(plainSeconds, writes ? written : read);
  }
  const double start = bench::processorSeconds();
  double paused = 0.0;
  for (auto _ : state) paused += work();
  const double seconds =
      (bench::processorSeconds() - start - paused) / static_cast<double>(state.iterations());
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
  state.counters["file_MB"] = static_cast<double>(bytes.size()) / 1e6;
  state.counters["MB_per_s"] = static_cast<double>(bytes.size()) / 1e6 / seconds;
  state.counters["of_plain"] = seconds / plainSeconds;
}

void State_SaveBinary(benchmark::State& state) {
  const Saved& saved = Saved::instance();
  measure(state, saved.binary, true, [&] {
    std::fstream stream = saved.writer();
    benchmark::DoNotOptimize(saved.dictionary->writeObject(stream));
    return 0.0;
  });
}
BENCHMARK(State_SaveBinary)->Unit(benchmark::kMillisecond);

void State_SaveXML(benchmark::State& state) {
  const Saved& saved = Saved::instance();
  measure(state, saved.xml, true, [&] {
    std::ofstream stream(saved.xml);
    benchmark::DoNotOptimize(saved.dictionary->writeObjectXML(stream));
    return 0.0;
  });
}
BENCHMARK(State_SaveXML)->Unit(benchmark::kMillisecond);

// The time to delete what was restored is not part of restoring it.
template <typename Read>
double restored(benchmark::State& state, Read&& read) {
  DictionarySettings settings;
  auto dictionary = std::make_unique<SetDictionary>(kMaxLevel, &settings, true);
  read(*dictionary);
  state.PauseTiming();
  const double start = bench::processorSeconds();
  if (dictionary->inStoreCount() != kSets) state.SkipWithError("restored something else");
  dictionary.reset();
  const double paused = bench::processorSeconds() - start;
  state.ResumeTiming();
  return paused;
}

void State_RestoreBinary(benchmark::State& state) {
  const Saved& saved = Saved::instance();
  measure(state, saved.binary, false, [&] {
    return restored(state, [&](SetDictionary& dictionary) {
      std::fstream stream(saved.binary, std::ios::in | std::ios::binary);
      dictionary.readObject(stream);
    });
  });
}
BENCHMARK(State_RestoreBinary)->Unit(benchmark::kMillisecond);

void State_RestoreXML(benchmark::State& state) {
  const Saved& saved = Saved::instance();
  measure(state, saved.xml, false, [&] {
    return restored(state, [&](SetDictionary& dictionary) {
      std::ifstream stream(saved.xml);
      dictionary.readObjectXML(stream);
    });
  });
}
BENCHMARK(State_RestoreXML)->Unit(benchmark::kMillisecond);

}  // namespace
