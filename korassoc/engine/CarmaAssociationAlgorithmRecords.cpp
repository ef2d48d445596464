// The engine's saved states: writing them, and the constructors that start from them.
//
//   settings | dictionary | sets removed, transactions seen, current support, support count, peak of sets |
//   ceilings | core: average extension, longest work list, longest candidate, longest set added
//
// The XML state holds the same in the same order, within one object of its own.

#include <iostream>
#include <memory>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/base/Version.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaCore.h"
#include "korassoc/engine/CarmaSaveContext.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/Caught.h"
#include "korassoc/engine/CeilArray.h"
#include "korassoc/engine/Exceptions.h"
#include "korassoc/engine/PhaseIContext.h"
#include "korassoc/engine/PhaseIIContext.h"
#include "korassoc/xml/ExportFormat.h"
#include "korassoc/xml/XMLDocType.h"
#include "korassoc/xml/XMLObj.h"
#include "korassoc/xml/XMLReader.h"
#include "korassoc/xml/XMLWriter.h"

using KorAssoc::KorStatus;
using korassoc::detail::BinaryReader;
using korassoc::detail::BinaryWriter;
using korassoc::detail::completes;
using KorAssocXML::ParseValue;

namespace {

constexpr const char* kObjectName = "CarmaAssociationAlgorithm";

void require(bool good) {
  if (!good) throw new IOException();
}

// The declaration, the document type and the root element.
void writeHead(std::ostream& stream) {
  const std::unique_ptr<KorAssocXML::XMLDocType> type(
      KorAssocXML::XMLDocType::Create("KorXMLRoot", "savexml.dtd", 0));
  KorAssocXML::ExportFormat format;
  type->ToStream(stream, format, false);
  KorAssocXML::StartRoot(stream, korassoc::detail::copyrightNotice());
}

}  // namespace

CarmaAssociationAlgorithm::CarmaAssociationAlgorithm(std::fstream& state, MultiPassTransIter* iterator)
    : settings_(nullptr), iterator_(iterator), state_(&PhaseIContext::instance()) {
  restore([&] { readRecord(state); });
}

CarmaAssociationAlgorithm::CarmaAssociationAlgorithm(std::ifstream& state, MultiPassTransIter* iterator)
    : settings_(nullptr), iterator_(iterator), state_(&PhaseIContext::instance()) {
  restore([&] { readRecordXML(state); });
}

void CarmaAssociationAlgorithm::restore(const std::function<void()>& read) {
  const bool restored = completes([&] {
    ownSettings_ = std::make_unique<CarmaSettings>();
    settings_ = ownSettings_.get();
    read();
    // Whichever phase comes next works on from the transactions that were seen.
    core_->restoreTransactions(transactionsSeen_, ceilings_->average());
    if (dictionary_->isLatticeBuilt()) changeState(PhaseIIContext::instance());
  });
  if (!restored) failRestart();
}

void CarmaAssociationAlgorithm::makeDictionary() {
  dictionary_ = std::make_unique<SetDictionary>(settings_->GetMaxLengthSet(),
                                                &settings_->GetDictionarySettings(), true);
}

void CarmaAssociationAlgorithm::makeCounters() {
  ceilings_ = std::make_unique<CeilArray>(settings_->GetMaxNumSigmaChunks());
  // The length that the dictionary keeps to: a longer candidate would be refused as by a full memory.
  core_ = std::make_unique<CarmaCore>(dictionary_->maxLevel(), settings_->GetMaxTranLength());
}

void CarmaAssociationAlgorithm::readRecord(std::fstream& stream) {
  settings_->ReadObject(stream);
  makeDictionary();
  dictionary_->readObject(stream);
  BinaryReader record(stream);
  require(record.int32s({&setsRemoved_, &transactionsSeen_}) && record.float64(currentSupport_) &&
          record.float64(supportCount_) && record.int32(peakSets_));
  makeCounters();
  ceilings_->readObject(stream);
  double averageExtension = 0.0;
  int maxExtension = 0;
  int longestCandidate = 0;
  int longAdded = 0;
  require(record.float64(averageExtension) && record.int32s({&maxExtension, &longestCandidate, &longAdded}));
  core_->restoreStatistics(averageExtension, maxExtension, longestCandidate, longAdded);
}

void CarmaAssociationAlgorithm::readRecordXML(std::ifstream& stream) {
  require(KorAssocXML::ParseStartXML(stream) && KorAssocXML::ParseStartObj(stream, kObjectName));
  settings_->ReadObjectXML(stream);
  makeDictionary();
  require(dictionary_->readObjectXML(stream) > 0);
  require(ParseValue(stream, setsRemoved_) && ParseValue(stream, transactionsSeen_) &&
          ParseValue(stream, currentSupport_) && ParseValue(stream, supportCount_) &&
          ParseValue(stream, peakSets_));
  makeCounters();
  ceilings_->readObjectXML(stream);
  double averageExtension = 0.0;
  int maxExtension = 0;
  int longestCandidate = 0;
  int longAdded = 0;
  require(ParseValue(stream, averageExtension) && ParseValue(stream, maxExtension) &&
          ParseValue(stream, longestCandidate) && ParseValue(stream, longAdded));
  core_->restoreStatistics(averageExtension, maxExtension, longestCandidate, longAdded);
}

// Writing goes by references: a stream that calls back may cancel the engine, which takes the pointers away.
void CarmaAssociationAlgorithm::writeRecord(std::fstream& stream) const {
  const SetDictionary& dictionary = *dictionary_;
  const CeilArray& ceilings = *ceilings_;
  const CarmaCore& core = *core_;
  settings_->WriteObject(stream);
  dictionary.writeObject(stream);
  BinaryWriter record(stream);
  record.int32(setsRemoved_);
  record.int32(transactionsSeen_);
  record.float64(currentSupport_);
  record.float64(supportCount_);
  record.int32(peakSets_);
  record.finish();
  ceilings.writeObject(stream);
  record.float64(core.averageExtension());
  record.int32(core.maxExtension());
  record.int32(core.longestCandidate());
  record.int32(core.longAdded());
  record.finish();
}

void CarmaAssociationAlgorithm::writeRecordXML(std::ostream& stream) const {
  const SetDictionary& dictionary = *dictionary_;
  const CeilArray& ceilings = *ceilings_;
  const CarmaCore& core = *core_;
  writeHead(stream);
  const KorAssocXML::XMLObj object(kObjectName, 0);
  object.StartObj(stream);
  settings_->WriteObjectXML(stream);
  dictionary.writeObjectXML(stream);
  object.WriteSubElement(stream, setsRemoved_);
  object.WriteSubElement(stream, transactionsSeen_);
  object.WriteSubElement(stream, currentSupport_);
  object.WriteSubElement(stream, supportCount_);
  object.WriteSubElement(stream, peakSets_);
  ceilings.writeObjectXML(stream);
  object.WriteSubElement(stream, core.averageExtension());
  object.WriteSubElement(stream, core.maxExtension());
  object.WriteSubElement(stream, core.longestCandidate());
  object.WriteSubElement(stream, core.longAdded());
  object.EndObj(stream);
  KorAssocXML::EndRoot(stream);
}

KorStatus CarmaAssociationAlgorithm::doSave(std::fstream& stream) {
  return save(stream, " Error saving to the output stream!\n ", [&] { writeRecord(stream); });
}

KorStatus CarmaAssociationAlgorithm::doSaveXML(std::ostream& stream) {
  return save(stream, " Error saving to the output xml file!\n ", [&] { writeRecordXML(stream); });
}

KorStatus CarmaAssociationAlgorithm::save(std::ostream& stream, const char* failure,
                                          const std::function<void()>& write) {
  const Running running(*this);
  const SetDictionary::Hold hold(*dictionary_);
  const CarmaContext& before = *state_;
  changeState(CarmaSaveContext::instance());
  const bool saved = completes([&] {
    write();
    stream.flush();
    require(stream.good());
  });
  if (!saved) completes([failure] { std::cout << failure; });  // who let it throw has the status all the same
  if (state_ != &CarmaSaveContext::instance())
    return currentStatus_;  // cancelled by a callback of the stream
  changeState(before);
  return setStatus(saved ? KorStatus() : KorStatus(2, false));
}
