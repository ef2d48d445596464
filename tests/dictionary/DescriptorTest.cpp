// The three descriptors beside their records: what each knows, shows and copies.

#include <gtest/gtest.h>

#include <iostream>
#include <limits>
#include <memory>
#include <sstream>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/dictionary/SetCounter.h"
#include "tests/support/StreamCapture.h"

namespace {

std::string displayed(const SetCounter& descriptor) {
  const StreamCapture out(std::cout);
  descriptor.display();
  return out.text();
}

std::string displayedOn(const SetCounter& descriptor) {
  std::ostringstream out;
  descriptor.Display(out);
  return out.str();
}

TEST(Descriptors, DisplayToAStreamShowsCountAndTIDWhateverTheClass) {
  const CarmaSetDescriptor carma(3, 4, 5);
  EXPECT_EQ(displayed(carma), " count=3, TID=4, max missed=5\n");
  EXPECT_EQ(displayedOn(carma), " count=3, TID=4\n");
  LatticeSetDescriptor lattice(6, 7, 8);
  lattice.adjacent.Add(10);
  lattice.adjacent.Add(11);
  EXPECT_EQ(displayed(lattice), " count=6, TID=7, max missed=8, num of adjacent=2\n");
  EXPECT_EQ(displayedOn(lattice), " count=6, TID=7\n");
  const SetCounter counter(1, 2);
  EXPECT_EQ(displayed(counter), " count=1, TID=2\n");
  EXPECT_EQ(displayedOn(counter), " count=1, TID=2\n");
}

TEST(Descriptors, APlainCounterKnowsOfNothingMissed) {
  SetCounter counter(3, 4);
  EXPECT_EQ(counter.getMaxMissed(), 0);
  counter.setMaxMissed(5);
  EXPECT_EQ(counter.getMaxMissed(), 0);
  counter.decrementMaxMissed();
  EXPECT_EQ(counter.getMaxMissed(), 0);
  EXPECT_EQ(counter.count, 3);
  EXPECT_EQ(counter.getTID(), 4);
}

TEST(Descriptors, TheOthersKeepWhatTheyMayHaveMissed) {
  CarmaSetDescriptor carma(3, 4, 5);
  LatticeSetDescriptor lattice(3, 4, 5);
  for (SetCounter* descriptor : {static_cast<SetCounter*>(&carma), static_cast<SetCounter*>(&lattice)}) {
    EXPECT_EQ(descriptor->getMaxMissed(), 5);
    descriptor->setMaxMissed(1);
    descriptor->decrementMaxMissed();
    descriptor->decrementMaxMissed();
    EXPECT_EQ(descriptor->getMaxMissed(), -1);
    descriptor->setMaxMissed(std::numeric_limits<int>::min());
    descriptor->decrementMaxMissed();
    EXPECT_EQ(descriptor->getMaxMissed(), std::numeric_limits<int>::min());
  }
}

TEST(Descriptors, CreationTIDIsTheTID) {
  CarmaSetDescriptor carma(3, 4, 5);
  LatticeSetDescriptor lattice(3, 4, 5);
  carma.setTID(40);
  lattice.setTID(41);
  EXPECT_EQ(carma.getTID(), 40);
  EXPECT_EQ(carma.getCreationTID(), 40);
  EXPECT_EQ(lattice.getTID(), 41);
  EXPECT_EQ(lattice.getCreationTID(), 41);
}

TEST(Descriptors, ALatticeDescriptorMadeForNoSetCountsTheMostThereIs) {
  const LatticeSetDescriptor made;
  EXPECT_EQ(made.count, 2147483647);
  EXPECT_EQ(made.getTID(), 0);
  EXPECT_EQ(made.getMaxMissed(), 0);
  EXPECT_EQ(made.adjacent.count, 0);
  EXPECT_EQ(made.adjacent.capacity, 10);
  EXPECT_EQ(made.adjacent.increment, 10);
}

TEST(Descriptors, ALatticeDescriptorTakesOverWhatItsSourceKnows) {
  const LatticeSetDescriptor ofCounter(static_cast<const SetCounter&>(SetCounter(3, 4)));
  EXPECT_EQ(ofCounter.count, 3);
  EXPECT_EQ(ofCounter.getTID(), 4);
  EXPECT_EQ(ofCounter.getMaxMissed(), 0);
  EXPECT_EQ(ofCounter.adjacent.count, 0);
  const LatticeSetDescriptor ofCarma(static_cast<const SetCounter&>(CarmaSetDescriptor(3, 4, 5)));
  EXPECT_EQ(ofCarma.getMaxMissed(), 5);

  LatticeSetDescriptor source(6, 7, 8);
  for (const int item : {9, -2, 4}) source.adjacent.Add(item);
  const LatticeSetDescriptor copy(source);
  source.adjacent.Clear();
  EXPECT_EQ(copy.count, 6);
  EXPECT_EQ(copy.getTID(), 7);
  EXPECT_EQ(copy.getMaxMissed(), 8);
  ASSERT_EQ(copy.adjacent.count, 3);
  EXPECT_EQ(copy.adjacent.data[0], -2);
  EXPECT_EQ(copy.adjacent.data[1], 4);
  EXPECT_EQ(copy.adjacent.data[2], 9);
  EXPECT_EQ(copy.adjacent.capacity, 3);
  EXPECT_EQ(copy.adjacent.increment, 1);
}

TEST(Descriptors, ACountAtTheTopOfItsRangeStaysThere) {
  SetCounter counter(2147483646, 0);
  counter.increment();
  EXPECT_EQ(counter.count, 2147483647);
  counter.increment();
  EXPECT_EQ(counter.count, 2147483647);
}

}  // namespace
