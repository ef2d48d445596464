// How time and memory grow: with the transactions, the support and the number of items.
//
//   Scaling [LARGEST]     prints Markdown tables; LARGEST transactions at the most (default 10,000,000)
//
// Transactions are made while they are read, in the manner of the Quest generator (Agrawal & Srikant, VLDB
// 1994): patterns of some four items, popular ones more often, put together to baskets of some ten items.
// Memory is the largest that the process has taken so far, so each line is a process of its own.

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
    ++next_;
    std::vector<int>& items = current_.items;
    items.clear();
    const std::size_t length = 1 + static_cast<std::size_t>(poisson(random_, 9));
    while (items.size() < length) {
      const double at = uniform(random_) * total_;
      const auto chosen = std::lower_bound(weights_.begin(), weights_.end(), at) - weights_.begin();
      for (const int item : patterns_[static_cast<std::size_t>(chosen)]) {
        if (random_() % 2 == 0) items.push_back(item);
      }
    }
    std::sort(items.begin(), items.end());
    items.erase(std::unique(items.begin(), items.end()), items.end());
    return &current_;
  }
  int Rewind() override { return Restart(); }
  // How often the transactions have been begun.
  int passes() const { return passes_; }
  int Restart() override {
    next_ = 0;
    ++passes_;
    random_.seed(7);
    return 0;
  }

 private:
  static double uniform(std::mt19937& random) { return static_cast<double>(random()) / 4294967296.0; }

  static int poisson(std::mt19937& random, double mean) {
    const double end = std::exp(-mean);
    int k = 0;
    for (double product = uniform(random); product > end; product *= uniform(random)) ++k;
    return k;
  }

  class Current final : public Transaction {
   public:
    int GetItem(int position) const override { return items[static_cast<std::size_t>(position)]; }
    int GetTransactionID() const override { return 0; }
    int GetLength() const override { return static_cast<int>(items.size()); }
    std::vector<int> items;
  };

  int transactions_;
  int next_ = 0;
  int passes_ = 0;
  std::vector<std::vector<int>> patterns_;
  std::vector<double> weights_;  // summed up
  double total_ = 0;
  std::mt19937 random_;
  Current current_;
};

void run(int transactions, double support, int items) {
  QuestTransactions source(transactions, items);
  double start = bench::processorSeconds();
  while (source.HasNext()) source.Next();
  const double making = bench::processorSeconds() - start;
  source.Restart();
  CarmaSettings settings;
  settings.SetSupportSource(new bench::ConstantSupport(support));
  CarmaAssociationAlgorithm engine(&settings, &source);
  start = bench::processorSeconds();
  engine.RunPhaseI(transactions);
  const double phaseI = bench::processorSeconds() - start - making;
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const double phaseIMiB = static_cast<double>(usage.ru_maxrss) / 1024;
  const int sets = engine.NumberOfSets() - 1;
  start = bench::processorSeconds();
  const int passesBefore = source.passes();
  engine.RunPhaseIIcomplete(support);
  const int passes = source.passes() - passesBefore;
  const double complete = bench::processorSeconds() - start - passes * making;
  getrusage(RUSAGE_SELF, &usage);
  std::printf("| %d | %g%% | %d | %.2f | %d | %.0f | %.2f | %d | %d | %.0f |\n", transactions, support * 100,
              items, phaseI / transactions * 1e6, sets, phaseIMiB, complete / transactions * 1e6, passes,
              engine.NumberOfSets() - 1, static_cast<double>(usage.ru_maxrss) / 1024);
}

void runApart(int transactions, double support, int items) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    run(transactions, support, items);
    std::fflush(stdout);
    _exit(0);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0) std::printf("| failed |\n");
}

}  // namespace

int main(int argc, char** argv) {
  const int largest = argc > 1 ? std::atoi(argv[1]) : 10000000;
  std::printf(
      "| transactions | support | items | phase I, µs each | sets after it | MiB | complete pass, µs each | "
      "times read | itemsets | MiB |\n|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n");
  for (int transactions = 10000; transactions <= largest; transactions *= 10)
    runApart(transactions, 0.005, 1000);
  for (const double support : {0.02, 0.01, 0.002, 0.001}) runApart(std::min(largest, 100000), support, 1000);
  for (const int items : {100, 10000, 100000}) runApart(std::min(largest, 100000), 0.005, items);
}
