// Memory that runs out while a set is added: the dictionary stays as it was, with nothing left over in its
// queue, and goes on as if nothing had been tried.

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "korassoc/dictionary/CompleteItemsets.h"
#include "korassoc/engine/Exceptions.h"
#include "tests/dictionary/EvictionFixture.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/StreamCapture.h"

namespace {

// What can be seen of a dictionary.
struct Seen {
  std::map<Items, int> memory;
  std::vector<int> buckets;  // of the levels that hold sets
  std::map<Items, int> disk;
  std::vector<Items> queue;
  int pushedLessUnlinked;
  int inStore;
  int givenUp;

  bool operator==(const Seen& other) const = default;
};

class OutOfMemory : public Eviction {
 protected:
  Seen seen(bool withDisk) const {
    std::vector<int> buckets;
    for (int level = 0; level <= 4; ++level) {
      const HashTable& table = dictionary_->levelTable(level);
      buckets.push_back(table.count() > 0 ? table.bucketCount() : 0);
    }
    return {memory(),
            buckets,
            withDisk ? disk() : std::map<Items, int>(),
            queue(),
            pushedLessUnlinked(),
            dictionary_->inStoreCount(),
            dictionary_->setsGivenUp()};
  }

  // Prepares anew and adds the set with 0, 1, 2, ... allocations until it is stored: every failure must leave
  // the dictionary as it was, and the last one with the same result as if there had been memory all the time.
  void addWithEveryFailure(const std::function<void()>& prepare, const Items& items, bool spill) {
    prepare();
    ASSERT_EQ(add(items), 0);
    const Seen expected = seen(spill);
    int failures = 0;
    for (bool stored = false; !stored; ++failures) {
      ASSERT_LT(failures, 1000);
      SCOPED_TRACE("after so many allocations: " + std::to_string(failures));
      prepare();
      const Seen before = seen(spill);
      auto descriptor = std::make_unique<CarmaSetDescriptor>(1, 9, 0);
      try {
        const FailingAllocator limit(failures);
        if (dictionary_->addSet(items.data(), static_cast<int>(items.size()), descriptor.get()) == 0) {
          static_cast<void>(descriptor.release());
          stored = true;
        }
      } catch (const std::bad_alloc&) {
      } catch (const DictionaryFailure* failure) {
        delete failure;
      }
      if (!stored) {
        EXPECT_EQ(seen(spill), before);
        ASSERT_EQ(add(items), 0);
      }
      EXPECT_EQ(seen(spill), expected);
    }
    EXPECT_GT(failures, 1) << "adding a set takes memory, so some of these ran out of it";
  }
};

TEST_F(OutOfMemory, LeavesNothingInTheQueueOfADictionaryWithRoom) {
  const auto prepare = [this] {
    make(100, 3, false);
    add({1});
    increment({1});
    add({2});
  };
  addWithEveryFailure(prepare, {3}, false);        // a table with room
  addWithEveryFailure(prepare, {3, 4}, false);     // a table that is yet to be made
  addWithEveryFailure(prepare, {1, 2, 3}, false);  // beyond an empty level
}

TEST_F(OutOfMemory, LeavesADictionaryWithoutAQueueAsItWas) {
  addWithEveryFailure(
      [this] {
        make(100, 0, false);
        add({1});
      },
      {2}, false);
}

TEST_F(OutOfMemory, GivesNothingUpForASetThatCannotBeStored) {
  const auto prepare = [this] {
    make(4, 3, false);
    for (const Items& items : {Items{1}, Items{2}, Items{1, 2}}) add(items);
  };
  addWithEveryFailure(prepare, {3}, false);
  addWithEveryFailure(prepare, {1, 3}, false);
  addWithEveryFailure(prepare, {1, 2, 3}, false);
}

TEST_F(OutOfMemory, GivesNothingUpWhileAStepHoldsWhatHasLeft) {
  addWithEveryFailure(
      [this] {
        make(3, 3, false);
        dictionary_->holdEvicted();
        add({1});
        add({2});
      },
      {3}, false);
  EXPECT_EQ(dictionary_->heldEvicted(), 1);
  dictionary_->releaseEvicted();
}

TEST_F(OutOfMemory, KeepsTheCopyOfASetThatIsStoredAlready) {
  for (const int mostSets : {100, 4}) {
    addWithEveryFailure(
        [this, mostSets] {
          make(mostSets, 3, false);
          for (const Items& items : {Items{1}, Items{2}, Items{3}}) add(items);
        },
        {2}, false);
  }
}

TEST_F(OutOfMemory, SpillsNothingForASetThatCannotBeStored) {
  const StreamCapture output(std::cout);
  addWithEveryFailure(
      [this] {
        make(3, 3, true);
        for (const Items& items : {Items{1}, Items{2}, Items{3}}) add(items);
      },
      {4}, true);
}

// Grows a small table, in which more than one bucket is in use, while a set of it leaves for the new one.
TEST_F(OutOfMemory, MayComeWhereTheTableGrows) {
  const auto prepare = [this] {
    settings_.SetInitialBoundarySearchSize(4);  // grows at the fourth set
    make(5, 3, false);
    for (int item = 1; item <= 3; ++item) add({item});
    add({1, 2});
  };
  addWithEveryFailure(prepare, {4}, false);
  addWithEveryFailure(prepare, {1, 3}, false);
  for (const bool queued : {false, true}) {  // with room in memory, nothing has to leave
    addWithEveryFailure(
        [this, queued] {
          make(100, queued ? 3 : 0, false);
          for (int item = 1; item <= 3; ++item) add({item});
        },
        {4}, false);
  }
}

TEST_F(OutOfMemory, DoesNotTouchATableThatHasMadeRoom) {
  for (const int buckets : {2, 1000000000}) {  // an array of chains, and a map of them
    HashTable table(buckets);
    for (int item = 1; item <= 300; ++item) {
      auto set = std::make_unique<ItemSet>(item);
      auto counter = std::make_unique<SetCounter>(1, 0);
      table.makeRoomFor(*set, 0);
      const FailingAllocator none(0);
      ASSERT_TRUE(table.put(set.get(), counter.get())) << item;
      static_cast<void>(set.release());
      static_cast<void>(counter.release());
    }
    EXPECT_EQ(table.count(), 300);
  }
}

}  // namespace
