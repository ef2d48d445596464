// What every state of the engine answers to every operation: the status that comes back, the one that the
// engine has afterwards, and what the operation did.

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "korassoc/engine/CarmaCancelContext.h"
#include "korassoc/engine/CarmaFailedRestartContext.h"
#include "korassoc/engine/CarmaHeldContext.h"
#include "korassoc/engine/CarmaSaveContext.h"
#include "korassoc/engine/Exceptions.h"
#include "korassoc/engine/PhaseIContext.h"
#include "korassoc/engine/PhaseIIContext.h"
#include "tests/support/EngineHost.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using Engine = CarmaAssociationAlgorithm;
using KorAssoc::KorStatus;
using korassoc::detail::Operation;

const CarmaContext kBase;

constexpr std::size_t kColumns = 6;
constexpr std::array<const char*, kColumns> kColumnNames = {"base",   "phase I",   "phase II",
                                                            "saving", "cancelled", "failed restart"};

// An engine in each of the states, with three transactions that it has not read, and the status W77, so that
// a status that is not touched shows.
struct Subject : EngineHost {
  explicit Subject(std::size_t column) : EngineHost(repeated({1}, 3)) {
    switch (column) {
      case 0:
        Access::changeState(*engine, kBase);
        break;
      case 1:
        break;
      case 2:
        engine->RunNullPhaseII(0.0);
        break;
      case 3:
        Access::changeState(*engine, CarmaSaveContext::instance());
        break;
      case 4:
        engine->Cancel();
        engine->RunPhaseI(1);
        source.Restart();
        break;
      default:
        engine = std::make_unique<Engine>(nullptr, &source);
    }
    Access::setStatus(*engine, warning(77));
  }
};

// One row: the operation, and what is expected in each state. An expectation is the status that comes back
// and, where it is another one, the status that the engine has afterwards: "W6", "OK", "OK/W77". For
// operations without a status it is the engine's status afterwards alone, "W77" when it was left alone.
struct Row {
  const char* name;
  std::function<std::string(Subject&, const CarmaContext&)> run;
  std::array<const char*, kColumns> expected;
};

std::string described(Subject& subject, const KorStatus& result) {
  const std::string returned = shortForm(result);
  const std::string kept = shortForm(subject.engine->GetStatus());
  return returned == kept ? returned : returned + "/" + kept;
}

std::string kept(Subject& subject) { return shortForm(subject.engine->GetStatus()); }

Row query(const char* name, Operation operation, std::array<const char*, kColumns> expected) {
  return {name,
          [operation](Subject& subject, const CarmaContext& state) {
            return described(
                subject, state.Ask(*subject.engine, operation, [](SetDictionary&) { return KorStatus(); }));
          },
          expected};
}

const Row kRows[] = {
    {"Cancel",
     [](Subject& subject, const CarmaContext& state) {
       state.Cancel(*subject.engine);
       return kept(subject);
     },
     {"W6", "W77", "W77", "W77", "W77", "W77"}},
    {"SaveState",
     [](Subject& subject, const CarmaContext& state) {
       std::fstream stream;
       return described(subject, state.SaveState(*subject.engine, stream));
     },
     {"W4", "W4", "W4", "E4", "E4", "E5"}},
    {"SaveStateXML",
     [](Subject& subject, const CarmaContext& state) {
       std::ostringstream stream;
       return described(subject, state.SaveStateXML(*subject.engine, stream));
     },
     {"W4", "W4", "OK", "E4", "E4", "E5"}},
    {"SetProgressListener",
     [](Subject& subject, const CarmaContext& state) {
       auto listener = std::make_unique<TestListener>(nullptr);
       state.SetProgressListener(*subject.engine, listener.get());
       const bool taken = subject.settings->GetProgressListener() == listener.get();
       if (taken) listener.release();
       return (taken ? "installed " : "") + kept(subject);
     },
     {"installed W77", "installed W77", "installed W77", "installed W77", "E1", "E5"}},
    {"AverageSupport",
     [](Subject& subject, const CarmaContext& state) {
       if (CeilArray* ceilings = Access::ceilings(*subject.engine)) ceilings->add(0.25);
       return (state.AverageSupport(*subject.engine) == 0.25 ? "0.25 " : "0 ") + kept(subject);
     },
     {"0 W77", "0.25 W77", "0.25 W77", "0.25 W77", "0 W77", "0 W77"}},
    {"SetSupportSource",
     [](Subject& subject, const CarmaContext& state) {
       auto source = std::make_unique<TestSupport>(0.5);
       state.SetSupportSource(*subject.engine, source.get());
       const bool taken = subject.settings->GetSupportSource() == source.get();
       if (taken) source.release();
       return (taken ? "installed " : "") + kept(subject);
     },
     {"installed W77", "installed W77", "W77", "W6", "E1", "E5"}},
    {"SetMaxInStoreSets",
     [](Subject& subject, const CarmaContext& state) {
       state.SetMaxInStoreSets(*subject.engine, 100);
       const SetDictionary* dictionary = Access::dictionary(*subject.engine);
       return std::string(subject.settings->GetDictionarySettings().GetMaxInStoreSets() == 100 ? "settings "
                                                                                               : "") +
              (dictionary != nullptr && dictionary->maxInStoreSets() == 100 ? "dictionary " : "") +
              kept(subject);
     },
     {"settings W77", "settings dictionary W77", "W77", "W77", "W77", "W77"}},
    {"RunPhaseI",
     [](Subject& subject, const CarmaContext& state) {
       return described(subject, state.RunPhaseI(*subject.engine, 1));
     },
     {"W6", "OK", "W6", "W6", "E1", "E5"}},
    {"EndPhaseI",
     [](Subject& subject, const CarmaContext& state) {
       return described(subject, state.EndPhaseI(*subject.engine));
     },
     {"W6", "OK", "W6", "W6", "E1", "E5"}},
    {"RunNullPhaseII",
     [](Subject& subject, const CarmaContext& state) {
       return described(subject, state.RunNullPhaseII(*subject.engine, 0.0));
     },
     {"W6", "W6", "OK/W77", "W6", "E1", "E5"}},
    {"RunPhaseII",
     [](Subject& subject, const CarmaContext& state) {
       return described(subject, state.RunPhaseII(*subject.engine));
     },
     {"W6", "W6", "OK", "W6", "E1", "E5"}},
    {"RunPhaseIIrandom",
     [](Subject& subject, const CarmaContext& state) {
       return described(subject, state.RunPhaseIIrandom(*subject.engine));
     },
     {"W6", "W6", "OK", "W6", "W6", "W6"}},
    {"GetLattice",
     [](Subject& subject, const CarmaContext& state) {
       const SemiLattice* lattice = state.GetLattice(*subject.engine);
       return (lattice == nullptr                               ? "null "
               : lattice == Access::dictionary(*subject.engine) ? "dictionary "
                                                                : "something else ") +
              kept(subject);
     },
     {"null W77", "null W77", "dictionary W77", "null W77", "null W77", "null W77"}},
    query("CreateNgetRules", Operation::CreateNgetRules, {"W6", "W6", "OK", "W6", "E1", "E5"}),
    query("GetRulesSpecial", Operation::GetRulesSpecial, {"W6", "W6", "OK", "E6", "E1", "E5"}),
    query("GetItemsSpecial", Operation::GetItemsSpecial, {"W6", "W6", "OK", "W6", "W6", "W6"}),
    query("GetItems", Operation::GetItems, {"W6", "W6", "OK", "W6", "W6", "W6"}),
    query("ExportLatticeXML", Operation::ExportLatticeXML, {"W6", "W6", "OK", "W6", "W1", "E5"}),
    query("ExportRulesXML", Operation::ExportRulesXML, {"W6", "W6", "OK", "W6", "W1", "E5"}),
    {"RunPhaseIIcomplete",
     [](Subject& subject, const CarmaContext& state) {
       return described(subject, state.RunPhaseIIcomplete(*subject.engine, 0.5));
     },
     {"W6", "W6", "OK", "W6", "E1", "E5"}},
};

}  // namespace

TEST(StateTable, HasARowForEveryOperation) { EXPECT_EQ(std::size(kRows), korassoc::detail::kOperations); }

TEST(StateTable, IsAnsweredSlotBySlotAndStateByState) {
  for (const Row& row : kRows) {
    for (std::size_t column = 0; column < kColumns; ++column) {
      Subject subject(column);
      EXPECT_EQ(row.run(subject, Access::state(*subject.engine)), row.expected[column])
          << row.name << " in " << kColumnNames[column];
    }
  }
}

// The rest is for the state to answer.
TEST(StateTable, LetsACallbackOfAPassOrAnExportRunNoPassAndOneOfAPassSaveNothing) {
  using korassoc::detail::Answer;
  using korassoc::detail::State;
  const std::map<std::string, std::array<const char*, 2>> expected = {
      {"SaveState", {"W4", ""}},          {"SaveStateXML", {"W4", ""}},        {"RunPhaseI", {"E6", "E6"}},
      {"EndPhaseI", {"E6", "E6"}},        {"RunNullPhaseII", {"E6", "E6"}},    {"RunPhaseII", {"E6", "E6"}},
      {"RunPhaseIIrandom", {"E6", "E6"}}, {"RunPhaseIIcomplete", {"E6", "E6"}}};
  const CarmaContext* const guards[] = {&CarmaHeldContext::inPass(), &CarmaHeldContext::inExport()};
  const State states[] = {State::InPass, State::InExport};
  for (int slot = 1; slot <= korassoc::detail::kOperations; ++slot) {
    const Row& row = kRows[slot - 1];
    const auto found = expected.find(row.name);
    for (std::size_t guard = 0; guard < std::size(guards); ++guard) {
      const std::string answer = found != expected.end() ? found->second[guard] : "";
      const bool usual =
          korassoc::detail::answerOf(static_cast<Operation>(slot), states[guard]).kind == Answer::AsState;
      EXPECT_EQ(usual, answer.empty()) << row.name;
      if (usual) continue;
      for (const std::size_t phase : {1U, 2U}) {
        Subject subject(phase);
        EXPECT_EQ(row.run(subject, *guards[guard]), answer) << row.name;
      }
      Subject cancelled(2);
      cancelled.engine->Cancel();
      EXPECT_EQ(row.run(cancelled, *guards[guard]), answer == "W4" ? "W4" : "E1") << row.name;
    }
  }
}

TEST(StateTable, LeadsOutOfAStateOnlyWhereAPhaseEndsOrAnEngineIsCancelled) {
  for (const Row& row : kRows) {
    for (std::size_t column = 0; column < kColumns; ++column) {
      Subject subject(column);
      const CarmaContext& before = Access::state(*subject.engine);
      row.run(subject, before);
      const CarmaContext& after = Access::state(*subject.engine);
      if (column == 1 && row.name == std::string("EndPhaseI")) {
        EXPECT_EQ(&after, &PhaseIIContext::instance());
      } else {
        EXPECT_EQ(&after, &before) << row.name << " in " << kColumnNames[column];
      }
    }
  }
}

TEST(StateTable, SetsTheWishToCancel) {
  const std::array<std::pair<bool, bool>, kColumns> expected = {
      {{false, false}, {true, true}, {true, true}, {true, false}, {true, false}, {true, false}}};
  for (std::size_t column = 0; column < kColumns; ++column) {
    Subject subject(column);
    subject.engine->Cancel();
    const SetDictionary* dictionary = Access::dictionary(*subject.engine);
    EXPECT_EQ(Access::cancelRequested(*subject.engine), expected[column].first) << kColumnNames[column];
    EXPECT_EQ(dictionary != nullptr && dictionary->isRestartFailed(), expected[column].second)
        << kColumnNames[column];
  }
}

// The operations of the facade arrive at their slots. Phase II's end of phase I comes first, and its refusal
// is not the answer.
TEST(Facade, HandsEachOperationToTheState) {
  Subject cancelled(4);
  Engine& engine = *cancelled.engine;
  std::fstream file;
  std::ostringstream text;
  EXPECT_EQ(described(cancelled, engine.SaveState(file)), "E4");
  EXPECT_EQ(described(cancelled, engine.SaveStateXML(text)), "E4");
  EXPECT_EQ(described(cancelled, engine.RunPhaseI(1)), "E1");
  EXPECT_EQ(described(cancelled, engine.RunPhaseII()), "E1");
  EXPECT_EQ(described(cancelled, engine.RunPhaseIIrandom()), "W6");
  EXPECT_EQ(described(cancelled, engine.RunNullPhaseII(0.0)), "E1");
  EXPECT_EQ(engine.GetLattice(), nullptr);
  EXPECT_EQ(engine.AverageSupport(), 0.0);
  std::vector<AssociationRule> rules;
  std::vector<ConsequentDescriptor> items;
  EXPECT_EQ(described(cancelled, engine.CreateNgetRules(0.5, 0.5, rules)), "E1");
  EXPECT_EQ(described(cancelled, engine.GetRulesSpecial(0, 1, 0, 1, 0, 'C', nullptr, nullptr, 0, 9, nullptr,
                                                        nullptr, 0, 9, 9, false, rules)),
            "E1");
  EXPECT_EQ(described(cancelled,
                      engine.GetItemsSpecial(0, 1, 0, 1, 0, 'C', nullptr, nullptr, 0, 9, nullptr, 9, items)),
            "W6");
  EXPECT_EQ(described(cancelled, engine.GetItems(nullptr, 9, items)), "W6");
  EXPECT_EQ(described(cancelled, engine.ExportLatticeXML(text)), "W1");
  EXPECT_EQ(text.str(), "");
  Subject failed(5);
  EXPECT_EQ(described(failed, failed.engine->RunPhaseI(1)), "E5");
  EXPECT_EQ(described(failed, failed.engine->RunPhaseII()), "E5");
  EXPECT_EQ(described(failed, failed.engine->RunPhaseIIrandom()), "W6");
  EXPECT_EQ(described(failed, failed.engine->SaveState(file)), "E5");
}

TEST(Facade, DeletesTheListenerAndTheSupportSourceThatItReplaces) {
  int listeners = 0;
  int sources = 0;
  EngineHost host(repeated({1}, 3));
  for (int i = 0; i < 2; ++i) {
    host.engine->SetProgressListener(new TestListener(nullptr, &listeners));
    host.engine->SetSupportSource(new TestSupport(0.5, &sources));
    EXPECT_EQ(listeners, 1);
    EXPECT_EQ(sources, 1);
  }
  host.engine.reset();
  EXPECT_EQ(listeners, 1) << "they are the settings'";
  EXPECT_EQ(sources, 1);
  host.settings.reset();
  EXPECT_EQ(listeners, 0);
  EXPECT_EQ(sources, 0);
}

TEST(Construction, IsInPhaseIWithAnEmptySetThatCountsNothing) {
  EngineHost host(repeated({1}, 3));
  EXPECT_EQ(&Access::state(*host.engine), &PhaseIContext::instance());
  EXPECT_EQ(shortForm(host.engine->GetStatus()), "OK");
  EXPECT_EQ(host.engine->NumberOfSets(), 1);
  EXPECT_EQ(host.engine->NumberOfTransactions(), 0);
  EXPECT_EQ(host.engine->LongestSet(), 0);
  EXPECT_EQ(host.engine->CountSetsOfSize(0), 1);
  EXPECT_EQ(host.engine->CountSetsOfSize(1), 0);
  EXPECT_FALSE(host.engine->IsLatticeBuilt());
  EXPECT_EQ(Access::supportCount(*host.engine), 1.0);
  EXPECT_EQ(Access::setsRemoved(*host.engine), 0);
  EXPECT_EQ(Access::peakSets(*host.engine), 0);
  EXPECT_EQ(Access::transactionsSeen(*host.engine), 0);
}

TEST(Construction, WithoutSettingsLeavesAnUnusableEngine) {
  VectorTransactions source(repeated({1}, 3));
  Engine engine(nullptr, &source);
  EXPECT_EQ(shortForm(engine.GetStatus()), "E5");
  EXPECT_EQ(&Access::state(engine), &CarmaFailedRestartContext::instance());
  EXPECT_EQ(engine.NumberOfSets(), -1);
  EXPECT_EQ(engine.NumberOfTransactions(), -1);
  EXPECT_EQ(engine.LongestSet(), -1);
  EXPECT_EQ(engine.CountSetsOfSize(1), -1);
  EXPECT_FALSE(engine.IsLatticeBuilt());
}

TEST(Construction, CannotBeCopiedOrMoved) {
  EXPECT_FALSE(std::is_copy_constructible_v<Engine>);
  EXPECT_FALSE(std::is_move_constructible_v<Engine>);
  EXPECT_FALSE(std::is_copy_assignable_v<Engine>);
  EXPECT_FALSE(std::is_move_assignable_v<Engine>);
}

TEST(GetComponentVersion, NamesProductVersionAndMaker) {
  EXPECT_EQ(Engine::GetComponentVersion(),
            "Talvane AssociationRule -- CARMA Version 1.1 (C) Copyright 2026 Talvane. All rights reserved.");
}

TEST(Queries, TurnAnExceptionIntoAnError) {
  const std::function<void()> throwers[] = {[] { throw std::runtime_error("query"); },
                                            [] { throw new DictionaryFailure(); }, [] { throw 5; }};
  for (const auto& throwIt : throwers) {
    Subject subject(2);
    const CarmaContext::Query query = [&](SetDictionary&) {
      throwIt();
      return KorStatus();
    };
    EXPECT_EQ(
        described(subject, Access::state(*subject.engine).Ask(*subject.engine, Operation::GetItems, query)),
        "E40001");
  }
}

TEST(Queries, HandTheirResultThrough) {
  Subject subject(2);
  const auto answering = [](KorStatus status) { return [status](SetDictionary&) { return status; }; };
  const CarmaContext& state = Access::state(*subject.engine);
  EXPECT_EQ(described(subject, state.Ask(*subject.engine, Operation::GetItems, answering(warning(40002)))),
            "W40002");
  EXPECT_EQ(described(subject, state.Ask(*subject.engine, Operation::GetItems, answering(KorStatus()))),
            "OK");
}

TEST(Queries, CarryACancelOutAfterAGoodResultAlone) {
  Subject subject(2);
  const CarmaContext& state = Access::state(*subject.engine);
  const auto cancelledMeanwhile = [&](KorStatus status) {
    return [&subject, status](SetDictionary&) {
      subject.engine->Cancel();
      return status;
    };
  };
  EXPECT_EQ(described(subject, state.Ask(*subject.engine, Operation::GetItems, cancelledMeanwhile(error(1)))),
            "E1");
  EXPECT_NE(Access::dictionary(*subject.engine), nullptr) << "a query that was stopped gives nothing up";
  EXPECT_EQ(
      described(subject, state.Ask(*subject.engine, Operation::GetItems, cancelledMeanwhile(KorStatus()))),
      "E1");
  EXPECT_EQ(Access::dictionary(*subject.engine), nullptr);
  EXPECT_EQ(&Access::state(*subject.engine), &CarmaCancelContext::instance());
}

TEST(Queries, KeepTheDictionaryThatACallbackHasGivenUp) {
  Subject subject(2);
  const CarmaContext& state = Access::state(*subject.engine);
  const CarmaContext::Query inner = [](SetDictionary&) { return KorStatus(); };
  const CarmaContext::Query outer = [&](SetDictionary& dictionary) {
    subject.engine->Cancel();
    EXPECT_EQ(shortForm(state.Ask(*subject.engine, Operation::GetItems, inner)), "E1");
    EXPECT_EQ(subject.engine->NumberOfSets(), -1);
    EXPECT_EQ(dictionary.getTotalSetCount(), 1) << "still there for the query that works with it";
    return KorStatus();
  };
  EXPECT_EQ(described(subject, state.Ask(*subject.engine, Operation::GetItems, outer)), "E1");
}
