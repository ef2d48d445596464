// The lattice document: whole, and at its edges.

#include "korassoc/xml/export/LatticeDocument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tests/support/FailingBuffer.h"
#include "tests/xml/export/DocumentReader.h"
#include "tests/xml/export/SmallModel.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

std::string latticeDocument(SetDictionary& dictionary, double minSupport = 0.05) {
  std::ostringstream out;
  EXPECT_TRUE(dictionary.exportLatticeXML(out, minSupport).IsOK());
  return out.str();
}

TEST(LatticeDocument, OfASmallModelIsTheOneWrittenByHand) {
  SmallModel model;
  EXPECT_EQ(latticeDocument(model.dictionary), expectedDocument("lattice.xml"));
}

TEST(LatticeDocument, IsReachedThroughTheInterface) {
  SmallModel model;
  SemiLattice& lattice = model.dictionary;
  std::ostringstream out;
  EXPECT_TRUE(lattice.exportLatticeXML(out, 0.05).IsOK());
  EXPECT_EQ(out.str(), expectedDocument("lattice.xml"));
}

TEST(LatticeDocument, NamesAprioriWhenTheItemBitsAreKept) {
  SmallModel model;
  model.dictionary.setBitsetOff(false);
  std::string expected = expectedDocument("lattice.xml");
  replaceOnce(expected, "Lattice from Carma model", "Lattice from Apriori model");
  replaceOnce(expected, "Talvane Association Carma C++", "Talvane Association Apriori C++");
  EXPECT_EQ(latticeDocument(model.dictionary), expected);
}

TEST(LatticeDocument, WritesTheSupportThatItIsGiven) {
  SmallModel model;
  const std::string document = latticeDocument(model.dictionary, 1.0 / 3.0);
  EXPECT_THAT(values(document, "AssocInputStats", "minimumSupport"), ElementsAre("0.333333333333333"));
}

TEST(LatticeDocument, NumbersItsSetsAcrossTheLevels) {
  SmallModel model;
  const std::string document = latticeDocument(model.dictionary);
  EXPECT_THAT(values(document, "LatticeLevel", "numberOfSets"), ElementsAre("1", "4", "3", "1", "0"));
  EXPECT_THAT(values(document, "Itemset", "id"), ElementsAre("1", "2", "3", "4", "5", "6", "7", "8", "9"));
}

TEST(LatticeDocument, WithoutTransactionsWritesTheCountsAsSupports) {
  DictionarySettings settings;
  SetDictionary dictionary(2, &settings, true);
  dictionary.addEmptySet(new CarmaSetDescriptor(0, 0, 0));
  const int item = 7;
  dictionary.addSet(&item, 1, new CarmaSetDescriptor(3, 1, 0));
  dictionary.buildLattice();
  const std::string document = latticeDocument(dictionary);
  EXPECT_THAT(values(document, "AssocInputStats", "numberOfTransactions"), ElementsAre("1"));
  EXPECT_THAT(values(document, "Itemset", "count"), ElementsAre("0", "3"));
  EXPECT_THAT(values(document, "Itemset", "support"), ElementsAre("0", "3"));
}

TEST(LatticeDocument, OfAnEmptyDictionaryHasLevelsWithoutSets) {
  DictionarySettings settings;
  SetDictionary dictionary(1, &settings, true);
  const std::string document = latticeDocument(dictionary);
  EXPECT_THAT(values(document, "LatticeLevel", "numberOfSets"), ElementsAre("0", "0"));
  EXPECT_THAT(values(document, "AssocInputStats", "numberOfItemsets"), ElementsAre("1"));
  EXPECT_THAT(document, Not(HasSubstr("<Item")));
}

TEST(LatticeDocument, OfSetsThatAreNotLinkedYetHasEmptyAdjacentLists) {
  DictionarySettings settings;
  SetDictionary dictionary(1, &settings, true);
  dictionary.addEmptySet(new CarmaSetDescriptor(4, 0, 0));
  const int item = 7;
  dictionary.addSet(&item, 1, new CarmaSetDescriptor(3, 1, 0));
  EXPECT_THAT(values(latticeDocument(dictionary), "AdjacentList", "numberOfItems"), ElementsAre("0", "0"));
}

TEST(LatticeDocument, StopsQuietlyWhenTheStreamFails) {
  SmallModel model;
  const std::string whole = expectedDocument("lattice.xml");
  for (std::size_t bytes = 0; bytes < whole.size(); bytes += 97) {
    FailingBuffer buffer(bytes);
    std::ostream out(&buffer);
    EXPECT_TRUE(model.dictionary.exportLatticeXML(out, 0.05).IsOK());
    EXPECT_FALSE(out.good());
    EXPECT_EQ(buffer.text(), whole.substr(0, bytes));
  }
}

}  // namespace
