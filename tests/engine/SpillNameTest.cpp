// Which file an engine spills to: the one that its host has named, never one that a saved state names.

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <sstream>
#include <string>

#include "korassoc/dictionary/SpillStore.h"
#include "korassoc/engine/DictionarySettings.h"
#include "tests/support/SavedStates.h"
#include "tests/support/SpillFileReader.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;

// Room for the three items of the first transaction and the empty set; what comes later has to spill.
struct SpillingRun : EngineHost {
  explicit SpillingRun(const std::string& spillFileName) : EngineHost(someTransactions(), 0.01) {
    DictionarySettings& memory = settings->GetDictionarySettings();
    memory.SetMaxInStoreSets(4);
    memory.SetLeaveInMainStoreCount(99);
    memory.SetDiskSpill(true);
    memory.SetSpillFileName(spillFileName.c_str());
    settings->SetMaxLengthSet(1);
    settings->SetRemoveSmallFreq(1000);
    engine = std::make_unique<CarmaAssociationAlgorithm>(settings.get(), &source);
  }
};

// The state of a run that has seen one transaction and names this file.
std::string stateThatNames(const std::string& name) {
  SpillingRun run(name);
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(1)), "OK");
  return binaryState(*run.engine);
}

const SpillStore* storeOf(const CarmaAssociationAlgorithm& engine) {
  return Access::dictionary(engine)->spillStore();
}

// Leads a restored engine to its last transaction but for the pruning at its end, which reads the disk back.
struct Spilled : Restored {
  Spilled(const std::string& state, Format format) : Restored(state, format) {
    goOnBehind(1);
    engine->SetSupportSource(new TestSupport([](int) { return 0.01; }));  // keeps every set
    const StreamCapture quiet(std::cout);
    EXPECT_EQ(shortForm(engine->RunPhaseI(6)), "W40001");  // what is on the disk finds no room in memory
    EXPECT_GT(Access::dictionary(*engine)->setsSpilled(), 0);
    EXPECT_NE(storeOf(*engine), nullptr);
    EXPECT_TRUE(storeOf(*engine)->isOpen());
  }
};

}  // namespace

TEST(SpillName, OfABinaryStateIsNeverOpened) {
  const std::string contents = "not to lose it\n";
  const TemporaryFile victim(contents);
  const std::string state = stateThatNames(victim.name());
  {
    const Spilled restored(state, Restored::Binary);
    EXPECT_TRUE(victim.contents() == contents);
    EXPECT_NE(storeOf(*restored.engine)->fileName(), victim.name());
  }
  EXPECT_TRUE(victim.contents() == contents);
}

TEST(SpillName, OfABinaryStateThatIsNotTakenMakesNoFile) {
  const TemporaryFile absent;
  const Spilled restored(stateThatNames(absent.name()), Restored::Binary);
  EXPECT_FALSE(std::filesystem::exists(absent.name()));
}

TEST(SpillName, OfAnXmlStateIsNeverOpened) {
  const std::string contents = "not to lose it\n";
  const TemporaryFile victim(contents);
  SpillingRun run("spill");
  ASSERT_EQ(shortForm(run.engine->RunPhaseI(1)), "OK");
  std::string state = xmlState(*run.engine);
  // The presence flag, where a reader takes a text as well.
  const std::string flag = "<Int value=\"1\"/>";
  const std::size_t at = state.find(flag, state.find("\"DictionarySettings\""));
  ASSERT_NE(at, std::string::npos);
  state.replace(at, flag.size(), "<String value=\"" + victim.name() + "\"/>");
  {
    const Spilled restored(state, Restored::Xml);
    EXPECT_EQ(Access::dictionary(*restored.engine)->settings().GetSpillFileName(), victim.name());
    EXPECT_TRUE(victim.contents() == contents);
  }
  EXPECT_TRUE(victim.contents() == contents);
}

TEST(SpillName, IsReadableFromARestoredEngineAndSavedAgain) {
  const std::string state = stateThatNames("/somewhere/else");
  Restored restored(state, Restored::Binary);
  restored.goOnBehind(1);
  const DictionarySettings& settings = Access::dictionary(*restored.engine)->settings();
  EXPECT_STREQ(settings.GetSpillFileName(), "/somewhere/else");
  EXPECT_FALSE(settings.HasSpillFileName());
  restored.engine->SetMaxInStoreSets(100);
  EXPECT_EQ(shortForm(restored.engine->RunPhaseI(1)), "OK");
  restored.engine->SetMaxInStoreSets(4);
  EXPECT_EQ(binaryState(*restored.engine).substr(0, 80), state.substr(0, 80)) << "all of the settings";
}

TEST(SpillName, OfOneStateGivesTwoEnginesAFileEach) {
  const TemporaryFile named;
  const std::string state = stateThatNames(named.name());
  const Spilled first(state, Restored::Binary);
  const Spilled second(state, Restored::Binary);
  EXPECT_NE(storeOf(*first.engine)->fileName(), storeOf(*second.engine)->fileName());
  EXPECT_EQ(first.engine->NumberOfSets(), second.engine->NumberOfSets());
  EXPECT_EQ(storeOf(*first.engine)->size(), storeOf(*second.engine)->size());
}
