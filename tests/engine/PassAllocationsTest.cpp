// Memory that runs out anywhere in a construction or in one of the passes.

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "korassoc/engine/ItemsetColumns.h"
#include "tests/support/AllocationHost.h"

namespace {

using KorAssoc::KorStatus;

class Construction : public AllocationHost {
 public:
  KorStatus run() override {
    engine_.emplace(&settings_, &source_);
    return engine_->GetStatus();
  }
  std::string answer() override { return contents(); }
  bool mayRefuseWith(const KorStatus& status) const override { return status == error(5); }
  void checkAfterRefusal() override {
    EXPECT_EQ(engine_->NumberOfSets(), -1);
    EXPECT_EQ(shortForm(engine_->RunPhaseI(1)), "E5");
    engine_.reset();
  }
};

// An engine around itemsets that were counted elsewhere.
class ConstructionFromColumns : public AllocationHost {
 public:
  ConstructionFromColumns() {
    makeEngine();
    EXPECT_EQ(shortForm(engine_->RunPhaseIIcomplete(0.1)), "OK");
    EXPECT_EQ(shortForm(engine_->GetItemsets(columns_)), "OK");
    engine_.reset();
  }
  KorStatus run() override {
    engine_.emplace(&settings_, &source_, columns_, 0.1);
    return engine_->GetStatus();
  }
  std::string answer() override {
    EXPECT_TRUE(engine_->IsLatticeBuilt());
    expectExactCounts(0, 200);
    return contents();
  }
  bool mayRefuseWith(const KorStatus& status) const override { return status == error(5); }
  void checkAfterRefusal() override { EXPECT_EQ(engine_->NumberOfSets(), -1); }

 private:
  korassoc::ItemsetColumns columns_;
};

// How phase I keeps its sets: packed, as entries, within a limit, with one-item sets on disk.
enum class Store { kPacked, kEntries, kLimited, kSpilling };

class PassHost : public AllocationHost {
 protected:
  explicit PassHost(Store store) {
    DictionarySettings& dictionarySettings = settings_.GetDictionarySettings();
    if (store == Store::kLimited || store == Store::kSpilling) {
      dictionarySettings.SetMaxInStoreSets(store == Store::kLimited ? 60 : 12);
      dictionarySettings.SetLeaveInMainStoreCount(store == Store::kLimited ? 10 : 100);
      dictionarySettings.SetDiskSpill(store == Store::kSpilling);
      if (store == Store::kSpilling) settings_.SetMaxLengthSet(1);
    }
    makeEngine();
    if (store == Store::kEntries) dictionary().levelTable(1);
  }

  // Nothing can be asked of counts that are those of a part of the transactions.
  void expectBrokenOff() {
    EXPECT_FALSE(engine_->IsLatticeBuilt());
    std::vector<AssociationRule> rules;
    EXPECT_EQ(shortForm(engine_->CreateNgetRules(0.1, 0.2, rules)), "E40001");
    EXPECT_TRUE(rules.empty());
    FixedBuffer nowhere;
    std::ostream stream(&nowhere);
    EXPECT_EQ(shortForm(engine_->ExportLatticeXML(stream)), "E40001");
    EXPECT_EQ(shortForm(engine_->SaveStateXML(stream)), "W4");
    EXPECT_EQ(nowhere.size(), 0);
    korassoc::ItemsetColumns columns;
    EXPECT_EQ(shortForm(engine_->GetItemsets(columns)), "E40001");
  }
};

class PhaseI : public PassHost {
 public:
  explicit PhaseI(Store store) : PassHost(store) {}

  KorStatus run() override { return engine_->RunPhaseI(200); }
  std::string answer() override {
    std::string text = contents();
    for (int item = 1; item < 130; ++item) text += std::to_string(dictionary().getCount(item)) + ' ';
    return text;
  }
  bool mayRefuseWith(const KorStatus& status) const override { return status.GetCode() == 40001; }
  bool canBeRepeated() const override { return false; }  // it has read what it has read
  void checkAfterRefusal() override {
    EXPECT_EQ(engine_->GetStatus().GetCode(), 40001);
    FixedBuffer nowhere;
    std::fstream stream;
    static_cast<std::ios&>(stream).rdbuf(&nowhere);
    EXPECT_EQ(shortForm(engine_->SaveState(stream)), "W4");
    EXPECT_EQ(shortForm(engine_->RunPhaseI(200)), "OK") << "it goes on";
    // Without larger sets there is nothing that the second passes count.
    EXPECT_EQ(shortForm(engine_->RunPhaseII()), "OK");
    if (engine_->LongestSet() > 1) expectExactCounts(2, Access::transactionsSeen(*engine_));
    const bool counts = engine_->LongestSet() > 1;
    EXPECT_EQ(shortForm(engine_->RunPhaseIIrandom()), "OK");
    if (counts) expectExactCounts(1, Access::transactionsSeen(*engine_));
    expectCompletePass();
  }
};

class SecondPass : public PassHost {
 public:
  using Pass = KorStatus (Engine::*)();
  SecondPass(Pass pass, Store store, bool again = false) : PassHost(store), pass_(pass) {
    EXPECT_EQ(shortForm(engine_->RunPhaseI(200)), "OK");
    if (again) {
      EXPECT_EQ(shortForm(engine_->RunPhaseII()), "OK");
    }
  }

  KorStatus run() override { return ((*engine_).*pass_)(); }
  std::string answer() override { return contents(); }
  void checkAfterRefusal() override {
    EXPECT_EQ(shortForm(engine_->GetStatus()), "E40001");
    expectBrokenOff();
  }

 private:
  Pass pass_;
};

class NullSecondPass : public PassHost {
 public:
  NullSecondPass() : PassHost(Store::kPacked) { EXPECT_EQ(shortForm(engine_->RunPhaseI(200)), "OK"); }

  KorStatus run() override { return engine_->RunNullPhaseII(0.1); }
  std::string answer() override { return contents(); }
  bool canBeRepeated() const override { return false; }  // phase II has begun
  void checkAfterRefusal() override {
    expectBrokenOff();
    EXPECT_EQ(shortForm(engine_->RunPhaseII()), "OK");
    expectExactCounts(2, 200);
    expectCompletePass();
  }
};

class CompletePassAttempt : public PassHost {
 public:
  // after: the transactions of phase I; all: with a second pass.
  explicit CompletePassAttempt(int after, std::uint64_t budget) : PassHost(Store::kPacked) {
    settings_.SetCompleteIndexBudget(budget);
    EXPECT_EQ(shortForm(engine_->RunPhaseI(after)), "OK");
    if (after == 200) {
      EXPECT_EQ(shortForm(engine_->RunPhaseII()), "OK");
    }
    before_ = counts();
    wasBuilt_ = engine_->IsLatticeBuilt();
  }

  KorStatus run() override { return engine_->RunPhaseIIcomplete(0.1); }
  std::string answer() override { return contents(); }
  void checkAfterRefusal() override {
    EXPECT_EQ(shortForm(engine_->GetStatus()), "E40001");
    EXPECT_EQ(engine_->IsLatticeBuilt(), wasBuilt_);
    if (wasBuilt_) {
      EXPECT_EQ(counts(), before_);
    }
    for (const auto& [items, count] : counts()) EXPECT_EQ(count, before_.at(items));  // pruned at most
  }

 private:
  oracle::brute::Counts before_;
  bool wasBuilt_ = false;
};

template <typename Made, typename... Arguments>
void failAllocationsOf(const Arguments&... arguments) {
  failAllocations([&]() -> std::unique_ptr<Attempt> { return std::make_unique<Made>(arguments...); });
}

}  // namespace

TEST(Allocations, OfAConstruction) { failAllocationsOf<Construction>(); }

TEST(Allocations, OfAConstructionFromColumns) { failAllocationsOf<ConstructionFromColumns>(); }

TEST(Allocations, OfPhaseI) { failAllocationsOf<PhaseI>(Store::kPacked); }
TEST(Allocations, OfPhaseIWithEntries) { failAllocationsOf<PhaseI>(Store::kEntries); }
TEST(Allocations, OfPhaseIWithinALimit) { failAllocationsOf<PhaseI>(Store::kLimited); }

TEST(Allocations, OfPhaseII) {
  failAllocationsOf<SecondPass>(&CarmaAssociationAlgorithm::RunPhaseII, Store::kPacked);
}
TEST(Allocations, OfPhaseIIWithEntries) {
  failAllocationsOf<SecondPass>(&CarmaAssociationAlgorithm::RunPhaseII, Store::kEntries);
}
TEST(Allocations, OfASecondPhaseII) {
  failAllocationsOf<SecondPass>(&CarmaAssociationAlgorithm::RunPhaseII, Store::kPacked, true);
}
TEST(Allocations, OfPhaseIIInAnotherOrder) {
  failAllocationsOf<SecondPass>(&CarmaAssociationAlgorithm::RunPhaseIIrandom, Store::kPacked);
}
TEST(Allocations, OfPhaseIIInAnotherOrderAfterPhaseII) {
  failAllocationsOf<SecondPass>(&CarmaAssociationAlgorithm::RunPhaseIIrandom, Store::kPacked, true);
}
TEST(Allocations, OfTheNullPhaseII) { failAllocationsOf<NullSecondPass>(); }

TEST(Allocations, OfACompletePass) { failAllocationsOf<CompletePassAttempt>(0, std::uint64_t{1} << 30); }
TEST(Allocations, OfACompletePassInParts) { failAllocationsOf<CompletePassAttempt>(100, std::uint64_t{500}); }
TEST(Allocations, OfACompletePassAfterPhaseII) {
  failAllocationsOf<CompletePassAttempt>(200, std::uint64_t{1} << 30);
}
