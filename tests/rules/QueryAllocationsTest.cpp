// Memory that runs out anywhere in a query, put to an engine or to its lattice.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "korassoc/engine/ItemsetColumns.h"
#include "tests/support/AllocationHost.h"
#include "tests/support/TestLattice.h"

namespace {

using KorAssoc::KorStatus;
using Engine = CarmaAssociationAlgorithm;

// What a query may give.
struct Given {
  std::vector<AssociationRule> rules;
  std::vector<ConsequentDescriptor> items;
  std::set<ItemSet> sets;
  std::unique_ptr<SemiLattice> copy;
  korassoc::ItemsetColumns columns;
  double number = 0.0;

  std::string text() const {
    std::string text = textOf(rules) + textOf(items) + textOf(sets) + std::to_string(number) + '\n';
    for (std::size_t row = 0; row < columns.size(); ++row) {
      for (const int item : columns.set(row)) text += std::to_string(item) + ' ';
      text += std::to_string(columns.counts[row]) + '\n';
    }
    const auto* dictionary = static_cast<const SetDictionary*>(copy.get());
    for (int level = 0; dictionary != nullptr && level <= dictionary->storedLevels(); ++level) {
      dictionary->levelTable(level).forEach([&text](const HashTable::Entry& entry) {
        text += textOf(*entry.key) + std::to_string(entry.descriptor->count) + '\n';
      });
    }
    return text;
  }
};

// The sets that the queries ask about.
struct Asked {
  ItemSet one = itemSet({1});
  ItemSet two = itemSet({1, 2});
  ItemSet five = itemSet({1, 2, 3, 4, 5});
};

class Asking : public AllocationHost {
 public:
  using Query = std::function<KorStatus(Engine&, SetDictionary&, Asked&, Given&)>;

  // given: what the host's containers hold already.
  Asking(const Query& query, bool full) : query_(query), full_(full) {
    makeEngine();
    EXPECT_EQ(shortForm(engine_->RunPhaseIIcomplete(0.1)), "OK");
    before_ = counts();
    fill();
  }

  KorStatus run() override { return query_(*engine_, dictionary(), asked_, given_); }
  std::string answer() override {
    EXPECT_EQ(counts(), before_);
    return given_.text();
  }
  void checkAfterRefusal() override {
    EXPECT_EQ(counts(), before_);
    EXPECT_TRUE(engine_->IsLatticeBuilt());
    given_ = Given();
    fill();
  }

 private:
  void fill() {
    if (!full_) return;
    given_.rules.emplace_back(itemSet({7}), itemSet({8}), 0.5, 0.5, 1.0);
    given_.items.emplace_back(77, 0.5, 0.5, 1.0);
    given_.sets.insert(itemSet({1, 2, 3}));
  }

  Query query_;
  bool full_;
  oracle::brute::Counts before_;
  Asked asked_;
  Given given_;
};

void failAllocationsOf(const Asking::Query& query, bool appends = true) {
  for (const bool full : {false, true}) {
    if (full && !appends) return;
    SCOPED_TRACE(full ? "appending" : "alone");
    failAllocations([&]() -> std::unique_ptr<Attempt> { return std::make_unique<Asking>(query, full); });
    if (testing::Test::HasFailure()) return;
  }
}

// For operations that answer no status: they let std::bad_alloc out.
template <typename Work>
KorStatus statusOf(Work&& work) {
  try {
    work();
    return {};
  } catch (const std::bad_alloc&) {
    return error(40001);
  }
}

}  // namespace

TEST(Allocations, OfCreateNgetRules) {
  failAllocationsOf([](Engine& engine, SetDictionary&, Asked&, Given& given) {
    return engine.CreateNgetRules(0.1, 0.2, given.rules);
  });
}

TEST(Allocations, OfGetRulesSpecial) {
  failAllocationsOf([](Engine& engine, SetDictionary&, Asked&, Given& given) {
    return engine.GetRulesSpecial(0, 1, 0.1, 1, 0, 'L', nullptr, nullptr, 0, 9, nullptr, nullptr, 0, 9, 50,
                                  true, given.rules);
  });
}

// The antecedents of each set stand in a table for a moment, which must leave them to the lattice.
TEST(Allocations, OfGetRulesSpecialInTheOrderFound) {
  failAllocationsOf([](Engine& engine, SetDictionary&, Asked&, Given& given) {
    return engine.GetRulesSpecial(0, 1, 0.1, 1, 0, 'N', nullptr, nullptr, 0, 9, nullptr, nullptr, 0, 9, -1,
                                  false, given.rules);
  });
  failAllocationsOf([](Engine& engine, SetDictionary&, Asked& asked, Given& given) {
    return engine.GetRulesSpecial(0, 1, 0.1, 1, 0, 'N', nullptr, &asked.five, 0, 9, &asked.one, nullptr, 1, 2,
                                  -1, false, given.rules);
  });
}

TEST(Allocations, OfGetRulesSpecialOfGivenItems) {
  failAllocationsOf([](Engine& engine, SetDictionary&, Asked& asked, Given& given) {
    return engine.GetRulesSpecial(0, 1, 0.1, 1, 0, 'S', &asked.one, &asked.five, 1, 2, nullptr, &asked.five,
                                  1, 2, -1, false, given.rules);
  });
}

TEST(Allocations, OfGetItemsSpecial) {
  failAllocationsOf([](Engine& engine, SetDictionary&, Asked& asked, Given& given) {
    return engine.GetItemsSpecial(0, 1, 0.1, 1, 0, 'C', nullptr, &asked.five, 0, 9, nullptr, 5, given.items);
  });
}

TEST(Allocations, OfGetItems) {
  failAllocationsOf([](Engine& engine, SetDictionary&, Asked& asked, Given& given) {
    return engine.GetItems(&asked.five, 3, given.items);
  });
  failAllocationsOf([](Engine& engine, SetDictionary&, Asked&, Given& given) {
    return engine.GetItems(nullptr, -1, given.items);
  });
}

TEST(Allocations, OfGetItemsets) {
  failAllocationsOf(
      [](Engine& engine, SetDictionary&, Asked&, Given& given) { return engine.GetItemsets(given.columns); });
}

TEST(Allocations, OfTheLatticesRules) {
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked&, Given& given) {
    return lattice.createRules(0.1, 0.2, given.rules, nullptr, false);
  });
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked&, Given& given) {
    return lattice.createFilteredRules(0, 1, 0.1, 1, 0, 'N', nullptr, nullptr, 0, 9, nullptr, nullptr, 0, 9,
                                       -1, true, given.rules, nullptr);
  });
}

TEST(Allocations, OfTheLatticesConsequents) {
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked& asked, Given& given) {
    return lattice.createConsequents(&asked.two, -1, given.items);
  });
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked&, Given& given) {
    return lattice.createFilteredConsequents(0, 1, 0.1, 1, 0, 'C', nullptr, nullptr, 0, 9, nullptr, -1,
                                             given.items, nullptr);
  });
}

TEST(Allocations, OfTheLatticesSearches) {
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked& asked, Given& given) {
    return lattice.superSets(asked.one, given.sets);
  });
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked& asked, Given& given) {
    return lattice.findItemSets(asked.one, 20, 1, 3, given.sets);
  });
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked& asked, Given& given) {
    return lattice.findItemSets2(asked.one, 20, 100, 1, 3, given.sets);
  });
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked& asked, Given& given) {
    return lattice.findItemSets3(asked.one, asked.five, 20, 100, 1, 3, given.sets);
  });
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked& asked, Given& given) {
    return lattice.findItemSetsWithin(asked.five, 20, 100, 1, 3, given.sets);
  });
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked&, Given& given) {
    return lattice.findMaximalItemSets(25, given.sets);
  });
}

TEST(Allocations, OfTheLatticesExports) {
  failAllocationsOf(
      [](Engine&, SetDictionary& lattice, Asked&, Given& given) {
        FixedBuffer buffer;
        std::ostream out(&buffer);
        const KorStatus status = lattice.exportRulesXML(out, 0.1, 0.2, nullptr, true);
        given.number = static_cast<double>(buffer.size());
        return status;
      },
      false);
  failAllocationsOf(
      [](Engine&, SetDictionary& lattice, Asked&, Given& given) {
        FixedBuffer buffer;
        std::ostream out(&buffer);
        const KorStatus status = lattice.exportLatticeXML(out, 0.1);
        given.number = static_cast<double>(buffer.size());
        return status;
      },
      false);
}

TEST(Allocations, OfQueriesWithoutAStatus) {
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked& asked, Given& given) {
    return statusOf([&] { given.number = lattice.findSupport(asked.one, 5); });
  });
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked&, Given& given) {
    return statusOf([&] { given.copy.reset(lattice.filteredCopy(0.15)); });
  });
  failAllocationsOf([](Engine&, SetDictionary& lattice, Asked& asked, Given& given) {
    return statusOf([&] { given.copy.reset(lattice.filteredCopy(0.1, asked.two)); });
  });
}
