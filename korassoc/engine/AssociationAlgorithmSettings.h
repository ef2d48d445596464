// The settings that every association algorithm has: limits on lengths, the dictionary's part, the listener.

#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <memory>

#include "korassoc/base/Export.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/engine/ProgressListener.h"

// Owns its progress listener, which is not part of the saved record: a reading object keeps its own.
class KORASSOC_EXPORT AssociationAlgorithmSettings {
 public:
  AssociationAlgorithmSettings();
  AssociationAlgorithmSettings(const AssociationAlgorithmSettings&) = delete;
  AssociationAlgorithmSettings& operator=(const AssociationAlgorithmSettings&) = delete;
  virtual ~AssociationAlgorithmSettings();

  // The binary record, "AAS". Both return its length in bytes; writing flushes the stream. Reading a wrong
  // tag or a record that is cut short writes a line to standard output and returns 0; a failure of the
  // dictionary's settings inside is thrown as an IOException, as a pointer.
  virtual std::uint64_t ReadObject(std::fstream& stream);
  virtual std::uint64_t WriteObject(std::fstream& stream) const;

  // The record of the XML format. Writing returns 18, one more than its lines. Reading returns 4; on any line
  // that is not as it should be it writes a line to standard output and returns 0, but throws what the
  // dictionary's settings throw.
  virtual std::uint64_t ReadObjectXML(std::ifstream& stream);
  virtual std::uint64_t WriteObjectXML(std::ostream& stream) const;

  DictionarySettings& GetDictionarySettings() { return dictionarySettings_; }
  const DictionarySettings& GetDictionarySettings() const { return dictionarySettings_; }

  // The length of transactions that the engine prepares for, in items; longer ones are handled too. Default
  // 1000.
  int GetMaxTranLength() const { return maxTranLength_; }
  void SetMaxTranLength(int items) { maxTranLength_ = items; }

  // The largest itemset kept, in items. Default 10. The engine takes more than 1000 for 1000; the number
  // given stays here and in saved states.
  int GetMaxLengthSet() const { return maxLengthSet_; }
  void SetMaxLengthSet(int items) { maxLengthSet_ = items; }

  // The listener, null when none is installed. It stays the settings'.
  ProgressListener* GetProgressListener() const { return progressListener_.get(); }

  // Takes ownership of listener, which may be null, and deletes the one installed before.
  void SetProgressListener(ProgressListener* listener);

 private:
  DictionarySettings dictionarySettings_;
  int maxTranLength_ = 1000;
  int maxLengthSet_ = 10;
  std::unique_ptr<ProgressListener> progressListener_;
};
