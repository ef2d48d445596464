// Rules asked for while a listener has the lattice made anew: they end, and are none.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"
#include "tests/support/EngineHost.h"

namespace {

// After phase II, with all subsets of five items stored; at the report of this number the listener runs
// another pass.
struct ChangingHost : EngineHost {
  ChangingHost(int atReport, bool complete) : EngineHost(repeated({1, 2, 3, 4, 5}, 20), 0.1) {
    settings->GetDictionarySettings().SetReportFrequency(1);
    EXPECT_EQ(shortForm(engine->RunPhaseI(20)), "OK");
    EXPECT_EQ(shortForm(engine->RunPhaseII()), "OK");
    EXPECT_GT(engine->NumberOfSets(), 10);
    listen([this, atReport, complete](ProgressReport&) {
      if (++reports_ != atReport) return;
      passes = true;
      EXPECT_EQ(shortForm(complete ? engine->RunPhaseIIcomplete(0.5) : engine->RunPhaseII()), "OK");
    });
  }

  bool passes = false;

 private:
  int reports_ = 0;
};

template <typename Ask>
void expectNothing(Ask&& ask) {
  for (const bool complete : {true, false}) {
    for (const int atReport : {1, 2, 9}) {
      ChangingHost host(atReport, complete);
      EXPECT_EQ(ask(*host.engine), "E1") << "at report " << atReport << (complete ? ", complete" : "");
      ASSERT_TRUE(host.passes);
      EXPECT_TRUE(host.engine->IsLatticeBuilt());
      std::vector<AssociationRule> rules;
      host.engine->SetProgressListener(nullptr);
      EXPECT_EQ(shortForm(host.engine->CreateNgetRules(0.1, 0.1, rules)), "OK");
      EXPECT_FALSE(rules.empty());
    }
  }
}

}  // namespace

TEST(ChangedLattice, EndsTheCreationOfRules) {
  expectNothing([](CarmaAssociationAlgorithm& engine) {
    std::vector<AssociationRule> rules;
    const std::string status = shortForm(engine.CreateNgetRules(0.1, 0.1, rules));
    EXPECT_TRUE(rules.empty());
    return status;
  });
}

TEST(ChangedLattice, EndsFilteredCreation) {
  for (const char order : {'C', ' '}) {
    expectNothing([order](CarmaAssociationAlgorithm& engine) {
      std::vector<AssociationRule> rules;
      const std::string status = shortForm(engine.GetRulesSpecial(
          0.1, 1.0, 0.1, 1.0, 0.0, order, nullptr, nullptr, 0, 9, nullptr, nullptr, 1, 9, -1, false, rules));
      EXPECT_TRUE(rules.empty());
      return status;
    });
  }
}

TEST(ChangedLattice, EndsFilteredConsequents) {
  expectNothing([](CarmaAssociationAlgorithm& engine) {
    std::vector<ConsequentDescriptor> consequents;
    const std::string status = shortForm(engine.GetItemsSpecial(0.1, 1.0, 0.1, 1.0, 0.0, 'C', nullptr,
                                                                nullptr, 0, 9, nullptr, -1, consequents));
    EXPECT_TRUE(consequents.empty());
    return status;
  });
}

TEST(ChangedLattice, LeavesAnExportOfRulesUnwritten) {
  expectNothing([](CarmaAssociationAlgorithm& engine) {
    std::ostringstream out;
    const std::string status = shortForm(engine.ExportRulesXML(out, 0.1, 0.1, true));
    EXPECT_EQ(out.str(), "");
    return status;
  });
}
