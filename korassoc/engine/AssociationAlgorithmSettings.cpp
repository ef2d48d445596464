#include "korassoc/engine/AssociationAlgorithmSettings.h"

#include <iostream>

#include "korassoc/base/BinaryRecord.h"

using korassoc::detail::BinaryReader;
using korassoc::detail::BinaryWriter;

namespace {

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

void AssociationAlgorithmSettings::SetProgressListener(ProgressListener* listener) {
  if (listener != progressListener_.get()) progressListener_.reset(listener);
}
