#include "korassoc/rules/AssociationRule.h"

#include <gtest/gtest.h>

#include <utility>

#include "tests/support/TestLattice.h"

namespace {

AssociationRule sample() { return AssociationRule(itemSet({1, 2}), itemSet({3}), 0.25, 0.5, 1.5); }

TEST(AssociationRule, CopiesTheSetsItIsGiven) {
  ItemSet antecedent = itemSet({1, 2});
  ItemSet consequent = itemSet({3});
  const AssociationRule rule(antecedent, consequent, 0.25, 0.5, 1.5);
  antecedent.updateItemSet(9, 1);
  consequent.addItem(4);
  EXPECT_EQ(rule.getAntecedent(), itemSet({1, 2}));
  EXPECT_EQ(rule.getConsequent(), itemSet({3}));
  EXPECT_EQ(rule.getSupport(), 0.25);
  EXPECT_EQ(rule.getConfidence(), 0.5);
  EXPECT_EQ(rule.getLift(), 1.5);
}

// Of more items than a set keeps inside itself.
TEST(AssociationRule, TakesOverSetsThatAreGivenUp) {
  ItemSet antecedent = itemSet({1, 2, 3, 4, 5});
  const int* items = antecedent.getTheArray();
  const AssociationRule rule(std::move(antecedent), itemSet({6}), 0, 0, 0);
  EXPECT_EQ(rule.getAntecedent().getTheArray(), items);
}

TEST(AssociationRule, ACopyOwnsItsSets) {
  const AssociationRule rule = sample();
  const AssociationRule copy(rule);
  EXPECT_NE(copy.getAntecedent().getTheArray(), rule.getAntecedent().getTheArray());
  EXPECT_EQ(copy.getAntecedent(), rule.getAntecedent());
  EXPECT_EQ(copy.getConsequent(), rule.getConsequent());
  EXPECT_EQ(copy.getSupport(), 0.25);
  EXPECT_EQ(copy.getConfidence(), 0.5);
  EXPECT_EQ(copy.getLift(), 1.5);
}

TEST(AssociationRule, AssignmentReplacesSetsAndFigures) {
  const AssociationRule rule = sample();
  AssociationRule longer(itemSet({4, 5, 6}), itemSet({7, 8}), 1, 1, 1);
  AssociationRule sameSize(itemSet({4, 5}), itemSet({7}), 1, 1, 1);
  longer = rule;
  sameSize = rule;
  for (const AssociationRule* target : {&longer, &sameSize}) {
    EXPECT_EQ(target->getAntecedent(), itemSet({1, 2}));
    EXPECT_EQ(target->getConsequent(), itemSet({3}));
    EXPECT_EQ(target->getSupport(), 0.25);
    EXPECT_EQ(target->getConfidence(), 0.5);
    EXPECT_EQ(target->getLift(), 1.5);
    EXPECT_NE(target->getAntecedent().getTheArray(), rule.getAntecedent().getTheArray());
  }
}

TEST(AssociationRule, AssignmentToItselfChangesNothing) {
  AssociationRule rule = sample();
  const AssociationRule& same = rule;
  rule = same;
  EXPECT_EQ(rule.getAntecedent(), itemSet({1, 2}));
  EXPECT_EQ(rule.getConsequent(), itemSet({3}));
}

TEST(AssociationRule, HoldsAnEmptyAntecedent) {
  const AssociationRule rule(ItemSet(), itemSet({3}), 0.5, 0.5, 1.0);
  const AssociationRule copy = rule;
  EXPECT_EQ(copy.getAntecedent().length(), 0);
}

}  // namespace
