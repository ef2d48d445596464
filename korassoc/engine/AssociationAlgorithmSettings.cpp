#include "korassoc/engine/AssociationAlgorithmSettings.h"

#include <iostream>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/xml/XMLObj.h"
#include "korassoc/xml/XMLReader.h"

using korassoc::detail::BinaryReader;
using korassoc::detail::BinaryWriter;

namespace {

// Below the settings of the algorithm itself, which stand at level 1 of a state.
constexpr int kNestingLevel = 2;

std::uint64_t refusedRecord() {
  std::cout << "Error reading AssocAlgSettings!\n";
  return 0;
}

}  // namespace

AssociationAlgorithmSettings::AssociationAlgorithmSettings() = default;

AssociationAlgorithmSettings::~AssociationAlgorithmSettings() = default;

std::uint64_t AssociationAlgorithmSettings::ReadObject(std::fstream& stream) {
  BinaryReader record(stream);
  if (!record.tag("AAS") || !record.int32s({&maxTranLength_, &maxLengthSet_})) return refusedRecord();
  return record.count() + dictionarySettings_.ReadObject(stream);
}

std::uint64_t AssociationAlgorithmSettings::WriteObject(std::fstream& stream) const {
  BinaryWriter record(stream);
  record.tag("AAS");
  record.int32(maxTranLength_);
  record.int32(maxLengthSet_);
  const std::uint64_t bytes = record.finish() + dictionarySettings_.WriteObject(stream);
  stream.flush();
  return bytes;
}

std::uint64_t AssociationAlgorithmSettings::ReadObjectXML(std::ifstream& stream) {
  if (!KorAssocXML::ParseStartObj(stream, "AssociationAlgorithmSettings") ||
      !KorAssocXML::ParseValue(stream, maxTranLength_) || !KorAssocXML::ParseValue(stream, maxLengthSet_) ||
      dictionarySettings_.ReadObjectXML(stream) == 0 || !KorAssocXML::ParseEndObj(stream)) {
    return refusedRecord();
  }
  return 4;
}

std::uint64_t AssociationAlgorithmSettings::WriteObjectXML(std::ostream& stream) const {
  const KorAssocXML::XMLObj object("AssociationAlgorithmSettings", kNestingLevel);
  object.StartObj(stream);
  object.WriteSubElement(stream, maxTranLength_);
  object.WriteSubElement(stream, maxLengthSet_);
  const std::uint64_t dictionaryLines = dictionarySettings_.WriteObjectXML(stream, kNestingLevel + 1);
  object.EndObj(stream);
  return dictionaryLines + 5;
}

void AssociationAlgorithmSettings::SetProgressListener(ProgressListener* listener) {
  if (listener != progressListener_.get()) progressListener_.reset(listener);
}
