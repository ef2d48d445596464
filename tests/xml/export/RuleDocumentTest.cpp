// The rule document: whole, and at its edges.

#include "korassoc/xml/export/RuleDocument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tests/support/FailingBuffer.h"
#include "tests/xml/export/DocumentReader.h"
#include "tests/xml/export/SmallModel.h"

namespace korassoc::detail {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

std::string ruleDocument(SetDictionary& dictionary, const std::vector<AssociationRule>& rules,
                         const RuleDocumentTerms& terms = {0.15, 0.5, false}) {
  std::ostringstream out;
  RuleDocument(dictionary, rules, terms).write(out);
  return out.str();
}

TEST(RuleDocument, OfASmallModelIsTheOneWrittenByHand) {
  SmallModel model;
  EXPECT_EQ(ruleDocument(model.dictionary, smallModelRules()), expectedDocument("rules.xml"));
}

TEST(RuleDocument, SaysThatItsRulesAreNotRedundant) {
  SmallModel model;
  std::string expected = expectedDocument("rules.xml");
  replaceOnce(expected, "Carma model for all association rules",
              "Carma model for nonredundant association rules");
  EXPECT_EQ(ruleDocument(model.dictionary, smallModelRules(), {0.15, 0.5, true}), expected);
}

TEST(RuleDocument, NamesAprioriWhenTheItemBitsAreKept) {
  SmallModel model;
  model.dictionary.setBitsetOff(false);
  std::string all = expectedDocument("rules.xml");
  replaceOnce(all, "CARMA model for association", "Apriori model for association");
  replaceOnce(all, "algorithmName=\"CARMA\"", "algorithmName=\"Apriori\"");
  replaceOnce(all, "Talvane Association Carma C++", "Talvane Association Apriori C++");
  std::string nonRedundant = all;
  replaceOnce(all, "Carma model for all association rules", "Apriori model for all association rules");
  replaceOnce(nonRedundant, "Carma model for all association rules",
              "Apriori model for nonredundant association rules");
  EXPECT_EQ(ruleDocument(model.dictionary, smallModelRules()), all);
  EXPECT_EQ(ruleDocument(model.dictionary, smallModelRules(), {0.15, 0.5, true}), nonRedundant);
}

TEST(RuleDocument, WithoutRulesHasNeitherItemsNorItemsets) {
  SmallModel model;
  const std::string document = ruleDocument(model.dictionary, {});
  for (const char* count : {"numberOfItems", "numberOfItemsets", "numberOfRules"}) {
    EXPECT_THAT(values(document, "AssociationModel", count), ElementsAre("0")) << count;
  }
  EXPECT_THAT(document, HasSubstr("<MiningField"));
  EXPECT_THAT(document, Not(HasSubstr("<Item")));
  EXPECT_THAT(document, Not(HasSubstr("<AssociationRule")));
}

TEST(RuleDocument, ListsTheTwoItemsetsOfARuleAndItsReverseOnce) {
  SmallModel model;
  const std::string document = ruleDocument(model.dictionary, {ruleOf({2, 5}, {8}), ruleOf({8}, {2, 5})});
  EXPECT_THAT(values(document, "Itemset", "id"), ElementsAre("1", "2"));
  EXPECT_THAT(values(document, "Itemset", "numberOfItems"), ElementsAre("1", "2"));
  EXPECT_THAT(values(document, "AssociationRule", "antecedent"), ElementsAre("2", "1"));
  EXPECT_THAT(values(document, "AssociationRule", "consequent"), ElementsAre("1", "2"));
}

TEST(RuleDocument, RefersToItemsByTheirPlaceAmongTheItemsOfTheRules) {
  SmallModel model;
  const std::string document = ruleDocument(model.dictionary, {ruleOf({7, 9}, {2})});
  EXPECT_THAT(values(document, "Item", "value"), ElementsAre("2", "7", "9"));
  EXPECT_THAT(values(document, "ItemRef", "itemRef"), ElementsAre("1", "2", "3"));
}

TEST(RuleDocument, TakesSupportsFromTheDictionaryAndGivesAnUnknownSetNone) {
  SmallModel model;
  const std::string document = ruleDocument(model.dictionary, {ruleOf({2, 8}, {77})});
  EXPECT_THAT(values(document, "Itemset", "support"), ElementsAre("0", "0.25"));
}

TEST(RuleDocument, WritesTheThresholdsAsTheyAreGiven) {
  SmallModel model;
  const std::string document = ruleDocument(model.dictionary, {}, {1e-5, 2.0 / 3.0, false});
  EXPECT_THAT(values(document, "AssociationModel", "minimumSupport"), ElementsAre("1e-05"));
  EXPECT_THAT(values(document, "AssociationModel", "minimumConfidence"), ElementsAre("0.666666666666667"));
}

TEST(RuleDocument, DoesNotWriteTheLift) {
  SmallModel model;
  EXPECT_THAT(values(ruleDocument(model.dictionary, smallModelRules()), "AssociationRule", "lift"),
              IsEmpty());
}

TEST(RuleDocument, StopsQuietlyWhenTheStreamFails) {
  SmallModel model;
  const std::vector<AssociationRule> rules = smallModelRules();
  const std::string whole = expectedDocument("rules.xml");
  for (std::size_t bytes = 0; bytes < whole.size(); bytes += 97) {
    FailingBuffer buffer(bytes);
    std::ostream out(&buffer);
    RuleDocument(model.dictionary, rules, {0.15, 0.5, false}).write(out);
    EXPECT_FALSE(out.good());
    EXPECT_EQ(buffer.text(), whole.substr(0, bytes));
  }
}

}  // namespace
}  // namespace korassoc::detail
