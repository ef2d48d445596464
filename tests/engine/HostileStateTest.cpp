// Saved states made to break whoever reads them: cut, changed, with numbers that lie, without ends. Each is
// refused, with the words that belong to it, or is an engine that works; and none takes memory on its word.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "bench/HeapBytes.h"
#include "korassoc/rules/AssociationRule.h"
#include "tests/support/RecordStream.h"
#include "tests/support/SavedStates.h"

namespace {

using Engine = CarmaAssociationAlgorithm;

// A run with small tables, which are faster to make by the thousand.
struct SmallRun : EngineHost {
  explicit SmallRun(int transactions) : EngineHost(someTransactions()) {
    settings->GetDictionarySettings().SetInitialHashtableSet23Size(11);
    settings->GetDictionarySettings().SetSpillFileName("");
    settings->SetMaxLengthSet(3);
    engine = std::make_unique<Engine>(settings.get(), &source);
    support(someSupport);
    EXPECT_TRUE(engine->RunPhaseI(transactions).IsOK());
  }
};

std::string smallBinary() { return binaryState(*SmallRun(5).engine); }
std::string smallXml() { return xmlState(*SmallRun(5).engine); }
std::string smallLattice() {
  SmallRun run(5);
  EXPECT_TRUE(run.engine->RunPhaseII().IsOK());
  return xmlState(*run.engine);
}

// The lines that are printed when a record cannot be read, but for the characters found instead of a tag.
constexpr std::string_view kLines[] = {
    "Error reading CarmaSettings!\n",      "Error reading AssocAlgSettings!\n",
    "Error reading DictionarySettings!\n", "Failure reading SetDictionary!\n",
    "Failure reading Hashtable!\n",        "Problem reading Hashtable.\n",
    "Failure reading ItemSet!\n",          "Error reading SetCounter!\n",
    "Error reading CarmaSetDescriptor!\n", "Error reading LatticeSetDescriptor!\n",
    "Failure reading CeilArray!\n",
};

// Whether a text consists of such lines.
bool consistsOfLines(std::string_view text) {
  while (!text.empty()) {
    const auto* line = std::find_if(std::begin(kLines), std::end(kLines),
                                    [&](std::string_view known) { return text.starts_with(known); });
    if (line == std::end(kLines)) return false;
    text.remove_prefix(line->size());
    constexpr std::string_view kFound = "inputStr: ";
    if (!text.starts_with(kFound)) continue;
    const std::size_t end = text.find('\n', text[kFound.size()] == '\n' ? kFound.size() : kFound.size() + 1);
    if (end == std::string_view::npos || end > kFound.size() + 2) return false;
    text.remove_prefix(end + 1);
  }
  return true;
}

// Everything that an engine can do, in the little that it takes.
void leadOn(Restored& restored) {
  const StreamCapture output(std::cout);
  const StreamCapture errors(std::cerr);
  Engine& engine = *restored.engine;
  if (!engine.IsLatticeBuilt()) {
    restored.goOnBehind(0);
    engine.RunPhaseI(2);
    engine.RunPhaseII();
  }
  std::vector<AssociationRule> rules;
  engine.CreateNgetRules(0.1, 0.5, rules);
  std::ostringstream xml;
  engine.SaveStateXML(xml);
}

struct Outcome {
  bool refused = false;
  std::string printed;  // to the standard output, then to the error stream
};

// Restores the state from memory and goes on with it as far as it goes.
Outcome attempt(const std::string& state, Restored::Format format) {
  std::stringbuf buffer(state, std::ios::in | std::ios::binary);
  bench::resetHeapPeak();
  const std::size_t before = bench::heapBytes();
  Restored restored(buffer, format);
  const Outcome outcome = {restored.unusable(), restored.output + restored.errors};
  if (outcome.refused) {
    EXPECT_EQ(shortForm(restored.engine->GetStatus()), "E5");
    EXPECT_EQ(restored.engine->NumberOfSets(), -1);
  } else {
    EXPECT_EQ(shortForm(restored.engine->GetStatus()), "OK");
    leadOn(restored);
  }
  EXPECT_LE(bench::heapPeak() - before, (std::size_t{64} << 20U) + 8 * state.size());
  EXPECT_TRUE(consistsOfLines(outcome.printed)) << outcome.printed;
  return outcome;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += (text.empty() ? "" : "\n") + line;
  return text;
}

// The lines with one of them replaced.
std::string withLine(std::vector<std::string> lines, std::size_t place, const std::string& line) {
  lines[place] = line;
  return joined(lines);
}

// The lines of the state that a reader looks at: all but those that close the top object and the root.
std::size_t linesRead(const std::vector<std::string>& lines) { return lines.size() - 2; }

}  // namespace

TEST(HostileState, CutAnywhereIsRefusedInTheNameOfTheRecordThatEndsTooEarly) {
  const std::string state = smallBinary();
  const std::size_t dictionarySettings = 2 + 3 + 8;
  const std::size_t carmaNumbers = dictionarySettings + 2 + 4 + 1 + 36;
  const std::size_t dictionary = carmaNumbers + 16;
  const std::size_t tables = dictionary + 28;
  const std::size_t ceilings = state.rfind("CA");
  ASSERT_EQ(state.substr(dictionarySettings, 2), "DS");
  ASSERT_EQ(state.substr(dictionary, 2), "SD");
  ASSERT_EQ(state.substr(tables, 2), "HT");
  const std::size_t lastTable = state.rfind("HT", ceilings);
  ASSERT_LT(tables, lastTable);
  for (std::size_t length = 0; length < state.size(); ++length) {
    const Outcome outcome = attempt(state.substr(0, length), Restored::Binary);
    EXPECT_TRUE(outcome.refused) << length;
    std::string expected;
    if (length < 2) {
      expected = "Error reading CarmaSettings!\n";
    } else if (length < dictionarySettings) {
      expected = "Error reading AssocAlgSettings!\nError reading CarmaSettings!\n";
    } else if (length < carmaNumbers) {
      expected = "Error reading DictionarySettings!\n";
    } else if (length < dictionary) {
      expected = "Error reading CarmaSettings!\n";
    } else if (length < tables) {
      const std::size_t found = std::min<std::size_t>(length - dictionary, 2);
      expected = "Failure reading SetDictionary!\ninputStr: " + state.substr(dictionary, found) + "\n";
    } else if (length < lastTable + 2 || (length >= lastTable + 6 && length < ceilings - 28)) {
      EXPECT_NE(outcome.printed.find("ing Hashtable"), std::string::npos) << length;
      continue;
    } else if (length >= ceilings && length < state.size() - 20) {
      expected = "Failure reading CeilArray!\n";
    }  // a number of entries that is not there counts as 0, and the engine's own numbers have no words
    EXPECT_EQ(outcome.printed, expected) << length;
  }
}

TEST(HostileState, CutAnywhereAsXmlIsRefused) {
  for (const std::string& state : {smallXml(), smallLattice()}) {
    const std::size_t settings = state.find("\n\t<Obj name=\"CarmaSettings\">");
    const std::size_t ownNumbers = state.find("\n\t</Obj>", state.find("SetDictionary")) + 8;
    for (std::size_t length = 0; length < state.rfind("<Int value=\""); ++length) {
      const Outcome outcome = attempt(state.substr(0, length), Restored::Xml);
      EXPECT_TRUE(outcome.refused) << length;
      if (length > settings && length < ownNumbers - 1) {
        EXPECT_NE(outcome.printed, "") << length;
      }
    }
  }
}

TEST(HostileState, WithALyingNumberAnywhereIsTakenOrRefused) {
  const std::string state = smallBinary();
  int refused = 0;
  for (std::size_t place = 0; place + 4 <= state.size(); ++place) {
    for (const int value : kLyingNumbers) {
      SCOPED_TRACE(std::to_string(place) + ": " + std::to_string(value));
      std::string changed = state;
      refused += attempt(changed.replace(place, 4, int32Bytes(value)), Restored::Binary).refused ? 1 : 0;
    }
  }
  EXPECT_GT(refused, static_cast<int>(state.size()));
}

TEST(HostileState, WithAnyByteChangedIsTakenOrRefused) {
  const std::string state = smallBinary();
  for (std::size_t place = 0; place < state.size(); ++place) {
    std::vector<char> values = {'\x00', '\x01', '\x7F', '\x80', '\xFF'};
    for (unsigned bit = 1; bit < 256; bit <<= 1U) {
      values.push_back(static_cast<char>(static_cast<unsigned char>(state[place]) ^ bit));
    }
    for (const char value : values) {
      SCOPED_TRACE(std::to_string(place) + ": " + std::to_string(value));
      std::string changed = state;
      changed[place] = value;
      attempt(changed, Restored::Binary);
    }
  }
}

TEST(HostileState, WithAnyCharacterOfItsXmlChangedIsTakenOrRefused) {
  for (const std::string& state : {smallXml(), smallLattice()}) {
    for (std::size_t place = 0; place < state.size(); ++place) {
      for (const char value : {'\0', '\n', '"', '9', '\xFF'}) {
        SCOPED_TRACE(std::to_string(place) + ": " + std::to_string(value));
        std::string changed = state;
        changed[place] = value;
        attempt(changed, Restored::Xml);
      }
    }
  }
}

TEST(HostileState, WithALyingValueInAnyLineOfItsXmlIsTakenOrRefused) {
  for (const std::string& state : {smallXml(), smallLattice()}) {
    const std::vector<std::string> lines = linesOf(state);
    int refused = 0;
    for (std::size_t place = 0; place < lines.size(); ++place) {
      const std::size_t from = lines[place].find("value=\"");
      if (from == std::string::npos) continue;
      for (const char* value : {"-1", "0", "2147483647", "-2147483648", "1000000", "nan", "-inf", "1e999", "",
                                "Missing", "99999999999999999999", "0x10", " "}) {
        SCOPED_TRACE(std::to_string(place) + ": " + value);
        const std::string line = lines[place].substr(0, from) + "value=\"" + value + "\"/>";
        const bool isRefused = attempt(withLine(lines, place, line), Restored::Xml).refused;
        refused += isRefused ? 1 : 0;
        // No double is any of these; an integer is what atoi makes of it.
        const std::string text = value;
        if (lines[place].find("Double") != std::string::npos && (text == "nan" || text == "1e999")) {
          EXPECT_TRUE(isRefused);
        }
      }
    }
    EXPECT_GT(refused, static_cast<int>(lines.size()));
  }
}

TEST(HostileState, WithoutABeginningOrAnEndInItsXmlIsRefused) {
  for (const std::string& state : {smallXml(), smallLattice()}) {
    const std::vector<std::string> lines = linesOf(state);
    for (std::size_t place = 0; place < linesRead(lines); ++place) {
      std::vector<std::string> fewer = lines;
      fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(place));
      const Outcome outcome = attempt(joined(fewer), Restored::Xml);
      // Without one of several numbers, those behind it may make another state that is a good one.
      if (lines[place].find("value=") == std::string::npos) {
        EXPECT_TRUE(outcome.refused) << place << ": " << lines[place];
      }
    }
  }
}

TEST(HostileState, InAnyOtherOrderIsRefusedWhereTheLinesAreOfAnotherKind) {
  const auto kind = [](const std::string& line) {
    const std::size_t from = line.find('<');
    return line.substr(from, line.find("value=") - from);
  };
  for (const std::string& state : {smallXml(), smallLattice()}) {
    const std::vector<std::string> lines = linesOf(state);
    for (std::size_t place = 0; place + 1 < linesRead(lines); ++place) {
      std::vector<std::string> changed = lines;
      std::swap(changed[place], changed[place + 1]);
      const Outcome outcome = attempt(joined(changed), Restored::Xml);
      if (kind(lines[place]) != kind(lines[place + 1])) {
        EXPECT_TRUE(outcome.refused) << place << ": " << lines[place];
      }
    }
  }
}

namespace {

// Text in front of a line of 1 GiB, which is made as it is read.
class EndlessLine : public std::streambuf {
 public:
  explicit EndlessLine(std::string text) : text_(std::move(text)) {
    setg(text_.data(), text_.data(), text_.data() + text_.size());
  }

  std::uint64_t given() const { return given_; }

 protected:
  int_type underflow() override {
    if (given_ >= (std::uint64_t{1} << 30U)) return traits_type::eof();
    text_.assign(4096, ' ');
    given_ += text_.size();
    setg(text_.data(), text_.data(), text_.data() + text_.size());
    return traits_type::to_int_type(text_.front());
  }

 private:
  std::string text_;
  std::uint64_t given_ = 0;  // of the line
};

}  // namespace

TEST(HostileState, WithALineOfAGigabyteIsRefusedAtItsBeginning) {
  const std::vector<std::string> lines = linesOf(smallLattice());
  std::string text;
  for (std::size_t place = 0; place < linesRead(lines); ++place) {
    EndlessLine state(text);
    bench::resetHeapPeak();
    const std::size_t before = bench::heapBytes();
    Restored restored(state, Restored::Xml);
    EXPECT_TRUE(restored.unusable()) << place;
    EXPECT_EQ(shortForm(restored.engine->GetStatus()), "E5") << place;
    EXPECT_TRUE(consistsOfLines(restored.output + restored.errors)) << place;
    EXPECT_LE(state.given(), 4096U) << place;
    EXPECT_LE(bench::heapPeak() - before, std::size_t{64} << 20U) << place;
    text += lines[place] + '\n';
  }
}

TEST(HostileState, OfManySetsTakesNoMoreThanEightTimesItsSize) {
  constexpr int kSets = 400000;
  const std::string small = smallBinary();
  const std::string oneItemTable = "HT" + int32Bytes(kSets);
  const std::size_t place = small.find("HT", small.find("HT") + 2);
  ASSERT_EQ(small.substr(place, 2), "HT");
  std::string table = oneItemTable;
  for (int item = 0; item < kSets; ++item) {
    table += std::string("IS:\0", 4) + int32Bytes({1, item}) + "CSD" + int32Bytes({1, 1, 0});
  }
  const std::size_t next = small.find("HT", place + 2);
  const std::string state = small.substr(0, place) + table + small.substr(next);
  std::stringbuf buffer(state, std::ios::in | std::ios::binary);
  bench::resetHeapPeak();
  const std::size_t before = bench::heapBytes();
  const Restored restored(buffer, Restored::Binary);
  EXPECT_FALSE(restored.unusable());
  EXPECT_LE(bench::heapPeak() - before, (std::size_t{64} << 20U) + 8 * state.size());
  EXPECT_LE(bench::heapPeak() - before, 8 * state.size());
}
