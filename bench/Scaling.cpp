// How time and memory grow: with the transactions, the support and the number of items.
//
//   Scaling [LARGEST [FIRST]]     prints Markdown tables; LARGEST transactions at the most (default
//   10,000,000),
//                                 of which phase I reads the FIRST (default all)
//
// Transactions are made while they are read, in the manner of the Quest generator (Agrawal & Srikant, VLDB
// 1994): patterns of some four items, popular ones more often, put together to baskets of some ten items.
// They are made a thousand at a time with the clock stopped: making them takes longer than most of what is
// measured here. Memory is the largest that the process has taken so far, so each line is a process of its
// own.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "bench/BenchData.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"

namespace {

class QuestTransactions final : public MultiPassTransIter {
 public:
  QuestTransactions(int transactions, int items) : transactions_(transactions) {
    std::mt19937 random(20261121);
    for (int p = 0; p < 2000; ++p) {
      std::vector<int> pattern;
      const int length = 1 + poisson(random, 3);
      // Half of a pattern's items come from the one before it, as in the original.
      for (int i = 0; i < length; ++i) {
        if (p > 0 && random() % 2 == 0) {
          const std::vector<int>& last = patterns_.back();
          pattern.push_back(last[random() % last.size()]);
        } else {
          pattern.push_back(static_cast<int>(random() % static_cast<unsigned int>(items)));
        }
      }
      patterns_.push_back(pattern);
      total_ -= std::log(1 - uniform(random));
      weights_.push_back(total_);
    }
    Restart();
  }

  bool HasNext() override { return next_ < transactions_; }
  Transaction* Next() override {
    if (next_ == made_) makeMore();
    current_.begin = items_.data() + starts_[static_cast<std::size_t>(next_ % kAtOnce)];
    current_.end = items_.data() + starts_[static_cast<std::size_t>(next_ % kAtOnce) + 1];
    ++next_;
    return &current_;
  }
  int Rewind() override { return Restart(); }
  int Restart() override {
    next_ = 0;
    made_ = 0;
    ++readings_;
    random_.seed(7);
    return 0;
  }
  // How often the transactions have been begun.
  int readings() const { return readings_; }
  // Processor time that making them has taken so far.
  double makingSeconds() const { return makingSeconds_; }

 private:
  static constexpr int kAtOnce = 1000;

  void makeMore() {
    const double start = bench::processorSeconds();
    items_.clear();
    starts_.assign(1, 0);
    for (int i = 0; i < kAtOnce; ++i) {
      makeOne();
      starts_.push_back(items_.size());
    }
    made_ += kAtOnce;
    makingSeconds_ += bench::processorSeconds() - start;
  }

  void makeOne() {
    const std::size_t length = 1 + static_cast<std::size_t>(poisson(random_, 9));
    const auto first = static_cast<std::ptrdiff_t>(items_.size());
    while (items_.size() < static_cast<std::size_t>(first) + length) {
      const double at = uniform(random_) * total_;
      const auto chosen = std::lower_bound(weights_.begin(), weights_.end(), at) - weights_.begin();
      for (const int item : patterns_[static_cast<std::size_t>(chosen)]) {
        if (random_() % 2 == 0) items_.push_back(item);
      }
    }
    std::sort(items_.begin() + first, items_.end());
    items_.erase(std::unique(items_.begin() + first, items_.end()), items_.end());
  }

  static double uniform(std::mt19937& random) { return static_cast<double>(random()) / 4294967296.0; }

  static int poisson(std::mt19937& random, double mean) {
    const double end = std::exp(-mean);
    int k = 0;
    for (double product = uniform(random); product > end; product *= uniform(random)) ++k;
    return k;
  }

  class Current final : public Transaction {
   public:
    int GetItem(int position) const override { return begin[position]; }
    int GetTransactionID() const override { return 0; }
    int GetLength() const override { return static_cast<int>(end - begin); }
    const int* begin = nullptr;
    const int* end = nullptr;
  };

  int transactions_;
  int next_ = 0;
  int made_ = 0;  // transactions; the last of them are held
  std::vector<int> items_;
  std::vector<std::size_t> starts_;  // of the transactions held, in items_; and the end
  int readings_ = 0;
  double makingSeconds_ = 0;
  std::vector<std::vector<int>> patterns_;
  std::vector<double> weights_;  // summed up
  double total_ = 0;
  std::mt19937 random_;
  Current current_;
};

// Processor time that is not spent on making transactions.
double secondsOn(const QuestTransactions& source) {
  return bench::processorSeconds() - source.makingSeconds();
}

double peakMiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

void run(int transactions, int first, double support, int items) {
  QuestTransactions source(transactions, items);
  CarmaSettings settings;
  settings.SetSupportSource(new bench::ConstantSupport(support));
  CarmaAssociationAlgorithm engine(&settings, &source);
  double start = secondsOn(source);
  engine.RunPhaseI(std::min(first, transactions));
  const double phaseI = secondsOn(source) - start;
  const double phaseIMiB = peakMiB();
  const int sets = engine.NumberOfSets() - 1;
  const int readings = source.readings();
  start = secondsOn(source);
  engine.RunPhaseIIcomplete(support);
  const double complete = secondsOn(source) - start;
  std::printf("| %d | %g%% | %d | %.2f | %d | %.0f | %.2f | %d | %d | %.0f |\n", transactions, support * 100,
              items, phaseI / std::min(first, transactions) * 1e6, sets, phaseIMiB,
              complete / transactions * 1e6, source.readings() - readings, engine.NumberOfSets() - 1,
              peakMiB());
}

void runApart(int transactions, int first, double support, int items) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    run(transactions, first, support, items);
    std::fflush(stdout);
    _exit(0);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0) std::printf("| failed |\n");
}

}  // namespace

int main(int argc, char** argv) {
  const int largest = argc > 1 ? std::atoi(argv[1]) : 10000000;
  const int first = argc > 2 ? std::max(std::atoi(argv[2]), 1) : largest;
  std::printf(
      "| transactions | support | items | phase I, µs each | sets after it | MiB | complete pass, µs each | "
      "times read | itemsets | MiB |\n|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n");
  for (int transactions = 10000; transactions <= largest; transactions *= 10)
    runApart(transactions, first, 0.005, 1000);
  for (const double support : {0.02, 0.01, 0.002, 0.001})
    runApart(std::min(largest, 100000), first, support, 1000);
  for (const int items : {100, 10000, 100000}) runApart(std::min(largest, 100000), first, 0.005, items);
}
