// The plain counter attached to a stored itemset, base of all descriptors.

#pragma once

#include <cstdint>
#include <iosfwd>

#include "korassoc/base/Export.h"

static_assert(sizeof(int) == 4, "counts, identifiers and records are 32 bits wide");

// Counts the transactions in which an itemset was met.
//
// Ownership: a dictionary owns the descriptors of its sets and deletes them through this class.
class KORASSOC_EXPORT SetCounter {
 public:
  SetCounter() = default;
  SetCounter(int initialCount, int transaction) : count(initialCount), TID(transaction) {}
  SetCounter(const SetCounter&) = default;
  SetCounter& operator=(const SetCounter&) = default;
  virtual ~SetCounter();

  virtual int getTID() const;
  virtual void setTID(int transaction);
  // Writes every field to standard output, on one line.
  virtual void display() const;
  // Writes count and TID, on one line, whatever the class.
  virtual void Display(std::ostream& out) const;
  // The most occurrences that the set can have had before it was stored; 0 in a plain counter.
  virtual int getMaxMissed() const;
  virtual void setMaxMissed(int occurrences);
  virtual void decrementMaxMissed();

  // The record in a binary state: a tag ("SC", "CSD", "LSD"), count, TID and the further fields. Both return
  // the bytes written or read. Another tag or a record cut short: a line on standard output, an IOException
  // thrown as a pointer, and the object as it was.
  virtual std::uint64_t writeObject(std::fstream& stream) const;
  virtual std::uint64_t readObject(std::fstream& stream);
  // The record in an XML state: an object of the class's name with one value a field, indented by so many
  // tabs. Both return its lines, its start and its end included. Another object or a missing field: a line on
  // standard output, 0, and the object as it was.
  virtual std::uint64_t writeObjectXML(std::ostream& out, int tabs) const;
  virtual std::uint64_t readObjectXML(std::ifstream& in);

  // Counts one more transaction; a count at the top of its range stays there.
  void increment() {
    if (count < kMaxCount) ++count;
  }

  static constexpr int kMaxCount = 2147483647;

  int count = 0;  // transactions counted so far
  int TID = 0;    // number of the transaction at which the set was stored, from 1
};
