#include "korassoc/engine/CarmaSettings.h"

#include <iostream>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/engine/Exceptions.h"
#include "korassoc/xml/XMLObj.h"
#include "korassoc/xml/XMLReader.h"

using korassoc::detail::BinaryReader;
using korassoc::detail::BinaryWriter;
using KorAssocXML::ParseValue;

namespace {

[[noreturn]] void refuseRecord() {
  std::cerr << "Error reading CarmaSettings!\n";
  throw new IOException();
}

}  // namespace

CarmaSettings::CarmaSettings() = default;

CarmaSettings::~CarmaSettings() = default;

std::uint64_t CarmaSettings::ReadObject(std::fstream& stream) {
  BinaryReader record(stream);
  if (!record.tag("CS")) refuseRecord();
  // A base record with a wrong tag answers 0 and the reading goes on from there.
  const std::uint64_t baseBytes = AssociationAlgorithmSettings::ReadObject(stream);
  if (!record.int32s({&maxNumSigmaChunks_, &reportFreqPhaseI_, &reportFreqPhaseII_, &removeSmallFreq_})) {
    refuseRecord();
  }
  return record.count() + baseBytes;
}

std::uint64_t CarmaSettings::WriteObject(std::fstream& stream) const {
  BinaryWriter record(stream);
  record.tag("CS");
  record.finish();
  const std::uint64_t baseBytes = AssociationAlgorithmSettings::WriteObject(stream);
  record.int32(maxNumSigmaChunks_);
  record.int32(reportFreqPhaseI_);
  record.int32(reportFreqPhaseII_);
  record.int32(removeSmallFreq_);
  const std::uint64_t ownBytes = record.finish();
  stream.flush();
  return ownBytes + baseBytes;
}

std::uint64_t CarmaSettings::ReadObjectXML(std::ifstream& stream) {
  if (!KorAssocXML::ParseStartObj(stream, "CarmaSettings")) refuseRecord();
  const std::uint64_t baseLines = AssociationAlgorithmSettings::ReadObjectXML(stream);
  if (baseLines == 0 || !ParseValue(stream, maxNumSigmaChunks_) || !ParseValue(stream, reportFreqPhaseI_) ||
      !ParseValue(stream, reportFreqPhaseII_) || !ParseValue(stream, removeSmallFreq_)) {
    refuseRecord();
  }
  KorAssocXML::ParseEndObj(stream);
  return baseLines + 6;
}

std::uint64_t CarmaSettings::WriteObjectXML(std::ostream& stream) const {
  const KorAssocXML::XMLObj object("CarmaSettings", 1);
  object.StartObj(stream);
  const std::uint64_t baseLines = AssociationAlgorithmSettings::WriteObjectXML(stream);
  for (const int value : {maxNumSigmaChunks_, reportFreqPhaseI_, reportFreqPhaseII_, removeSmallFreq_}) {
    object.WriteSubElement(stream, value);
  }
  object.EndObj(stream);
  return baseLines + 6;
}

void CarmaSettings::SetSupportSource(SupportSource* source) {
  if (source != supportSource_.get()) supportSource_.reset(source);
}
