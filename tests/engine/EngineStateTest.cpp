// Saved states of the whole engine: what they hold, what goes on from them, and what becomes of broken ones.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/dictionary/HashTable.h"
#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/engine/CarmaFailedRestartContext.h"
#include "korassoc/engine/CarmaSaveContext.h"
#include "korassoc/engine/PhaseIContext.h"
#include "korassoc/engine/PhaseIIContext.h"
#include "tests/support/EngineHost.h"
#include "tests/support/FailingBuffer.h"
#include "tests/support/RecordStream.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFile.h"
#include "tests/support/ThrowingOutput.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using Engine = CarmaAssociationAlgorithm;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// 23 transactions with sets of up to three items, and a support that falls and rises.
Transactions someTransactions() {
  Transactions transactions;
  for (int i = 0; i < 23; ++i) {
    std::vector<int> items = {1};
    if (i % 2 == 0) items.push_back(2);
    if (i % 3 != 0) items.push_back(3);
    if (i % 5 == 0) items.push_back(40 + i);
    transactions.push_back(items);
  }
  return transactions;
}

double someSupport(int transaction) { return transaction % 7 < 4 ? 0.3 : 0.2; }

struct Running : EngineHost {
  Running() : EngineHost(someTransactions()) { support(someSupport); }
};

template <typename Object, typename Write>
std::string bytesOf(Object& object, Write&& write) {
  const TemporaryFile file;
  std::fstream stream = file.writer();
  write(object, stream);
  stream.close();
  return file.contents();
}

std::string binaryState(Engine& engine) {
  return bytesOf(engine, [](Engine& saved, std::fstream& stream) {
    EXPECT_EQ(shortForm(saved.SaveState(stream)), "OK");
  });
}

std::string xmlState(Engine& engine) {
  std::ostringstream out;
  EXPECT_EQ(shortForm(engine.SaveStateXML(out)), "OK");
  return out.str();
}

// An engine made from the bytes of a state, and what was printed meanwhile.
struct Restored {
  enum Format { Binary, Xml };

  Restored(const std::string& state, Format format) : source(someTransactions()) {
    const TemporaryFile file(state);
    const StreamCapture out(std::cout);
    const StreamCapture err(std::cerr);
    if (format == Binary) {
      std::fstream stream = file.reader();
      engine = std::make_unique<Engine>(stream, &source);
    } else {
      std::ifstream stream(file.name(), std::ios::binary);
      engine = std::make_unique<Engine>(stream, &source);
    }
    output = out.text();
    errors = err.text();
  }

  // The source stands where the saved run left it, with the support of that run.
  void goOnBehind(int transactions) {
    for (int i = 0; i < transactions; ++i) source.Next();
    engine->SetSupportSource(new TestSupport(someSupport));
  }

  bool unusable() const { return &Access::state(*engine) == &CarmaFailedRestartContext::instance(); }

  VectorTransactions source;
  std::unique_ptr<Engine> engine;
  std::string output;
  std::string errors;
};

// Where the record of the ceilings starts: 28 bytes for the core and 16 for each chunk come behind its head
// of 18.
std::size_t ceilingsAt(const std::string& state, const Engine& engine) {
  return state.size() - 20 - 18 - 16 * static_cast<std::size_t>(Access::ceilings(engine)->used());
}

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

TEST(Restore, OfALatticeIsInPhaseIIAtOnce) {
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

TEST(Restore, RefusesCeilingsOutOfOrderWithoutAWord) {
  Running run;
  run.engine->RunPhaseI(13);
  std::string state = binaryState(*run.engine);
  const std::size_t at = ceilingsAt(state, *run.engine);
  ASSERT_GE(Access::ceilings(*run.engine)->used(), 2);
  state.replace(at + 18 + 16, 4, int32Bytes(5));
  Restored restored(state, Restored::Binary);
  EXPECT_TRUE(restored.unusable());
  EXPECT_EQ(shortForm(restored.engine->GetStatus()), "E5");
  EXPECT_EQ(restored.output + restored.errors, "");
}

TEST(Restore, RefusesAnXMLStateWithoutItsCeilings) {
  Running run;
  run.engine->RunPhaseI(13);
  std::string state = xmlState(*run.engine);
  const std::size_t at = state.find("CeilArray");
  ASSERT_NE(at, std::string::npos);
  state[at] = 'X';
  Restored restored(state, Restored::Xml);
  EXPECT_TRUE(restored.unusable());
  EXPECT_EQ(shortForm(restored.engine->GetStatus()), "E5");
  EXPECT_EQ(restored.errors, "Failure reading CeilArray!\n");
}

TEST(Restore, RefusesAStateCutShortAtEveryByte) {
  EngineHost host(Transactions{{1, 2}, {1, 2}, {1, 2}});
  host.engine->RunPhaseI(3);
  const std::string binary = binaryState(*host.engine);
  for (std::size_t length = 0; length < binary.size(); ++length) {
    Restored restored(binary.substr(0, length), Restored::Binary);
    EXPECT_TRUE(restored.unusable()) << length;
    EXPECT_EQ(shortForm(restored.engine->GetStatus()), "E5") << length;
    EXPECT_EQ(restored.engine->NumberOfSets(), -1) << length;
  }
  EXPECT_FALSE(Restored(binary, Restored::Binary).unusable());
  const std::string xml = xmlState(*host.engine);
  const std::size_t lastValue = xml.rfind("<Int value=\"");
  for (std::size_t length = 0; length < lastValue; ++length) {
    EXPECT_TRUE(Restored(xml.substr(0, length), Restored::Xml).unusable()) << length;
  }
  EXPECT_FALSE(Restored(xml, Restored::Xml).unusable());
}

TEST(Restore, RefusesTheOtherFormatAndAnEmptyOrMissingFile) {
  Running run;
  run.engine->RunPhaseI(13);
  EXPECT_TRUE(Restored(xmlState(*run.engine), Restored::Binary).unusable());
  EXPECT_TRUE(Restored(binaryState(*run.engine), Restored::Xml).unusable());
  const StreamCapture output(std::cout);
  const StreamCapture errors(std::cerr);
  VectorTransactions source;
  std::fstream closed;
  EXPECT_EQ(shortForm(Engine(closed, &source).GetStatus()), "E5");
  std::ifstream closedXML;
  EXPECT_EQ(shortForm(Engine(closedXML, &source).GetStatus()), "E5");
}

// Whatever a changed byte makes of a state: it is an engine that works, or one that says that it is unusable.
TEST(Restore, SurvivesEveryChangedByte) {
  EngineHost host(Transactions{{1, 2}, {1, 2}, {1, 2}});
  host.engine->RunPhaseI(3);
  const std::string binary = binaryState(*host.engine);
  for (std::size_t at = 0; at < binary.size(); ++at) {
    for (const char value : {'\x00', '\x01', '\x7f', '\xff'}) {
      std::string changed = binary;
      changed[at] = value;
      Restored restored(changed, Restored::Binary);
      if (restored.unusable()) {
        EXPECT_EQ(shortForm(restored.engine->GetStatus()), "E5") << at;
        continue;
      }
      EXPECT_EQ(shortForm(restored.engine->GetStatus()), "OK") << at;
      const StreamCapture output(std::cout);
      restored.goOnBehind(0);
      restored.engine->RunPhaseI(2);
      restored.engine->RunPhaseII();
    }
  }
}

TEST(SaveState, TellsAStreamThatFails) {
  Running run;
  run.engine->RunPhaseI(13);
  std::fstream closed;
  closed.setstate(std::ios_base::badbit);
  const StreamCapture errors(std::cerr);
  const StreamCapture output(std::cout);
  EXPECT_EQ(shortForm(run.engine->SaveState(closed)), "E2");
  EXPECT_EQ(shortForm(run.engine->GetStatus()), "E2");
  EXPECT_EQ(output.text(), " Error saving to the output stream!\n ");
  EXPECT_EQ(&Access::state(*run.engine), &PhaseIContext::instance());
  const TemporaryFile file;
  std::fstream stream = file.writer();
  EXPECT_EQ(shortForm(run.engine->SaveState(stream)), "OK") << "a better stream will do";
}

TEST(SaveState, TellsAStreamThatFailsAlsoWhenItsMessageCannotBeWritten) {
  Running run;
  run.engine->RunPhaseI(10);
  std::fstream closed;
  {
    const ThrowingOutput output(std::cout);
    std::string status;
    EXPECT_NO_THROW(status = shortForm(run.engine->SaveState(closed)));
    EXPECT_EQ(status, "E2");
  }
  EXPECT_EQ(shortForm(run.engine->RunPhaseII()), "OK") << "the engine has left the state of a save";
}

TEST(SaveState, TellsADiskThatFillsUpAnywhere) {
  EngineHost host(Transactions{{1, 2}, {1, 2}, {1, 2}});
  host.engine->RunPhaseI(3);
  const std::size_t size = binaryState(*host.engine).size();
  for (std::size_t room = 0; room < size; ++room) {
    FailingRecordStream file(room);
    const StreamCapture output(std::cout);
    const StreamCapture errors(std::cerr);
    ASSERT_EQ(shortForm(host.engine->SaveState(file.stream())), "E2") << room;
    ASSERT_EQ(output.text(), " Error saving to the output stream!\n ") << room;
    ASSERT_EQ(&Access::state(*host.engine), &PhaseIContext::instance()) << room;
  }
  FailingRecordStream file(size);
  EXPECT_EQ(shortForm(host.engine->SaveState(file.stream())), "OK");
}

TEST(SaveStateXML, TellsADiskThatFillsUpAnywhere) {
  EngineHost host(Transactions{{1, 2}, {1, 2}, {1, 2}});
  host.engine->RunPhaseI(3);
  const std::size_t size = xmlState(*host.engine).size();
  for (std::size_t room = 0; room < size; room += room < 200 ? 1 : 37) {
    FailingBuffer buffer(room);
    std::ostream stream(&buffer);
    const StreamCapture output(std::cout);
    ASSERT_EQ(shortForm(host.engine->SaveStateXML(stream)), "E2") << room;
    ASSERT_EQ(output.text(), " Error saving to the output xml file!\n ") << room;
    ASSERT_EQ(&Access::state(*host.engine), &PhaseIContext::instance()) << room;
  }
  FailingBuffer buffer(size);
  std::ostream stream(&buffer);
  EXPECT_EQ(shortForm(host.engine->SaveStateXML(stream)), "OK");
}

namespace {

// A stream that calls back before its first character.
class CallingBuffer : public std::stringbuf {
 public:
  explicit CallingBuffer(std::function<void()> call) : call_(std::move(call)) {}

 protected:
  int_type overflow(int_type c) override {
    callOnce();
    return std::stringbuf::overflow(c);
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    callOnce();
    return std::stringbuf::xsputn(text, size);
  }

 private:
  void callOnce() {
    if (call_) std::exchange(call_, nullptr)();
  }
  std::function<void()> call_;
};

}  // namespace

TEST(SaveStateXML, RefusesWhatItsStreamCallsBack) {
  Running run;
  run.engine->RunPhaseI(23);
  run.engine->RunPhaseII();
  std::string answers;
  CallingBuffer buffer([&] {
    Engine& engine = *run.engine;
    EXPECT_EQ(&Access::state(engine), &CarmaSaveContext::instance());
    std::fstream file;
    std::ostringstream text;
    TestSupport support(0.5);
    answers += shortForm(engine.RunPhaseI(1)) + ' ' + shortForm(engine.RunPhaseII()) + ' ' +
               shortForm(engine.SaveState(file)) + ' ' + shortForm(engine.SaveStateXML(text)) + ' ';
    EXPECT_GT(engine.AverageSupport(), 0.0);
    EXPECT_EQ(engine.GetLattice(), nullptr);
    engine.SetSupportSource(&support);
    answers += shortForm(engine.GetStatus());
  });
  std::ostream stream(&buffer);
  EXPECT_EQ(shortForm(run.engine->SaveStateXML(stream)), "OK");
  EXPECT_EQ(answers, "W6 W6 E4 E4 W6");
  EXPECT_EQ(shortForm(run.engine->GetStatus()), "OK");
  EXPECT_EQ(&Access::state(*run.engine), &PhaseIIContext::instance());
  EXPECT_EQ(buffer.str(), xmlState(*run.engine));
}

TEST(SaveStateXML, SurvivesACancelThatItsStreamCarriesOut) {
  Running run;
  run.engine->RunPhaseI(23);
  CallingBuffer buffer([&] {
    run.engine->Cancel();
    EXPECT_EQ(shortForm(run.engine->RunNullPhaseII(0.0)), "E1");
  });
  std::ostream stream(&buffer);
  EXPECT_EQ(shortForm(run.engine->SaveStateXML(stream)), "E1");
  EXPECT_EQ(run.engine->NumberOfSets(), -1);
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(1)), "E1");
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
