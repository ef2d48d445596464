// The corners of the phase I step: repeats, the shortest lengths, thresholds, sets that are just being met.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaCore.h"
#include "korassoc/engine/DictionarySettings.h"
#include "tests/support/DictionaryComparison.h"
#include "tests/support/VectorTransactions.h"

namespace {

class CarmaCoreEdge : public testing::Test {
 protected:
  void start(int maxLengthSet, int maxTranLength = 100) {
    dictionary = std::make_unique<SetDictionary>(maxLengthSet, &settings, true);
    dictionary->addEmptySet(new CarmaSetDescriptor(0, 0, 0));
    core = std::make_unique<CarmaCore>(maxLengthSet, maxTranLength);
  }
  // Letters as items, a = 1; a support of a millionth, so that every candidate may still be frequent.
  void step(const std::string& letters, double supportCount = 1.0) {
    std::vector<int> items;
    for (char letter : letters) items.push_back(letter - 'a' + 1);
    ASSERT_TRUE(core->step(*dictionary, VectorTransaction(items), 1e-6, 1e-6, supportCount).IsOK());
  }

  DictionarySettings settings;
  std::unique_ptr<SetDictionary> dictionary;
  std::unique_ptr<CarmaCore> core;
};

TEST_F(CarmaCoreEdge, EachRepeatIsAPositionOfItsOwn) {
  start(5);
  step("baa");  // the first a is stored, the second counts it; b is stored
  EXPECT_EQ(stateText(*dictionary), "a 2@1+0, b 1@1+0");
  step("aab");  // aa: missed at most min(4 - 1, 4 - 1, 0 + 1) = 1; ab: stored by the first a, counted by the
                // second
  EXPECT_EQ(stateText(*dictionary), "a 4@1+0, b 2@1+0, aa 1@2+1, ab 2@2+1");
  EXPECT_EQ(dictionary->getEmptySetCount(), 2);
}

TEST_F(CarmaCoreEdge, MaxLengthOneStoresOneItemSetsOnly) {
  start(1);
  for (int t = 0; t < 5; ++t) step("abc");
  EXPECT_EQ(stateText(*dictionary), "a 5@1+0, b 5@1+0, c 5@1+0");
  EXPECT_EQ(core->maxExtension(), 0);
  EXPECT_EQ(core->longestCandidate(), 0);
  EXPECT_EQ(core->longAdded(), 1);
}

TEST_F(CarmaCoreEdge, EveryStoredItemIsExtendedBeforeTheFirstPruning) {
  start(5);
  step("abcd");
  step("abcd");  // counts of 2: all six pairs
  EXPECT_EQ(dictionary->getLevelSize(2), 6);
}

TEST_F(CarmaCoreEdge, ItemsBelowTheThresholdAreNotExtended) {
  start(5);
  step("abc");
  step("ab", 2.5);  // the threshold is 3
  step("ab", 2.5);
  EXPECT_EQ(stateText(*dictionary), "a 3@1+0, b 3@1+0, c 1@1+0, ab 1@3+1");
  step("abc", 2.5);  // c has 2
  EXPECT_EQ(dictionary->getLevelSize(2), 1);
}

TEST_F(CarmaCoreEdge, ItemThatIsJustBeingMetFormsNoPair) {
  start(5);
  step("a");
  step("ab");  // b is new: only stored
  EXPECT_EQ(stateText(*dictionary), "a 2@1+0, b 1@2+0");
  step("bac");  // c is new
  EXPECT_EQ(stateText(*dictionary), "a 3@1+0, b 2@2+0, c 1@3+0, ab 1@3+1");
}

TEST_F(CarmaCoreEdge, TransactionLongerThanPreparedForIsHandledInFull) {
  start(2, 2);
  step("abcde");
  step("abcde");
  EXPECT_EQ(dictionary->getLevelSize(1), 5);
  EXPECT_EQ(dictionary->getLevelSize(2), 10);
}

// The step passes over sets whose subsets are not stored only where none of these can be stored.
TEST_F(CarmaCoreEdge, StoredSetIsCountedWithoutItsSubsetsBeingStored) {
  start(5);
  step("abc");
  for (const std::vector<int>& set : {std::vector<int>{1, 2}, std::vector<int>{1, 2, 3}}) {
    ASSERT_EQ(dictionary->addSet(set.data(), static_cast<int>(set.size()), new CarmaSetDescriptor(1, 1, 0)),
              0);
  }
  EXPECT_FALSE(dictionary->isClosed());
  step("abc");
  EXPECT_EQ(dictionary->getCount(std::make_unique<ItemSet>(std::vector<int>{1, 2, 3}.data(), 3).get()), 2);
}

TEST_F(CarmaCoreEdge, DictionaryIsClosedUntilSomethingElseAddsOrTakesOut) {
  start(5);
  EXPECT_TRUE(dictionary->isClosed());
  for (int t = 0; t < 4; ++t) step("abcd");
  dictionary->removeSmallSets(2);
  EXPECT_TRUE(dictionary->isClosed());
  dictionary->removeSmall(1, 2);
  EXPECT_FALSE(dictionary->isClosed());

  start(5);
  step("aa");
  EXPECT_FALSE(dictionary->isClosed());
}

TEST_F(CarmaCoreEdge, EmptyTransactionCountsTheEmptySet) {
  start(3);
  step("");
  VectorTransaction negative({1, 2});
  negative.length = -4;
  EXPECT_TRUE(core->step(*dictionary, negative, 0.5, 0.5, 1.0).IsOK());
  EXPECT_EQ(dictionary->getEmptySetCount(), 2);
  EXPECT_EQ(dictionary->getTotalSetCount(), 1);
  EXPECT_EQ(core->transactions(), 2);
}

TEST_F(CarmaCoreEdge, RefusedSetEndsTheTransactionButKeepsWhatWasCounted) {
  settings.SetMaxInStoreSets(3);
  start(3);
  const KorAssoc::KorStatus status = core->step(*dictionary, VectorTransaction({1, 2, 3, 1}), 0.5, 0.5, 1.0);
  EXPECT_EQ(status.GetCode(), 3);
  EXPECT_LT(status.GetSeverity(), 0);
  EXPECT_EQ(stateText(*dictionary), "a 2@1+0, b 1@1+0");
  EXPECT_EQ(core->transactions(), 1);
}

}  // namespace
