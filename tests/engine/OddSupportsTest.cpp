// Supports that are no fraction: what phase I makes of them, and who refuses them.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "tests/support/SavedStates.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using Engine = CarmaAssociationAlgorithm;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Stored sets with their count, TID and max missed.
using Sets = std::map<std::vector<int>, std::tuple<int, int, int>>;
Sets storedSets(const Engine& engine) {
  const SetDictionary& dictionary = *Access::dictionary(engine);
  Sets sets;
  for (int level = 0; level <= dictionary.storedLevels(); ++level) {
    dictionary.levelTable(level).forEach([&sets](const HashTable::Entry& entry) {
      const int* items = entry.key->getTheArray();
      sets[{items, items + entry.key->length()}] = {entry.descriptor->count, entry.descriptor->getTID(),
                                                    entry.descriptor->getMaxMissed()};
    });
  }
  return sets;
}

Sets withoutMissed(Sets sets) {
  for (auto& [items, values] : sets) std::get<2>(values) = 0;
  return sets;
}
int missed(const Sets& sets, const std::vector<int>& items) { return std::get<2>(sets.at(items)); }

// A run over the 23 transactions, pruned after the 10th, the 20th and the last.
struct OddRun : EngineHost {
  explicit OddRun(const TestSupport::Rule& rule) : EngineHost(someTransactions()) {
    support(rule);
    status = engine->RunPhaseI(23);
  }
  KorAssoc::KorStatus status;
};

TestSupport::Rule always(double support) {
  return [support](int) { return support; };
}

}  // namespace

TEST(PhaseI, KeepsEverythingForASupportThatAsksForNothing) {
  OddRun zero(always(0.0));
  const Sets ofZero = storedSets(*zero.engine);
  ASSERT_TRUE(zero.status.IsOK());
  EXPECT_EQ(ofZero.count({1, 2, 3}), 1U);
  EXPECT_EQ(ofZero.count({40}), 1U) << "an item of the first transaction alone";
  ASSERT_TRUE(zero.engine->RunPhaseII().IsOK());
  for (const double support : {-0.25, -5.0, -kInfinity, kNaN}) {
    OddRun odd(always(support));
    EXPECT_TRUE(odd.status.IsOK()) << support;
    const Sets ofOdd = storedSets(*odd.engine);
    EXPECT_EQ(withoutMissed(ofOdd), withoutMissed(ofZero)) << support;
    if (std::isnan(support)) {
      EXPECT_EQ(ofOdd, ofZero);
    } else if (std::isfinite(support)) {
      EXPECT_LT(missed(ofOdd, {1, 2, 3}), missed(ofZero, {1, 2, 3})) << "a bound below the truth";
    }
    EXPECT_TRUE(odd.engine->RunPhaseII().IsOK()) << support;
    EXPECT_EQ(storedSets(*odd.engine), storedSets(*zero.engine)) << support;
  }
}

TEST(PhaseI, KeepsNothingForASupportThatNoSetReaches) {
  for (const double support : {1.5, 100.0, 1e300}) {
    OddRun odd(always(support));
    EXPECT_TRUE(odd.status.IsOK()) << support;
    EXPECT_EQ(storedSets(*odd.engine), (Sets{{{}, {23, 0, 0}}})) << support;
    EXPECT_TRUE(odd.engine->RunPhaseII().IsOK()) << support;
    EXPECT_EQ(odd.engine->LongestSet(), 0) << support;
  }
}

TEST(PhaseI, NeverComesBackFromANaN) {
  for (const int at : {1, 5, 23}) {
    OddRun odd([at](int transaction) { return transaction == at ? kNaN : transaction % 2 == 0 ? 0.9 : 0.8; });
    EXPECT_TRUE(odd.status.IsOK());
    EXPECT_TRUE(std::isnan(odd.engine->AverageSupport())) << at;
  }
  // Without it, the pruning after the 10th transaction removes {3}, which 7 of 10 hold.
  EXPECT_EQ(storedSets(*OddRun(always(0.9)).engine).count({3}), 0U);
  OddRun odd([](int transaction) { return transaction == 5 ? kNaN : 0.9; });
  EXPECT_EQ(storedSets(*odd.engine).count({3}), 1U);
}

TEST(PhaseI, HasAnInfiniteAverageOrNoneAfterAnInfinity) {
  OddRun once([](int transaction) { return transaction == 5 ? kInfinity : 0.5; });
  EXPECT_TRUE(std::isnan(once.engine->AverageSupport()));
  OddRun last([](int transaction) { return transaction == 23 ? kInfinity : 0.5; });
  EXPECT_EQ(last.engine->AverageSupport(), kInfinity);
  EXPECT_EQ(last.engine->NumberOfSets(), 1) << "the pruning that ends the call keeps nothing";
  OddRun rising([](int transaction) {
    return transaction == 5 ? kInfinity : transaction == 23 ? 0.75 : 0.5;
  });
  EXPECT_EQ(rising.engine->AverageSupport(), kInfinity);
  OddRun always(::always(kInfinity));
  EXPECT_TRUE(std::isnan(always.engine->AverageSupport()));
}

TEST(PhaseI, ComesBackFromANegativeInfinityWithTheNextHigherSupport) {
  OddRun odd([](int transaction) { return transaction < 20 ? -kInfinity : 0.5; });
  EXPECT_EQ(odd.engine->AverageSupport(), 0.5);
  OddRun between([](int transaction) { return transaction == 5 ? -kInfinity : 0.5; });
  EXPECT_EQ(between.engine->AverageSupport(), 0.5);
}

TEST(SaveState, KeepsAnOddAverageInBinaryAlone) {
  for (const double support : {kNaN, kInfinity, -kInfinity}) {
    OddRun odd([support](int transaction) { return transaction == 23 ? support : 0.3; });
    const std::string binary = binaryState(*odd.engine);
    const Restored restored(binary, Restored::Binary);
    ASSERT_FALSE(restored.unusable()) << support;
    EXPECT_EQ(storedSets(*restored.engine), storedSets(*odd.engine)) << support;
    if (std::isnan(support)) {
      EXPECT_TRUE(std::isnan(restored.engine->AverageSupport()));
    } else {
      EXPECT_EQ(restored.engine->AverageSupport(), support);
    }
    EXPECT_TRUE(Restored(xmlState(*odd.engine), Restored::Xml).unusable()) << support;
  }
}

TEST(RunPhaseIIcomplete, RefusesAnOddSupportAndChangesNothing) {
  for (const double support : {kNaN, -kNaN, kInfinity, -kInfinity, -1e-300, 1.0 + 1e-15, 2.0}) {
    EngineHost host(someTransactions(), 0.3);
    host.engine->RunPhaseI(20);
    const std::string before = binaryState(*host.engine);
    EXPECT_EQ(shortForm(host.engine->RunPhaseIIcomplete(support)), "E40001") << support;
    EXPECT_EQ(shortForm(host.engine->GetStatus()), "E40001") << support;
    EXPECT_EQ(binaryState(*host.engine), before) << "phase I is still open";
    EXPECT_TRUE(host.engine->RunPhaseI(3).IsOK());
    ASSERT_TRUE(host.engine->RunPhaseII().IsOK());
    const Sets exact = storedSets(*host.engine);
    const std::string lattice = xmlState(*host.engine);
    EXPECT_EQ(shortForm(host.engine->RunPhaseIIcomplete(support)), "E40001") << support;
    EXPECT_EQ(storedSets(*host.engine), exact);
    EXPECT_EQ(xmlState(*host.engine), lattice);
  }
}

TEST(RunPhaseIIcomplete, TakesBothEndsOfTheRange) {
  for (const double support : {0.0, -0.0, 1.0}) {
    EngineHost host(someTransactions(), 0.3);
    EXPECT_TRUE(host.engine->RunPhaseIIcomplete(support).IsOK()) << support;
    EXPECT_EQ(storedSets(*host.engine).count({1}), 1U) << "every transaction holds it";
    EXPECT_EQ(storedSets(*host.engine).count({3}), support < 0.5 ? 1U : 0U);
  }
}

TEST(RunPhaseIIcomplete, AnswersAnOddSupportAsAnyWhereItIsNotPermitted) {
  EngineHost unusable(someTransactions(), 0.3);
  unusable.engine = std::make_unique<Engine>(static_cast<CarmaSettings*>(nullptr), &unusable.source);
  EXPECT_EQ(shortForm(unusable.engine->RunPhaseIIcomplete(kNaN)), "E5");
  EngineHost cancelled(someTransactions(), 0.3);
  cancelled.engine->Cancel();
  EXPECT_EQ(shortForm(cancelled.engine->RunPhaseI(1)), "W1");
  EXPECT_EQ(shortForm(cancelled.engine->RunPhaseIIcomplete(kNaN)), "E1");
}
