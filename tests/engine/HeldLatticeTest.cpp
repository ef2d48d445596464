// A lattice that somebody walks, while a callback of the host wants to change it: an export, a save, a second
// pass. What would change it is refused, what reads it answers, and the walk ends as if nothing had been.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/rules/AssociationRule.h"
#include "tests/support/CallingBuffer.h"
#include "tests/support/LatticeChanges.h"
#include "tests/support/SavedStates.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using Engine = CarmaAssociationAlgorithm;

struct AfterPhaseII : Running {
  AfterPhaseII() {
    EXPECT_EQ(shortForm(engine->RunPhaseI(23)), "OK");
    EXPECT_EQ(shortForm(engine->RunPhaseII()), "OK");
  }
  SetDictionary& lattice() const { return dynamic_cast<SetDictionary&>(*engine->GetLattice()); }
};

std::string exportOf(const std::function<KorAssoc::KorStatus(std::ostream&)>& write,
                     const CallingBuffer::Call& call) {
  CallingBuffer buffer(call);
  std::ostream out(&buffer);
  const std::string status = shortForm(write(out));
  EXPECT_GT(buffer.calls(), 10);
  return status + '\n' + buffer.str();
}

// What writes a lattice, by the engine and by the lattice itself.
struct Writer {
  const char* name;
  std::function<KorAssoc::KorStatus(AfterPhaseII&, std::ostream&)> write;
};

const Writer kExports[] = {
    {"ExportLatticeXML",
     [](AfterPhaseII& host, std::ostream& out) { return host.engine->ExportLatticeXML(out); }},
    {"ExportRulesXML",
     [](AfterPhaseII& host, std::ostream& out) { return host.engine->ExportRulesXML(out, 0.1, 0.1, true); }},
    {"exportLatticeXML",
     [](AfterPhaseII& host, std::ostream& out) { return host.lattice().exportLatticeXML(out, 0.5); }},
    {"exportRulesXML",
     [](AfterPhaseII& host, std::ostream& out) {
       return host.lattice().exportRulesXML(out, 0.1, 0.1, nullptr, false);
     }},
};

const Writer kSave = {"SaveStateXML",
                      [](AfterPhaseII& host, std::ostream& out) { return host.engine->SaveStateXML(out); }};

// The moments at which the stream calls: its first write, one in the middle, and all.
const std::function<bool(int)> kMoments[] = {[](int number) { return number == 1; },
                                             [](int number) { return number == 11; },
                                             [](int) { return true; }};

}  // namespace

TEST(HeldLattice, LetsNoPassOfTheEngineBeginWhileItIsExported) {
  struct Pass {
    const char* name;
    std::function<KorAssoc::KorStatus(Engine&)> run;
  };
  const Pass passes[] = {
      {"RunPhaseI", [](Engine& engine) { return engine.RunPhaseI(1); }},
      {"RunPhaseII", [](Engine& engine) { return engine.RunPhaseII(); }},
      {"RunPhaseIIrandom", [](Engine& engine) { return engine.RunPhaseIIrandom(); }},
      {"RunNullPhaseII", [](Engine& engine) { return engine.RunNullPhaseII(0.5); }},
      {"RunPhaseIIcomplete", [](Engine& engine) { return engine.RunPhaseIIcomplete(0.9); }}};
  for (const Writer& writer : kExports) {
    for (const Pass& pass : passes) {
      for (const auto& isMoment : kMoments) {
        AfterPhaseII host;
        const auto write = [&](std::ostream& out) { return writer.write(host, out); };
        const std::string expected = exportOf(write, [](int) {});
        EXPECT_EQ(exportOf(write,
                           [&](int number) {
                             if (!isMoment(number)) return;
                             EXPECT_EQ(shortForm(pass.run(*host.engine)), "E6");
                             EXPECT_EQ(shortForm(host.engine->GetStatus()), "E6");
                           }),
                  expected)
            << pass.name << " in " << writer.name;
        EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK") << "afterwards";
      }
    }
  }
}

TEST(HeldLattice, RefusesToChangeWhileItIsWritten) {
  std::vector<Writer> writers(std::begin(kExports), std::end(kExports));
  writers.push_back(kSave);
  for (const Writer& writer : writers) {
    for (const LatticeChange& change : latticeChanges()) {
      AfterPhaseII host;
      SetDictionary& lattice = host.lattice();  // a save does not give it out
      const auto write = [&](std::ostream& out) { return writer.write(host, out); };
      const std::string expected = exportOf(write, [](int) {});
      EXPECT_EQ(exportOf(write,
                         [&](int number) {
                           if (number % 7 != 4) return;
                           EXPECT_EQ(change.run(lattice), change.refusal) << change.name;
                         }),
                expected)
          << change.name << " in " << writer.name;
    }
  }
}

TEST(HeldLattice, RefusesToChangeInACallbackOfASecondPass) {
  struct Pass {
    const char* name;
    KorAssoc::KorStatus (*run)(Engine&);
  };
  const Pass passes[] = {
      {"RunPhaseII", [](Engine& engine) { return engine.RunPhaseII(); }},
      {"RunPhaseIIrandom", [](Engine& engine) { return engine.RunPhaseIIrandom(); }},
      {"RunPhaseIIcomplete", [](Engine& engine) { return engine.RunPhaseIIcomplete(0.1); }}};
  const auto lattice = [](Running& host) {
    std::ostringstream out;
    EXPECT_EQ(shortForm(host.engine->ExportLatticeXML(out)), "OK");
    return out.str();
  };
  for (const Pass& pass : passes) {
    for (const bool again : {false, true}) {
      std::string expected;
      for (const LatticeChange* change = nullptr; change != latticeChanges().data() + latticeChanges().size();
           change = change == nullptr ? latticeChanges().data() : change + 1) {
        Running host;
        host.settings->SetReportFreqPhaseII(1);
        ASSERT_EQ(shortForm(host.engine->RunPhaseI(23)), "OK");
        if (again) {
          ASSERT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
        }
        host.listen([&](ProgressReport&) {
          auto* sets = dynamic_cast<SetDictionary*>(host.engine->GetLattice());
          if (change == nullptr || sets == nullptr) return;  // null: phase I comes to its end
          EXPECT_EQ(change->run(*sets), change->refusal) << change->name;
        });
        ASSERT_EQ(shortForm(pass.run(*host.engine)), "OK");
        if (change == nullptr) {
          expected = lattice(host);
        } else {
          EXPECT_EQ(lattice(host), expected) << change->name << " in " << pass.name;
        }
      }
    }
  }
}

TEST(HeldLattice, ChangesAgainAfterwards) {
  AfterPhaseII host;
  std::ostringstream out;
  ASSERT_EQ(shortForm(host.engine->ExportLatticeXML(out)), "OK");
  ASSERT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_FALSE(host.lattice().isHeld());
  const int sets = host.lattice().getTotalSetCount();
  EXPECT_EQ(host.lattice().removeSmallSets(1e6), sets - 1);
}

// The engine knows nothing of what a lattice was asked directly.
TEST(HeldLattice, OutlivesACancelDuringItsOwnQueryOrExport) {
  const auto cancel = [](Engine& engine) {
    engine.Cancel();
    EXPECT_EQ(shortForm(engine.RunNullPhaseII(0.0)), "E1");
    EXPECT_EQ(engine.NumberOfSets(), -1);
  };
  {
    AfterPhaseII host;
    SetDictionary& lattice = host.lattice();
    const auto write = [&](std::ostream& out) { return lattice.exportLatticeXML(out, 0.5); };
    const std::string expected = exportOf(write, [](int) {});
    EXPECT_EQ(exportOf(write,
                       [&](int number) {
                         if (number == 11) cancel(*host.engine);
                       }),
              expected);
  }
  struct Query {
    const char* name;
    std::function<KorAssoc::KorStatus(SemiLattice&, ProgressListener*)> ask;
  };
  std::vector<AssociationRule> rules;
  std::vector<ConsequentDescriptor> items;
  const Query queries[] = {{"createRules",
                            [&](SemiLattice& lattice, ProgressListener* listener) {
                              return lattice.createRules(0.1, 0.1, rules, listener, true);
                            }},
                           {"createFilteredRules",
                            [&](SemiLattice& lattice, ProgressListener* listener) {
                              return lattice.createFilteredRules(0, 1, 0, 1, 0, 'C', nullptr, nullptr, 0, 9,
                                                                 nullptr, nullptr, 1, 9, -1, false, rules,
                                                                 listener);
                            }},
                           {"createFilteredConsequents",
                            [&](SemiLattice& lattice, ProgressListener* listener) {
                              return lattice.createFilteredConsequents(0, 1, 0, 1, 0, 'C', nullptr, nullptr,
                                                                       0, 9, nullptr, 9, items, listener);
                            }},
                           {"exportRulesXML", [&](SemiLattice& lattice, ProgressListener* listener) {
                              std::ostringstream out;
                              return lattice.exportRulesXML(out, 0.1, 0.1, listener, true);
                            }}};
  for (const Query& query : queries) {
    AfterPhaseII host;
    host.settings->GetDictionarySettings().SetReportFrequency(1);
    TestListener listener([&](ProgressReport&) {
      if (listener.reports == 2) cancel(*host.engine);
    });
    EXPECT_EQ(shortForm(query.ask(host.lattice(), &listener)), "E1") << query.name;
  }
}

// A document of rules shows their counts too. Rules alone are made of the counts of the beginning.
TEST(HeldLattice, IsNotExportedWithOtherCountsThanItsRules) {
  for (const bool asks : {false, true}) {
    AfterPhaseII host;
    host.settings->GetDictionarySettings().SetReportFrequency(1);
    std::vector<AssociationRule> expected;
    ASSERT_EQ(shortForm(host.engine->CreateNgetRules(0.1, 0.1, expected)), "OK");
    bool reset = false;
    std::vector<AssociationRule> inner;
    int reports = 0;
    host.listen([&](ProgressReport&) {
      if (++reports != 2) return;
      if (reset) {
        EXPECT_GT(host.lattice().resetAllCounts(), 0);
      }
      const int item[] = {1};
      host.lattice().getDescriptor(item, 1);
      if (!asks) return;
      EXPECT_EQ(shortForm(host.lattice().createRules(0.1, 0.1, inner, nullptr, true)), "OK");
    });
    std::vector<AssociationRule> rules;
    ASSERT_EQ(shortForm(host.engine->CreateNgetRules(0.1, 0.1, rules)), "OK") << "whoever looks";
    EXPECT_EQ(rules.size(), expected.size());
    reports = 0;
    std::ostringstream out;
    EXPECT_EQ(shortForm(host.engine->ExportRulesXML(out, 0.1, 0.1, true)), "OK");
    EXPECT_NE(out.str(), "");
    reports = 0;
    reset = true;
    std::ostringstream changed;
    EXPECT_EQ(shortForm(host.engine->ExportRulesXML(changed, 0.1, 0.1, true)), "E1");
    EXPECT_EQ(changed.str(), "");
  }
}

// Sets that a record brought are packed until somebody looks at one.
TEST(HeldLattice, WritesPackedSetsThatAreLookedAtMeanwhile) {
  Running host;
  ASSERT_EQ(shortForm(host.engine->RunPhaseI(23)), "OK");
  SetDictionary& sets = *Access::dictionary(*host.engine);
  std::ostringstream expected;
  sets.writeObjectXML(expected);
  ASSERT_TRUE(sets.isPacked());
  CallingBuffer buffer([&](int number) {
    if (number != 50) return;
    EXPECT_GT(sets.getDescriptor(1)->count, 0);
  });
  std::ostream out(&buffer);
  sets.writeObjectXML(out);
  EXPECT_FALSE(sets.isPacked());
  EXPECT_EQ(buffer.str(), expected.str());
}

// The engine asks for the listener anew at each report.
TEST(Queries, ReportToTheListenerThatIsInstalled) {
  int former = 0;
  int reports = 0;
  int living = 0;
  AfterPhaseII host;
  host.settings->GetDictionarySettings().SetReportFrequency(1);
  struct Replacing : ProgressListener {
    explicit Replacing(std::function<void()> how) : replace(std::move(how)) {}
    void OnProgress(ProgressReport*) override {
      const std::function<void()> last = replace;  // this object is gone when it returns
      last();
    }
    std::function<void()> replace;
  };
  host.engine->SetProgressListener(new Replacing([&] {
    ++former;
    host.engine->SetProgressListener(new TestListener([&](ProgressReport&) { ++reports; }, &living));
  }));
  std::vector<AssociationRule> rules;
  EXPECT_EQ(shortForm(host.engine->CreateNgetRules(0.1, 0.1, rules)), "OK");
  EXPECT_EQ(former, 1);
  EXPECT_GT(reports, 2);
  EXPECT_EQ(living, 1);
}
