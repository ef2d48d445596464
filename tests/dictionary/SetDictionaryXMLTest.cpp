// The dictionary's record in an XML state, and with it those of tables and entries.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/engine/Exceptions.h"
#include "tests/support/DictionaryComparison.h"
#include "tests/support/FailingBuffer.h"
#include "tests/support/InputText.h"
#include "tests/support/RandomDictionary.h"
#include "tests/support/StreamCapture.h"

namespace {

using namespace std::string_literals;
using ::testing::EndsWith;

const std::string kFailure = "Failure reading SetDictionary!\n";
const std::string kTableFailure = "Failure reading Hashtable!\n";
const std::string kEntryFailure = "Problem reading Hashtable.\n";

const DictionarySettings& defaults() {
  static const DictionarySettings settings;  // making up a spill file name takes its time
  return settings;
}

// A dictionary with settings of its own.
struct Store {
  explicit Store(int maxLevel) : settings(defaults()), dictionary(maxLevel, &settings, true) {}
  DictionarySettings settings;
  SetDictionary dictionary;
};

std::string written(const SetDictionary& dictionary) {
  std::ostringstream out;
  const std::uint64_t lines = dictionary.writeObjectXML(out);
  const std::string text = out.str();
  EXPECT_EQ(lines, static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n')));
  return text;
}

struct Outcome {
  std::uint64_t lines = 0;
  bool refused = false;
  std::string out;
  std::string err;
  std::string next;  // the line behind the record
};

Outcome read(SetDictionary& dictionary, const std::string& text) {
  InputText in(text);
  const StreamCapture out(std::cout);
  const StreamCapture err(std::cerr);
  Outcome outcome;
  try {
    outcome.lines = dictionary.readObjectXML(in.stream());
  } catch (const IOException* refusal) {
    delete refusal;
    outcome.refused = true;
  }
  outcome.out = out.text();
  outcome.err = err.text();
  std::getline(in.stream(), outcome.next);
  return outcome;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string join(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

// The sets {} (count 9) and {5} (count 7, TID 1, max missed 2), maxLevel 1.
const char* const kSmall = R"(
	<Obj name="SetDictionary">
		<Int value="0"/>
		<Int value="1"/>
		<Int value="1"/>
		<Int value="2"/>
		<Int value="2147483647"/>
		<Int value="0"/>
		<Int value="2"/>
		<Int value="0"/>
		<Int value="1"/>
		<Obj name="HashtablePair">
			<Int value="1"/>
			<Obj name="ISCPair">
				<Obj name="ItemSet">
					<Int value="0"/>
				</Obj>
				<Obj name="CarmaSetDescriptor">
					<Int value="9"/>
					<Int value="0"/>
					<Int value="0"/>
				</Obj>
			</Obj>
		</Obj>
		<Obj name="HashtablePair">
			<Int value="1"/>
			<Obj name="ISCPair">
				<Obj name="ItemSet">
					<Int value="1"/>
					<Int value="5"/>
				</Obj>
				<Obj name="CarmaSetDescriptor">
					<Int value="7"/>
					<Int value="1"/>
					<Int value="2"/>
				</Obj>
			</Obj>
		</Obj>
	</Obj>)";

void fillSmall(SetDictionary& dictionary) {
  store(dictionary, {}, std::make_unique<CarmaSetDescriptor>(9, 0, 0));
  store(dictionary, {5}, std::make_unique<CarmaSetDescriptor>(7, 1, 2));
}

// kSmall with one line (0 is the object's start) replaced.
std::string withLine(std::size_t number, const std::string& line) {
  std::vector<std::string> lines = linesOf(std::string(kSmall).substr(1));
  lines.at(number) = line;
  return join(lines);
}

std::string withValue(std::size_t number, const std::string& value) {
  return withLine(number, "<Int value=\"" + value + "\"/>");
}

TEST(SetDictionaryXML, HoldsNineValuesAndTheTables) {
  Store small(1);
  fillSmall(small.dictionary);
  EXPECT_EQ(written(small.dictionary), kSmall);
}

TEST(SetDictionaryXML, IsReadBack) {
  Store reader(1);
  const Outcome outcome = read(reader.dictionary, kSmall + std::string("\nnext"));
  EXPECT_FALSE(outcome.refused) << outcome.out;
  EXPECT_EQ(outcome.lines, 38U);
  EXPECT_EQ(outcome.next, "next");
  EXPECT_EQ(outcome.out + outcome.err, "");
  EXPECT_EQ(reader.dictionary.getEmptySetCount(), 9);
  ASSERT_NE(reader.dictionary.getDescriptor(5), nullptr);
  EXPECT_EQ(reader.dictionary.getDescriptor(5)->count, 7);
  EXPECT_EQ(reader.dictionary.getDescriptor(5)->getTID(), 1);
  EXPECT_EQ(reader.dictionary.getDescriptor(5)->getMaxMissed(), 2);
  EXPECT_EQ(written(reader.dictionary), kSmall);
}

TEST(SetDictionaryXML, KeepsTheLinksOfALattice) {
  Store saved(2);
  fillSmall(saved.dictionary);
  store(saved.dictionary, {8}, std::make_unique<CarmaSetDescriptor>(6, 2, 0));
  store(saved.dictionary, {5, 8}, std::make_unique<CarmaSetDescriptor>(5, 2, 0));
  saved.dictionary.buildLattice();
  const std::string text = written(saved.dictionary);
  EXPECT_EQ(linesOf(text)[2], "\t\t<Int value=\"1\"/>") << "the lattice is built";
  Store restored(2);
  EXPECT_FALSE(read(restored.dictionary, text).refused);
  EXPECT_TRUE(restored.dictionary.isLatticeBuilt());
  EXPECT_EQ(stateText(restored.dictionary), stateText(saved.dictionary));
  for (const std::vector<int>& items : {std::vector<int>{}, {5}, {8}, {5, 8}}) {
    const ItemSet set(items.data(), static_cast<int>(items.size()));
    EXPECT_EQ(entryText(*restored.dictionary.levelTable(set.length()).find(&set)),
              entryText(*saved.dictionary.levelTable(set.length()).find(&set)));
  }
}

TEST(SetDictionaryXML, OfALatticeTakesWhatNoLinkReachesAsALatticeDescriptor) {
  // Level 2 is empty: the lattice ends before the set on level 3, which keeps what counted it.
  Store saved(3);
  fillSmall(saved.dictionary);
  store(saved.dictionary, {5, 8, 9}, std::make_unique<CarmaSetDescriptor>(5, 2, 1));
  store(saved.dictionary, {5, 8, 7}, std::make_unique<SetCounter>(4, 3));
  saved.dictionary.buildLattice();
  Store restored(3);
  const Outcome outcome = read(restored.dictionary, written(saved.dictionary));
  EXPECT_FALSE(outcome.refused) << outcome.out;
  EXPECT_EQ(outcome.lines, linesOf(written(saved.dictionary)).size() - 1);
  restored.dictionary.levelTable(3).forEach([](const HashTable::Entry& entry) {
    EXPECT_NE(dynamic_cast<const LatticeSetDescriptor*>(entry.descriptor), nullptr);
  });
  EXPECT_EQ(stateText(restored.dictionary), stateText(saved.dictionary));
}

TEST(SetDictionaryXML, RefusesANumberThatNoDictionaryOfTheseSettingsWrites) {
  const struct {
    const char* field;
    std::size_t line;
    std::vector<const char*> refused;
    std::vector<const char*> taken;
  } cases[] = {
      {"maxLevel", 2, {"-1", "0", "2", "1000000", "2147483647", "-2147483648", "x"}, {"1"}},
      {"spillLevel", 3, {"-1", "-2147483648"}, {"0", "1", "1000000", "2147483647"}},
      {"inStoreCount", 4, {"-1", "-2147483648"}, {"0", "1000000", "2147483647"}},
      {"maxInStoreSets", 5, {}, {"-1", "0", "1000000", "2147483647", "-2147483648"}},
      {"leaveInMainStoreCount", 6, {}, {"-1", "0", "1000000", "2147483647", "-2147483648"}},
      {"fixedSetCount", 7, {"-1", "3", "1000000", "2147483647", "-2147483648"}, {"0", "2"}},
  };
  for (const auto& c : cases) {
    for (const char* value : c.refused) {
      Store reader(1);
      const Outcome outcome = read(reader.dictionary, withValue(c.line, value));
      EXPECT_TRUE(outcome.refused) << c.field << ' ' << value;
      EXPECT_EQ(outcome.out, kFailure) << c.field << ' ' << value;
    }
    for (const char* value : c.taken) {
      Store reader(1);
      EXPECT_FALSE(read(reader.dictionary, withValue(c.line, value)).refused) << c.field << ' ' << value;
      EXPECT_EQ(linesOf(written(reader.dictionary))[c.line + 1],
                "\t\t<Int value=\"" + std::string(value) + "\"/>");
    }
  }
}

TEST(SetDictionaryXML, TakesAFlagAsTrueWhenItIsOne) {
  for (const char* value : {"0", "1", "2", "-1", "yes"}) {
    Store reader(1);
    ASSERT_FALSE(read(reader.dictionary, withValue(8, value)).refused) << value;
    const bool isOne = value == std::string("1");
    EXPECT_EQ(linesOf(written(reader.dictionary))[9],
              isOne ? "\t\t<Int value=\"1\"/>" : "\t\t<Int value=\"0\"/>");
  }
}

TEST(SetDictionaryXML, WithTheBitsetOnHoldsPlainCounters) {
  Store reader(1);
  EXPECT_EQ(read(reader.dictionary, withValue(9, "0")).out,
            "Error reading SetCounter!\n" + kEntryFailure + kFailure);

  Store saved(1);
  saved.dictionary.setBitsetOff(false);
  store(saved.dictionary, {}, std::make_unique<SetCounter>(9, 0));
  store(saved.dictionary, {5}, std::make_unique<SetCounter>(7, 1));
  EXPECT_FALSE(read(reader.dictionary, written(saved.dictionary)).refused);
  EXPECT_EQ(stateText(reader.dictionary), stateText(saved.dictionary));
}

TEST(SetDictionaryXML, TakesAPlainCounterAmongCarmaDescriptors) {
  Store saved(1);
  store(saved.dictionary, {}, std::make_unique<CarmaSetDescriptor>(9, 0, 0));
  store(saved.dictionary, {5}, std::make_unique<SetCounter>(7, 1));
  Store reader(1);
  const Outcome outcome = read(reader.dictionary, written(saved.dictionary));
  EXPECT_FALSE(outcome.refused);
  EXPECT_EQ(outcome.lines, 37U);
  const SetCounter& plain = *reader.dictionary.getDescriptor(5);
  EXPECT_EQ(typeid(plain), typeid(SetCounter));
}

TEST(SetDictionaryXML, WithoutOneOfItsLinesIsRefused) {
  const std::vector<std::string> lines = linesOf(std::string(kSmall).substr(1));
  for (std::size_t missing = 0; missing < lines.size(); ++missing) {
    std::vector<std::string> rest = lines;
    rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(missing));
    Store reader(1);
    const Outcome outcome = read(reader.dictionary, join(rest));
    EXPECT_TRUE(outcome.refused) << "without line " << missing;
    EXPECT_THAT(outcome.out, EndsWith(kFailure));
    EXPECT_EQ(outcome.err, "");
  }
}

TEST(SetDictionaryXML, TellsOnEveryFloorWhatCouldNotBeRead) {
  const struct {
    std::size_t line;
    std::string message;
  } cases[] = {{0, kFailure},
               {1, kFailure},
               {9, kFailure},
               {10, kTableFailure + kFailure},
               {11, kTableFailure + kFailure},
               {12, kEntryFailure + kFailure},
               {13, "Failure reading ItemSet!\n" + kEntryFailure + kFailure},
               {15, "Failure reading ItemSet!\n" + kEntryFailure + kFailure},
               {16, "Error reading SetCounter!\n" + kEntryFailure + kFailure},
               {18, "Error reading SetCounter!\n" + kEntryFailure + kFailure},
               {20, "Error reading SetCounter!\n" + kEntryFailure + kFailure},
               {21, kEntryFailure + kFailure},
               {22, kEntryFailure + kFailure},
               {23, kTableFailure + kFailure},
               {37, kFailure}};
  for (const auto& c : cases) {
    Store reader(1);
    const Outcome outcome = read(reader.dictionary, withLine(c.line, "<?"));
    EXPECT_TRUE(outcome.refused);
    EXPECT_EQ(outcome.out, c.message) << "line " << c.line;
  }
}

TEST(SetDictionaryXML, WithALyingNumberOfEntriesOrItemsIsRefused) {
  for (const std::size_t line : {11U, 14U, 24U, 27U}) {
    for (const char* value : {"-1", "2", "1000000", "2147483647", "-2147483648"}) {
      Store reader(1);
      const bool emptySetStays = line == 14 && value[0] == '-';
      EXPECT_EQ(read(reader.dictionary, withValue(line, value)).refused, !emptySetStays)
          << line << ' ' << value;
    }
  }
}

TEST(SetDictionaryXML, TakesATableOfLessThanOneEntryAsEmpty) {
  for (const char* value : {"0", "-1", "-2147483648"}) {
    std::vector<std::string> lines = linesOf(withValue(24, value));
    lines.erase(lines.begin() + 25, lines.begin() + 35);
    Store reader(1);
    EXPECT_FALSE(read(reader.dictionary, join(lines)).refused);
    EXPECT_EQ(reader.dictionary.getLevelSize(1), 0);
  }
}

TEST(SetDictionaryXML, RefusesASetOfAnotherLevel) {
  std::vector<std::string> lines = linesOf(withValue(14, "1"));
  lines.insert(lines.begin() + 15, "<Int value=\"5\"/>");
  Store reader(1);
  EXPECT_EQ(read(reader.dictionary, join(lines)).out, kEntryFailure + kFailure);
}

TEST(SetDictionaryXML, OnABadStreamIsRefusedOnTheErrorStream) {
  Store reader(1);
  InputText in(kSmall);
  in.stream().setstate(std::ios::badbit);
  const StreamCapture err(std::cerr);
  try {
    reader.dictionary.readObjectXML(in.stream());
    ADD_FAILURE();
  } catch (const IOException* refusal) {
    delete refusal;
  }
  EXPECT_EQ(err.text(), "Bad stream for reading SetDictionary!\n");
}

TEST(SetDictionaryXML, CutShortAnywhereButInItsLastCharacterIsRefused) {
  const std::string text = kSmall;
  Store reader(1);
  for (std::size_t size = 0; size < text.size() - 1; ++size) {
    const Outcome outcome = read(reader.dictionary, text.substr(0, size));
    EXPECT_TRUE(outcome.refused) << size;
    EXPECT_THAT(outcome.out, EndsWith(kFailure));
  }
}

TEST(SetDictionaryXML, ChangedInOneByteIsTakenOrRefused) {
  const std::string text = kSmall;
  Store reader(1);
  for (std::size_t place = 0; place < text.size(); ++place) {
    for (const char value : "\0\1\t\n\r \"/029-<=>x\x7F\xFF"s) {
      std::string changed = text;
      changed[place] = value;
      const Outcome outcome = read(reader.dictionary, changed);
      EXPECT_EQ(outcome.err, "");
      if (outcome.refused) {
        EXPECT_THAT(outcome.out, EndsWith(kFailure)) << place;
      } else {
        EXPECT_EQ(outcome.out, "");
      }
    }
  }
}

TEST(SetDictionaryXML, SurvivesTheRoundTripForRandomDictionaries) {
  for (const char type : {'A', 'C', 'L'}) {
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
      Dice dice(seed);
      Store saved(dice.between(1, 7));
      saved.dictionary.setBitsetOff(type != 'A');
      fill(saved.dictionary, dice, dice.below(150), type);
      if (type == 'L') {
        const StreamCapture missingSubsets(std::cout);
        saved.dictionary.buildLattice();
      }
      const std::string text = written(saved.dictionary);
      Store restored(saved.dictionary.maxLevel());
      const Outcome outcome = read(restored.dictionary, text + "\nnext");
      ASSERT_FALSE(outcome.refused) << outcome.out;
      EXPECT_EQ(outcome.next, "next");
      EXPECT_EQ(stateText(restored.dictionary), stateText(saved.dictionary));
      EXPECT_EQ(restored.dictionary.isLatticeBuilt(), type == 'L');

      // What is restored from the binary record stands in the same order.
      if (type == 'L') continue;
      Store other(saved.dictionary.maxLevel());
      std::stringbuf buffer;
      std::fstream stream;
      static_cast<std::ios&>(stream).rdbuf(&buffer);
      saved.dictionary.writeObject(stream);
      other.dictionary.readObject(stream);
      EXPECT_EQ(written(restored.dictionary), written(other.dictionary));
    }
  }
}

TEST(SetDictionaryXML, StopsAtAStreamThatFails) {
  Store small(1);
  fillSmall(small.dictionary);
  const std::string text = kSmall;
  for (std::size_t room = 0; room <= text.size(); ++room) {
    FailingBuffer buffer(room);
    std::ostream out(&buffer);
    small.dictionary.writeObjectXML(out);
    EXPECT_EQ(buffer.text(), text.substr(0, room));
    EXPECT_EQ(out.good(), room == text.size());
  }
}

}  // namespace
