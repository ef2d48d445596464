#include "korassoc/dictionary/LatticeSetDescriptor.h"

#include <fstream>
#include <iostream>
#include <limits>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/dictionary/DescriptorRecord.h"
#include "korassoc/xml/XMLObj.h"
#include "korassoc/xml/XMLReader.h"

using korassoc::detail::BinaryReader;
using korassoc::detail::BinaryWriter;

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

std::uint64_t LatticeSetDescriptor::writeObject(std::fstream& stream) const {
  BinaryWriter record(stream);
  korassoc::detail::writeRecord(record, *this);
  return record.finish();
}

std::uint64_t LatticeSetDescriptor::readObject(std::fstream& stream) {
  BinaryReader record(stream);
  if (!record.tag("LSD") || !korassoc::detail::readFields(record, *this)) {
    korassoc::detail::refuseRecord(korassoc::detail::kLatticeDescriptorRefused);
  }
  return record.count();
}

std::uint64_t LatticeSetDescriptor::writeObjectXML(std::ostream& out, int tabs) const {
  const KorAssocXML::XMLObj object("LatticeSetDescriptor", tabs);
  object.StartObj(out);
  object.WriteSubElement(out, count);
  object.WriteSubElement(out, TID);
  object.WriteSubElement(out, maxMissed);
  object.WriteSubElement(out, adjacent.count);
  for (int i = 0; i < adjacent.count && out.good(); ++i) object.WriteSubElement(out, adjacent.data[i]);
  object.EndObj(out);
  return korassoc::detail::linesOf(*this);
}

std::uint64_t LatticeSetDescriptor::readObjectXML(std::ifstream& in) {
  if (!KorAssocXML::ParseStartObj(in, "LatticeSetDescriptor")) {
    std::cout << korassoc::detail::kLatticeDescriptorRefused;
    return 0;
  }
  if (!korassoc::detail::readFieldsXML(in, *this)) {
    std::cout << korassoc::detail::kSetCounterRefused;
    return 0;
  }
  return korassoc::detail::linesOf(*this);
}

int LatticeSetDescriptor::getCreationTID() const { return TID; }
