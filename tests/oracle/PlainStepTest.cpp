#include "tests/oracle/PlainStep.h"

#include <gtest/gtest.h>

namespace oracle {
namespace {

PlainDictionary withEmptySet(int maxLengthSet) {
  PlainSettings settings;
  settings.maxLengthSet = maxLengthSet;
  PlainDictionary dictionary(settings);
  dictionary.addEmptySet();
  return dictionary;
}

TEST(PlainStep, AddsOnlySingleSetsAtLengthOne) {
  PlainDictionary dictionary = withEmptySet(1);
  PlainStep step(1, dictionary);
  for (int t = 0; t < 3; ++t) step.run({1, 2, 3}, 0.1, 0.1, 1.0);
  EXPECT_EQ(dictionary.totalSetCount(), 4);
  EXPECT_EQ(step.longestCandidate, 0);
  EXPECT_EQ(step.maxExt, 0);
}

TEST(PlainStep, StopsAtTheLongestLength) {
  PlainDictionary dictionary = withEmptySet(2);
  PlainStep step(2, dictionary);
  for (int t = 0; t < 6; ++t) step.run({1, 2, 3}, 0.01, 0.01, 1.0);
  EXPECT_EQ(dictionary.levelSize(2), 3);
  EXPECT_EQ(dictionary.highestLevel(), 2);
  EXPECT_EQ(step.maxExt, 3);  // pairs are not extended, so they stay off the work list
}

TEST(PlainStep, ExtendsNoSingleSetBelowTheThreshold) {
  PlainDictionary dictionary = withEmptySet(5);
  PlainStep step(5, dictionary);
  for (int t = 0; t < 3; ++t) step.run({1, 2}, 0.1, 0.1, 3.5);  // threshold 4
  EXPECT_EQ(dictionary.find({1, 2}), nullptr);
  step.run({1, 2}, 0.1, 0.1, 3.5);
  EXPECT_NE(dictionary.find({1, 2}), nullptr);
}

TEST(PlainStep, KeepsTheFigures) {
  PlainDictionary dictionary = withEmptySet(5);
  PlainStep step(5, dictionary);
  step.run({3, 1, 2}, 0, 0.5, 1.0);
  EXPECT_EQ(step.meanLength, 3.0);  // (1 * 0 + 3) / 1
  step.run({}, 0.5, 0.5, 1.0);
  EXPECT_EQ(step.meanLength, 3.0);  // (2 * 3 + 0) / 2
  step.run({7}, 0.5, 0.5, 1.0);
  EXPECT_DOUBLE_EQ(step.meanLength, 10.0 / 3);  // (3 * 3 + 1) / 3
  EXPECT_EQ(step.maxLength, 3);
  EXPECT_EQ(step.nTrans, 3);
  EXPECT_EQ(dictionary.emptySetCount(), 3);
}

}  // namespace
}  // namespace oracle
