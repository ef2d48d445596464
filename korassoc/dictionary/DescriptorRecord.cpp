#include "korassoc/dictionary/DescriptorRecord.h"

#include <algorithm>
#include <iostream>
#include <span>
#include <string>
#include <typeinfo>

#include "korassoc/engine/Exceptions.h"
#include "korassoc/xml/XMLReader.h"

using KorAssocXML::ParseEndObj;
using KorAssocXML::ParseValue;

namespace korassoc::detail {
namespace {

std::span<const std::int32_t> adjacentOf(const LatticeSetDescriptor& descriptor) {
  return {descriptor.adjacent.data, static_cast<std::size_t>(descriptor.adjacent.count)};
}

// Takes over the items, in the ascending order of the links.
void setAdjacent(LatticeSetDescriptor& descriptor, std::vector<int>& items) {
  if (!std::is_sorted(items.begin(), items.end())) std::sort(items.begin(), items.end());
  OrderedArray& adjacent = descriptor.adjacent;
  adjacent.Clear();
  adjacent.SetCapacity(static_cast<int>(items.size()));
  std::copy(items.begin(), items.end(), adjacent.data);
  adjacent.count = static_cast<int>(items.size());
}

template <class Descriptor>
std::unique_ptr<Descriptor> makeBlank() {
  return std::make_unique<Descriptor>();
}

template <>
std::unique_ptr<LatticeSetDescriptor> makeBlank() {
  return std::make_unique<LatticeSetDescriptor>(0, 0, 0, 0);  // the links that are read bring their room
}

std::unique_ptr<SetCounter> refused(std::string_view line) {
  std::cout << line;
  return nullptr;
}

template <class Descriptor>
std::unique_ptr<SetCounter> readBody(BinaryReader& record, std::string_view refusal) {
  auto descriptor = makeBlank<Descriptor>();
  if (!readFields(record, *descriptor)) return refused(refusal);
  return descriptor;
}

template <class Descriptor>
std::unique_ptr<SetCounter> readBodyXML(std::ifstream& in) {
  auto descriptor = makeBlank<Descriptor>();
  if (!readFieldsXML(in, *descriptor)) return refused(kSetCounterRefused);
  return descriptor;
}

std::unique_ptr<SetCounter> readCarmaOrPlain(BinaryReader& record) {
  std::string found;
  if (record.tag("SC", &found)) return readBody<SetCounter>(record, kCarmaDescriptorRefused);
  if (found != "CS" || !record.tag("D")) return refused(kCarmaDescriptorRefused);
  return readBody<CarmaSetDescriptor>(record, kCarmaDescriptorRefused);
}

std::unique_ptr<SetCounter> readCarmaOrPlainXML(std::ifstream& in) {
  switch (parseStartObj(in, {"CarmaSetDescriptor", "SetCounter"})) {
    case 0:
      return readBodyXML<CarmaSetDescriptor>(in);
    case 1:
      return readBodyXML<SetCounter>(in);
    default:
      return refused(kSetCounterRefused);
  }
}

std::unique_ptr<SetCounter> readAnyXML(std::ifstream& in) {
  switch (parseStartObj(in, {"LatticeSetDescriptor", "CarmaSetDescriptor", "SetCounter"})) {
    case 0:
      return readBodyXML<LatticeSetDescriptor>(in);
    case 1:
      return readBodyXML<CarmaSetDescriptor>(in);
    case 2:
      return readBodyXML<SetCounter>(in);
    default:
      return refused(kLatticeDescriptorRefused);
  }
}

std::unique_ptr<SetCounter> refuseType() {
  return refused("Error in ISCPair::readObject: unknown descType\n");
}

std::unique_ptr<SetCounter> readTypeXML(std::ifstream& in, char type) {
  switch (type) {
    case kPlainCounters:
      if (parseStartObj(in, {"SetCounter"}) != 0) return refused(kSetCounterRefused);
      return readBodyXML<SetCounter>(in);
    case kCarmaDescriptors:
      return readCarmaOrPlainXML(in);
    case kLatticeDescriptors:
      return readAnyXML(in);
    default:
      return refuseType();
  }
}

}  // namespace

std::uint64_t writeDescriptor(std::fstream& stream, BinaryWriter& record, const SetCounter& descriptor) {
  const std::type_info& type = typeid(descriptor);
  if (type == typeid(CarmaSetDescriptor)) {
    writeRecord(record, static_cast<const CarmaSetDescriptor&>(descriptor));
  } else if (type == typeid(LatticeSetDescriptor)) {
    writeRecord(record, static_cast<const LatticeSetDescriptor&>(descriptor));
  } else if (type == typeid(SetCounter)) {
    writeRecord(record, descriptor);
  } else {
    record.finish();
    return descriptor.writeObject(stream);
  }
  return 0;
}

std::unique_ptr<SetCounter> readDescriptor(BinaryReader& record, char type) {
  switch (type) {
    case kPlainCounters:
      if (!record.tag("SC")) return refused(kSetCounterRefused);
      return readBody<SetCounter>(record, kSetCounterRefused);
    case kCarmaDescriptors:
      return readCarmaOrPlain(record);
    case kLatticeDescriptors:
      if (!record.tag("LSD")) return refused(kLatticeDescriptorRefused);
      return readBody<LatticeSetDescriptor>(record, kLatticeDescriptorRefused);
    default:
      return refuseType();
  }
}

std::unique_ptr<SetCounter> readDescriptorXML(std::ifstream& in, char type, std::uint64_t& lines) {
  std::unique_ptr<SetCounter> descriptor = readTypeXML(in, type);
  if (descriptor == nullptr) return nullptr;
  lines += linesOf(*descriptor);
  if (type == kLatticeDescriptors && dynamic_cast<LatticeSetDescriptor*>(descriptor.get()) == nullptr) {
    descriptor = std::make_unique<LatticeSetDescriptor>(*descriptor);
  }
  return descriptor;
}

void writeRecord(BinaryWriter& record, const SetCounter& descriptor) {
  record.tag("SC");
  record.int32(descriptor.count);
  record.int32(descriptor.TID);
}

void writeRecord(BinaryWriter& record, const CarmaSetDescriptor& descriptor) {
  record.tag("CSD");
  record.int32(descriptor.count);
  record.int32(descriptor.TID);
  record.int32(descriptor.maxMissed);
}

void writeRecord(BinaryWriter& record, const LatticeSetDescriptor& descriptor) {
  record.tag("LSD");
  record.int32(descriptor.count);
  record.int32(descriptor.TID);
  record.int32(descriptor.maxMissed);
  record.int32(descriptor.adjacent.count);
  record.int32s(adjacentOf(descriptor));
}

bool readFields(BinaryReader& record, SetCounter& descriptor) {
  return record.int32s({&descriptor.count, &descriptor.TID});
}

bool readFields(BinaryReader& record, CarmaSetDescriptor& descriptor) {
  return record.int32s({&descriptor.count, &descriptor.TID, &descriptor.maxMissed});
}

bool readFields(BinaryReader& record, LatticeSetDescriptor& descriptor) {
  std::int32_t count = 0;
  std::int32_t transaction = 0;
  std::int32_t missed = 0;
  std::int32_t links = 0;
  std::vector<int> items;
  if (!record.int32s({&count, &transaction, &missed, &links}) || !record.int32s(items, links)) return false;
  setAdjacent(descriptor, items);
  descriptor.count = count;
  descriptor.TID = transaction;
  descriptor.maxMissed = missed;
  return true;
}

bool readFieldsXML(std::ifstream& in, SetCounter& descriptor) {
  int count = 0;
  int transaction = 0;
  if (!ParseValue(in, count) || !ParseValue(in, transaction) || !ParseEndObj(in)) return false;
  descriptor.count = count;
  descriptor.TID = transaction;
  return true;
}

bool readFieldsXML(std::ifstream& in, CarmaSetDescriptor& descriptor) {
  int count = 0;
  int transaction = 0;
  int missed = 0;
  if (!ParseValue(in, count) || !ParseValue(in, transaction) || !ParseValue(in, missed) || !ParseEndObj(in)) {
    return false;
  }
  descriptor.count = count;
  descriptor.TID = transaction;
  descriptor.maxMissed = missed;
  return true;
}

bool readFieldsXML(std::ifstream& in, LatticeSetDescriptor& descriptor) {
  int count = 0;
  int transaction = 0;
  int missed = 0;
  int links = 0;
  if (!ParseValue(in, count) || !ParseValue(in, transaction) || !ParseValue(in, missed) ||
      !ParseValue(in, links) || links < 0) {
    return false;
  }
  std::vector<int> items;  // grows with the lines that are really there
  for (int i = 0; i < links; ++i) {
    int item = 0;
    if (!ParseValue(in, item)) return false;
    items.push_back(item);
  }
  if (!ParseEndObj(in)) return false;
  setAdjacent(descriptor, items);
  descriptor.count = count;
  descriptor.TID = transaction;
  descriptor.maxMissed = missed;
  return true;
}

std::uint64_t linesOf(const SetCounter& descriptor) {
  if (const auto* lattice = dynamic_cast<const LatticeSetDescriptor*>(&descriptor)) {
    return kFrameLines + 4 + adjacentOf(*lattice).size();
  }
  return kFrameLines + (dynamic_cast<const CarmaSetDescriptor*>(&descriptor) != nullptr ? 3 : 2);
}

void refuseRecord(std::string_view line) {
  std::cout << line;
  throw new IOException();
}

}  // namespace korassoc::detail
