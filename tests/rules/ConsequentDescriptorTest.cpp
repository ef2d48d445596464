#include "korassoc/rules/ConsequentDescriptor.h"

#include <gtest/gtest.h>

namespace {

TEST(ConsequentDescriptor, TakesSupportBeforeConfidence) {
  const ConsequentDescriptor consequent(7, 0.25, 0.5, 1.5);
  EXPECT_EQ(consequent.getItem(), 7);
  EXPECT_EQ(consequent.getSupport(), 0.25);
  EXPECT_EQ(consequent.getConfidence(), 0.5);
  EXPECT_EQ(consequent.getLift(), 1.5);
}

TEST(ConsequentDescriptor, EachSetterChangesItsFieldAlone) {
  ConsequentDescriptor consequent(7, 0.25, 0.5, 1.5);
  consequent.setItem(-8);
  consequent.setSupport(0.1);
  EXPECT_EQ(consequent.getConfidence(), 0.5);
  consequent.setConfidence(0.2);
  EXPECT_EQ(consequent.getSupport(), 0.1);
  EXPECT_EQ(consequent.getLift(), 1.5);
  consequent.setLift(0.3);
  EXPECT_EQ(consequent.getItem(), -8);
  EXPECT_EQ(consequent.getConfidence(), 0.2);
  EXPECT_EQ(consequent.getLift(), 0.3);
}

TEST(ConsequentDescriptor, AssignmentCopiesEveryField) {
  const ConsequentDescriptor source(7, 0.25, 0.5, 1.5);
  ConsequentDescriptor target(1, 0, 0, 0);
  target = source;
  EXPECT_EQ(target.getItem(), 7);
  EXPECT_EQ(target.getSupport(), 0.25);
  EXPECT_EQ(target.getConfidence(), 0.5);
  EXPECT_EQ(target.getLift(), 1.5);
}

}  // namespace
