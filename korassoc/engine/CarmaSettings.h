// Everything that a host can set for a run of the CARMA algorithm.

#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <memory>

#include "korassoc/base/Export.h"
#include "korassoc/engine/AssociationAlgorithmSettings.h"
#include "korassoc/engine/SupportSource.h"

// The host builds one, installs at least a support source and passes it to the engine, which does not take it
// over: it must live as long as the engine.
//
// Frequencies count transactions; one of 0 means that its event never comes. The support source is owned and,
// like the listener, not part of the saved record.
class KORASSOC_EXPORT CarmaSettings : public AssociationAlgorithmSettings {
 public:
  CarmaSettings();
  ~CarmaSettings() override;

  // The binary record, "CS". Both return its length in bytes; writing flushes the stream. Reading throws an
  // IOException, as a pointer, on a wrong tag or a record that is cut short, after a line to standard error.
  std::uint64_t ReadObject(std::fstream& stream) override;
  std::uint64_t WriteObject(std::fstream& stream) const override;

  // The record of the XML format. Writing returns 24, one more than its lines. Reading returns 10, and throws
  // and reports as ReadObject does; whether the closing line is there does not matter.
  std::uint64_t ReadObjectXML(std::ifstream& stream) override;
  std::uint64_t WriteObjectXML(std::ostream& stream) const override;

  // The source of the support threshold, null when none is installed. It stays the settings'.
  SupportSource* GetSupportSource() const { return supportSource_.get(); }

  // Takes ownership of source, which may be null, and deletes the one installed before.
  void SetSupportSource(SupportSource* source);

  // The number of decreases of the support that the engine prepares for; more are handled too. Default 1000.
  int GetMaxNumSigmaChunks() const { return maxNumSigmaChunks_; }
  void SetMaxNumSigmaChunks(int chunks) { maxNumSigmaChunks_ = chunks; }

  // Transactions between two progress reports of phase I, which come at pruning points only. Default 10000.
  int GetReportFreqPhaseI() const { return reportFreqPhaseI_; }
  void SetReportFreqPhaseI(int transactions) { reportFreqPhaseI_ = transactions; }

  // Transactions between two progress reports of phase II. Default 10000.
  int GetReportFreqPhaseII() const { return reportFreqPhaseII_; }
  void SetReportFreqPhaseII(int transactions) { reportFreqPhaseII_ = transactions; }

  // Transactions between two prunings of phase I. Default 500.
  int GetRemoveSmallFreq() const { return removeSmallFreq_; }
  void SetRemoveSmallFreq(int transactions) { removeSmallFreq_ = transactions; }

  // What RunPhaseIIcomplete may take for its transactions, in bytes. It takes a small part of that and reads
  // once, unless the beginning of the data tells too little about the rest; what does not fit then is counted
  // in several readings. Not part of the saved record. Default 1 GiB.
  std::uint64_t GetCompleteIndexBudget() const { return completeIndexBudget_; }
  void SetCompleteIndexBudget(std::uint64_t bytes) { completeIndexBudget_ = bytes; }

 private:
  std::unique_ptr<SupportSource> supportSource_;
  int maxNumSigmaChunks_ = 1000;
  int reportFreqPhaseI_ = 10000;
  int reportFreqPhaseII_ = 10000;
  int removeSmallFreq_ = 500;
  std::uint64_t completeIndexBudget_ = std::uint64_t{1} << 30;
};
