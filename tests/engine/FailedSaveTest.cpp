// Saving to streams that fail, or that call back.

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <iostream>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/engine/CarmaSaveContext.h"
#include "korassoc/engine/PhaseIContext.h"
#include "korassoc/engine/PhaseIIContext.h"
#include "korassoc/rules/AssociationRule.h"
#include "tests/support/CallingBuffer.h"
#include "tests/support/FailingBuffer.h"
#include "tests/support/RecordStream.h"
#include "tests/support/SavedStates.h"
#include "tests/support/ThrowingOutput.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using Engine = CarmaAssociationAlgorithm;

}  // namespace

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

TEST(SaveState, TellsADiskThatFillsUpAnywhereAndGoesOn) {
  Running run;
  run.engine->RunPhaseI(13);
  const std::string before = binaryState(*run.engine);
  for (std::size_t room = 0; room < before.size(); ++room) {
    FailingRecordStream file(room);
    const StreamCapture output(std::cout);
    const StreamCapture errors(std::cerr);
    ASSERT_EQ(shortForm(run.engine->SaveState(file.stream())), "E2") << room;
    ASSERT_EQ(file.bytes(), before.substr(0, room));
    ASSERT_EQ(output.text(), " Error saving to the output stream!\n ") << room;
    ASSERT_EQ(&Access::state(*run.engine), &PhaseIContext::instance()) << room;
  }
  FailingRecordStream file(before.size());
  EXPECT_EQ(shortForm(run.engine->SaveState(file.stream())), "OK");
  EXPECT_EQ(file.bytes(), before);
  Running undisturbed;
  undisturbed.engine->RunPhaseI(13);
  for (Engine* engine : {run.engine.get(), undisturbed.engine.get()}) {
    EXPECT_EQ(shortForm(engine->RunPhaseI(100)), "OK");
    EXPECT_EQ(shortForm(engine->RunPhaseII()), "OK");
  }
  EXPECT_EQ(xmlState(*run.engine), xmlState(*undisturbed.engine));
}

TEST(SaveStateXML, TellsADiskThatFillsUpAnywhereAndGoesOn) {
  for (const bool lattice : {false, true}) {
    Running run;
    run.engine->RunPhaseI(3);
    if (lattice) run.engine->RunPhaseII();
    const CarmaContext* const phase = &Access::state(*run.engine);
    const std::string before = xmlState(*run.engine);
    for (std::size_t room = 0; room < before.size(); ++room) {
      FailingBuffer buffer(room);
      std::ostream stream(&buffer);
      const StreamCapture output(std::cout);
      ASSERT_EQ(shortForm(run.engine->SaveStateXML(stream)), "E2") << room;
      ASSERT_EQ(buffer.text(), before.substr(0, room));
      ASSERT_EQ(output.text(), " Error saving to the output xml file!\n ") << room;
      ASSERT_EQ(&Access::state(*run.engine), phase) << room;
    }
    EXPECT_EQ(xmlState(*run.engine), before);
    std::vector<AssociationRule> rules;
    if (!lattice) {
      EXPECT_EQ(shortForm(run.engine->RunPhaseI(100)), "OK");
      EXPECT_EQ(shortForm(run.engine->RunPhaseII()), "OK");
    }
    EXPECT_EQ(shortForm(run.engine->CreateNgetRules(0.1, 0.5, rules)), "OK");
    EXPECT_FALSE(rules.empty());
  }
}

TEST(SaveStateXML, RefusesWhatItsStreamCallsBack) {
  Running run;
  run.engine->RunPhaseI(23);
  run.engine->RunPhaseII();
  std::string answers;
  CallingBuffer buffer([&](int number) {
    if (number > 1) return;
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

TEST(SaveState, SurvivesACancelThatItsStreamCarriesOut) {
  for (const bool xml : {false, true}) {
    Running run;
    run.engine->RunPhaseI(23);
    CallingBuffer buffer([&](int number) {
      if (number > 1) return;
      run.engine->Cancel();
      EXPECT_EQ(shortForm(run.engine->RunNullPhaseII(0.0)), "E1");
    });
    std::fstream stream;
    static_cast<std::ios&>(stream).rdbuf(&buffer);
    EXPECT_EQ(shortForm(xml ? run.engine->SaveStateXML(stream) : run.engine->SaveState(stream)), "E1");
    EXPECT_EQ(run.engine->NumberOfSets(), -1);
    EXPECT_EQ(shortForm(run.engine->RunPhaseI(1)), "E1");
  }
}
