// How time and memory grow: with the transactions, the support and the number of items.
//
//   Scaling [LARGEST [FIRST]]
//
// Prints a Markdown table, medians of three turns; LARGEST transactions at the most (default 10,000,000), of
// which phase I reads the FIRST (default all).
//
// Transactions are made while they are read, in the manner of the Quest generator (Agrawal & Srikant, VLDB
// 1994): patterns of some four items, popular ones more often, put together to baskets of some ten items.
// They are made a thousand at a time with the clock stopped: making them takes longer than most of what is
// measured here. Memory is the largest that a process has taken so far, so each measurement is a process
// of its own.

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

struct Line {
  int transactions;
  double support;
  int items;
};

struct Figures {
  double phaseI = 0;  // µs a transaction
  double complete = 0;
  double phaseIMiB = 0;
  double peakMiB = 0;
  int setsAfterPhaseI = 0;
  int itemsets = 0;
  int readings = 0;
};

Figures measure(const Line& line, int first) {
  Figures figures;
  QuestTransactions source(line.transactions, line.items);
  CarmaSettings settings;
  settings.SetSupportSource(new bench::ConstantSupport(line.support));
  CarmaAssociationAlgorithm engine(&settings, &source);
  const int inPhaseI = std::min(first, line.transactions);
  double start = secondsOn(source);
  engine.RunPhaseI(inPhaseI);
  figures.phaseI = (secondsOn(source) - start) / inPhaseI * 1e6;
  figures.phaseIMiB = peakMiB();
  figures.setsAfterPhaseI = engine.NumberOfSets() - 1;
  const int readings = source.readings();
  start = secondsOn(source);
  engine.RunPhaseIIcomplete(line.support);
  figures.complete = (secondsOn(source) - start) / line.transactions * 1e6;
  figures.readings = source.readings() - readings;
  figures.itemsets = engine.NumberOfSets() - 1;
  figures.peakMiB = peakMiB();
  return figures;
}

// In a process of its own.
Figures measureApart(const Line& line, int first) {
  Figures figures;
  int ends[2];
  if (pipe(ends) != 0) std::abort();
  const pid_t child = fork();
  if (child == 0) {
    figures = measure(line, first);
    _exit(write(ends[1], &figures, sizeof figures) == sizeof figures ? 0 : 1);
  }
  close(ends[1]);
  const bool complete = child > 0 && read(ends[0], &figures, sizeof figures) == sizeof figures;
  close(ends[0]);
  int status = 0;
  if (!complete || waitpid(child, &status, 0) != child || status != 0) {
    std::fprintf(stderr, "a line of %d transactions failed\n", line.transactions);
    std::exit(1);
  }
  return figures;
}

double median(const std::vector<Figures>& turns, double Figures::*figure) {
  std::vector<double> values;
  values.reserve(turns.size());
  for (const Figures& figures : turns) values.push_back(figures.*figure);
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  constexpr int kTurns = 3;
  const int largest = argc > 1 ? std::atoi(argv[1]) : 10000000;
  const int first = argc > 2 ? std::max(std::atoi(argv[2]), 1) : largest;
  std::vector<Line> lines;
  for (int transactions = 10000; transactions <= largest; transactions *= 10)
    lines.push_back({transactions, 0.005, 1000});
  const int usual = std::min(largest, 100000);
  for (const double support : {0.02, 0.01, 0.002, 0.001}) lines.push_back({usual, support, 1000});
  for (const int items : {100, 10000, 100000}) lines.push_back({usual, 0.005, items});

  std::vector<std::vector<Figures>> measured(lines.size());
  for (int turn = 0; turn < kTurns; ++turn) {
    for (std::size_t i = 0; i < lines.size(); ++i) measured[i].push_back(measureApart(lines[i], first));
  }
  std::printf(
      "| transactions | support | items | phase I, µs each | sets after it | MiB | complete pass, µs each | "
      "times read | itemsets | MiB |\n|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n");
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const Line& line = lines[i];
    const Figures& any = measured[i].front();
    std::printf("| %d | %g%% | %d | %.2f | %d | %.0f | %.2f | %d | %d | %.0f |\n", line.transactions,
                line.support * 100, line.items, median(measured[i], &Figures::phaseI), any.setsAfterPhaseI,
                median(measured[i], &Figures::phaseIMiB), median(measured[i], &Figures::complete),
                any.readings, any.itemsets, median(measured[i], &Figures::peakMiB));
  }
}
