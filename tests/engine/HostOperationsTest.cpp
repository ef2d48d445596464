// That the table of operations names every public operation of the engine and of its lattice.

#include "tests/support/HostOperations.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

// The names that a class declares in public, one member to a line, two blanks in front.
std::set<std::string> publicOperations(const std::string& header) {
  std::ifstream in(KORASSOC_SOURCE_DIR "/korassoc/" + header);
  const std::regex declaration("^  (?:[^ /(][^(]*[ *&])?([A-Za-z]\\w*)\\(.*");
  std::set<std::string> names;
  bool isPublic = false;
  for (std::string line; std::getline(in, line);) {
    if (line == " public:") isPublic = true;
    if (line == " private:") isPublic = false;
    std::smatch match;
    if (isPublic && std::regex_match(line, match, declaration)) names.insert(match[1]);
  }
  return names;
}

}  // namespace

TEST(HostOperations, AreAllThatThereAre) {
  std::set<std::string> called;
  for (const HostOperation& operation : hostOperations())
    called.insert(operation.name.substr(0, operation.name.find_first_of(" ,")));
  // Constructors, and what the table calls in one: plain readers, and what holds and releases.
  for (const char* name : {"CarmaAssociationAlgorithm",
                           "SetDictionary",
                           "storedLevels",
                           "maxLevel",
                           "inStoreCount",
                           "maxInStoreSets",
                           "setsGivenUp",
                           "setsSpilled",
                           "queueTopCount",
                           "heldEvicted",
                           "isLatticeBuilt",
                           "isBrokenOff",
                           "isBitsetOff",
                           "isRestartFailed",
                           "rulesFlag",
                           "isPacked",
                           "isClosed",
                           "isHeld",
                           "isInUse",
                           "spillStore",
                           "smallQueue",
                           "packedLevel",
                           "emptySet",
                           "settings",
                           "currentStatus",
                           "isCurrent",
                           "releaseEvicted",
                           "releaseEvictedBut"})
    called.insert(name);
  std::ostringstream missing;
  std::size_t found = 0;
  for (const char* header :
       {"engine/CarmaAssociationAlgorithm.h", "dictionary/SemiLattice.h", "dictionary/SetDictionary.h"}) {
    for (const std::string& name : publicOperations(header)) {
      ++found;
      if (called.count(name) == 0) missing << ' ' << name;
    }
  }
  EXPECT_GT(found, 90U);
  EXPECT_EQ(missing.str(), "") << "to be added to tests/support/HostOperations.cpp";
}
