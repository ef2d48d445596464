// From transactions to documents: what the engine's exports write, and when they refuse.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "tests/support/FailingBuffer.h"
#include "tests/support/Hosts.h"
#include "tests/support/VectorTransactions.h"
#include "tests/xml/export/DocumentReader.h"
#include "tests/xml/export/SmallModel.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

// An engine over the transactions of the small model, with tables of the small model's sizes. One transaction
// is enough to stay in the model, so it keeps all that phase I comes to know.
class Exports : public testing::Test {
 protected:
  Exports() : settings_(settingsWithSupport(0.05)), source_(smallModelTransactions()) {
    settings_->SetMaxLengthSet(4);
    settings_->GetDictionarySettings().SetInitialBoundarySearchSize(6);
    settings_->GetDictionarySettings().SetInitialHashtableSet23Size(5);
    engine_ = std::make_unique<CarmaAssociationAlgorithm>(settings_.get(), &source_);
  }
  void run() {
    ASSERT_TRUE(engine_->RunPhaseI(source_.size()).IsOK());
    ASSERT_TRUE(engine_->RunPhaseII().IsOK());
  }

  std::unique_ptr<CarmaSettings> settings_;
  VectorTransactions source_;
  std::unique_ptr<CarmaAssociationAlgorithm> engine_;
};

TEST_F(Exports, TheLatticeOfTheSmallModelIsTheDocumentWrittenByHand) {
  run();
  std::ostringstream out;
  EXPECT_TRUE(engine_->ExportLatticeXML(out).IsOK());
  EXPECT_EQ(out.str(), expectedDocument("lattice.xml"));
}

TEST_F(Exports, AllRulesOfTheSmallModelAreTheDocumentWrittenByHand) {
  run();
  std::ostringstream out;
  EXPECT_TRUE(engine_->ExportRulesXML(out, 0.15, 0.5, false).IsOK());
  EXPECT_EQ(out.str(), expectedDocument("rules.xml"));
}

TEST_F(Exports, TheNonredundantRulesOfTheSmallModelHaveMinimalAntecedentsAndLargestConsequents) {
  run();
  std::ostringstream out;
  EXPECT_TRUE(engine_->ExportRulesXML(out, 0.15, 0.5, true).IsOK());
  // {} => 5, 2 => 5, {} => 2, 5 => 2, 2 => 8, 8 => 2 5, 2 5 => 8; the itemsets are {}, 2, 5, 8, 2 5.
  EXPECT_THAT(values(out.str(), "Header", "description"),
              ElementsAre("Carma model for nonredundant association rules"));
  EXPECT_THAT(values(out.str(), "AssociationModel", "numberOfRules"), ElementsAre("7"));
  EXPECT_THAT(values(out.str(), "AssociationModel", "numberOfItemsets"), ElementsAre("5"));
  EXPECT_THAT(values(out.str(), "AssociationRule", "antecedent"),
              ElementsAre("1", "2", "1", "3", "2", "4", "5"));
  EXPECT_THAT(values(out.str(), "AssociationRule", "consequent"),
              ElementsAre("3", "3", "2", "2", "4", "5", "4"));
}

TEST_F(Exports, RulesThatNothingReachesAreADocumentWithoutRules) {
  run();
  std::ostringstream out;
  EXPECT_TRUE(engine_->ExportRulesXML(out, 0.15, 0.9, false).IsOK());
  EXPECT_THAT(values(out.str(), "AssociationModel", "numberOfItems"), ElementsAre("0"));
  EXPECT_THAT(values(out.str(), "AssociationModel", "numberOfItemsets"), ElementsAre("0"));
  EXPECT_THAT(values(out.str(), "AssociationModel", "numberOfRules"), ElementsAre("0"));
  EXPECT_THAT(out.str(), Not(HasSubstr("<Item")));
  EXPECT_THAT(out.str(), Not(HasSubstr("<AssociationRule")));
}

TEST_F(Exports, WithoutItemsetsThereAreNoRulesAndNothingIsWritten) {
  ASSERT_TRUE(engine_->RunPhaseII().IsOK());
  std::ostringstream out;
  EXPECT_EQ(shortForm(engine_->ExportRulesXML(out, 0.15, 0.5, false)), "W40002");
  EXPECT_EQ(out.str(), "");
}

TEST_F(Exports, RulesOfPhaseIAreRefusedAndNothingWritten) {
  std::ostringstream out;
  EXPECT_EQ(shortForm(engine_->ExportRulesXML(out, 0.15, 0.5, false)), "W6");
  EXPECT_EQ(out.str(), "");
}

TEST_F(Exports, RulesTellTheListenerOfTheirProgress) {
  run();
  std::vector<int> totals;
  engine_->SetProgressListener(
      new TestListener([&](ProgressReport& report) { totals.push_back(report.GetIntValue("setTotal")); }));
  std::ostringstream out;
  EXPECT_TRUE(engine_->ExportRulesXML(out, 0.15, 0.5, false).IsOK());
  EXPECT_THAT(totals, ElementsAre(9, 9));  // at the first of the nine sets and at the end
}

TEST_F(Exports, RulesCancelledWhileTheyAreMadeAreNotWritten) {
  run();
  engine_->SetProgressListener(new TestListener([this](ProgressReport&) { engine_->Cancel(); }));
  std::ostringstream out;
  EXPECT_EQ(shortForm(engine_->ExportRulesXML(out, 0.15, 0.5, false)), "E1");
  EXPECT_EQ(out.str(), "");
}

TEST_F(Exports, TheLatticeCarriesTheAverageSupport) {
  // Six times 0.4 and six times 0.1: the average of the ceilings is 0.25.
  engine_->SetSupportSource(new TestSupport([](int transaction) { return transaction <= 6 ? 0.4 : 0.1; }));
  run();
  std::ostringstream out;
  EXPECT_TRUE(engine_->ExportLatticeXML(out).IsOK());
  EXPECT_THAT(values(out.str(), "AssocInputStats", "minimumSupport"), ElementsAre("0.25"));
}

TEST_F(Exports, TheLatticeOfAnEngineWithoutTransactionsHasTheEmptySetAlone) {
  ASSERT_TRUE(engine_->RunPhaseII().IsOK());
  std::ostringstream out;
  EXPECT_TRUE(engine_->ExportLatticeXML(out).IsOK());
  EXPECT_THAT(values(out.str(), "AssocInputStats", "numberOfTransactions"), ElementsAre("1"));
  EXPECT_THAT(values(out.str(), "LatticeLevel", "numberOfSets"), ElementsAre("1", "0", "0", "0", "0"));
  EXPECT_THAT(values(out.str(), "Itemset", "support"), ElementsAre("0"));
}

TEST_F(Exports, ALatticeOfPhaseIIsRefusedAndNothingWritten) {
  std::ostringstream out;
  EXPECT_EQ(shortForm(engine_->ExportLatticeXML(out)), "W6");
  EXPECT_EQ(out.str(), "");
}

TEST_F(Exports, OfACancelledEngineAreRefusedAndNothingWritten) {
  run();
  engine_->Cancel();
  std::ostringstream first;
  EXPECT_EQ(shortForm(engine_->ExportLatticeXML(first)), "E1");  // finds the cancel
  std::ostringstream second;
  EXPECT_EQ(shortForm(engine_->ExportLatticeXML(second)), "W1");
  EXPECT_EQ(shortForm(engine_->ExportRulesXML(second, 0.15, 0.5, false)), "W1");
  EXPECT_EQ(second.str(), "");
}

TEST_F(Exports, AFailedStreamIsLeftToTheCaller) {
  run();
  std::ostringstream out;
  out.setstate(std::ios::badbit);
  EXPECT_TRUE(engine_->ExportLatticeXML(out).IsOK());
  EXPECT_TRUE(out.bad());
  EXPECT_EQ(out.str(), "");
}

TEST_F(Exports, AStreamThatThrowsEndsTheExportWithAStatusAndTheEngineStaysUsable) {
  run();
  FailingBuffer buffer(1000);
  std::ostream out(&buffer);
  out.exceptions(std::ios::badbit);
  EXPECT_EQ(shortForm(engine_->ExportLatticeXML(out)), "E40001");
  EXPECT_EQ(buffer.text(), expectedDocument("lattice.xml").substr(0, 1000));
  std::ostringstream again;
  EXPECT_TRUE(engine_->ExportLatticeXML(again).IsOK());
  EXPECT_EQ(again.str(), expectedDocument("lattice.xml"));
}

}  // namespace
