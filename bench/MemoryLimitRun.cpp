// How much memory a run under a limit of itemsets takes, beside what the number of sets lets one expect.
//
//   MemoryLimitRun FILE SUPPORT SETS [LEAVE [spill]]
//
// FILE has a transaction a line, items as integers between blanks; SUPPORT is a fraction. The first phase
// runs over the file with at most SETS itemsets in memory, of which those counted at most LEAVE times
// (default 2) give way to new ones; with LEAVE 0 the phase ends at the limit. One run a process, since the
// peak of a process does not go down again. Prints a line of Markdown table:
//
//   limit | sets | bytes a set | predicted MB | peak MB | peak / predicted | longest work list | end
//
// The prediction: what the process took before the engine was made, plus the indexes, plus the sets up to the
// limit: with LEAVE 0 their packed records, else the bucket arrays and for each set its block (entry, key,
// descriptor) and, from five items on, its items as a common allocator rounds them. Not in it: the work list
// of a transaction (32 bytes for each of its stored sets, and 112 for those among them that made room before
// the transaction was done).

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "bench/BenchData.h"
#include "korassoc/korassoc.h"

namespace {

class Line final : public Transaction {
 public:
  int GetItem(int position) const override { return items[static_cast<std::size_t>(position)]; }
  int GetTransactionID() const override { return 0; }
  int GetLength() const override { return static_cast<int>(items.size()); }

  std::vector<int> items;
};

// Reads the file as it goes, so that the transactions take no memory that would have to be told apart.
class FileTransactions final : public MultiPassTransIter {
 public:
  explicit FileTransactions(const char* name) : file_(name) {}
  bool isOpen() const { return file_.is_open(); }
  void beforeEach(std::function<void()> look) { look_ = std::move(look); }
  bool HasNext() override {
    if (look_) look_();
    return file_.peek() != std::ifstream::traits_type::eof();
  }
  Transaction* Next() override {
    std::string text;
    if (!std::getline(file_, text)) return nullptr;
    std::istringstream items(text);
    line_.items.clear();
    for (int item = 0; items >> item;) line_.items.push_back(item);
    return &line_;
  }
  int Rewind() override { return Restart(); }
  int Restart() override {
    file_.clear();
    file_.seekg(0);
    return file_.good() ? 0 : 1;
  }

 private:
  std::ifstream file_;
  std::function<void()> look_;
  Line line_;
};

// What was seen before each transaction, and of the work list at the reports.
struct Peak {
  std::vector<int> sets;     // by length, when there were most in all
  std::vector<int> longest;  // by length, the most there were at any time
  int total = 0;
  int workList = 0;
};

class PeakListener final : public ProgressListener {
 public:
  explicit PeakListener(Peak* peak) : peak_(peak) {}
  void watch(const CarmaAssociationAlgorithm* engine) { engine_ = engine; }
  void OnProgress(ProgressReport* report) override {
    if (report != nullptr) peak_->workList = std::max(peak_->workList, report->GetIntValue("maxExt"));
  }
  void look() {
    std::vector<int> sets;
    int total = 0;
    for (int length = 0; length <= engine_->LongestSet(); ++length) {
      sets.push_back(engine_->CountSetsOfSize(length));
      total += sets.back();
    }
    peak_->longest.resize(std::max(peak_->longest.size(), sets.size()));
    for (std::size_t i = 0; i < sets.size(); ++i) peak_->longest[i] = std::max(peak_->longest[i], sets[i]);
    if (total <= peak_->total) return;
    peak_->total = total;
    peak_->sets = sets;
  }

 private:
  const CarmaAssociationAlgorithm* engine_ = nullptr;
  Peak* peak_;
};

// Kilobytes from /proc/self/status: VmRSS now, VmHWM at the most. 0 where there is no such file.
long memoryKB(const std::string& key) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind(key + ":", 0) == 0) return std::strtol(line.c_str() + key.size() + 1, nullptr, 10);
  }
  return 0;
}

// What a block takes of a common 64-bit allocator: eight bytes of its own, in steps of 16, at least 32.
std::uint64_t allocated(std::uint64_t bytes) {
  return std::max<std::uint64_t>(32, (bytes + 8 + 15) / 16 * 16);
}

std::uint64_t bytesOfPackedSet(int length) {
  constexpr int kCounts = 3;
  return sizeof(int) * static_cast<std::uint64_t>(kCounts + length);
}

std::uint64_t bytesOfSet(int length) {
  constexpr int kInTheBlock = 4;
  const std::uint64_t block = sizeof(HashTable::Entry) + sizeof(ItemSet) + sizeof(CarmaSetDescriptor);
  return length <= kInTheBlock ? block : block + allocated(sizeof(int) * static_cast<std::uint64_t>(length));
}

// The index of a table that has held so many sets: at most three quarters full.
std::uint64_t bytesOfIndex(int sets) {
  const auto least = static_cast<std::uint64_t>(sets) * 4 / 3 + 1;
  return 8 * std::bit_ceil(least);
}

// The bucket array of a table that starts with so many buckets and has held so many sets.
std::uint64_t bytesOfBuckets(std::uint64_t buckets, int sets) {
  while (static_cast<double>(buckets) * 0.75 < sets) buckets = 2 * buckets + 1;
  return sizeof(void*) * buckets;
}

std::string describe(const KorAssoc::KorStatus& status) {
  if (status.IsOK()) return "OK";
  return std::to_string(status.GetCode()) + (status.IsError() ? ", error" : ", warning");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4 || argc > 6) {
    std::cerr << "usage: MemoryLimitRun FILE SUPPORT SETS [LEAVE [spill]]\n";
    return 2;
  }
  const int limit = std::atoi(argv[3]);
  FileTransactions transactions(argv[1]);
  if (!transactions.isOpen()) {
    std::cout << argv[1] << " is not there: nothing was measured\n";
    return 0;
  }
  CarmaSettings settings;
  settings.SetSupportSource(new bench::ConstantSupport(std::atof(argv[2])));
  settings.SetReportFreqPhaseI(settings.GetRemoveSmallFreq());
  settings.GetDictionarySettings().SetMaxInStoreSets(limit);
  settings.GetDictionarySettings().SetLeaveInMainStoreCount(argc > 4 ? std::atoi(argv[4]) : 2);
  settings.GetDictionarySettings().SetDiskSpill(argc > 5);
  Peak peak;
  auto* listener = new PeakListener(&peak);
  settings.SetProgressListener(listener);

  const long before = memoryKB("VmRSS");
  const auto start = std::chrono::steady_clock::now();
  CarmaAssociationAlgorithm engine(&settings, &transactions);
  listener->watch(&engine);
  transactions.beforeEach([listener] { listener->look(); });
  const KorAssoc::KorStatus status = engine.RunPhaseI(2147483647);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const long most = memoryKB("VmHWM");

  listener->look();
  const DictionarySettings& sizes = settings.GetDictionarySettings();
  const bool packed = sizes.GetLeaveInMainStoreCount() == 0 && !sizes.GetDiskSpill();
  std::uint64_t bytes = 0;
  std::uint64_t tables = 0;
  for (std::size_t length = 0; length < peak.sets.size(); ++length) {
    const int items = static_cast<int>(length);
    bytes += static_cast<std::uint64_t>(peak.sets[length]) *
             (packed ? bytesOfPackedSet(items) : bytesOfSet(items));
  }
  for (std::size_t length = 1; length < peak.longest.size(); ++length) {
    const int initial = length == 2 || length == 3 ? sizes.GetInitialHashtableSet23Size()
                                                   : sizes.GetInitialBoundarySearchSize();
    tables += bytesOfIndex(peak.longest[length]);
    if (!packed) tables += bytesOfBuckets(static_cast<std::uint64_t>(initial), peak.longest[length]);
  }
  const double each = peak.total > 0 ? static_cast<double>(bytes) / peak.total : 0.0;
  const int sets = status.IsOK() ? limit : peak.total;
  const double predicted =
      (static_cast<double>(before) * 1024 + static_cast<double>(tables) + each * sets) / 1e6;
  const double measured = static_cast<double>(most) * 1024 / 1e6;
  std::printf("| %d | %d | %.0f | %.1f | %.1f | %.2f | %d | %s after %d transactions, %.1f s |\n", limit,
              sets, each, predicted, measured, measured / predicted, peak.workList, describe(status).c_str(),
              engine.NumberOfTransactions(), seconds);
  return 0;
}
