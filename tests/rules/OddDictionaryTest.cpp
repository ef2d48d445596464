// Queries to dictionaries that no run of the engine leaves behind.

#include <gtest/gtest.h>

#include <vector>

#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"
#include "tests/support/Hosts.h"
#include "tests/support/TestLattice.h"

namespace {

TEST(QueriesToADictionary, WhoseOnlyItemsAreOnDiskFindNothing) {
  DictionarySettings settings;
  settings.SetMaxInStoreSets(1);
  settings.SetDiskSpill(true);
  SetDictionary dictionary(5, &settings, true);
  dictionary.addEmptySet(new CarmaSetDescriptor(10, 0, 0));
  const int item = 1;
  CarmaSetDescriptor* descriptor = new CarmaSetDescriptor(5, 1, 0);
  ASSERT_EQ(dictionary.addSet(&item, 1, descriptor), 0);
  ASSERT_EQ(dictionary.getHighestLevel(), 1);
  ASSERT_EQ(dictionary.levelTable(1).count(), 0);

  std::vector<AssociationRule> rules;
  EXPECT_TRUE(dictionary.createRules(0.1, 0.1, rules, nullptr, true).IsOK());
  EXPECT_TRUE(rules.empty());
  std::vector<ConsequentDescriptor> items;
  EXPECT_TRUE(dictionary.createConsequents(nullptr, -1, items).IsOK());
  EXPECT_TRUE(items.empty());
  EXPECT_EQ(dictionary.findSupport(ItemSet(1), 1), -1.0);
}

TEST(QueriesToADictionary, WithASetWithoutDescriptorEndTheCreationThatMeetsIt) {
  TestLattice lattice({{{}, 10}, {{1}, 6}, {{2}, 5}, {{1, 2}, 4}});
  const int item = 3;
  ASSERT_EQ(lattice.dictionary.addSet(&item, 1, nullptr), 0);
  std::vector<AssociationRule> rules;
  EXPECT_EQ(shortForm(lattice.dictionary.createRules(0.0, 0.5, rules, nullptr, true)), "E1");
  EXPECT_TRUE(rules.empty());
  EXPECT_FALSE(lattice.dictionary.rulesFlag());  // nobody asked to stop
  EXPECT_TRUE(lattice.dictionary.createRules(0.1, 0.5, rules, nullptr, false).IsOK());
  EXPECT_EQ(rules.size(), 4U);  // a, b, a>b, b>a
}

TEST(QueriesToADictionary, WithoutAnEmptySetHaveNoTransactions) {
  DictionarySettings settings;
  SetDictionary dictionary(5, &settings, true);
  const int item = 1;
  dictionary.addSet(&item, 1, new CarmaSetDescriptor(5, 1, 0));
  std::vector<AssociationRule> rules;
  EXPECT_TRUE(dictionary.createRules(0.1, 0.1, rules, nullptr, true).IsOK());
  EXPECT_TRUE(rules.empty());  // the only antecedent of {1} is not stored
  EXPECT_EQ(dictionary.findSupport(ItemSet(), 1), -1.0);
}

}  // namespace
