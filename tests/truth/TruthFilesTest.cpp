// The complete pass and the rules made of it, against files of itemsets and counts of rules that three
// independent programs agreed on. They lie in a folder of their own (named by the environment variable
// KORASSOC_DATA, or ../shared/data beside the checkout), without which nothing is tested here.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/korassoc.h"
#include "tests/support/EngineHost.h"
#include "tests/support/VectorTransactions.h"

namespace {

namespace fs = std::filesystem;

constexpr int kLongest = 10;  // items of an itemset in the files

fs::path dataFolder() {
  const char* folder = std::getenv("KORASSOC_DATA");
  return folder != nullptr ? fs::path(folder)
                           : fs::path(KORASSOC_SOURCE_DIR).parent_path() / "shared" / "data";
}

Transactions readTransactions(const fs::path& path) {
  Transactions transactions;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::istringstream items(line);
    transactions.emplace_back();
    for (int item = 0; items >> item;) transactions.back().push_back(item);
  }
  return transactions;
}

using Counts = std::map<std::vector<int>, int>;

// Lines of items separated by blanks, a tab, the count.
Counts readTruth(const fs::path& path) {
  Counts counts;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::istringstream numbers(line);
    std::vector<int> items;
    for (int number = 0; numbers >> number;) items.push_back(number);
    const int count = items.back();
    items.pop_back();
    counts.emplace(std::move(items), count);
  }
  return counts;
}

// What rules.tsv says of a case at one confidence.
struct RuleCounts {
  std::string name;
  double minConfidence;
  std::size_t oneItemHeads, anyHeads, atThreshold;
};

std::vector<RuleCounts> readRuleCounts() {
  std::vector<RuleCounts> cases;
  std::ifstream file(dataFolder() / "truth" / "rules.tsv");
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    RuleCounts counts{};
    if (fields >> counts.name >> counts.minConfidence >> counts.oneItemHeads >> counts.anyHeads >>
        counts.atThreshold)
      cases.push_back(counts);
  }
  return cases;
}

// The data set of "retail_0.05" with its support in percent.
struct Case {
  explicit Case(const std::string& name)
      : transactions(readTransactions(dataFolder() / (name.substr(0, name.rfind('_')) + ".dat"))),
        percent(std::stod(name.substr(name.rfind('_') + 1))) {
    // percent / 100 * transactions as a whole number of hundred-thousandths, so that nothing is rounded
    const auto thousandths = static_cast<long long>(std::lround(percent * 1000));
    const auto n = static_cast<long long>(transactions.size());
    leastCount = static_cast<int>((thousandths * n + 99999) / 100000);
  }
  Transactions transactions;
  double percent;
  int leastCount;
};

class TruthFiles : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (!fs::exists(dataFolder() / "truth" / (GetParam() + ".txt"))) {
      GTEST_SKIP() << "there are no verified data in " << dataFolder();
    }
  }
};

TEST_P(TruthFiles, HoldTheItemsetsAndCountsOfTheCompletePass) {
  const Case data(GetParam());
  EngineHost host(data.transactions, 1.0);
  CarmaAssociationAlgorithm& engine = *host.engine;
  ASSERT_TRUE(engine.RunPhaseI(100).IsOK());
  ASSERT_TRUE(engine.RunPhaseIIcomplete(data.percent / 100).IsOK());

  std::set<ItemSet> found;
  auto& lattice = dynamic_cast<SetDictionary&>(*engine.GetLattice());
  ASSERT_TRUE(lattice.findItemSets(ItemSet(), 0, 1, 1000, found).IsOK());
  Counts counts;
  for (const ItemSet& set : found) {
    counts[std::vector<int>(set.getTheArray(), set.getTheArray() + set.length())] = lattice.getCount(&set);
  }
  const Counts truth = readTruth(dataFolder() / "truth" / (GetParam() + ".txt"));
  EXPECT_FALSE(truth.empty());
  EXPECT_EQ(counts.size(), truth.size());
  EXPECT_TRUE(counts == truth);
}

TEST_P(TruthFiles, AgreeWithTheNumbersOfRules) {
  const Case data(GetParam());
  EngineHost host(data.transactions, 1.0);
  CarmaAssociationAlgorithm& engine = *host.engine;
  ASSERT_TRUE(engine.RunPhaseIIcomplete(data.percent / 100).IsOK());
  auto& lattice = dynamic_cast<SetDictionary&>(*engine.GetLattice());
  std::vector<RuleCounts> cases = readRuleCounts();
  std::erase_if(cases, [](const RuleCounts& counts) { return counts.name != GetParam(); });
  if (cases.empty()) GTEST_SKIP() << "the numbers of rules are not known";
  for (const RuleCounts& expected : cases) {
    std::vector<AssociationRule> rules;
    const double minSupport = data.leastCount / static_cast<double>(data.transactions.size());
    ASSERT_TRUE(engine
                    .GetRulesSpecial(expected.minConfidence, 1, minSupport, 1, 0, 'C', nullptr, nullptr, 1,
                                     kLongest, nullptr, nullptr, 1, kLongest, -1, false, rules)
                    .IsOK());
    EXPECT_EQ(rules.size(), expected.anyHeads) << "at " << expected.minConfidence;
    const auto oneItemHead = [](const AssociationRule& rule) { return rule.getConsequent().length() == 1; };
    EXPECT_EQ(std::count_if(rules.begin(), rules.end(), oneItemHead),
              static_cast<std::ptrdiff_t>(expected.oneItemHeads))
        << "at " << expected.minConfidence;
    const auto hundredths = std::lround(expected.minConfidence * 100);
    const auto atThreshold = [&](const AssociationRule& rule) {
      const std::unique_ptr<ItemSet> both(rule.getAntecedent().setUnion(&rule.getConsequent()));
      return 100L * lattice.getCount(both.get()) == hundredths * lattice.getCount(&rule.getAntecedent());
    };
    EXPECT_EQ(std::count_if(rules.begin(), rules.end(), atThreshold),
              static_cast<std::ptrdiff_t>(expected.atThreshold))
        << "at " << expected.minConfidence;
  }
}

std::string caseName(const testing::TestParamInfo<std::string>& param) {
  std::string name = param.param;
  std::replace(name.begin(), name.end(), '.', 'p');
  return name;
}

INSTANTIATE_TEST_SUITE_P(AllCases, TruthFiles,
                         testing::Values("BMS1_0.1", "T10I4D100K_0.1", "T10I4D100K_0.5", "groceries_0.1",
                                         "groceries_1", "mushroom_20", "retail_0.05", "retail_0.1"),
                         caseName);

}  // namespace
