#include "tests/support/HostOperations.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <set>
#include <sstream>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/engine/ItemsetColumns.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"
#include "tests/support/Hosts.h"
#include "tests/support/LatticeChanges.h"
#include "tests/support/RecordStream.h"
#include "tests/support/StreamCapture.h"

namespace {

using KorAssoc::KorStatus;
using lattice_changes::arrayOf;
using lattice_changes::textOf;
using Kind = HostOperation::Kind;
using Engine = CarmaAssociationAlgorithm;

std::string text(const ItemSet& set) {
  std::string items;
  for (int i = 0; i < set.length(); ++i) items += ' ' + std::to_string(set.getItemAt(i));
  return '{' + items + " }";
}

std::string text(const korassoc::ItemsetColumns& columns) {
  std::string sets;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    for (const int item : columns.set(i)) sets += ' ' + std::to_string(item);
    sets += ':' + std::to_string(columns.counts[i]);
  }
  return sets;
}

std::string text(bool value) { return value ? "true" : "false"; }
std::string text(int value) { return std::to_string(value); }
std::string text(double value) { return std::to_string(value); }

// A query's status and what it has found.
template <typename Found, typename Ask>
std::string asked(Ask&& ask) {
  Found found;
  std::string answer = shortForm(ask(found));
  for (const auto& each : found) {
    if constexpr (std::is_same_v<Found, std::set<ItemSet>>) {
      answer += ' ' + text(each);
    } else if constexpr (std::is_same_v<Found, std::vector<AssociationRule>>) {
      answer += ' ' + text(each.getAntecedent()) + text(each.getConsequent()) + text(each.getConfidence());
    } else {
      answer += ' ' + text(each.getItem()) + ':' + text(each.getConfidence());
    }
  }
  return answer;
}

using Rules = std::vector<AssociationRule>;
using Items = std::vector<ConsequentDescriptor>;
using Sets = std::set<ItemSet>;

template <typename Write>
std::string written(Write&& write) {
  std::ostringstream out;
  const std::string status = shortForm(write(out));
  return status + ' ' + out.str();
}

const ItemSet kOne(1);
const ItemSet kPair(ItemSet(1), 2);

HostOperation engine(const char* name, Kind kind, std::function<std::string(Engine&)> run) {
  return {name, kind, [run](ReentrantHost& host) { return run(*host.engine); }};
}
HostOperation status(const char* name, Kind kind, std::function<KorStatus(Engine&)> run) {
  return {name, kind, [run](ReentrantHost& host) { return shortForm(run(*host.engine)); }};
}
HostOperation lattice(const char* name, Kind kind, std::function<std::string(SetDictionary&)> run) {
  return {name, kind, [run](ReentrantHost& host) { return run(*host.sets()); }, true};
}

// Installs an object where the engine takes it.
template <typename Object, typename Install, typename Installed>
std::string install(std::unique_ptr<Object> object, Install&& install, Installed&& installed) {
  install(object.get());
  if (installed() != object.get()) return "left";
  static_cast<void>(object.release());
  return "taken";
}

std::vector<HostOperation> engineOperations() {
  return {
      engine("CountThatFits", Kind::Asks, [](Engine& e) { return text(e.CountThatFits()); }),
      engine("NumberOfSetsGivenUp", Kind::Asks, [](Engine& e) { return text(e.NumberOfSetsGivenUp()); }),
      engine("NumberOfSetsSpilled", Kind::Asks, [](Engine& e) { return text(e.NumberOfSetsSpilled()); }),
      engine("GetItemsets", Kind::Asks,
             [](Engine& e) {
               korassoc::ItemsetColumns columns;
               const std::string answer = shortForm(e.GetItemsets(columns));
               return answer + ' ' + text(columns);
             }),
      engine("GetStatus", Kind::Settles, [](Engine& e) { return shortForm(e.GetStatus()); }),
      engine("GetComponentVersion", Kind::Asks, [](Engine& e) { return e.GetComponentVersion(); }),
      engine("AverageSupport", Kind::Asks, [](Engine& e) { return text(e.AverageSupport()); }),
      engine("IsLatticeBuilt", Kind::Asks, [](Engine& e) { return text(e.IsLatticeBuilt()); }),
      engine("NumberOfSets", Kind::Asks, [](Engine& e) { return text(e.NumberOfSets()); }),
      engine("NumberOfTransactions", Kind::Asks, [](Engine& e) { return text(e.NumberOfTransactions()); }),
      engine("LongestSet", Kind::Asks, [](Engine& e) { return text(e.LongestSet()); }),
      engine("CountSetsOfSize", Kind::Asks, [](Engine& e) { return text(e.CountSetsOfSize(2)); }),
      engine("DisplayDictInfo", Kind::Asks,
             [](Engine& e) {
               const StreamCapture output(std::cout);
               e.DisplayDictInfo();
               return output.text();
             }),
      engine("GetLattice", Kind::Asks, [](Engine& e) { return text(e.GetLattice() != nullptr); }),
      engine(
          "CreateNgetRules", Kind::Asks,
          [](Engine& e) { return asked<Rules>([&](Rules& r) { return e.CreateNgetRules(0.1, 0.1, r); }); }),
      engine("GetRulesSpecial", Kind::Asks,
             [](Engine& e) {
               return asked<Rules>([&](Rules& r) {
                 return e.GetRulesSpecial(0.1, 1, 0.1, 1, 0, 'L', nullptr, nullptr, 0, 9, nullptr, nullptr, 1,
                                          9, -1, false, r);
               });
             }),
      engine("GetItemsSpecial", Kind::Asks,
             [](Engine& e) {
               return asked<Items>([&](Items& i) {
                 return e.GetItemsSpecial(0.1, 1, 0.1, 1, 0, 'C', nullptr, nullptr, 0, 9, nullptr, -1, i);
               });
             }),
      engine("GetItems", Kind::Asks,
             [](Engine& e) {
               ItemSet given(1);
               return asked<Items>([&](Items& i) { return e.GetItems(&given, -1, i); });
             }),
      engine("ExportRulesXML", Kind::Asks,
             [](Engine& e) {
               return written([&](std::ostream& out) { return e.ExportRulesXML(out, 0.1, 0.1, false); });
             }),
      engine("ExportLatticeXML", Kind::Asks,
             [](Engine& e) { return written([&](std::ostream& out) { return e.ExportLatticeXML(out); }); }),
      engine("SaveState", Kind::Settles,
             [](Engine& e) {
               RecordStream record;
               return shortForm(e.SaveState(record.stream()));
             }),
      engine("SaveStateXML", Kind::Settles,
             [](Engine& e) {
               std::ostringstream out;
               return shortForm(e.SaveStateXML(out));
             }),
      engine("Cancel", Kind::Stops, [](Engine& e) { return e.Cancel(), ""; }),
      engine("Cancel, carried out", Kind::Stops,
             [](Engine& e) { return e.Cancel(), shortForm(e.RunNullPhaseII(0.0)); }),
      engine("Cancel, found by a phase", Kind::Stops,
             [](Engine& e) { return e.Cancel(), shortForm(e.RunPhaseI(1)) + shortForm(e.RunPhaseII()); }),
      {"SetProgressListener", Kind::Settles,
       [](ReentrantHost& host) {
         return install(
             std::make_unique<HookedListener>(host.hook),
             [&](ProgressListener* listener) { host.engine->SetProgressListener(listener); },
             [&] { return host.settings.GetProgressListener(); });
       }},
      engine("SetProgressListener to none", Kind::Settles,
             [](Engine& e) { return e.SetProgressListener(nullptr), ""; }),
      {"SetSupportSource", Kind::Settles,
       [](ReentrantHost& host) {
         return install(
             std::make_unique<HookedSupport>(host.hook),
             [&](SupportSource* source) { host.engine->SetSupportSource(source); },
             [&] { return host.settings.GetSupportSource(); });
       }},
      engine("SetMaxInStoreSets", Kind::Settles,
             [](Engine& e) { return e.SetMaxInStoreSets(ReentrantHost::kMaxSets), ""; }),
      status("RunPhaseI", Kind::Changes, [](Engine& e) { return e.RunPhaseI(1); }),
      status("RunPhaseII", Kind::Changes, [](Engine& e) { return e.RunPhaseII(); }),
      status("RunPhaseIIrandom", Kind::Changes, [](Engine& e) { return e.RunPhaseIIrandom(); }),
      status("RunNullPhaseII", Kind::Changes, [](Engine& e) { return e.RunNullPhaseII(0.5); }),
      status("RunPhaseIIcomplete", Kind::Changes, [](Engine& e) { return e.RunPhaseIIcomplete(0.6); }),
      status("RunPhaseIIcomplete of nonsense", Kind::Settles,
             [](Engine& e) { return e.RunPhaseIIcomplete(2.0); }),
  };
}

std::vector<HostOperation> latticeQueries() {
  return {
      lattice("createRules", Kind::Asks,
              [](SetDictionary& s) {
                return asked<Rules>([&](Rules& r) { return s.createRules(0.1, 0.1, r, nullptr, true); });
              }),
      lattice("createFilteredRules", Kind::Asks,
              [](SetDictionary& s) {
                return asked<Rules>([&](Rules& r) {
                  return s.createFilteredRules(0, 1, 0, 1, 0, ' ', nullptr, nullptr, 0, 9, nullptr, nullptr,
                                               1, 9, -1, true, r, nullptr);
                });
              }),
      lattice("createFilteredConsequents", Kind::Asks,
              [](SetDictionary& s) {
                return asked<Items>([&](Items& i) {
                  return s.createFilteredConsequents(0, 1, 0, 1, 0, 'S', nullptr, nullptr, 0, 9, nullptr, 9,
                                                     i, nullptr);
                });
              }),
      lattice("createConsequents", Kind::Asks,
              [](SetDictionary& s) {
                return asked<Items>([&](Items& i) { return s.createConsequents(nullptr, 9, i); });
              }),
      lattice("findSupport", Kind::Asks, [](SetDictionary& s) { return text(s.findSupport(kOne, 2)); }),
      lattice("superSets", Kind::Asks,
              [](SetDictionary& s) { return asked<Sets>([&](Sets& f) { return s.superSets(kOne, f); }); }),
      lattice("findItemSets", Kind::Asks,
              [](SetDictionary& s) {
                return asked<Sets>([&](Sets& f) { return s.findItemSets(kOne, 1, 0, 9, f); });
              }),
      lattice("findItemSets2", Kind::Asks,
              [](SetDictionary& s) {
                return asked<Sets>([&](Sets& f) { return s.findItemSets2(kOne, 1, 9, 0, 9, f); });
              }),
      lattice("findItemSets3", Kind::Asks,
              [](SetDictionary& s) {
                return asked<Sets>([&](Sets& f) { return s.findItemSets3(kOne, kPair, 1, 9, 0, 9, f); });
              }),
      lattice("findItemSetsWithin", Kind::Asks,
              [](SetDictionary& s) {
                return asked<Sets>([&](Sets& f) { return s.findItemSetsWithin(kPair, 1, 9, 0, 9, f); });
              }),
      lattice(
          "findMaximalItemSets", Kind::Asks,
          [](SetDictionary& s) { return asked<Sets>([&](Sets& f) { return s.findMaximalItemSets(2, f); }); }),
      lattice("display", Kind::Asks,
              [](SetDictionary& s) {
                const StreamCapture output(std::cout);
                s.display();
                return output.text();
              }),
      lattice("exportRulesXML", Kind::Asks,
              [](SetDictionary& s) {
                return written(
                    [&](std::ostream& out) { return s.exportRulesXML(out, 0.1, 0.1, nullptr, true); });
              }),
      lattice("exportLatticeXML", Kind::Asks,
              [](SetDictionary& s) {
                return written([&](std::ostream& out) { return s.exportLatticeXML(out, 0.5); });
              }),
      lattice("filteredCopy", Kind::Asks,
              [](SetDictionary& s) {
                const std::unique_ptr<SemiLattice> copy(s.filteredCopy(0.4));
                return text(copy->getTotalSetCount());
              }),
      lattice("filteredCopy without an item", Kind::Asks,
              [](SetDictionary& s) {
                const std::unique_ptr<SemiLattice> copy(s.filteredCopy(0.1, kOne));
                return text(copy->getTotalSetCount());
              }),
      lattice("writeObject", Kind::Asks,
              [](SetDictionary& s) {
                RecordStream record;
                return text(static_cast<int>(s.writeObject(record.stream())));
              }),
      lattice("writeObjectXML", Kind::Asks,
              [](SetDictionary& s) {
                std::ostringstream out;
                return text(static_cast<int>(s.writeObjectXML(out)));
              }),
      lattice("graph", Kind::Asks, [](SetDictionary& s) { return text(s.graph().size()); }),
      lattice("columns", Kind::Asks, [](SetDictionary& s) { return text(s.columns()); }),
      lattice("heldGraph", Kind::Asks, [](SetDictionary& s) { return text(s.isCurrent(*s.heldGraph())); }),
  };
}

std::vector<HostOperation> latticeReaders() {
  return {
      lattice("getTotalSetCount", Kind::Asks, [](SetDictionary& s) { return text(s.getTotalSetCount()); }),
      lattice("getHighestLevel", Kind::Asks, [](SetDictionary& s) { return text(s.getHighestLevel()); }),
      lattice("getLevelSize", Kind::Asks, [](SetDictionary& s) { return text(s.getLevelSize(2)); }),
      lattice("getSizeAboveLevel", Kind::Asks, [](SetDictionary& s) { return text(s.getSizeAboveLevel(1)); }),
      lattice("containsSet", Kind::Asks,
              [](SetDictionary& s) {
                return text(s.containsSet(&kPair)) + text(s.containsSet(&kPair, 2)) +
                       text(s.containsSet(arrayOf({1, 2}))) +
                       text(s.containsSet(arrayOf({1, 2}), arrayOf({0, 1})));
              }),
      lattice("getDescriptor", Kind::Asks,
              [](SetDictionary& s) {
                const int items[] = {1, 2};
                return textOf(s.getDescriptor(items, 2)) + textOf(s.getDescriptor(1)) +
                       textOf(s.getDescriptor(arrayOf({1}))) + textOf(s.getDescriptor(&kPair));
              }),
      lattice("getCount", Kind::Asks,
              [](SetDictionary& s) { return text(s.getCount(1)) + text(s.getCount(&kPair)); }),
      lattice("getEmptySetCount", Kind::Asks, [](SetDictionary& s) { return text(s.getEmptySetCount()); }),
      lattice("isMarked", Kind::Asks, [](SetDictionary& s) { return text(s.isMarked(1)); }),
      lattice("find", Kind::Asks, [](SetDictionary& s) { return textOf(s.find(ItemSetView(kPair))); }),
      lattice("levelTable", Kind::Asks, [](SetDictionary& s) { return text(s.levelTable(2).count()); }),
      lattice("prefetch", Kind::Asks, [](SetDictionary& s) { return s.prefetch(2, 7), ""; }),
      lattice("mayHold", Kind::Asks,
              [](SetDictionary& s) { return text(s.mayHold(2, ItemSetView(kPair).code)); }),
      lattice("the sizes and flags", Kind::Settles,
              [](SetDictionary& s) {
                return text(s.storedLevels() + s.maxLevel() + s.inStoreCount() + s.maxInStoreSets() +
                            s.setsGivenUp() + s.setsSpilled() + s.queueTopCount() + s.heldEvicted()) +
                       text(s.isLatticeBuilt() || s.isBrokenOff() || s.isBitsetOff() || s.isRestartFailed() ||
                            s.rulesFlag() || s.isPacked() || s.isClosed() || s.isHeld() || s.isInUse() ||
                            s.spillStore() != nullptr || s.smallQueue().empty()) +
                       text(s.isPacked() && s.packedLevel(1) != nullptr) + text(s.emptySet().length()) +
                       text(s.settings().GetReportFrequency()) + shortForm(s.currentStatus());
              }),
      lattice("noteCounting", Kind::Asks, [](SetDictionary& s) { return s.noteCounting(), ""; }),
      lattice("setOpen", Kind::Settles, [](SetDictionary& s) { return s.setOpen(), ""; }),
      lattice("setBitsetOff", Kind::Settles,
              [](SetDictionary& s) { return s.setBitsetOff(s.isBitsetOff()), ""; }),
      lattice("setMaxInStoreSets", Kind::Settles,
              [](SetDictionary& s) { return s.setMaxInStoreSets(s.maxInStoreSets()), ""; }),
      lattice("holdEvicted", Kind::Settles,
              [](SetDictionary& s) {
                s.holdEvicted();
                s.releaseEvictedBut({});
                return s.releaseEvicted(), "";
              }),
      lattice("setRestartFailed", Kind::Stops, [](SetDictionary& s) { return s.setRestartFailed(), ""; }),
      lattice("setRulesFlag", Kind::Stops, [](SetDictionary& s) { return s.setRulesFlag(), ""; }),
      lattice("queuePop", Kind::Changes, [](SetDictionary& s) { return text(s.queuePop() != nullptr); }),
      lattice("queueUnlink", Kind::Changes,
              [](SetDictionary& s) {
                static ItemSet set(99);
                return s.queueUnlink(&set), "";
              }),
      lattice("increment", Kind::Increments,
              [](SetDictionary& s) { return textOf(s.increment(ItemSetView(kPair)).descriptor); }),
  };
}

}  // namespace

const std::vector<HostOperation>& hostOperations() {
  static const std::vector<HostOperation> operations = [] {
    std::vector<HostOperation> all = engineOperations();
    for (auto&& some : {latticeQueries(), latticeReaders()}) all.insert(all.end(), some.begin(), some.end());
    for (const LatticeChange& change : latticeChanges())
      all.push_back(lattice(change.name, Kind::Changes, change.run));
    return all;
  }();
  return operations;
}
