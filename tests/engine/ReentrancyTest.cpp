// Every public operation, called from every callback and from every stream, at several moments. Whatever is
// called: the operation around it ends as if nothing had been called, or says that it did not, and the engine
// works on or says why it does not.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/engine/Exceptions.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"
#include "tests/support/Dice.h"
#include "tests/support/EngineTestAccess.h"
#include "tests/support/HostOperations.h"
#include "tests/support/Hosts.h"
#include "tests/support/RecordStream.h"
#include "tests/support/ReentrantHost.h"
#include "tests/support/StreamCapture.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using KorAssoc::KorStatus;
using Kind = HostOperation::Kind;

struct Outcome {
  std::string status;
  std::string answer;

  bool isGood() const { return status == "OK"; }
};

// An operation that calls the host back.
struct Scene {
  enum Effect {
    Held,     // a callback changes nothing
    Noticed,  // a callback may change the lattice; then there is no good end
    Apart     // a callback may change the engine, which has no part in it
  };
  enum Answers {
    Momentary,      // of the operations that ask
    OfLatticeSame,  // as before, in the callbacks: those of the lattice,
    Same            // and of the engine, too
  };
  const char* name;
  Effect effect;
  Answers answers;
  std::vector<Callback> callbacks;
  std::function<void(ReentrantHost&)> prepare;
  std::function<Outcome(ReentrantHost&)> run;

  friend void PrintTo(const Scene& scene, std::ostream* out) { *out << scene.name; }
};

void inPhaseI(ReentrantHost& host) { ASSERT_EQ(shortForm(host.engine->RunPhaseI(7)), "OK"); }

// The lattice is kept: a save does not give it out.
void inPhaseII(ReentrantHost& host) {
  inPhaseI(host);
  ASSERT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  host.lattice = dynamic_cast<SetDictionary*>(host.engine->GetLattice());
}

// --- Passes: what they leave is their answer ---

std::string lattice(CarmaAssociationAlgorithm& engine) {
  std::ostringstream out;
  const std::string status = shortForm(engine.ExportLatticeXML(out));
  return status == "OK" ? out.str() : status;
}

std::string state(CarmaAssociationAlgorithm& engine) {
  std::ostringstream out;
  const std::string status = shortForm(engine.SaveStateXML(out));
  return status == "OK" ? out.str() : status;
}

Scene pass(const char* name, std::function<void(ReentrantHost&)> prepare,
           std::function<KorStatus(CarmaAssociationAlgorithm&)> run,
           std::string (*left)(CarmaAssociationAlgorithm&),
           std::vector<Callback> callbacks = {Callback::HasNext, Callback::Next, Callback::Restart,
                                              Callback::GetLength, Callback::GetItem, Callback::OnProgress}) {
  return {name,
          Scene::Held,
          Scene::Momentary,
          std::move(callbacks),
          std::move(prepare),
          [run, left](ReentrantHost& host) {
            std::string status = shortForm(run(*host.engine));
            host.hook.disarm();
            std::string answer = status == "OK" ? left(*host.engine) : "";
            if (answer == "E1") std::swap(status, answer);  // a cancel that came too late for the pass
            return Outcome{status, answer};
          }};
}

// --- Queries, asked of the engine or of the lattice ---

template <typename Found, typename Ask>
Outcome found(Ask&& ask) {
  Found results;
  const std::string status = shortForm(ask(results));
  std::ostringstream text;
  for (const auto& result : results) {
    if constexpr (std::is_same_v<Found, std::vector<AssociationRule>>) {
      text << result.getAntecedent().length() << result.getConsequent().getItemAt(0);
    } else {
      text << result.getItem();
    }
    text << ' ' << result.getSupport() << ' ' << result.getConfidence() << ' ' << result.getLift() << '\n';
  }
  return {status, text.str()};
}

using Rules = std::vector<AssociationRule>;
using Items = std::vector<ConsequentDescriptor>;

Scene query(const char* name, std::function<Outcome(ReentrantHost&)> run) {
  return {name, Scene::Noticed, Scene::Momentary, {Callback::OnProgress}, inPhaseII, std::move(run)};
}

// --- Streams ---

Scene writer(const char* name, Scene::Answers answers, std::function<void(ReentrantHost&)> prepare,
             std::function<std::string(ReentrantHost&, std::fstream&)> write,
             Scene::Effect effect = Scene::Held) {
  return {name, effect, answers, {Callback::Write}, std::move(prepare), [write](ReentrantHost& host) {
            CallingBuffer buffer([&host](int) { host.hook.call(Callback::Write); });
            std::fstream out;
            static_cast<std::ios&>(out).rdbuf(&buffer);
            const std::string status = write(host, out);
            return Outcome{status, buffer.str()};
          }};
}

std::string record(const SetDictionary& sets) {
  RecordStream bytes;
  sets.writeObject(bytes.stream());
  return bytes.bytes();
}

std::string recordXML(const SetDictionary& sets) {
  std::ostringstream out;
  sets.writeObjectXML(out);
  return out.str();
}

std::unique_ptr<SetDictionary> emptyDictionary(ReentrantHost& host) {
  return std::make_unique<SetDictionary>(host.settings.GetMaxLengthSet(),
                                         &host.settings.GetDictionarySettings(), true);
}

// Beside an engine in phase II, the sets that a phase I has packed.
void withPackedSets(ReentrantHost& host) {
  inPhaseII(host);
  ReentrantHost other;
  inPhaseI(other);
  RecordStream bytes(record(*Access::dictionary(*other.engine)));
  host.own = emptyDictionary(host);
  host.own->readObject(bytes.stream());
  ASSERT_TRUE(host.own->isPacked());
  host.lattice = host.own.get();
}

template <typename Stream>
Scene restorer(const char* name, std::string (*save)(ReentrantHost&)) {
  const auto prepare = [](ReentrantHost& host) {
    inPhaseII(host);
    host.lattice = nullptr;  // nothing keeps it when the engine is cancelled
  };
  return {name, Scene::Apart, Scene::Momentary, {Callback::Read}, prepare, [save](ReentrantHost& host) {
            ReentrantHost other;
            inPhaseI(other);
            HookedReader bytes(host.hook, save(other));
            Stream in;
            static_cast<std::ios&>(in).rdbuf(&bytes);
            CarmaAssociationAlgorithm restored(in, &other.source);
            const std::string status = shortForm(restored.GetStatus());
            return Outcome{status, status == "OK" ? recordXML(*Access::dictionary(restored)) : ""};
          }};
}

// The sets are those that are being read.
template <typename Stream>
Scene reader(const char* name, std::string (*write)(), std::uint64_t (*read)(SetDictionary&, Stream&)) {
  return {name,
          Scene::Apart,
          Scene::Momentary,
          {Callback::Read},
          [](ReentrantHost& host) {
            inPhaseII(host);
            host.own = emptyDictionary(host);
            host.lattice = host.own.get();
          },
          [write, read](ReentrantHost& host) {
            HookedReader bytes(host.hook, write());
            Stream in;
            static_cast<std::ios&>(in).rdbuf(&bytes);
            const bool done = read(*host.own, in) > 0;
            host.hook.disarm();
            return Outcome{done ? "OK" : "refused", recordXML(*host.own)};
          }};
}

std::vector<Scene> passes() {
  return {
      pass(
          "RunPhaseI", [](ReentrantHost&) {}, [](auto& engine) { return engine.RunPhaseI(8); }, state,
          {Callback::HasNext, Callback::Next, Callback::GetLength, Callback::GetItem, Callback::GetSupport,
           Callback::OnProgress}),
      pass("RunNullPhaseII", inPhaseI, [](auto& engine) { return engine.RunNullPhaseII(0.0); }, lattice,
           {Callback::OnProgress}),
      pass(
          "RunPhaseII", inPhaseI, [](auto& engine) { return engine.RunPhaseII(); }, lattice),
      pass(
          "RunPhaseIIAgain", inPhaseII, [](auto& engine) { return engine.RunPhaseII(); }, lattice),
      pass(
          "RunPhaseIIrandom", inPhaseII, [](auto& engine) { return engine.RunPhaseIIrandom(); }, lattice),
      pass(
          "RunPhaseIIcomplete", inPhaseI, [](auto& engine) { return engine.RunPhaseIIcomplete(0.2); },
          lattice),
      pass(
          "RunPhaseIIcompleteAgain", inPhaseII, [](auto& engine) { return engine.RunPhaseIIcomplete(0.3); },
          lattice),
  };
}

std::vector<Scene> queries() {
  return {
      query("CreateNgetRules",
            [](ReentrantHost& h) {
              return found<Rules>([&](Rules& r) { return h.engine->CreateNgetRules(0.1, 0.1, r); });
            }),
      query("GetRulesSpecial",
            [](ReentrantHost& h) {
              return found<Rules>([&](Rules& r) {
                return h.engine->GetRulesSpecial(0, 1, 0, 1, 0, ' ', nullptr, nullptr, 0, 9, nullptr, nullptr,
                                                 1, 9, -1, false, r);
              });
            }),
      query("GetItemsSpecial",
            [](ReentrantHost& h) {
              return found<Items>([&](Items& i) {
                return h.engine->GetItemsSpecial(0, 1, 0, 1, 0, 'C', nullptr, nullptr, 0, 9, nullptr, -1, i);
              });
            }),
      query("RulesOfAnExport",
            [](ReentrantHost& h) {
              std::ostringstream out;
              const std::string status = shortForm(h.engine->ExportRulesXML(out, 0.1, 0.1, true));
              return Outcome{status, out.str()};
            }),
      query("createRules",
            [](ReentrantHost& h) {
              HookedListener listener(h.hook);
              return found<Rules>(
                  [&](Rules& r) { return h.lattice->createRules(0.1, 0.1, r, &listener, false); });
            }),
      query("createFilteredRules",
            [](ReentrantHost& h) {
              HookedListener listener(h.hook);
              return found<Rules>([&](Rules& r) {
                return h.lattice->createFilteredRules(0, 1, 0, 1, 0, 'S', nullptr, nullptr, 0, 9, nullptr,
                                                      nullptr, 1, 9, -1, true, r, &listener);
              });
            }),
      query("createFilteredConsequents",
            [](ReentrantHost& h) {
              HookedListener listener(h.hook);
              return found<Items>([&](Items& i) {
                return h.lattice->createFilteredConsequents(0, 1, 0, 1, 0, 'L', nullptr, nullptr, 0, 9,
                                                            nullptr, -1, i, &listener);
              });
            }),
  };
}

std::vector<Scene> streams() {
  return {
      writer("ExportRulesXML", Scene::Same, inPhaseII,
             [](ReentrantHost& h, std::ostream& out) {
               return shortForm(h.engine->ExportRulesXML(out, 0.1, 0.1, true));
             }),
      writer("ExportLatticeXML", Scene::Same, inPhaseII,
             [](ReentrantHost& h, std::ostream& out) { return shortForm(h.engine->ExportLatticeXML(out)); }),
      writer("SaveState", Scene::Momentary, inPhaseI,
             [](ReentrantHost& h, std::fstream& out) { return shortForm(h.engine->SaveState(out)); }),
      writer("SaveStateXML", Scene::Momentary, inPhaseI,
             [](ReentrantHost& h, std::ostream& out) { return shortForm(h.engine->SaveStateXML(out)); }),
      writer("SaveStateXMLofALattice", Scene::OfLatticeSame, inPhaseII,
             [](ReentrantHost& h, std::ostream& out) { return shortForm(h.engine->SaveStateXML(out)); }),
      writer("exportRulesXML", Scene::Same, inPhaseII,
             [](ReentrantHost& h, std::ostream& out) {
               return shortForm(h.lattice->exportRulesXML(out, 0.1, 0.1, nullptr, false));
             }),
      writer("exportLatticeXML", Scene::Same, inPhaseII,
             [](ReentrantHost& h, std::ostream& out) {
               return shortForm(h.lattice->exportLatticeXML(out, 0.5));
             }),
      writer("writeObject", Scene::Same, inPhaseII,
             [](ReentrantHost& h, std::fstream& out) { return h.lattice->writeObject(out), "OK"; }),
      writer("writeObjectXML", Scene::Same, inPhaseII,
             [](ReentrantHost& h, std::ostream& out) { return h.lattice->writeObjectXML(out), "OK"; }),
      writer(
          "writeObjectOfPackedSets", Scene::OfLatticeSame, withPackedSets,
          [](ReentrantHost& h, std::fstream& out) { return h.lattice->writeObject(out), "OK"; },
          Scene::Apart),
      writer(
          "writeObjectXMLofPackedSets", Scene::OfLatticeSame, withPackedSets,
          [](ReentrantHost& h, std::ostream& out) { return h.lattice->writeObjectXML(out), "OK"; },
          Scene::Apart),
      restorer<std::fstream>("RestoreBinary",
                             [](ReentrantHost& saved) {
                               RecordStream bytes;
                               EXPECT_EQ(shortForm(saved.engine->SaveState(bytes.stream())), "OK");
                               return bytes.bytes();
                             }),
      restorer<std::ifstream>("RestoreXML", [](ReentrantHost& saved) { return state(*saved.engine); }),
      reader<std::fstream>(
          "readObject",
          [] {
            ReentrantHost saved;
            inPhaseI(saved);
            return record(*Access::dictionary(*saved.engine));
          },
          [](SetDictionary& sets, std::fstream& in) { return sets.readObject(in); }),
      reader<std::ifstream>(
          "readObjectXML",
          [] {
            ReentrantHost saved;
            inPhaseII(saved);
            return recordXML(*saved.lattice);
          },
          [](SetDictionary& sets, std::ifstream& in) { return sets.readObjectXML(in); }),
  };
}

// What the host's callbacks let out of a lattice that was asked directly, ends here.
Outcome outcomeOf(const Scene& scene, ReentrantHost& host) {
  try {
    return scene.run(host);
  } catch (...) {
    korassoc::detail::discardCurrentException();
    return {"thrown", ""};
  }
}

// What becomes of the engine: the second pass over its transactions.
Outcome finished(ReentrantHost& host) {
  host.hook.reset();
  const std::string status = shortForm(host.engine->RunPhaseII());
  return {status, status == "OK" ? lattice(*host.engine) : ""};
}

class Reentrancy : public ::testing::TestWithParam<Scene> {
 protected:
  void SetUp() override {
    if (scene_.answers != Scene::Momentary) {
      ReentrantHost host;
      scene_.prepare(host);
      for (const HostOperation& operation : hostOperations()) {
        if (operation.kind == Kind::Asks) before_[operation.name] = operation.run(host);
      }
    }
    ReentrantHost host;
    scene_.prepare(host);
    host.hook.reset();
    undisturbed_ = outcomeOf(scene_, host);
    ASSERT_EQ(undisturbed_.status, "OK");
    ASSERT_GT(undisturbed_.answer.size(), 60U);
    for (const Callback callback : scene_.callbacks) calls_[callback] = host.hook.calls(callback);
    if (scene_.effect != Scene::Apart) finish_ = finished(host);
  }

  // Runs the scene, with operations in some calls of its callbacks, and judges it by what these were. Within a
  // callback others may do the same, so deep.
  void disturb(const Hook::Moment& isMoment, const std::function<const HostOperation&()>& choose,
               int deepest = 1) {
    ReentrantHost host;
    scene_.prepare(host);
    host.hook.reset();
    std::set<Kind> called;
    isStopped_ = false;
    host.hook.arm(
        isMoment,
        [&] {
          const HostOperation& operation = choose();
          called.insert(operation.kind);
          callBack(host, operation);
        },
        deepest);
    judge(outcomeOf(scene_, host), called);
    judgeEngine(finished(host), called);
  }

  const Scene& scene_ = GetParam();
  std::map<Callback, int> calls_;  // of the undisturbed run

 private:
  void callBack(ReentrantHost& host, const HostOperation& operation) {
    if (operation.needsLattice && host.sets() == nullptr) return;
    std::string answer;
    try {
      answer = operation.run(host);
    } catch (...) {  // of an operation without a status, where a lattice has been broken off or badly read
      korassoc::detail::discardCurrentException();
      answer = "thrown";
    }
    const bool comparable =
        scene_.answers == Scene::Same || (scene_.answers == Scene::OfLatticeSame && operation.needsLattice);
    if (comparable && operation.kind == Kind::Asks && !isStopped_) {
      EXPECT_EQ(answer, before_[operation.name]);
    }
    if (operation.kind == Kind::Stops) isStopped_ = true;
  }

  void judge(const Outcome& outcome, const std::set<Kind>& called) const {
    const bool isNoticed = scene_.effect == Scene::Noticed;
    const bool increments = called.count(Kind::Increments) != 0;
    const bool changes = increments || called.count(Kind::Changes) != 0;
    const bool stops = called.count(Kind::Stops) != 0;
    // A stop that comes with the last report of a filtered query gives no rules and no error.
    if (stops && isNoticed && outcome.isGood() && outcome.answer.empty()) return;
    if (outcome.isGood() && !increments) {
      EXPECT_EQ(outcome.answer, undisturbed_.answer);
    }
    if (scene_.effect == Scene::Apart || !(stops || (changes && isNoticed))) {
      EXPECT_EQ(outcome.status, "OK");
    }
  }

  void judgeEngine(const Outcome& finish, const std::set<Kind>& called) const {
    if (called.count(Kind::Stops) != 0 && finish.status == "E1") return;  // it says so
    EXPECT_EQ(finish.status, "OK");
    if (scene_.effect == Scene::Held && called.count(Kind::Increments) == 0) {
      EXPECT_EQ(finish.answer, finish_.answer);
    }
  }

  std::map<std::string, std::string> before_;
  Outcome undisturbed_;
  Outcome finish_;
  bool isStopped_ = false;
};

std::string nameOf(const ::testing::TestParamInfo<Scene>& info) { return info.param.name; }

}  // namespace

TEST_P(Reentrancy, DisturbsNothingOrIsToldOf) {
  for (const Callback callback : scene_.callbacks) {
    const int last = calls_[callback];
    ASSERT_GT(last, 0) << kCallbackNames[static_cast<std::size_t>(callback)];
    const std::map<std::string, std::function<bool(int)>> moments = {
        {"first", [](int number) { return number == 1; }},
        {"middle", [last](int number) { return number == (last + 1) / 2; }},
        {"last", [last](int number) { return number == last; }},
        {"every", [](int) { return true; }}};
    for (const auto& [when, isMoment] : moments) {
      if (last == 1 && when != "first") continue;
      for (const HostOperation& operation : hostOperations()) {
        disturb([&, &at = isMoment](Callback of, int number, int) { return of == callback && at(number); },
                [&operation]() -> const HostOperation& { return operation; });
        if (HasFailure()) {
          FAIL() << operation.name << " in the " << when << " call of "
                 << kCallbackNames[static_cast<std::size_t>(callback)];
        }
      }
    }
  }
}

TEST_P(Reentrancy, DisturbsNothingWhereCallsNestEither) {
  std::vector<HostOperation> operations = hostOperations();
  std::erase_if(operations, [](const HostOperation& each) { return each.kind == Kind::Increments; });
  for (std::uint64_t seed = 1; seed <= 150 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    Dice dice(seed);
    const auto isMoment = [&](Callback of, int, int depth) {
      return (depth > 0 || calls_.count(of) != 0) && dice.chance(20);
    };
    disturb(
        isMoment, [&]() -> const HostOperation& { return dice.oneOf(operations); }, 3);
  }
}

INSTANTIATE_TEST_SUITE_P(Passes, Reentrancy, ::testing::ValuesIn(passes()), nameOf);
INSTANTIATE_TEST_SUITE_P(Queries, Reentrancy, ::testing::ValuesIn(queries()), nameOf);
INSTANTIATE_TEST_SUITE_P(Streams, Reentrancy, ::testing::ValuesIn(streams()), nameOf);
