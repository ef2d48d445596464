// How many of the frequent itemsets the two passes find, for prunings and slacks to choose from.
//
//   Accuracy FOLDER     prints Markdown tables and writes accuracy-pruning.svg and accuracy-slack.svg there
//
// The frequent itemsets (of at most 10 items) are those of the complete pass. One is found when phase II
// gives it a count that reaches the threshold; its count is wrong when it is another one than the complete
// pass's.

#include <cmath>
#include <cstdio>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "bench/BarChart.h"
#include "bench/BenchData.h"
#include "cli/Mining.h"
#include "korassoc/korassoc.h"

namespace {

// More sets than this in memory end a run: about half a gigabyte, and five of them.
constexpr int kMostSets = 3000000;
constexpr int kMostSetsOfOneRun = 40000000;

struct Data {
  std::string name;
  std::string path;
  double support;
  bool costly = false;  // minutes for each way: only the usual one and the tool's
};

struct Way {
  int pruning;   // transactions between two prunings; 0: at the end alone
  double slack;  // of the support that phase I is run at
};

struct Found {
  bool ended = false;  // within memory
  double recall = 0;   // percent
  int wrong = 0;
  int sets = 0;  // after phase I
  double seconds = 0;
};

// The sets that the complete pass finds, with their counts.
class Truth {
 public:
  Truth(const bench::Transactions& transactions, double support) : source_(transactions) {
    settings_.SetSupportSource(new bench::ConstantSupport(support));
    engine_ = std::make_unique<CarmaAssociationAlgorithm>(&settings_, &source_);
    const double start = bench::processorSeconds();
    engine_->RunPhaseIIcomplete(support);
    seconds_ = bench::processorSeconds() - start;
    engine_->GetLattice()->findItemSets(ItemSet(), 0, 1, 1 << 20, sets_);
    leastCount_ = static_cast<int>(std::ceil(static_cast<double>(transactions.size()) * support - 1e-9));
  }

  std::size_t size() const { return sets_.size(); }
  double seconds() const { return seconds_; }

  void compare(SemiLattice& lattice, Found& found) {
    auto& truth = dynamic_cast<SetDictionary&>(*engine_->GetLattice());
    auto& dictionary = dynamic_cast<SetDictionary&>(lattice);
    std::size_t hits = 0;
    for (const ItemSet& set : sets_) {
      const int count = dictionary.getCount(&set);
      if (count >= leastCount_) ++hits;
      if (count > 0 && count != truth.getCount(&set)) ++found.wrong;
    }
    found.recall = 100.0 * static_cast<double>(hits) / static_cast<double>(sets_.size());
  }

 private:
  CarmaSettings settings_;
  bench::MemoryTransactions source_;
  std::unique_ptr<CarmaAssociationAlgorithm> engine_;
  std::set<ItemSet> sets_;
  double seconds_ = 0;
  int leastCount_ = 0;
};

Found run(const bench::Transactions& transactions, double support, const Way& way, int mostSets,
          Truth& truth) {
  CarmaSettings settings;
  settings.SetSupportSource(new bench::ConstantSupport(support * way.slack));
  settings.SetRemoveSmallFreq(way.pruning);
  settings.GetDictionarySettings().SetMaxInStoreSets(mostSets);
  bench::MemoryTransactions source(transactions);
  CarmaAssociationAlgorithm engine(&settings, &source);
  Found found;
  const double start = bench::processorSeconds();
  found.ended = engine.RunPhaseI(static_cast<int>(transactions.size())).IsOK();
  if (!found.ended) return found;
  found.sets = engine.NumberOfSets() - 1;
  engine.RunPhaseII();
  found.seconds = bench::processorSeconds() - start;
  truth.compare(*engine.GetLattice(), found);
  return found;
}

Found runTool(const bench::Transactions& transactions, double support, Truth& truth) {
  korassoc::cli::BasketBuilder builder;
  {
    korassoc::cli::BasketBuilder::Lines lines(builder);
    for (const auto& items : transactions) {
      for (const int item : items) lines.add(item);
      lines.endLine();
    }
  }
  const korassoc::cli::Baskets baskets = builder.take();
  const auto option = korassoc::cli::SupportOption::parse("support", std::to_string(support));
  korassoc::cli::Mining mining(baskets, option, {korassoc::cli::MiningMode::kApproximate, {}, {}});
  Found found;
  const double start = bench::processorSeconds();
  mining.run();
  found.seconds = bench::processorSeconds() - start;
  found.ended = true;
  found.sets = mining.figures().setsInPhaseI;
  truth.compare(mining.lattice(), found);
  return found;
}

void print(const std::string& how, const Found& found) {
  if (!found.ended) {
    std::printf("| %s | more than %d sets in memory | | | |\n", how.c_str(), kMostSets);
  } else {
    std::printf("| %s | %.1f%% | %d | %d | %.2f |\n", how.c_str(), found.recall, found.wrong, found.sets,
                found.seconds);
  }
  std::fflush(stdout);
}

std::string nameOf(const Way& way) {
  const std::string pruning = way.pruning == 0 ? "at the end" : "every " + std::to_string(way.pruning);
  char slack[32];
  std::snprintf(slack, sizeof slack, "%g", way.slack);
  return pruning + ", " + slack;
}

std::optional<double> barOf(const Found& found) {
  return found.ended ? std::optional(found.recall) : std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string folder = argc > 1 ? argv[1] : ".";
  const std::vector<Data> all = {{"example 0.5%", bench::exampleData(), 0.005},
                                 {"groceries 0.1%", bench::optionalData("groceries.dat"), 0.001},
                                 {"retail 0.05%", bench::optionalData("retail.dat"), 0.0005},
                                 {"T10I4D100K 0.1%", bench::optionalData("T10I4D100K.dat"), 0.001},
                                 {"BMS1 0.1%", bench::optionalData("BMS1.dat"), 0.001, true},
                                 {"mushroom 20%", bench::optionalData("mushroom.dat"), 0.2, true}};
  const std::vector<Way> prunings = {{500, 1}, {5000, 1}, {25000, 1}, {0, 1}};
  const std::vector<Way> slacks = {{500, 0.8}, {0, 0.9}, {0, 0.8}, {0, 0.6}};
  bench::BarChart byPruning{
      "Frequent itemsets found, by the transactions between two prunings", "%", 100, {}, {}};
  for (const Way& way : prunings)
    byPruning.series.push_back(way.pruning == 0 ? "at the end" : std::to_string(way.pruning));
  bench::BarChart bySlack{"Frequent itemsets found, pruned at the end, by phase I's share of the support",
                          "%",
                          100,
                          {"1", "0.9", "0.8", "0.6", "the tool"},
                          {}};
  for (const Data& data : all) {
    if (data.path.empty()) {
      std::printf("%s: not there, left out\n", data.name.c_str());
      continue;
    }
    const bench::Transactions transactions = bench::readBaskets(data.path);
    Truth truth(transactions, data.support);
    std::printf("\n%s: %zu transactions, %zu frequent itemsets; the complete pass takes %.2f s\n\n",
                data.name.c_str(), transactions.size(), truth.size(), truth.seconds());
    std::printf(
        "| pruning, slack | found | wrong counts | sets after phase I | seconds "
        "|\n|---|---:|---:|---:|---:|\n");
    bench::BarChart::Group pruned{data.name, {}};
    bench::BarChart::Group slack{data.name, {}};
    for (const Way& way : prunings) {
      if (data.costly && way.pruning != 500) continue;
      const Found found =
          run(transactions, data.support, way, data.costly ? kMostSetsOfOneRun : kMostSets, truth);
      print(nameOf(way), found);
      pruned.values.push_back(barOf(found));
      if (way.pruning == 0) slack.values.push_back(barOf(found));
    }
    for (const Way& way : slacks) {
      if (data.costly) break;
      const Found found =
          run(transactions, data.support, way, data.costly ? kMostSetsOfOneRun : kMostSets, truth);
      print(nameOf(way), found);
      if (way.pruning == 0) slack.values.push_back(barOf(found));
    }
    const Found found = runTool(transactions, data.support, truth);
    print("`--approximate`", found);
    slack.values.push_back(barOf(found));
    if (data.costly) continue;
    byPruning.groups.push_back(pruned);
    bySlack.groups.push_back(slack);
  }
  bench::writeChart(byPruning, folder + "/accuracy-pruning.svg");
  bench::writeChart(bySlack, folder + "/accuracy-slack.svg");
}
