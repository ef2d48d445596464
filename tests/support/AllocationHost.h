// A run of 200 transactions for the tests in which memory runs out, and what can be seen of its engine.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/ProgressReport.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"
#include "tests/oracle/BruteForce.h"
#include "tests/support/Dice.h"
#include "tests/support/EngineTestAccess.h"
#include "tests/support/EveryAllocation.h"
#include "tests/support/Hosts.h"
#include "tests/support/VectorTransactions.h"

// 8 items, the first ones often, and now and then one of 30 others.
inline const Transactions& manyTransactions() {
  static const Transactions transactions = [] {
    Dice dice(20261122);
    Transactions made;
    for (int i = 0; i < 200; ++i) {
      std::vector<int> items;
      for (int item = 1; item <= 8; ++item) {
        if (dice.chance(80 - 8 * item)) items.push_back(item);
      }
      if (dice.chance(20)) items.push_back(dice.between(100, 129));
      made.push_back(items);
    }
    return made;
  }();
  return transactions;
}

// A place in memory to write to, or to read from, that takes none of the heap.
class FixedBuffer : public std::streambuf {
 public:
  FixedBuffer() { setp(bytes_.data(), bytes_.data() + bytes_.size()); }
  explicit FixedBuffer(const std::string& text) : text_(text) {
    setg(text_.data(), text_.data(), text_.data() + text_.size());
  }
  std::string text() const { return std::string(pbase(), pptr()); }
  std::ptrdiff_t size() const { return pptr() - pbase(); }
  // To be written, or read, from its beginning again.
  void empty() { setp(bytes_.data(), bytes_.data() + bytes_.size()); }
  void rewind() { setg(eback(), eback(), egptr()); }

 protected:
  pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode) override {
    const off_type base = from == std::ios_base::beg   ? 0
                          : from == std::ios_base::cur ? gptr() - eback()
                                                       : egptr() - eback();
    return seekpos(base + offset, std::ios_base::in);
  }
  pos_type seekpos(pos_type position, std::ios_base::openmode) override {
    if (position < 0 || position > egptr() - eback()) return pos_type(off_type(-1));
    setg(eback(), eback() + off_type(position), egptr());
    return position;
  }

 private:
  static inline std::array<char, 1 << 20> bytes_;  // one at a time writes
  std::string text_;
};

// A run with small tables, which are quick to make and grow often.
class AllocationHost : public Attempt {
 public:
  using Engine = CarmaAssociationAlgorithm;
  using Access = CarmaAssociationAlgorithmTestAccess;

  AllocationHost() : source_(manyTransactions()) {
    settings_.SetSupportSource(new TestSupport([](int t) { return t % 60 < 30 ? 0.12 : 0.1 + t * 1e-5; }));
    settings_.SetProgressListener(new TestListener([this](ProgressReport& report) {
      reported_ += report.GetIntValue("nTrans") + report.GetIntValue("setTotal");
    }));
    settings_.SetRemoveSmallFreq(50);
    settings_.SetReportFreqPhaseI(50);
    settings_.SetReportFreqPhaseII(50);
    settings_.SetMaxTranLength(1);
    settings_.SetMaxNumSigmaChunks(1);
    DictionarySettings& dictionary = settings_.GetDictionarySettings();
    dictionary.SetInitialBoundarySearchSize(7);
    dictionary.SetInitialHashtableSet23Size(7);
    dictionary.SetInitialSetSize(7);
    dictionary.SetReportFrequency(10);
  }

 protected:
  void makeEngine() {
    engine_.emplace(&settings_, &source_);
    EXPECT_TRUE(engine_->GetStatus().IsOK());
  }
  SetDictionary& dictionary() const { return *Access::dictionary(*engine_); }

  // Everything that the engine holds, in the order in which it holds it.
  std::string contents() const {
    std::string text = "sets " + std::to_string(engine_->NumberOfSets()) + ", in memory " +
                       std::to_string(dictionary().inStoreCount()) + ", transactions " +
                       std::to_string(engine_->NumberOfTransactions()) + ", seen " +
                       std::to_string(Access::transactionsSeen(*engine_)) + ", average " +
                       std::to_string(engine_->AverageSupport()) + '\n';
    if (engine_->IsLatticeBuilt()) text += "lattice\n";
    for (int level = 0; level <= dictionary().storedLevels(); ++level) {
      dictionary().levelTable(level).forEach([&text](const HashTable::Entry& entry) {
        for (int i = 0; i < entry.key->length(); ++i) text += std::to_string(entry.key->getItemAt(i)) + ' ';
        text += ": " + std::to_string(entry.descriptor->count) + ' ' +
                std::to_string(entry.descriptor->getTID()) + ' ' +
                std::to_string(entry.descriptor->getMaxMissed()) + " >";
        if (const auto* links = dynamic_cast<const LatticeSetDescriptor*>(entry.descriptor)) {
          for (int i = 0; i < links->adjacent.count; ++i)
            text += ' ' + std::to_string(links->adjacent.data[i]);
        }
        text += '\n';
      });
    }
    return text;
  }

  // Stored sets and their counts.
  oracle::brute::Counts counts() const {
    oracle::brute::Counts counts;
    for (int level = 0; level <= dictionary().storedLevels(); ++level) {
      dictionary().levelTable(level).forEach([&counts](const HashTable::Entry& entry) {
        const int* items = entry.key->getTheArray();
        counts[{items, items + entry.key->length()}] = entry.descriptor->count;
      });
    }
    return counts;
  }

  // Every stored set of at least so many items has its exact count in the first transactions.
  void expectExactCounts(int fewestItems, int transactions) const {
    const Transactions& all = manyTransactions();
    const oracle::brute::Counts exact =
        oracle::brute::countSubsets(Transactions(all.begin(), all.begin() + transactions), 10);
    for (const auto& [items, count] : counts()) {
      if (static_cast<int>(items.size()) < fewestItems) continue;
      const auto known = exact.find(items);
      EXPECT_EQ(count, known != exact.end() ? known->second : 0) << items.size() << " items";
    }
  }

  // A complete pass finds every set that 20 transactions hold, whatever came before.
  void expectCompletePass() {
    settings_.GetDictionarySettings().SetMaxInStoreSets(2147483647);
    EXPECT_EQ(shortForm(engine_->RunPhaseIIcomplete(0.1)), "OK");
    EXPECT_EQ(counts(), oracle::brute::atLeast(
                            oracle::brute::countSubsets(manyTransactions(), dictionary().maxLevel()), 20));
    EXPECT_TRUE(engine_->IsLatticeBuilt());
  }

  CarmaSettings settings_;
  VectorTransactions source_;
  std::optional<Engine> engine_;
  long long reported_ = 0;
};

inline std::string textOf(const ItemSet& set) {
  std::string text;
  for (int i = 0; i < set.length(); ++i) text += std::to_string(set.getItemAt(i)) + ' ';
  return text;
}

inline std::string textOf(const std::vector<AssociationRule>& rules) {
  std::string text;
  for (const AssociationRule& rule : rules) {
    text += textOf(rule.getAntecedent()) + "> " + textOf(rule.getConsequent()) +
            std::to_string(rule.getSupport()) + ' ' + std::to_string(rule.getConfidence()) + ' ' +
            std::to_string(rule.getLift()) + '\n';
  }
  return text;
}

inline std::string textOf(const std::vector<ConsequentDescriptor>& items) {
  std::string text;
  for (const ConsequentDescriptor& item : items) {
    text += std::to_string(item.getItem()) + ' ' + std::to_string(item.getSupport()) + ' ' +
            std::to_string(item.getConfidence()) + ' ' + std::to_string(item.getLift()) + '\n';
  }
  return text;
}

inline std::string textOf(const std::set<ItemSet>& sets) {
  std::string text;
  for (const ItemSet& set : sets) text += textOf(set) + '\n';
  return text;
}
