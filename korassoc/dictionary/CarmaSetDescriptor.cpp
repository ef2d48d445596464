#include "korassoc/dictionary/CarmaSetDescriptor.h"

#include <iostream>
#include <limits>

CarmaSetDescriptor::~CarmaSetDescriptor() = default;

void CarmaSetDescriptor::display() const {
  std::cout << " count=" << count << ", TID=" << TID << ", max missed=" << maxMissed << std::endl;
}

int CarmaSetDescriptor::getMaxMissed() const { return maxMissed; }

void CarmaSetDescriptor::setMaxMissed(int occurrences) { maxMissed = occurrences; }

void CarmaSetDescriptor::decrementMaxMissed() {
  if (maxMissed > std::numeric_limits<int>::min()) --maxMissed;
}

int CarmaSetDescriptor::getCreationTID() const { return TID; }
