// The descriptor of a candidate itemset while transactions are being read.

#pragma once

#include <cstdint>
#include <iosfwd>

#include "korassoc/base/Export.h"
#include "korassoc/dictionary/SetCounter.h"

// A counter that also bounds what it cannot know: the set's support lies in [count, count + maxMissed]
// transactions.  (Hidber, Online Association Rule Mining, SIGMOD 1999: count, firstTrans, maxMissed)
class KORASSOC_EXPORT CarmaSetDescriptor : public SetCounter {
 public:
  CarmaSetDescriptor() = default;
  CarmaSetDescriptor(int initialCount, int transaction, int missed)
      : SetCounter(initialCount, transaction), maxMissed(missed) {}
  CarmaSetDescriptor(const CarmaSetDescriptor&) = default;
  CarmaSetDescriptor& operator=(const CarmaSetDescriptor&) = default;
  ~CarmaSetDescriptor() override;

  void display() const override;
  int getMaxMissed() const override;
  void setMaxMissed(int occurrences) override;
  void decrementMaxMissed() override;
  std::uint64_t writeObject(std::fstream& stream) const override;
  std::uint64_t readObject(std::fstream& stream) override;
  std::uint64_t writeObjectXML(std::ostream& out, int tabs) const override;
  std::uint64_t readObjectXML(std::ifstream& in) override;
  // The transaction at which the set was stored.
  virtual int getCreationTID() const;

  int maxMissed = 0;  // most occurrences that the set can have had before it was stored
};
