// What becomes of saved states that are broken, or made to break whoever reads them.

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <iostream>
#include <string>

#include "tests/support/RecordStream.h"
#include "tests/support/SavedStates.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using Engine = CarmaAssociationAlgorithm;

}  // namespace

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
