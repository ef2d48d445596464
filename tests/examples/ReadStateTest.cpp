// The reader in examples/read_state.py knows the formats from their description alone. What it finds in a
// state must be what the engine that wrote the state knows.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

#include "korassoc/dictionary/HashTable.h"
#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "tests/support/EngineHost.h"
#include "tests/support/Shell.h"
#include "tests/support/TemporaryFile.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using Engine = CarmaAssociationAlgorithm;

enum class Format { Binary, Xml };

// What the script prints about a file, or what went wrong.
std::string readByScript(const std::string& path) {
  const TemporaryFile output;
  const std::string command = std::string("\"") + KORASSOC_PYTHON + "\" \"" + KORASSOC_SOURCE_DIR +
                              "/examples/read_state.py\" \"" + path + "\" > \"" + output.name() + "\" 2>&1";
  const int result = runInShell(command);
  return (result == 0 ? "" : "failed: ") + output.contents();
}

std::string read(Engine& engine, Format format) {
  const TemporaryFile file;
  if (format == Format::Binary) {
    std::fstream stream = file.writer();
    EXPECT_TRUE(engine.SaveState(stream).IsOK());
  } else {
    std::ofstream stream(file.name(), std::ios::binary);
    EXPECT_TRUE(engine.SaveStateXML(stream).IsOK());
  }
  return readByScript(file.name());
}

// The lines that the script has to print, from what the engine answers.
class Summary {
 public:
  Summary(const Engine& engine, const CarmaSettings& settings, Format format)
      : format_(format), dictionary_(*Access::dictionary(engine)) {
    describe(settings);
    describeDictionary(settings.GetDictionarySettings());
    line("setsRemoved", Access::setsRemoved(engine));
    line("transactionsSeen", engine.NumberOfTransactions());
    line("currentSupport", Access::currentSupport(engine));
    line("supportCount", Access::supportCount(engine));
    line("peakSets", Access::peakSets(engine));
    describe(*Access::ceilings(engine));
    describe(*Access::core(engine));
  }

  std::string text() const { return text_.str(); }

 private:
  // A double as the format keeps it.
  std::string number(double value) const {
    char digits[32];
    std::snprintf(digits, sizeof digits, format_ == Format::Binary ? "%.17g" : "%.15g", value);
    return digits;
  }
  void line(const char* name, int value) { text_ << name << ' ' << value << '\n'; }
  void line(const char* name, double value) { text_ << name << ' ' << number(value) << '\n'; }

  void describe(const CarmaSettings& settings) {
    line("MaxTranLength", settings.GetMaxTranLength());
    line("MaxLengthSet", settings.GetMaxLengthSet());
    const DictionarySettings& dictionary = settings.GetDictionarySettings();
    const std::string name = dictionary.GetSpillFileName();
    text_ << "SpillFileName ";
    if (format_ == Format::Binary) {
      text_ << name << '\n';
    } else {
      text_ << '(' << name.size() << " characters, not stored: 1)\n";
    }
    line("NumberOfFixedSets", dictionary.GetNumberOfFixedSets());
    line("InitialSetSize", dictionary.GetInitialSetSize());
    line("InitialBoundarySize", dictionary.GetInitialBoundarySize());
    line("InitialBoundarySearchSize", dictionary.GetInitialBoundarySearchSize());
    line("InitialHashtableSet23Size", dictionary.GetInitialHashtableSet23Size());
    line("InitialRulesSize", dictionary.GetInitialRulesSize());
    line("ReportFrequency", dictionary.GetReportFrequency());
    line("MaxInStoreSets", dictionary.GetMaxInStoreSets());
    line("LeaveInMainStoreCount", dictionary.GetLeaveInMainStoreCount());
    line("MaxNumSigmaChunks", settings.GetMaxNumSigmaChunks());
    line("ReportFreqPhaseI", settings.GetReportFreqPhaseI());
    line("ReportFreqPhaseII", settings.GetReportFreqPhaseII());
    line("RemoveSmallFreq", settings.GetRemoveSmallFreq());
  }

  void describeDictionary(const DictionarySettings& settings) {
    line("latticeBuilt", dictionary_.isLatticeBuilt() ? 1 : 0);
    line("maxLevel", dictionary_.maxLevel());
    line("spillLevel", 1);
    line("inStoreCount", dictionary_.inStoreCount());
    line("maxInStoreSets", dictionary_.maxInStoreSets());
    line("leaveInMainStoreCount", settings.GetLeaveInMainStoreCount());
    line("fixedSetCount", settings.GetNumberOfFixedSets());
    line("diskSpill", settings.GetDiskSpill() ? 1 : 0);
    line("bitsetOff", dictionary_.isBitsetOff() ? 1 : 0);
    for (int level = 0; level <= dictionary_.maxLevel(); ++level) {
      const HashTable& table = dictionary_.levelTable(level);
      text_ << "level " << level << " entries " << table.count() << '\n';
      table.forEach([&](const HashTable::Entry& entry) { describe(*entry.key, *entry.descriptor); });
    }
  }

  void describe(const ItemSet& set, const SetCounter& counter) {
    text_ << "set";
    for (int i = 0; i < set.length(); ++i) text_ << ' ' << set.getItemAt(i);
    text_ << " | count " << counter.count << " TID " << counter.TID;
    if (typeid(counter) != typeid(SetCounter)) text_ << " maxMissed " << counter.getMaxMissed();
    if (const auto* lattice = dynamic_cast<const LatticeSetDescriptor*>(&counter)) {
      text_ << " adjacent";
      for (int i = 0; i < lattice->adjacent.count; ++i) text_ << ' ' << lattice->adjacent.data[i];
    }
    text_ << '\n';
  }

  void describe(const CeilArray& ceilings) {
    line("average", ceilings.average());
    line("total", ceilings.total());
    for (int chunk = 0; chunk < ceilings.used(); ++chunk) {
      text_ << "chunk " << chunk << " count " << ceilings.count(chunk) << " ceiling "
            << number(ceilings.ceiling(chunk)) << '\n';
    }
  }

  void describe(const CarmaCore& core) {
    line("averageExtension", core.averageExtension());
    line("maxExtension", core.maxExtension());
    line("longestCandidate", core.longestCandidate());
    line("longAdded", core.longAdded());
  }

  Format format_;
  const SetDictionary& dictionary_;
  std::ostringstream text_;
};

// Equal, or the same number written another way.
bool sameWord(const std::string& one, const std::string& other) {
  if (one == other) return true;
  char* oneEnd = nullptr;
  char* otherEnd = nullptr;
  const double a = std::strtod(one.c_str(), &oneEnd);
  const double b = std::strtod(other.c_str(), &otherEnd);
  return !one.empty() && !other.empty() && *oneEnd == '\0' && *otherEnd == '\0' && a == b;
}

void expectSame(const std::string& found, const std::string& expected) {
  std::istringstream foundLines(found);
  std::istringstream expectedLines(expected);
  std::string foundLine;
  std::string expectedLine;
  int number = 0;
  while (std::getline(expectedLines, expectedLine)) {
    ++number;
    ASSERT_TRUE(std::getline(foundLines, foundLine)) << "ends in front of " << expectedLine;
    std::istringstream foundWords(foundLine);
    std::istringstream expectedWords(expectedLine);
    std::string foundWord;
    std::string expectedWord;
    while (expectedWords >> expectedWord) {
      ASSERT_TRUE(foundWords >> foundWord && sameWord(foundWord, expectedWord))
          << "line " << number << ": " << foundLine << " instead of " << expectedLine;
    }
    ASSERT_FALSE(foundWords >> foundWord) << "line " << number << ": " << foundLine;
  }
  EXPECT_FALSE(std::getline(foundLines, foundLine)) << foundLine;
  EXPECT_GT(number, 40);
}

void expectAgreement(EngineHost& host, Format format) {
  expectSame(read(*host.engine, format), Summary(*host.engine, *host.settings, format).text());
}

Transactions someTransactions(int count) {
  Transactions transactions;
  for (int i = 0; i < count; ++i) {
    std::vector<int> items = {1};
    if (i % 2 == 0) items.push_back(2);
    if (i % 3 != 0) items.push_back(3);
    if (i % 4 != 0) items.push_back(-2147483647 - 1);
    if (i % 5 == 0) items.push_back(40 + i);
    transactions.push_back(items);
  }
  return transactions;
}

double fallingSupport(int transaction) { return transaction % 7 < 4 ? 0.3 : 0.1 + 1.0 / (transaction + 10); }

}  // namespace

TEST(ReadState, FindsInAStateOfPhaseIWhatTheEngineKnows) {
  for (const int transactions : {0, 37}) {
    for (const Format format : {Format::Binary, Format::Xml}) {
      SCOPED_TRACE(transactions);
      EngineHost host(someTransactions(transactions));
      host.settings->GetDictionarySettings().SetSpillFileName("korassoc-unused-spill-file");
      host.settings->SetReportFreqPhaseII(123456789);
      host.support(fallingSupport);
      ASSERT_TRUE(host.engine->RunPhaseI(transactions + 1).IsOK());
      expectAgreement(host, format);
    }
  }
}

TEST(ReadState, FindsTheLinksOfALattice) {
  EngineHost host(someTransactions(30), 0.1);
  host.engine->RunPhaseI(30);
  ASSERT_TRUE(host.engine->RunPhaseII().IsOK());
  expectAgreement(host, Format::Xml);
  EXPECT_NE(read(*host.engine, Format::Xml).find(" TID 0 maxMissed 0 adjacent -2147483648 1 2 3"),
            std::string::npos);
}

TEST(ReadState, FindsThePlainCountersOfSetsThatCameBackFromTheDisk) {
  // {1} leaves for {3} and is counted on the disk from then on. The first pruning removes {2} and {3}, which
  // have less than about 0.3 times 10, and takes {1} back.
  const Transactions transactions = {{1}, {2}, {3}, {1}, {1}, {1}, {1}, {1}, {1}, {1}};
  EngineHost host(transactions, 0.3);
  DictionarySettings& settings = host.settings->GetDictionarySettings();
  settings.SetMaxInStoreSets(3);
  settings.SetLeaveInMainStoreCount(9);
  settings.SetDiskSpill(true);
  host.engine = std::make_unique<Engine>(host.settings.get(), &host.source);
  ASSERT_TRUE(host.engine->RunPhaseI(10).IsOK());
  for (const Format format : {Format::Binary, Format::Xml}) {
    expectAgreement(host, format);
    EXPECT_NE(read(*host.engine, format).find("\nset 1 | count 8 TID 0\n"), std::string::npos);
  }
}

TEST(ReadState, RefusesAStateThatEndsTooEarlyOrIsNone) {
  EngineHost host(someTransactions(12));
  host.engine->RunPhaseI(12);
  const TemporaryFile whole;
  std::fstream stream = whole.writer();
  ASSERT_TRUE(host.engine->SaveState(stream).IsOK());
  stream.close();
  const std::string state = whole.contents();
  const TemporaryFile cut(state.substr(0, state.size() - 1));
  EXPECT_NE(readByScript(cut.name()).find("the state ends too early"), std::string::npos);
  const TemporaryFile other("CSX" + state.substr(3));
  EXPECT_NE(readByScript(other.name()).find("failed: no AssociationAlgorithmSettings at byte 2"),
            std::string::npos);
}
