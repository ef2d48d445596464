#include "korassoc/dictionary/LatticeSetDescriptor.h"

#include <iostream>
#include <limits>

namespace {

int adjacentCount(const SetCounter& descriptor) {
  const auto* lattice = dynamic_cast<const LatticeSetDescriptor*>(&descriptor);
  return lattice != nullptr ? lattice->adjacent.count : 0;
}

}  // namespace

LatticeSetDescriptor::LatticeSetDescriptor() : LatticeSetDescriptor(kMaxCount, 0, 0) {}

LatticeSetDescriptor::LatticeSetDescriptor(int initialCount, int transaction, int missed, int room,
                                           int growth)
    : SetCounter(initialCount, transaction), maxMissed(missed), adjacent(room, growth) {}

LatticeSetDescriptor::LatticeSetDescriptor(const SetCounter& source)
    : SetCounter(source.count, source.getTID()),
      maxMissed(source.getMaxMissed()),
      adjacent(adjacentCount(source), 1) {
  if (const auto* lattice = dynamic_cast<const LatticeSetDescriptor*>(&source)) {
    for (int i = 0; i < lattice->adjacent.count; ++i) adjacent.Add(lattice->adjacent.data[i]);
  }
}

LatticeSetDescriptor::LatticeSetDescriptor(const LatticeSetDescriptor& source)
    : LatticeSetDescriptor(static_cast<const SetCounter&>(source)) {}

LatticeSetDescriptor::~LatticeSetDescriptor() = default;

void LatticeSetDescriptor::display() const {
  std::cout << " count=" << count << ", TID=" << TID << ", max missed=" << maxMissed
            << ", num of adjacent=" << adjacent.count << std::endl;
}

int LatticeSetDescriptor::getMaxMissed() const { return maxMissed; }

void LatticeSetDescriptor::setMaxMissed(int occurrences) { maxMissed = occurrences; }

void LatticeSetDescriptor::decrementMaxMissed() {
  if (maxMissed > std::numeric_limits<int>::min()) --maxMissed;
}

int LatticeSetDescriptor::getCreationTID() const { return TID; }
