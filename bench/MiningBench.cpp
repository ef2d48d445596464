// From a file of baskets to itemsets and rules in columns, step by step, in seconds of processor time.
//
//   MiningBench [NAME SUPPORT CONFIDENCE LONGEST-CONSEQUENT]     a file of the optional folder; without,
//   several
//
//   engine   what the designed lattice takes for the same: its itemsets adopted, its rules made, both given
//   up columns  the itemsets put in order      link     the lattice over them find     the rules in order of
//   discovery       sort     the same query, sorted by confidence, on top of that bytes    of heap that the
//   model and its lattice hold, for an itemset

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/BenchData.h"
#include "bench/HeapBytes.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/CompletePass.h"
#include "korassoc/engine/CountItemsets.h"
#include "korassoc/mining/ItemsetSorter.h"
#include "korassoc/mining/Model.h"
#include "korassoc/rules/AssociationRule.h"

namespace {

struct Case {
  std::string name;
  double support;
  double confidence;
  int longestConsequent;
};

double secondsOf(auto&& work) {
  const double before = bench::processorSeconds();
  work();
  return bench::processorSeconds() - before;
}

void run(const Case& c) {
  const std::string path = bench::optionalData(c.name);
  if (path.empty()) {
    std::printf("%s is not there\n", c.name.c_str());
    return;
  }
  const bench::Transactions baskets = bench::readBaskets(path);
  bench::MemoryTransactions source(baskets);

  double engineCount = 0, engineRules = 0, engineEnd = 0;
  std::size_t engineRuleCount = 0;
  {
    auto settings = std::make_unique<CarmaSettings>();
    settings->SetSupportSource(new bench::ConstantSupport(2.0));
    auto engine = std::make_unique<CarmaAssociationAlgorithm>(settings.get(), &source);
    engineCount = secondsOf([&] { engine->RunPhaseIIcomplete(c.support); });
    std::vector<AssociationRule> rules;
    engineRules = secondsOf([&] {
      engine->GetRulesSpecial(c.confidence, 1, c.support, 1, 0, 'C', nullptr, nullptr, 1, 1000, nullptr,
                              nullptr, 1, c.longestConsequent, -1, false, rules);
    });
    engineRuleCount = rules.size();
    engineEnd = secondsOf([&] {
      rules = {};
      engine.reset();
    });
  }

  const korassoc::detail::CompletePass::Watch watch{[] { return false; }, [](int) {}};
  korassoc::detail::CompletePass pass(source, {c.support, 10, 2000000000, std::uint64_t{1} << 30}, watch);
  const double mine = secondsOf([&] { pass.run(); });
  const std::size_t before = bench::heapBytes();
  korassoc::ItemsetTable itemsets;
  const double columns = secondsOf([&] {
    const korassoc::detail::CompleteItemsets& found = pass.itemsets();
    korassoc::detail::ItemsetSorter sorter{korassoc::detail::ItemRanks(found.levels.front().items)};
    std::size_t items = 0;
    for (const auto& level : found.levels) items += level.items.size();
    sorter.reserve(found.size(), items);
    for (std::size_t i = 0; i < found.levels.size(); ++i) {
      sorter.addLevel<int>(i + 1, found.levels[i].items, found.levels[i].counts, {});
    }
    itemsets = sorter.take();
  });
  korassoc::Model model;
  const double made = secondsOf([&] {
    model = korassoc::Model::fromItemsets(
        {itemsets, static_cast<std::int64_t>(baskets.size()), korassoc::Support::fraction(c.support)});
  });
  const double link = secondsOf([&] { static_cast<void>(model.countOf({})); });
  const std::size_t bytes = bench::heapBytes() - before;
  korassoc::ItemsetColumns given;
  for (const korassoc::ItemsetView set : itemsets) given.add(set.items, 0);
  const double count = secondsOf([&] { korassoc::countGivenItemsets(source, {}, given); });
  korassoc::RuleQuery query;
  query.minConfidence = c.confidence;
  query.consequent.maxLength = static_cast<std::size_t>(c.longestConsequent);
  korassoc::RuleTable rules;
  query.orderBy.reset();
  const double find = secondsOf([&] { rules = model.rules(query); });
  query.orderBy = korassoc::Measure::kConfidence;
  const double sort = secondsOf([&] { rules = model.rules(query); });
  query.orderBy = korassoc::Measure::kLift;
  query.top = 100;
  const double top = secondsOf([&] { rules = model.rules(query); }) + 0 * static_cast<double>(rules.size());
  query.top.reset();
  rules = model.rules(query);
  std::printf(
      "%-16s %6g %4g %3d | %8zu sets %8zu rules | engine count %.3f rules %.3f end %.3f (%zu)\n"
      "     mine %.3f count %.3f columns %.3f model %.3f link %.3f find %.3f sort %.3f top100 lift %.3f  "
      "%.0f "
      "bytes/set\n",
      c.name.c_str(), c.support, c.confidence, c.longestConsequent, itemsets.size(), rules.size(),
      engineCount, engineRules, engineEnd, engineRuleCount, mine, count, columns, made, link, find, sort, top,
      static_cast<double>(bytes) / static_cast<double>(itemsets.size()));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 5) {
    run({argv[1], std::atof(argv[2]), std::atof(argv[3]), std::atoi(argv[4])});
    return 0;
  }
  const Case cases[] = {{"T10I4D100K.dat", 0.001, 0.8, 1000},
                        {"retail.dat", 0.0001, 0.5, 1},
                        {"mushroom.dat", 0.2, 0.5, 1},
                        {"mushroom.dat", 0.1, 0.5, 1}};
  for (const Case& c : cases) run(c);
}
