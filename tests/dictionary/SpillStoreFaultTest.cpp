// The spill store on disks that fill up, files that are tampered with and writes that fail, each in turn.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/dictionary/SpillFile.h"
#include "korassoc/dictionary/SpillStore.h"
#include "korassoc/engine/DictionarySettings.h"
#include "tests/support/Raised.h"
#include "tests/support/SpillFileReader.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFile.h"

namespace {

using korassoc::detail::openSpillFile;
using korassoc::detail::SpillFile;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Field;

constexpr int kSlots = 737279;

// What goes wrong with a file, and what was asked of it.
struct Faults {
  int firstFailure = 0;      // the write that fails, from 1; 0: none
  int lastFailure = 0;       // the last one that fails
  bool tearsWrites = false;  // a failing write leaves half of its bytes
  bool failsResize = false;
  int writes = 0;
  int reads = 0;
};

// The file on the disk, with faults.
class FaultyFile : public SpillFile {
 public:
  FaultyFile(const std::string& name, Faults* faults)
      : file_(openSpillFile(name.c_str(), [](SpillFile&) { return false; })), faults_(faults) {}

  const std::string& name() const override { return file_->name(); }
  std::uint64_t size() const override { return file_->size(); }
  std::size_t read(std::uint64_t offset, char* bytes, std::size_t size) override {
    ++faults_->reads;
    return file_->read(offset, bytes, size);
  }
  bool write(std::uint64_t offset, const char* bytes, std::size_t size) override {
    ++faults_->writes;
    if (faults_->firstFailure == 0 || faults_->writes < faults_->firstFailure ||
        faults_->writes > faults_->lastFailure) {
      return file_->write(offset, bytes, size);
    }
    if (faults_->tearsWrites) file_->write(offset, bytes, size / 2);
    return false;
  }
  bool resize(std::uint64_t size) override { return !faults_->failsResize && file_->resize(size); }

 private:
  std::unique_ptr<SpillFile> file_;
  Faults* faults_;
};

class SpillStoreFaults : public ::testing::Test {
 protected:
  SpillStoreFaults() : dictionary_(2, &settings_, true) { open(); }

  void open() {
    store_.reset();
    store_ = std::make_unique<SpillStore>(&dictionary_, std::make_unique<FaultyFile>(file_.name(), &faults_),
                                          2, 1);
  }
  int add(int item, int count) {
    ItemSet set(item);
    SetCounter counter(count, 77);
    return store_->add(&set, &counter);
  }
  int found(int item) {
    const ItemSet set(item);
    const std::unique_ptr<SetCounter> counter(store_->find(&set));
    return counter != nullptr ? counter->count : -1;
  }
  void increment(int item) {
    const ItemSet set(item);
    store_->increment(&set);
  }
  bool contains(int item) {
    const ItemSet set(item);
    return store_->contains(&set);
  }
  std::vector<DiskSlot> slots() const { return readSpillFile(file_.name(), 1).slots; }
  void failNextWrite(bool torn = false) {
    faults_.firstFailure = faults_.lastFailure = faults_.writes + 1;
    faults_.tearsWrites = torn;
  }
  void failWritesFromNow() {
    faults_.firstFailure = faults_.writes + 1;
    faults_.lastFailure = 2147483647;
  }

  DictionarySettings settings_;
  SetDictionary dictionary_;
  TemporaryFile file_;
  Faults faults_;
  std::unique_ptr<SpillStore> store_;
};

TEST_F(SpillStoreFaults, AFullDiskAtCreationLeavesAStoreThatHoldsNothing) {
  for (const bool atResize : {false, true}) {
    faults_ = Faults();
    faults_.failsResize = atResize;
    if (!atResize) failNextWrite();
    open();
    const StreamCapture out(std::cout);
    EXPECT_FALSE(store_->isOpen());
    EXPECT_EQ(add(3, 5), 4);
    EXPECT_EQ(found(3), -1);
    EXPECT_FALSE(contains(3));
    increment(3);
    EXPECT_EQ(store_->reduce(1, 1.0), 0);
    EXPECT_EQ(out.text(), "");
    EXPECT_FALSE(std::filesystem::exists(file_.name())) << "no file is left behind";
  }
}

TEST_F(SpillStoreFaults, AFullDiskRefusesTheSetWithFourAndLeavesTheSlotEmpty) {
  add(3, 5);
  for (const bool torn : {false, true}) {
    // A set takes two writes, what it is and that it is; either may fail, once or for good.
    for (const int which : {1, 2}) {
      for (const bool forGood : {false, true}) {
        if (forGood && torn) continue;  // the next test
        faults_.firstFailure = faults_.writes + which;
        faults_.lastFailure = forGood ? 2147483647 : faults_.firstFailure;
        faults_.tearsWrites = torn;
        const StreamCapture out(std::cout);
        EXPECT_EQ(add(4, 6), 4);
        EXPECT_EQ(out.text(),
                  "Bad OFFSET 4\nHashCode=28, Elements:  4 End of Set \nPrevious: NULL\nNext: NULL\n");
        for (const DiskSlot& slot : slots()) EXPECT_TRUE(slot.position != 28 || slot.state == 0);
        EXPECT_EQ(found(4), -1);
        EXPECT_FALSE(contains(4));
        EXPECT_EQ(store_->size(), 1);
        EXPECT_EQ(found(3), 5);
      }
    }
  }
  faults_ = Faults();
  EXPECT_EQ(add(4, 6), 0);
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{21, 1, 21, {3}, 5}, DiskSlot{28, 1, 28, {4}, 6}));
}

TEST_F(SpillStoreFaults, AShortWriteOnAFullDiskLeavesTheSlotEmptyEvenIfItCannotBeCleaned) {
  failWritesFromNow();
  faults_.tearsWrites = true;
  const StreamCapture quiet(std::cout);
  EXPECT_EQ(add(3, 5), 4);
  ASSERT_THAT(slots(), Each(Field(&DiskSlot::state, 0)));
  EXPECT_EQ(found(3), -1);
  faults_ = Faults();
  EXPECT_EQ(add(3, 5), 0);
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{21, 1, 21, {3}, 5}));
}

TEST_F(SpillStoreFaults, ACountThatCannotBeWrittenStaysAndRaisesIOException) {
  add(3, 255);  // 256 differs in two bytes, so half of the new count would be a wrong one
  for (const bool torn : {false, true}) {
    failNextWrite(torn);
    EXPECT_EQ(raised([this] { increment(3); }), "IOException");
    EXPECT_THAT(slots(), ElementsAre(DiskSlot{21, 1, 21, {3}, 255}));
    EXPECT_EQ(store_->meanCount(), 255.0);
  }
  EXPECT_EQ(raised([this] { increment(3); }), "");
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{21, 1, 21, {3}, 256}));
}

TEST_F(SpillStoreFaults, ReduceThatCannotMarkASlotLeavesTheSetOnDiskAlone) {
  add(3, 1);
  add(4, 9);
  failWritesFromNow();
  EXPECT_EQ(raised([this] { store_->reduce(1, 2.0); }), "IOException");
  EXPECT_EQ(store_->size(), 2);
  faults_.firstFailure = faults_.writes + 2;
  EXPECT_EQ(raised([this] { store_->reduce(1, 2.0); }), "IOException");
  EXPECT_EQ(store_->size(), 1);
  EXPECT_EQ(dictionary_.inStoreCount(), 0);
  EXPECT_EQ(dictionary_.getCount(4), 0) << "not in both places";
  EXPECT_EQ(found(4), 9);
  faults_ = Faults();
  EXPECT_EQ(store_->reduce(1, 2.0), 0);
  EXPECT_EQ(dictionary_.getCount(4), 9);
}

// A run of adds, increments and one reduce in which exactly one write fails: what is on disk and in memory
// together is always what was counted by the operations that succeeded.
TEST_F(SpillStoreFaults, NoSingleFailedWriteLosesACount) {
  const auto run = [this] {
    std::map<int, int> expected;
    const StreamCapture quiet(std::cout);
    for (const int item : {3, 4, 3 + kSlots, 5, 210651, 210651 + kSlots}) {
      if (add(item, 300 + item % 7) == 0) expected[item] = 300 + item % 7;
    }
    for (const int item : {3 + kSlots, 5, 5, 210651}) {
      if (expected.count(item) != 0 && raised([&] { increment(item); }).empty()) ++expected[item];
    }
    std::map<int, int> onDisk;
    for (const DiskSlot& slot : slots()) {
      if (slot.state == 1) onDisk[slot.items[0]] = slot.count;
    }
    EXPECT_EQ(onDisk, expected);
    const bool failed = !raised([this] { store_->reduce(1, 303.0); }).empty();
    std::map<int, int> left;
    for (const DiskSlot& slot : slots()) {
      if (slot.state == 1) left[slot.items[0]] = slot.count;
    }
    EXPECT_EQ(failed, !left.empty());
    for (const auto& [item, count] : expected) {
      const int kept = dictionary_.getCount(item) + (left.count(item) != 0 ? left[item] : 0);
      EXPECT_TRUE(kept == count || (count < 303 && kept == 0)) << item << ": " << kept << " of " << count;
    }
    EXPECT_EQ(store_->size(), static_cast<int>(left.size()));
    dictionary_.removeSmallSets(1e9);
  };
  run();
  const int writes = faults_.writes;
  ASSERT_EQ(writes, 1 + 6 * 2 + 4 + 6);
  for (const bool torn : {false, true}) {
    for (int failing = 2; failing <= writes; ++failing) {
      SCOPED_TRACE("write " + std::to_string(failing) + (torn ? " torn" : ""));
      faults_ = Faults();
      open();
      faults_.firstFailure = faults_.lastFailure = failing;
      faults_.tearsWrites = torn;
      run();
    }
  }
}

TEST_F(SpillStoreFaults, AFileDeletedUnderTheStoreKeepsWorking) {
#if defined(_WIN32)
  GTEST_SKIP() << "open files cannot be deleted here";
#endif
  add(3, 5);
  ASSERT_TRUE(std::filesystem::remove(file_.name()));
  EXPECT_EQ(add(4, 1), 0);
  increment(3);
  EXPECT_EQ(found(3), 6);
  EXPECT_EQ(store_->reduce(1, 2.0), 1);
  EXPECT_EQ(dictionary_.getCount(3), 6);
  file_.write("somebody else's");
  store_.reset();
  EXPECT_EQ(file_.contents(), "somebody else's") << "only the store's own file is removed";
}

TEST_F(SpillStoreFaults, AFileTruncatedUnderTheStoreRaisesIOExceptionWhereItEnds) {
  add(3, 5);     // slot 21, bytes 281 to 293
  add(1000, 6);  // slot 7000
  // To nothing, to the header, inside the slot of {3} and just before its last byte.
  for (const std::uintmax_t size :
       {std::uintmax_t{0}, std::uintmax_t{8}, std::uintmax_t{285}, std::uintmax_t{293}}) {
    std::filesystem::resize_file(file_.name(), size);
    const std::string seek3 = "Failure to Seek  3 End of Set \n";
    {
      const StreamCapture out(std::cout);
      EXPECT_EQ(raised([this] { add(3, 5); }), "IOException");
      EXPECT_EQ(store_->lastResult(), 5);
      EXPECT_EQ(out.text(), seek3);
    }
    {
      const StreamCapture out(std::cout);
      EXPECT_EQ(found(3), -1);
      EXPECT_EQ(out.text(), seek3);
    }
    {
      const StreamCapture out(std::cout);
      EXPECT_EQ(raised([this] { increment(3); }), "IOException");
      EXPECT_EQ(raised([this] { contains(3); }), "IOException");
      EXPECT_EQ(out.text(), seek3 + seek3);
    }
    EXPECT_EQ(raised([this] { store_->reduce(1, 1.0); }), "IOException");
    EXPECT_EQ(store_->size(), 2);
    EXPECT_FALSE(contains(4)) << "its presence bit is clear: no look at the file";
    EXPECT_EQ(std::filesystem::file_size(file_.name()), size);
  }
}

TEST_F(SpillStoreFaults, WhatStandsBeforeTheCutIsStillThere) {
  add(3, 5);
  add(1000, 6);
  std::filesystem::resize_file(file_.name(), 294);
  EXPECT_EQ(found(3), 5);
  increment(3);
  EXPECT_EQ(found(3), 6);
  const StreamCapture quiet(std::cout);
  EXPECT_EQ(raised([this] { store_->reduce(1, 1.0); }), "IOException");
  EXPECT_EQ(dictionary_.getCount(3), 6);
  EXPECT_EQ(store_->size(), 1);
}

TEST_F(SpillStoreFaults, SetsThatSomebodyErasedFromTheFileAreMissed) {
  add(3, 5);
  add(1000, 6);
  pokeFile(file_.name(), 8 + 13U * 21U, std::string(13, '\0'));
  EXPECT_EQ(raised([this] { store_->reduce(1, 1.0); }), "IOException");
  EXPECT_EQ(dictionary_.getCount(1000), 6);
  EXPECT_EQ(store_->size(), 1);
}

TEST_F(SpillStoreFaults, ACorruptStateByteRaisesIOException) {
  add(3, 5);
  for (const int state : {3, 7, 127, 128, 255}) {
    pokeFile(file_.name(), 8 + 13U * 21U, std::string(1, static_cast<char>(state)));
    const std::string message = "Default Never Correct " + std::to_string(state);
    const std::pair<const char*, std::function<void()>> operations[] = {
        {"add", [this] { add(3 + kSlots, 5); }},
        {"contains", [this] { contains(3); }},
        {"increment", [this] { increment(3); }},
        {"reduce", [this] { store_->reduce(1, 1.0); }}};
    for (const auto& [name, operation] : operations) {
      const StreamCapture out(std::cout);
      EXPECT_EQ(raised(operation), "IOException") << name;
      EXPECT_EQ(out.text(), message) << name;
      EXPECT_EQ(store_->lastResult(), 5) << name;
    }
    const StreamCapture out(std::cout);
    EXPECT_EQ(found(3), -1);
    EXPECT_EQ(out.text(), message);
    EXPECT_EQ(store_->size(), 1);
  }
}

TEST_F(SpillStoreFaults, AClearPresenceBitSparesTheLookAtTheFile) {
  add(3, 5);
  const int reads = faults_.reads;
  EXPECT_FALSE(contains(4));
  increment(4);
  EXPECT_EQ(faults_.reads, reads);
  EXPECT_EQ(found(4), -1);
  EXPECT_EQ(faults_.reads, reads + 1) << "find looks all the same";
}

TEST_F(SpillStoreFaults, ASearchIsOneReadAndAnIncrementOneWriteMore) {
  add(3, 5);
  const int reads = faults_.reads;
  const int writes = faults_.writes;
  increment(3);
  EXPECT_EQ(faults_.reads, reads + 1);
  EXPECT_EQ(faults_.writes, writes + 1);
  EXPECT_EQ(found(3), 6);
  EXPECT_EQ(faults_.reads, reads + 2);
  EXPECT_EQ(faults_.writes, writes + 1);
}

TEST_F(SpillStoreFaults, ReduceReadsTheFileOnlyWhereSetsAre) {
  add(3, 5);
  add(3 + kSlots, 6);  // in the next slot
  add(100000, 7);      // 700,000 slots away
  int reads = faults_.reads;
  EXPECT_EQ(store_->reduce(1, 6.0), 1);
  EXPECT_EQ(faults_.reads, reads + 2);
  EXPECT_EQ(dictionary_.getCount(3 + kSlots), 6);
  EXPECT_EQ(dictionary_.getCount(100000), 7);

  add(4, 8);
  reads = faults_.reads;
  EXPECT_EQ(store_->reduce(1, 6.0), 0);
  EXPECT_EQ(faults_.reads, reads + 1) << "the others have left";
  EXPECT_EQ(store_->reduce(1, 6.0), 0);
  EXPECT_EQ(faults_.reads, reads + 1);
}

#if !defined(_WIN32)
TEST(SpillStoreOnADevice, HasNoFile) {
  for (const char* device : {"/dev/null", "/dev/tty"}) {
    {
      SpillStore store(nullptr, device, 1, 1);
      EXPECT_FALSE(store.isOpen());
      ItemSet set(3);
      SetCounter counter(5, 0);
      EXPECT_EQ(store.add(&set, &counter), 1);
    }
    EXPECT_TRUE(std::filesystem::exists(device));
  }
}
#endif

}  // namespace
