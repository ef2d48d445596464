// The XML records of the three settings classes.

#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/Exceptions.h"
#include "tests/support/InputText.h"
#include "tests/support/StreamCapture.h"

namespace {

// A record as it is written: line feeds in front, tabs by level. The third number of the dictionary has no
// setter.
const char* const kRecord = R"(
	<Obj name="CarmaSettings">
		<Obj name="AssociationAlgorithmSettings">
			<Int value="500"/>
			<Int value="7"/>
			<Obj name="DictionarySettings">
				<Int value="6"/>
				<Int value="1"/>
				<Int value="1"/>
				<Int value="2"/>
				<Int value="89"/>
				<Int value="4"/>
				<Int value="5"/>
				<Int value="6"/>
				<Int value="7"/>
				<Int value="8"/>
				<Int value="9"/>
			</Obj>
		</Obj>
		<Int value="11"/>
		<Int value="12"/>
		<Int value="13"/>
		<Int value="14"/>
	</Obj>)";

void fill(CarmaSettings& settings) {
  settings.SetMaxTranLength(500);
  settings.SetMaxLengthSet(7);
  settings.SetMaxNumSigmaChunks(11);
  settings.SetReportFreqPhaseI(12);
  settings.SetReportFreqPhaseII(13);
  settings.SetRemoveSmallFreq(14);
  DictionarySettings& dictionary = settings.GetDictionarySettings();
  dictionary.SetSpillFileName("f.tmp");
  dictionary.SetNumberOfFixedSets(1);
  dictionary.SetInitialSetSize(2);
  dictionary.SetInitialBoundarySearchSize(4);
  dictionary.SetInitialHashtableSet23Size(5);
  dictionary.SetInitialRulesSize(6);
  dictionary.SetReportFrequency(7);
  dictionary.SetMaxInStoreSets(8);
  dictionary.SetLeaveInMainStoreCount(9);
}

// The lines of the record without the empty one in front.
std::vector<std::string> lines() {
  std::istringstream text(kRecord + 1);
  std::vector<std::string> all;
  for (std::string line; std::getline(text, line);) all.push_back(line);
  return all;
}

std::string joined(const std::vector<std::string>& all) {
  std::string text;
  for (const std::string& line : all) text += '\n' + line;
  return text;
}

struct Reading {
  std::uint64_t lines = 0;
  bool threw = false;
  std::string output;
  std::string errors;
};

template <typename Settings>
Reading readInto(Settings& settings, const std::string& text) {
  InputText input(text);
  const StreamCapture output(std::cout);
  const StreamCapture errors(std::cerr);
  Reading reading;
  try {
    reading.lines = settings.ReadObjectXML(input.stream());
  } catch (IOException* exception) {
    delete exception;
    reading.threw = true;
  }
  reading.output = output.text();
  reading.errors = errors.text();
  return reading;
}

std::string written(const CarmaSettings& settings) {
  std::ostringstream out;
  settings.WriteObjectXML(out);
  return out.str();
}

}  // namespace

TEST(SettingsXML, IsWrittenLineByLine) {
  CarmaSettings settings;
  fill(settings);
  std::ostringstream out;
  EXPECT_EQ(settings.WriteObjectXML(out), 24U);
  EXPECT_EQ(out.str(), kRecord);
}

// The outer classes count a line more than they write; hosts add these numbers up.
TEST(SettingsXML, AnswersTheCountsOfEachClass) {
  const CarmaSettings settings;
  std::ostringstream dictionary;
  EXPECT_EQ(settings.GetDictionarySettings().WriteObjectXML(dictionary, 3), 13U);
  std::ostringstream base;
  EXPECT_EQ(settings.AssociationAlgorithmSettings::WriteObjectXML(base), 18U);
}

TEST(SettingsXML, IndentsTheDictionarysPartAsItIsTold) {
  std::ostringstream out;
  DictionarySettings().WriteObjectXML(out, 0);
  EXPECT_EQ(out.str().substr(0, 38), "\n<Obj name=\"DictionarySettings\">\n\t<Int");
}

TEST(SettingsXML, RestoresEveryNumberAndTakesTheFlagForTheName) {
  CarmaSettings saved;
  fill(saved);
  CarmaSettings settings;
  settings.GetDictionarySettings().SetDiskSpill(true);
  const Reading reading = readInto(settings, written(saved));
  EXPECT_FALSE(reading.threw);
  EXPECT_EQ(reading.output + reading.errors, "");
  EXPECT_EQ(reading.lines, 10U);
  EXPECT_STREQ(settings.GetDictionarySettings().GetSpillFileName(), "1");
  EXPECT_FALSE(settings.GetDictionarySettings().HasSpillFileName()) << "nobody chose a file named 1";
  EXPECT_TRUE(settings.GetDictionarySettings().GetDiskSpill());
  settings.GetDictionarySettings().SetSpillFileName("f.tmp");
  EXPECT_EQ(written(settings), kRecord);
}

TEST(SettingsXML, ShowsANameWhereARecordHasOneAsOneThatNobodySet) {
  auto text = lines();
  text[6] = "<String value=\"/tmp/spill\"/>";
  CarmaSettings settings;
  settings.GetDictionarySettings().SetSpillFileName("mine");
  EXPECT_FALSE(readInto(settings, joined(text)).threw);
  EXPECT_STREQ(settings.GetDictionarySettings().GetSpillFileName(), "/tmp/spill");
  EXPECT_FALSE(settings.GetDictionarySettings().HasSpillFileName());
}

TEST(SettingsXML, SaysHowManyLinesTheInnerClassesRead) {
  const auto all = lines();
  AssociationAlgorithmSettings base;
  EXPECT_EQ(readInto(base, joined({all.begin() + 1, all.end()})).lines, 4U);
  DictionarySettings dictionary;
  EXPECT_EQ(readInto(dictionary, joined({all.begin() + 4, all.end()})).lines, 12U);
}

// Each line in turn is replaced by one that nothing expects. Which class notices decides what happens.
TEST(SettingsXML, ReportsABrokenLineInTheWayOfTheClassThatNotices) {
  const std::string base = "Error reading AssocAlgSettings!\n";
  const std::string dictionary = "Error reading DictionarySettings!\n";
  const std::string carma = "Error reading CarmaSettings!\n";
  const auto all = lines();
  ASSERT_EQ(all.size(), 23U);
  for (std::size_t broken = 0; broken < all.size(); ++broken) {
    auto text = all;
    text[broken] = "<Nothing/>";
    CarmaSettings settings;
    const Reading reading = readInto(settings, joined(text));
    const bool inDictionary = broken >= 4 && broken <= 16;
    const bool inBase = !inDictionary && broken >= 1 && broken <= 17;
    const bool closing = broken == 22;
    EXPECT_EQ(reading.threw, !closing) << broken;
    EXPECT_EQ(reading.output, inDictionary ? dictionary : inBase ? base : "") << broken;
    EXPECT_EQ(reading.errors, inDictionary || closing ? "" : carma) << broken;
  }
}

TEST(SettingsXML, IsRefusedWhereverItIsCutShort) {
  const auto all = lines();
  for (std::size_t count = 0; count < all.size() - 1; ++count) {
    CarmaSettings settings;
    EXPECT_TRUE(readInto(settings, joined({all.begin(), all.begin() + static_cast<long>(count)})).threw)
        << count;
  }
}

TEST(SettingsXML, LeavesTheBaseSettingsThatItRefusedWithoutAnException) {
  AssociationAlgorithmSettings settings;
  const Reading reading = readInto(settings, "\n<Obj name=\"CarmaSettings\">");
  EXPECT_FALSE(reading.threw);
  EXPECT_EQ(reading.lines, 0U);
  EXPECT_EQ(reading.output, "Error reading AssocAlgSettings!\n");
}

TEST(SettingsXML, RefusesAnImpossibleNameLengthAndStaysAsItWas) {
  for (const char* length : {"0", "-1", "x"}) {
    auto text = lines();
    text[5] = std::string("<Int value=\"") + length + "\"/>";
    CarmaSettings settings;
    const std::string before = settings.GetDictionarySettings().GetSpillFileName();
    EXPECT_TRUE(readInto(settings, joined(text)).threw) << length;
    EXPECT_EQ(settings.GetDictionarySettings().GetSpillFileName(), before);
    EXPECT_EQ(settings.GetDictionarySettings().GetNumberOfFixedSets(), 10);
  }
  auto text = lines();
  text[5] = "<Int value=\"2147483647\"/>";
  CarmaSettings settings;
  EXPECT_FALSE(readInto(settings, joined(text)).threw) << "no memory depends on it";
}
