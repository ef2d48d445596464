#include "korassoc/dictionary/SetCounter.h"

#include <fstream>
#include <iostream>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/dictionary/DescriptorRecord.h"
#include "korassoc/xml/XMLObj.h"
#include "korassoc/xml/XMLReader.h"

using korassoc::detail::BinaryReader;
using korassoc::detail::BinaryWriter;

SetCounter::~SetCounter() = default;

int SetCounter::getTID() const { return TID; }

void SetCounter::setTID(int transaction) { TID = transaction; }

void SetCounter::display() const { Display(std::cout); }

void SetCounter::Display(std::ostream& out) const {
  out << " count=" << count << ", TID=" << TID << std::endl;
}

int SetCounter::getMaxMissed() const { return 0; }

void SetCounter::setMaxMissed(int) {}

void SetCounter::decrementMaxMissed() {}

std::uint64_t SetCounter::writeObject(std::fstream& stream) const {
  BinaryWriter record(stream);
  korassoc::detail::writeRecord(record, *this);
  return record.finish();
}

std::uint64_t SetCounter::readObject(std::fstream& stream) {
  BinaryReader record(stream);
  if (!record.tag("SC") || !korassoc::detail::readFields(record, *this)) {
    korassoc::detail::refuseRecord(korassoc::detail::kSetCounterRefused);
  }
  return record.count();
}

std::uint64_t SetCounter::writeObjectXML(std::ostream& out, int tabs) const {
  const KorAssocXML::XMLObj object("SetCounter", tabs);
  object.StartObj(out);
  object.WriteSubElement(out, count);
  object.WriteSubElement(out, TID);
  object.EndObj(out);
  return korassoc::detail::linesOf(*this);
}

std::uint64_t SetCounter::readObjectXML(std::ifstream& in) {
  if (!KorAssocXML::ParseStartObj(in, "SetCounter") || !korassoc::detail::readFieldsXML(in, *this)) {
    std::cout << korassoc::detail::kSetCounterRefused;
    return 0;
  }
  return korassoc::detail::linesOf(*this);
}
