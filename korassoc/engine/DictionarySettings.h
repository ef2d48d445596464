// Sizes and limits of the itemset dictionary and of its spill to the disk.

#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <string>

#include "korassoc/base/Export.h"

// A value: copies are independent. Table sizes are numbers of hash buckets, the other limits numbers of
// itemsets. No setter judges its argument.
//
// DiskSpill is not part of the saved record: a reading object keeps its own.
class KORASSOC_EXPORT DictionarySettings {
 public:
  DictionarySettings();

  // The file that takes itemsets when memory is full. Until a host sets one it is a path that the settings
  // make up themselves, in the temporary directory and new for every object. Setting copies the name; null
  // makes up a new path, and the pointer that GetSpillFileName() gave changes nothing.
  // Nothing that exists is lost to a name: the file has to be new, or one of the user's own that is empty or
  // was left behind by a run that was killed; else nothing is spilled. It is removed after its use.
  void SetSpillFileName(const char* name);
  // What GetSpillFileName() gives is valid until the name is set or read anew.
  const char* GetSpillFileName() const { return spillFileName_.c_str(); }

  // Whether a host has set the name, by SetSpillFileName(). Any other name is shown and saved, but never
  // opened: one that was made up here, and one that was read from a record, which may come from anybody. What
  // is spilled then goes to a new file of its own.
  bool HasSpillFileName() const { return hasSpillFileName_; }

  // Scratch itemsets kept for look-ups: sets of fewer items are looked up without allocation. Default 10.
  int GetNumberOfFixedSets() const { return numberOfFixedSets_; }
  void SetNumberOfFixedSets(int count) { numberOfFixedSets_ = count; }

  // Buckets of the tables of sets of nine and more items. Default 89.
  int GetInitialSetSize() const { return initialSetSize_; }
  void SetInitialSetSize(int buckets) { initialSetSize_ = buckets; }

  // Buckets of an antecedent table of rule creation: always 89 unless a saved record says otherwise.
  int GetInitialBoundarySize() const { return initialBoundarySize_; }

  // Buckets of the tables of one, four and five items; half and a quarter of it for six to eight.
  // Default 2879.
  int GetInitialBoundarySearchSize() const { return initialBoundarySearchSize_; }
  void SetInitialBoundarySearchSize(int buckets) { initialBoundarySearchSize_ = buckets; }

  // Buckets of the tables of two and three items. Default 23039.
  int GetInitialHashtableSet23Size() const { return initialHashtableSet23Size_; }
  void SetInitialHashtableSet23Size(int buckets) { initialHashtableSet23Size_ = buckets; }

  // Buckets of rule creation's table of frequent sets. Default 200.
  int GetInitialRulesSize() const { return initialRulesSize_; }
  void SetInitialRulesSize(int buckets) { initialRulesSize_ = buckets; }

  // Sets between two progress reports of rule creation, and of the part of RunPhaseIIcomplete that enumerates
  // itemsets, whatever the sign; 0: rule creation's last one alone. Default 1000.
  int GetReportFrequency() const { return reportFrequency_; }
  void SetReportFrequency(int sets) { reportFrequency_ = sets; }

  // The most itemsets kept in memory. Default 2147483647.
  int GetMaxInStoreSets() const { return maxInStoreSets_; }
  void SetMaxInStoreSets(int sets) { maxInStoreSets_ = sets; }

  // The count up to which a set may be evicted from a full memory; 0: only sets that came to a full memory.
  // Default 0.
  int GetLeaveInMainStoreCount() const { return leaveInMainStoreCount_; }
  void SetLeaveInMainStoreCount(int count) { leaveInMainStoreCount_ = count; }

  // Whether evicted sets go to the spill file (true) or are dropped (false, the default).
  bool GetDiskSpill() const { return diskSpill_; }
  void SetDiskSpill(bool spill) { diskSpill_ = spill; }

  // The binary record, "DS". Both return its length in bytes. Reading throws an IOException, as a pointer, on
  // a wrong tag or a record that is cut short, after a line to standard output; the settings then stay as
  // they were.
  std::uint64_t WriteObject(std::fstream& stream) const;
  std::uint64_t ReadObject(std::fstream& stream);

  // The record of the XML format, an object indented by nestingLevel tabs. In the place of the spill file
  // name it holds a flag alone, and the text of that flag, 1, becomes the name of the settings that read it.
  // Writing returns 13, its lines, reading 12. Reading throws and reports as ReadObject does, on any line
  // that is not as it should be.
  std::uint64_t WriteObjectXML(std::ostream& stream, int nestingLevel) const;
  std::uint64_t ReadObjectXML(std::ifstream& stream);

 private:
  std::string spillFileName_;
  bool hasSpillFileName_ = false;
  int numberOfFixedSets_ = 10;
  int initialSetSize_ = 89;
  int initialBoundarySize_ = 89;
  int initialBoundarySearchSize_ = 2879;
  int initialHashtableSet23Size_ = 23039;
  int initialRulesSize_ = 200;
  int reportFrequency_ = 1000;
  int maxInStoreSets_ = 2147483647;
  int leaveInMainStoreCount_ = 0;
  bool diskSpill_ = false;
};
