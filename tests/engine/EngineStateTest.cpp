// Saved states of the whole engine: what they hold, and what goes on from them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/dictionary/HashTable.h"
#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/engine/PhaseIContext.h"
#include "korassoc/engine/PhaseIIContext.h"
#include "korassoc/rules/AssociationRule.h"
#include "tests/support/RecordStream.h"
#include "tests/support/SavedStates.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using Engine = CarmaAssociationAlgorithm;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// Everything that the dictionary holds, whatever the order of its tables: a table that was read has another
// number of buckets.
std::string contents(const Engine& engine) {
  const SetDictionary& dictionary = *Access::dictionary(engine);
  std::set<std::string> entries;
  for (int level = 0; level <= dictionary.maxLevel(); ++level) {
    dictionary.levelTable(level).forEach([&](const HashTable::Entry& entry) {
      std::ostringstream text;
      text << level << ':';
      for (int i = 0; i < entry.key->length(); ++i) text << ' ' << entry.key->getTheArray()[i];
      text << " count " << entry.descriptor->count << " TID " << entry.descriptor->getTID() << " missed "
           << entry.descriptor->getMaxMissed() << " adjacent";
      if (const auto* lattice = dynamic_cast<const LatticeSetDescriptor*>(entry.descriptor)) {
        for (int i = 0; i < lattice->adjacent.count; ++i) text << ' ' << lattice->adjacent.data[i];
      }
      entries.insert(text.str());
    });
  }
  std::string all = "in store " + std::to_string(dictionary.inStoreCount()) + '\n';
  for (const std::string& entry : entries) all += entry + '\n';
  return all;
}

// The rules, whatever their order, which is that of the tables.
std::set<std::string> ruleTexts(const std::vector<AssociationRule>& rules) {
  std::set<std::string> texts;
  for (const AssociationRule& rule : rules) {
    std::ostringstream text;
    for (const ItemSet& side : {rule.getAntecedent(), rule.getConsequent()}) {
      for (int i = 0; i < side.length(); ++i) text << side.getItemAt(i) << ' ';
      text << "| ";
    }
    text << rule.getSupport() << ' ' << rule.getConfidence() << ' ' << rule.getLift();
    texts.insert(text.str());
  }
  return texts;
}

// What follows the dictionary in a binary state.
std::string behindTheDictionary(const std::string& state, const Engine& engine) {
  return state.substr(ceilingsAt(state, engine) - 28);
}

}  // namespace

TEST(SaveState, IsPossibleBetweenTwoCallsOfPhaseIAlone) {
  Running run;
  const TemporaryFile file;
  std::fstream stream = file.writer();
  EXPECT_EQ(shortForm(run.engine->SaveState(stream)), "W4");
  EXPECT_EQ(shortForm(run.engine->GetStatus()), "W4");
  run.engine->RunPhaseI(10);
  EXPECT_EQ(shortForm(run.engine->SaveState(stream)), "OK");
  EXPECT_EQ(shortForm(run.engine->SaveState(stream)), "OK") << "and again";
  run.engine->RunPhaseII();
  EXPECT_EQ(shortForm(run.engine->SaveState(stream)), "W4");
  std::ostringstream xml;
  EXPECT_EQ(shortForm(run.engine->SaveStateXML(xml)), "OK");
  EXPECT_EQ(shortForm(run.engine->GetStatus()), "OK");
}

// A state has a table for each length: 6 bytes each in binary, an object of 2 lines and a value as XML.
TEST(SaveState, HasNoMoreTablesThanADictionaryHasLevels) {
  constexpr int kGiven = 2147483647;
  struct Unlimited : EngineHost {
    explicit Unlimited(int maxLengthSet) : EngineHost(someTransactions()) {
      settings->SetMaxLengthSet(maxLengthSet);
      engine = std::make_unique<Engine>(settings.get(), &source);
      support(someSupport);
      engine->RunPhaseI(10);
    }
  };
  const Unlimited run(kGiven);
  const Unlimited limited(1000);
  const std::string state = binaryState(*run.engine);
  const std::string xml = xmlState(*run.engine);
  EXPECT_EQ(state.size() - binaryState(*limited.engine).size(),
            std::string(run.settings->GetDictionarySettings().GetSpillFileName()).size() -
                std::string(limited.settings->GetDictionarySettings().GetSpillFileName()).size());
  std::size_t tables = 0;
  for (std::size_t at = 0; (at = xml.find("HashtablePair", at)) != std::string::npos; ++at) ++tables;
  EXPECT_EQ(tables, 1001U);
  EXPECT_EQ(run.settings->GetMaxLengthSet(), kGiven);
  EXPECT_EQ(state.substr(9, 4), int32Bytes(kGiven)) << "behind CS, AAS and the length of transactions";
  for (const auto format : {Restored::Binary, Restored::Xml}) {
    Restored restored(format == Restored::Binary ? state : xml, format);
    ASSERT_FALSE(restored.unusable());
    EXPECT_EQ(contents(*restored.engine), contents(*run.engine));
    restored.goOnBehind(10);
    EXPECT_TRUE(restored.engine->RunPhaseI(100).IsOK());
    EXPECT_EQ(binaryState(*restored.engine).substr(9, 4), int32Bytes(kGiven));
    EXPECT_TRUE(restored.engine->RunPhaseII().IsOK());
  }
}

TEST(SaveStateXML, IsRefusedBeforeAPhaseIThatEndedWell) {
  Running run;
  std::ostringstream xml;
  EXPECT_EQ(shortForm(run.engine->SaveStateXML(xml)), "W4");
  run.engine->RunPhaseI(10);
  run.source.throwInNextAt = 12;
  {
    const StreamCapture output(std::cout);
    run.engine->RunPhaseI(10);
  }
  EXPECT_EQ(shortForm(run.engine->SaveStateXML(xml)), "W4");
  EXPECT_EQ(xml.str(), "");
}

TEST(SaveState, HoldsItsRecordsInOrder) {
  Running run;
  run.engine->RunPhaseI(13);
  const Engine& engine = *run.engine;
  const CarmaCore& core = *Access::core(engine);
  const std::string expected =
      bytesOf(*run.settings,
              [](CarmaSettings& settings, std::fstream& stream) { settings.WriteObject(stream); }) +
      bytesOf(*Access::dictionary(engine),
              [](SetDictionary& dictionary, std::fstream& stream) { dictionary.writeObject(stream); }) +
      int32Bytes(Access::setsRemoved(engine)) + int32Bytes(13) + float64Bytes(0.2) +
      float64Bytes(Access::supportCount(engine)) + int32Bytes(Access::peakSets(engine)) +
      bytesOf(*Access::ceilings(engine),
              [](CeilArray& ceilings, std::fstream& stream) { ceilings.writeObject(stream); }) +
      float64Bytes(core.averageExtension()) + int32Bytes(core.maxExtension()) +
      int32Bytes(core.longestCandidate()) + int32Bytes(core.longAdded());
  EXPECT_EQ(binaryState(*run.engine), expected);
  EXPECT_GT(Access::setsRemoved(engine), 0);
  EXPECT_GT(Access::peakSets(engine), 0);
  EXPECT_GT(core.maxExtension(), 1);
}

TEST(SaveStateXML, IsOneDocumentWithTheValuesBetweenTheObjects) {
  Running run;
  run.engine->RunPhaseI(13);
  const Engine& engine = *run.engine;
  const std::string state = xmlState(*run.engine);
  EXPECT_THAT(state,
              StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
                         "<!DOCTYPE KorXMLRoot SYSTEM \"savexml.dtd\">\n"
                         "<KorXMLRoot copyright=\"(C) Copyright 2026 Talvane. All rights reserved.\">\n"
                         "<Obj name=\"CarmaAssociationAlgorithm\">\n"
                         "\t<Obj name=\"CarmaSettings\">\n"));
  std::ostringstream settings;
  run.settings->WriteObjectXML(settings);
  EXPECT_THAT(
      state, HasSubstr("CarmaAssociationAlgorithm\">" + settings.str() + "\n\t<Obj name=\"SetDictionary\">"));
  std::ostringstream ceilings;
  Access::ceilings(engine)->writeObjectXML(ceilings);
  const auto number = [](int value) { return "\n\t<Int value=\"" + std::to_string(value) + "\"/>"; };
  EXPECT_THAT(state, HasSubstr("\n\t</Obj>" + number(Access::setsRemoved(engine)) + number(13) +
                               "\n\t<Double value=\"0.2\"/>\n\t<Double value=\"" +
                               std::to_string(static_cast<int>(Access::supportCount(engine))) + "\"/>" +
                               number(Access::peakSets(engine)) + ceilings.str() + "\n\t<Double value=\""));
  const CarmaCore& core = *Access::core(engine);
  const std::string end = number(core.maxExtension()) + number(core.longestCandidate()) +
                          number(core.longAdded()) + "\n</Obj>\n</KorXMLRoot>";
  EXPECT_EQ(state.substr(state.size() - end.size()), end);
}

TEST(Restore, GoesOnWithPhaseIAsIfItHadNeverBeenInterrupted) {
  for (const int first : {1, 7, 10, 13, 22}) {
    for (const Restored::Format format : {Restored::Binary, Restored::Xml}) {
      Running run;
      run.engine->RunPhaseI(first);
      Restored restored(format == Restored::Binary ? binaryState(*run.engine) : xmlState(*run.engine),
                        format);
      EXPECT_EQ(restored.output + restored.errors, "");
      EXPECT_EQ(shortForm(restored.engine->GetStatus()), "OK");
      EXPECT_EQ(&Access::state(*restored.engine), &PhaseIContext::instance());
      EXPECT_EQ(restored.engine->NumberOfTransactions(), first);
      EXPECT_EQ(restored.engine->NumberOfSets(), run.engine->NumberOfSets());
      EXPECT_DOUBLE_EQ(restored.engine->AverageSupport(), run.engine->AverageSupport());
      EXPECT_EQ(Access::core(*restored.engine)->transactions(), first);
      EXPECT_DOUBLE_EQ(Access::core(*restored.engine)->averageSupport(), run.engine->AverageSupport());

      std::fstream unused;
      EXPECT_EQ(shortForm(restored.engine->SaveState(unused)), "W4") << "until a phase I has ended well";
      restored.goOnBehind(first);
      EXPECT_EQ(shortForm(restored.engine->RunPhaseI(100)), "OK");
      EXPECT_EQ(shortForm(run.engine->RunPhaseI(100)), "OK");
      EXPECT_EQ(restored.engine->NumberOfTransactions(), 23);
      EXPECT_EQ(contents(*restored.engine), contents(*run.engine)) << first;
      if (format == Restored::Binary) {
        EXPECT_EQ(behindTheDictionary(binaryState(*restored.engine), *restored.engine),
                  behindTheDictionary(binaryState(*run.engine), *run.engine))
            << first;
      }
      EXPECT_EQ(shortForm(restored.engine->RunPhaseII()), "OK");
      EXPECT_EQ(shortForm(run.engine->RunPhaseII()), "OK");
      EXPECT_EQ(contents(*restored.engine), contents(*run.engine)) << first;
    }
  }
}

TEST(Restore, OfALatticeIsInPhaseIIAndAnswersAtOnce) {
  Running run;
  run.engine->RunPhaseI(23);
  run.engine->RunPhaseII();
  Restored restored(xmlState(*run.engine), Restored::Xml);
  EXPECT_EQ(restored.output + restored.errors, "");
  EXPECT_EQ(shortForm(restored.engine->GetStatus()), "OK");
  EXPECT_EQ(&Access::state(*restored.engine), &PhaseIIContext::instance());
  EXPECT_TRUE(restored.engine->IsLatticeBuilt());
  EXPECT_NE(restored.engine->GetLattice(), nullptr);
  EXPECT_EQ(restored.engine->NumberOfSets(), run.engine->NumberOfSets());
  EXPECT_EQ(restored.engine->NumberOfTransactions(), 23);
  EXPECT_EQ(contents(*restored.engine), contents(*run.engine));
  std::vector<AssociationRule> rules;
  std::vector<AssociationRule> expected;
  EXPECT_EQ(shortForm(restored.engine->CreateNgetRules(0.1, 0.5, rules)), "OK");
  EXPECT_EQ(shortForm(run.engine->CreateNgetRules(0.1, 0.5, expected)), "OK");
  EXPECT_EQ(ruleTexts(rules), ruleTexts(expected));
  EXPECT_FALSE(rules.empty());
}

TEST(Restore, OfALatticeCanRunPhaseIIAgain) {
  Running run;
  run.engine->RunPhaseI(23);
  run.engine->RunPhaseII();
  Restored restored(xmlState(*run.engine), Restored::Xml);
  EXPECT_EQ(shortForm(restored.engine->RunPhaseII()), "OK");
  EXPECT_EQ(restored.source.nextCalls, 23) << "as many as phase I has seen";
  EXPECT_EQ(contents(*restored.engine), contents(*run.engine));
}

TEST(Restore, KeepsTheSettingsOfTheState) {
  Running run;
  run.settings->SetReportFreqPhaseII(17);
  run.engine->RunPhaseI(10);
  Restored restored(binaryState(*run.engine), Restored::Binary);
  int living = 0;
  restored.engine->SetProgressListener(new TestListener(nullptr, &living));
  restored.engine.reset();
  EXPECT_EQ(living, 0) << "the engine owns the settings that it has read";
}

TEST(Restore, GoesOnWithoutCeilingsWhenTheirTagIsDamaged) {
  Running run;
  run.engine->RunPhaseI(13);
  std::string state = binaryState(*run.engine);
  const std::size_t at = ceilingsAt(state, *run.engine);
  ASSERT_EQ(state.substr(at, 2), "CA");
  state[at] = 'X';
  Restored restored(state, Restored::Binary);
  EXPECT_EQ(restored.errors, "Failure reading CeilArray!\n");
  EXPECT_EQ(restored.output, "");
  EXPECT_EQ(shortForm(restored.engine->GetStatus()), "OK");
  EXPECT_EQ(restored.engine->AverageSupport(), 0.0);
  EXPECT_EQ(restored.engine->NumberOfTransactions(), 13);
  restored.goOnBehind(13);
  EXPECT_EQ(shortForm(restored.engine->RunPhaseI(100)), "OK");
}

// In an unbroken run the last support never exceeds the average, and what it would prune is gone already.
TEST(RunNullPhaseII, PrunesByTheSupportOfTheLastTransaction) {
  auto transactions = repeated({1}, 4);
  transactions.insert(transactions.end(), 6, {1, 2});
  EngineHost host(transactions);
  host.engine->RunPhaseI(10);
  std::string state = binaryState(*host.engine);
  const std::size_t at = ceilingsAt(state, *host.engine) - 28 + 8;
  ASSERT_EQ(state.substr(at, 8), float64Bytes(0.5));
  Restored asSaved(state, Restored::Binary);
  EXPECT_EQ(shortForm(asSaved.engine->RunNullPhaseII(0.0)), "OK");
  EXPECT_EQ(Access::dictionary(*asSaved.engine)->getCount(2), 6);
  state.replace(at, 8, float64Bytes(0.65));
  Restored changed(state, Restored::Binary);
  EXPECT_EQ(shortForm(changed.engine->RunNullPhaseII(0.0)), "OK");
  EXPECT_EQ(Access::dictionary(*changed.engine)->getCount(2), 0);
  EXPECT_EQ(Access::dictionary(*changed.engine)->getCount(1), 10);
}
