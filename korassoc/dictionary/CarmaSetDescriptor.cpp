#include "korassoc/dictionary/CarmaSetDescriptor.h"

#include <fstream>
#include <iostream>
#include <limits>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/dictionary/DescriptorRecord.h"
#include "korassoc/xml/XMLObj.h"
#include "korassoc/xml/XMLReader.h"

using korassoc::detail::BinaryReader;
using korassoc::detail::BinaryWriter;

CarmaSetDescriptor::~CarmaSetDescriptor() = default;

void CarmaSetDescriptor::display() const {
  std::cout << " count=" << count << ", TID=" << TID << ", max missed=" << maxMissed << std::endl;
}

int CarmaSetDescriptor::getMaxMissed() const { return maxMissed; }

void CarmaSetDescriptor::setMaxMissed(int occurrences) { maxMissed = occurrences; }

void CarmaSetDescriptor::decrementMaxMissed() {
  if (maxMissed > std::numeric_limits<int>::min()) --maxMissed;
}

std::uint64_t CarmaSetDescriptor::writeObject(std::fstream& stream) const {
  BinaryWriter record(stream);
  korassoc::detail::writeRecord(record, *this);
  return record.finish();
}

std::uint64_t CarmaSetDescriptor::readObject(std::fstream& stream) {
  BinaryReader record(stream);
  if (!record.tag("CSD") || !korassoc::detail::readFields(record, *this)) {
    korassoc::detail::refuseRecord(korassoc::detail::kCarmaDescriptorRefused);
  }
  return record.count();
}

std::uint64_t CarmaSetDescriptor::writeObjectXML(std::ostream& out, int tabs) const {
  const KorAssocXML::XMLObj object("CarmaSetDescriptor", tabs);
  object.StartObj(out);
  object.WriteSubElement(out, count);
  object.WriteSubElement(out, TID);
  object.WriteSubElement(out, maxMissed);
  object.EndObj(out);
  return korassoc::detail::linesOf(*this);
}

std::uint64_t CarmaSetDescriptor::readObjectXML(std::ifstream& in) {
  if (!KorAssocXML::ParseStartObj(in, "CarmaSetDescriptor") || !korassoc::detail::readFieldsXML(in, *this)) {
    std::cout << korassoc::detail::kSetCounterRefused;
    return 0;
  }
  return korassoc::detail::linesOf(*this);
}

int CarmaSetDescriptor::getCreationTID() const { return TID; }
