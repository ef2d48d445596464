// Eviction by every form of a set argument, and with a disk that is full, unreadable or not there.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/itemsets/OrderedArray.h"
#include "tests/dictionary/EvictionFixture.h"
#if defined(__linux__)
#include "tests/support/FullDisk.h"
#endif
#include "tests/support/Raised.h"
#include "tests/support/StreamCapture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

using EvictionFault = Eviction;

// The five forms of a set argument, for the set {i} or {i, j}.
struct Form {
  const char* name;
  std::function<int(SetDictionary&, const Items&, SetCounter*)> add;
  std::function<SetCounter*(SetDictionary&, const Items&)> increment;
  std::string failure;           // addSet's message, before the set
  std::string incrementFailure;  // incrementSet's
};

OrderedArray ordered(const Items& items) {
  OrderedArray array(static_cast<int>(items.size()) + 1, 1);
  for (const int item : items) array.Add(item);
  return array;
}

OrderedArray positions(const Items& items) {
  Items all;
  for (std::size_t i = 0; i < items.size(); ++i) all.push_back(static_cast<int>(i) + 1);
  return ordered(all);
}

// The items with a smaller one before them, for selections to leave out.
Items withOneBefore(const Items& items) {
  Items all = items;
  all.insert(all.begin(), -5);
  return all;
}

const std::vector<Form>& forms() {
  static const std::vector<Form> all = {
      {"raw selection",
       [](SetDictionary& dictionary, const Items& items, SetCounter* descriptor) {
         const Items values = withOneBefore(items);
         const OrderedArray index = positions(items);
         return dictionary.addSet(values.data(), static_cast<int>(values.size()), index.data, index.count,
                                  descriptor);
       },
       nullptr, "addSet failed for the set:  3 End of Set \n", ""},
      {"raw array",
       [](SetDictionary& dictionary, const Items& items, SetCounter* descriptor) {
         return dictionary.addSet(items.data(), static_cast<int>(items.size()), descriptor);
       },
       [](SetDictionary& dictionary, const Items& items) {
         return dictionary.incrementSet(items.data(), static_cast<int>(items.size()));
       },
       "addSet failed for the set:  3 End of Set \n", "Increment failed for the set:  1 End of Set \n"},
      {"itemset",
       [](SetDictionary& dictionary, const Items& items, SetCounter* descriptor) {
         return dictionary.addSet(new ItemSet(items.data(), static_cast<int>(items.size())), descriptor);
       },
       [](SetDictionary& dictionary, const Items& items) {
         const ItemSet set(items.data(), static_cast<int>(items.size()));
         return dictionary.incrementSet(&set);
       },
       "addSet failed for the set:  3 End of Set \n", "Increment failed for the set:  1 End of Set \n"},
      {"selection",
       [](SetDictionary& dictionary, const Items& items, SetCounter* descriptor) {
         return dictionary.addSet(ordered(withOneBefore(items)), positions(items), descriptor);
       },
       [](SetDictionary& dictionary, const Items& items) {
         return dictionary.incrementSet(ordered(withOneBefore(items)), positions(items));
       },
       "addSet failed for the subset :1 \n of the set: -5 3 \n",
       "Increment failed for the subset: 1 \n of the set: -5 1 \n"},
      {"ordered array",
       [](SetDictionary& dictionary, const Items& items, SetCounter* descriptor) {
         return dictionary.addSet(ordered(items), descriptor);
       },
       [](SetDictionary& dictionary, const Items& items) { return dictionary.incrementSet(ordered(items)); },
       "addSet failed for the set:  3 End of Set \n", "Increment failed for the set:  1 End of Set \n"},
      {"single item", nullptr,
       [](SetDictionary& dictionary, const Items& items) { return dictionary.incrementSet(items[0]); }, "",
       "Increment failed for the singleton set: 1\n"}};
  return all;
}

TEST_F(EvictionFault, IsTheSameForEveryFormOfASet) {
  for (const bool spill : {false, true}) {
    for (const Form& form : forms()) {
      if (form.add == nullptr) continue;
      SCOPED_TRACE(form.name);
      make(3, 2, spill);
      std::vector<std::unique_ptr<SetCounter>> refused;
      const auto addBy = [&](const Items& items) {
        auto descriptor = std::make_unique<CarmaSetDescriptor>(1, 9, 0);
        const int answer = form.add(*dictionary_, items, descriptor.get());
        if (answer == 0) {
          static_cast<void>(descriptor.release());
        } else {
          refused.push_back(std::move(descriptor));
        }
        return answer;
      };
      const auto incrementBy = [&](const Items& items) {
        const SetCounter* counter =
            form.increment ? form.increment(*dictionary_, items) : forms()[1].increment(*dictionary_, items);
        return counter != nullptr ? counter->count : 0;
      };
      EXPECT_EQ(addBy({1}), 0);
      EXPECT_EQ(addBy({2}), 0);
      EXPECT_EQ(incrementBy({1}), 2);
      EXPECT_THAT(queue(), ElementsAre(Items{2}, Items{1}));
      EXPECT_EQ(addBy({1, 3}), 0);
      EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{1}, 2), Pair(Items{1, 3}, 1)));
      EXPECT_THAT(queue(), ElementsAre(Items{1}, Items{1, 3}));
      EXPECT_EQ(incrementBy({2}), spill ? 2 : 0);
      EXPECT_EQ(incrementBy({1}), 3);
      EXPECT_THAT(queue(), ElementsAre(Items{1, 3}));
      EXPECT_EQ(incrementBy({1, 3}), 2);
      EXPECT_EQ(incrementBy({1, 3}), 3);
      EXPECT_THAT(queue(), IsEmpty());
      EXPECT_EQ(addBy({1, 4}), spill ? 2 : 3);
      EXPECT_EQ(dictionary_->inStoreCount(), 3);
      EXPECT_EQ(refused.size(), 1U);
    }
  }
}

TEST_F(EvictionFault, OnlyTheSelectionTellsOfAFullMemory) {
  for (const Form& form : forms()) {
    if (form.add == nullptr) continue;
    make(1, 2, false);
    const CarmaSetDescriptor descriptor(1, 9, 0);
    CarmaSetDescriptor refused(descriptor);
    const StreamCapture out(std::cout);
    EXPECT_EQ(form.add(*dictionary_, {3}, &refused), 3) << form.name;
    EXPECT_EQ(out.text(), std::string(form.name) == "selection"
                              ? "Small queue is empty, memory limit exceeded! 3 End of Set \n"
                              : "")
        << form.name;
  }
}

TEST_F(EvictionFault, OnlyTheItemsetMissesAQueuedSetThatIsNotStored) {
  for (const Form& form : forms()) {
    if (form.add == nullptr) continue;
    make(2, 2, false);
    add({1});
    ItemSet stranger(8);
    dictionary_->queueUnlink(dictionary_->smallQueue().head());
    dictionary_->queuePush(&stranger);
    const bool isItemset = std::string(form.name) == "itemset";
    const StreamCapture out(std::cout);
    EXPECT_EQ(form.add(*dictionary_, {3}, new CarmaSetDescriptor(1, 9, 0)), 0) << form.name;
    EXPECT_EQ(contains({3}), !isItemset) << form.name;
    EXPECT_EQ(out.text(), isItemset ? "Could not remove first from hashtable!\n 8 End of Set \n" : "")
        << form.name;
    EXPECT_EQ(dictionary_->inStoreCount(), 2);
  }
}

TEST_F(EvictionFault, AnUnreadableDiskIsADictionaryFailureOfAddSet) {
  for (const Form& form : forms()) {
    if (form.add == nullptr) continue;
    SCOPED_TRACE(form.name);
    make(2, 2, true);
    add({1});
    add({2});  // {1} goes to the disk
    pokeFile(file_.name(), 8 + 13 * 14, std::string(1, '\x9'));
    const std::map<Items, int> before = memory();
    auto descriptor = std::make_unique<CarmaSetDescriptor>(1, 9, 0);
    const StreamCapture out(std::cout);
    EXPECT_EQ(raised([&] { form.add(*dictionary_, {3}, descriptor.get()); }), "DictionaryFailure");
    EXPECT_EQ(out.text(), "Default Never Correct 9" + form.failure);
    EXPECT_EQ(memory(), before);
    EXPECT_EQ(dictionary_->inStoreCount(), 2);
    EXPECT_FALSE(contains({3}));
  }
}

TEST_F(EvictionFault, AnUnreadableDiskIsADictionaryFailureOfIncrementSet) {
  for (const Form& form : forms()) {
    if (form.increment == nullptr) continue;
    SCOPED_TRACE(form.name);
    make(2, 2, true);
    add({1});
    add({2});
    pokeFile(file_.name(), 8 + 13 * 7, std::string(1, '\x9'));
    const StreamCapture out(std::cout);
    EXPECT_EQ(raised([&] { form.increment(*dictionary_, {1}); }), "DictionaryFailure");
    EXPECT_EQ(out.text(), "Default Never Correct 9" + form.incrementFailure);
  }
}

TEST_F(EvictionFault, AFileCutShortIsADictionaryFailureOfEveryOperationThatNeedsIt) {
  make(2, 2, true);
  add({1});
  add({2});
  std::filesystem::resize_file(file_.name(), 50);
  const std::string seek = "Failure to Seek  1 End of Set \n";
  {
    const StreamCapture out(std::cout);
    EXPECT_EQ(raised([this] { increment({1}); }), "DictionaryFailure");
    EXPECT_EQ(out.text(), seek + "Increment failed for the set:  1 End of Set \n");
  }
  {
    const StreamCapture out(std::cout);
    CarmaSetDescriptor descriptor(1, 9, 0);
    const int item = 3;
    EXPECT_EQ(raised([&] { dictionary_->addSet(&item, 1, &descriptor); }), "DictionaryFailure");
    EXPECT_EQ(out.text(), "Failure to Seek  2 End of Set \naddSet failed for the set:  3 End of Set \n");
  }
  {
    const StreamCapture out(std::cout);
    EXPECT_EQ(raised([this] { dictionary_->removeSmallSets(1.0); }), "DictionaryFailure");
    EXPECT_EQ(out.text(), "Failed to reduce dictionary on disk.\n");
  }
  {
    const StreamCapture out(std::cout);
    EXPECT_EQ(dictionary_->getDescriptor(1), nullptr);
    EXPECT_EQ(out.text(), seek);
  }
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{2}, 1)));
}

TEST_F(EvictionFault, ADeletedFileGoesOnCounting) {
#if defined(_WIN32)
  GTEST_SKIP() << "open files cannot be deleted here";
#endif
  make(2, 2, true);
  add({1});
  add({2});
  std::filesystem::remove(file_.name());
  EXPECT_EQ(increment({1}), 2);
  EXPECT_EQ(dictionary_->removeSmallSets(2.0), 1);
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{1}, 2)));
  EXPECT_FALSE(std::filesystem::exists(file_.name()));
}

TEST_F(EvictionFault, AnUnwritableDirectoryRefusesWithOneAndLosesNothing) {
  make(3, 2, true);
  settings_.SetSpillFileName((file_.name() + "/no/such/directory").c_str());
  dictionary_ = std::make_unique<SetDictionary>(4, &settings_, true);
  dictionary_->addEmptySet(new CarmaSetDescriptor(0, 0, 0));
  add({1});
  add({2});
  EXPECT_EQ(add({3}), 1);
  EXPECT_EQ(add({4}), 1);
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{1}, 1), Pair(Items{2}, 1)));
  EXPECT_THAT(queue(), IsEmpty()) << "both were tried and stay for good";
  EXPECT_EQ(increment({1}), 2);
  EXPECT_EQ(increment({3}), 0);
  EXPECT_EQ(dictionary_->getLevelSize(1), 2);
  EXPECT_EQ(dictionary_->removeSmallSets(2.0), 1);
}

TEST_F(EvictionFault, AnotherSpillStoreTakesTheFileOfTheFormer) {
  make(2, 2, true);
  add({1});
  add({2});  // {1} goes to the disk
  dictionary_->createSpillStore();
  EXPECT_TRUE(dictionary_->spillStore()->isOpen());
  EXPECT_EQ(dictionary_->spillStore()->size(), 0);
  EXPECT_EQ(add({3}), 0);
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{2}, 1)));
}

TEST_F(EvictionFault, ANameThatIsInUseRefusesWithOneAndLosesNothing) {
  make(2, 2, true);
  add({1});
  add({2});  // {1} goes to the disk
  SetDictionary other(4, &settings_, true);
  other.addEmptySet(new CarmaSetDescriptor(0, 0, 0));
  const int item = 8;
  ASSERT_EQ(other.addSet(&item, 1, new CarmaSetDescriptor(5, 9, 0)), 0);
  CarmaSetDescriptor refused(1, 9, 0);
  const int another = 9;
  EXPECT_EQ(other.addSet(&another, 1, &refused), 1);
  EXPECT_EQ(other.getCount(8), 5);
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{1}, 1)));
  EXPECT_EQ(increment({1}), 2);
}

#if defined(__linux__)

TEST_F(EvictionFault, AFullDiskRefusesWithFourAndLosesNothing) {
  make(3, 5, true);
  for (const int item : {1, 2, 3}) add({item});  // {1} goes to the disk, slot 7, bytes 99 to 111
  increment({3});
  {
    const FullDisk full(112);
    const StreamCapture out(std::cout);
    EXPECT_EQ(add({4}), 4);
    EXPECT_EQ(out.text(),
              "Bad OFFSET 4\nHashCode=14, Elements:  2 End of Set \nPrevious: NULL\nNext: NULL\n"
              "Bad OFFSET 4\nHashCode=28, Elements:  4 End of Set \nPrevious: NULL\nNext: NULL\n");
    EXPECT_EQ(increment({1}), 2) << "its bytes are there already";
  }
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{1}, 2)));
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{2}, 1), Pair(Items{3}, 2)));
  EXPECT_THAT(queue(), ElementsAre(Items{3}));
  EXPECT_EQ(add({4}), 0) << "with room again, {3} goes";
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{1}, 2), Pair(Items{3}, 2)));
}

TEST_F(EvictionFault, ADiskFullFromTheStartRefusesWithFourAndLeavesNoFile) {
  make(3, 5, true);
  for (const int item : {1, 2}) add({item});
  {
    const FullDisk full(0);
    EXPECT_EQ(add({3}), 4);
    EXPECT_FALSE(std::filesystem::exists(file_.name()));
  }
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{1}, 1), Pair(Items{2}, 1)));
}

#endif

#if !defined(_WIN32)

// The files in the temporary directory, which is one of the test's own.
TEST_F(EvictionFault, LeavesNoFileBehindOnAnyWayOut) {
  std::filesystem::create_directory(file_.name());
  const char* const before = std::getenv("TMPDIR");
  const std::string saved = before != nullptr ? before : "";
  setenv("TMPDIR", file_.name().c_str(), 1);
  const auto files = [this] {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(file_.name())) {
      names.push_back(entry.path().string());
    }
    return names;
  };
  settings_ = DictionarySettings();
  settings_.SetMaxInStoreSets(2);
  settings_.SetLeaveInMainStoreCount(5);
  settings_.SetDiskSpill(true);
  const std::pair<const char*, std::function<void()>> waysOut[] = {
      {"destruction", [] {}},
      {"pruning", [this] { dictionary_->removeSmallSets(2.0); }},
      {"failed pruning", [this] { raised([this] { dictionary_->removeSmallSets(0.0); }); }},
      {"exception", [this] {
         try {
           const std::unique_ptr<SetDictionary> dying = std::move(dictionary_);
           throw 1;
         } catch (int) {
         }
       }}};
  const StreamCapture quiet(std::cout);
  const std::string named = file_.name() + "/named";
  for (const bool isNamed : {false, true}) {
    settings_.SetSpillFileName(isNamed ? named.c_str() : nullptr);
    for (const auto& [name, leave] : waysOut) {
      SCOPED_TRACE(std::string(name) + (isNamed ? ", named" : ""));
      dictionary_ = std::make_unique<SetDictionary>(4, &settings_, true);
      dictionary_->addEmptySet(new CarmaSetDescriptor(0, 0, 0));
      add({1});
      add({2});
      ASSERT_EQ(dictionary_->setsSpilled(), 1);
      EXPECT_EQ(files(), isNamed ? std::vector<std::string>{named} : std::vector<std::string>());
      if (isNamed) {
        EXPECT_EQ(std::filesystem::status(named).permissions(),
                  std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
      }
      leave();
      dictionary_.reset();
      EXPECT_THAT(files(), IsEmpty());
    }
  }
  if (before != nullptr) {
    setenv("TMPDIR", saved.c_str(), 1);
  } else {
    unsetenv("TMPDIR");
  }
}

#endif

}  // namespace
