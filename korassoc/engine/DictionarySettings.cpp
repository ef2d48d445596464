#include "korassoc/engine/DictionarySettings.h"

#include <cstddef>
#include <exception>
#include <filesystem>
#include <iostream>
#include <random>
#include <string_view>
#include <utility>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/engine/Exceptions.h"
#include "korassoc/xml/XMLObj.h"
#include "korassoc/xml/XMLReader.h"

using korassoc::detail::BinaryReader;
using korassoc::detail::BinaryWriter;
using KorAssocXML::ParseValue;

namespace {

// How the name of a made-up file begins.
constexpr std::string_view kMadeUpPrefix = "korassoc-unnamed-";

std::string temporaryDirectory() {
  try {
    return std::filesystem::temp_directory_path().string();
  } catch (const std::exception&) {  // no such directory, or a name that has no narrow form
    return ".";
  }
}

std::string madeUpName() {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string name(kMadeUpPrefix);
  std::random_device random;
  for (int word = 0; word < 4; ++word) {
    unsigned int bits = random();
    for (int digit = 0; digit < 8; ++digit, bits >>= 4) name += kDigits[bits & 15U];
  }
  return temporaryDirectory() + '/' + name;
}

[[noreturn]] void refuseRecord() {
  std::cout << "Error reading DictionarySettings!\n";
  throw new IOException();
}

}  // namespace

DictionarySettings::DictionarySettings() : spillFileName_(madeUpName()) {}

void DictionarySettings::SetSpillFileName(const char* name) {
  if (name == spillFileName_.c_str()) return;
  if (name != nullptr) {
    spillFileName_ = name;
  } else {
    spillFileName_ = madeUpName();
  }
  hasSpillFileName_ = name != nullptr;
}

std::uint64_t DictionarySettings::WriteObject(std::fstream& stream) const {
  BinaryWriter record(stream);
  record.tag("DS");
  record.text(spillFileName_);
  record.int32(numberOfFixedSets_);
  record.int32(initialSetSize_);
  record.int32(initialBoundarySize_);
  record.int32(initialBoundarySearchSize_);
  record.int32(initialHashtableSet23Size_);
  record.int32(initialRulesSize_);
  record.int32(reportFrequency_);
  record.int32(maxInStoreSets_);
  record.int32(leaveInMainStoreCount_);
  return record.finish();
}

std::uint64_t DictionarySettings::ReadObject(std::fstream& stream) {
  BinaryReader record(stream);
  std::string name;
  if (!record.tag("DS") || !record.text(name) ||
      !record.int32s({&numberOfFixedSets_, &initialSetSize_, &initialBoundarySize_,
                      &initialBoundarySearchSize_, &initialHashtableSet23Size_, &initialRulesSize_,
                      &reportFrequency_, &maxInStoreSets_, &leaveInMainStoreCount_})) {
    refuseRecord();
  }
  hasSpillFileName_ = false;
  spillFileName_ = std::move(name);
  return record.count();
}

std::uint64_t DictionarySettings::WriteObjectXML(std::ostream& stream, int nestingLevel) const {
  const KorAssocXML::XMLObj object("DictionarySettings", nestingLevel);
  object.StartObj(stream);
  object.WriteSubElement(stream, static_cast<int>(spillFileName_.size() + 1));
  object.WriteSubElement(stream, true);  // a name is stored; which one, the format does not say
  for (const int value : {numberOfFixedSets_, initialSetSize_, initialBoundarySize_,
                          initialBoundarySearchSize_, initialHashtableSet23Size_, initialRulesSize_,
                          reportFrequency_, maxInStoreSets_, leaveInMainStoreCount_}) {
    object.WriteSubElement(stream, value);
  }
  object.EndObj(stream);
  return 13;
}

std::uint64_t DictionarySettings::ReadObjectXML(std::ifstream& stream) {
  int nameLength = 0;
  std::string name;
  int numbers[9] = {};
  bool complete = KorAssocXML::ParseStartObj(stream, "DictionarySettings") &&
                  ParseValue(stream, nameLength) && nameLength > 0 &&
                  korassoc::detail::parseTextOrFlag(stream, name);
  for (int& number : numbers) complete = complete && ParseValue(stream, number);
  if (!complete || !KorAssocXML::ParseEndObj(stream)) refuseRecord();

  hasSpillFileName_ = false;
  spillFileName_ = std::move(name);
  int* const fields[9] = {
      &numberOfFixedSets_,         &initialSetSize_,   &initialBoundarySize_, &initialBoundarySearchSize_,
      &initialHashtableSet23Size_, &initialRulesSize_, &reportFrequency_,     &maxInStoreSets_,
      &leaveInMainStoreCount_};
  for (int i = 0; i < 9; ++i) *fields[i] = numbers[i];
  return 12;
}
