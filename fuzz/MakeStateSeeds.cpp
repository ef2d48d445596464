// Writes small saved states into tests/corpus, as seeds for the fuzz targets that restore them:
//
//   MakeStateSeeds tests/corpus
//
// The states are the same in every run.

#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/DictionarySettings.h"
#include "tests/support/Hosts.h"
#include "tests/support/VectorTransactions.h"

namespace {

struct Kind {
  const char* name;
  Transactions transactions;
  std::function<void(CarmaSettings&)> settings;
  int phaseII;  // 0 none, 1 RunPhaseII, 2 RunNullPhaseII
};

Transactions someTransactions(int count) {
  Transactions transactions;
  for (int i = 0; i < count; ++i) {
    std::vector<int> items = {1};
    if (i % 2 == 0) items.push_back(2);
    if (i % 3 != 0) items.push_back(3);
    if (i % 4 != 0) items.push_back(5);
    if (i % 5 == 0) items.push_back(40 + i % 20);
    transactions.push_back(items);
  }
  return transactions;
}

// {1} leaves for {3} and is counted on the disk, until the first pruning removes {2} and {3}.
Transactions singleItems() {
  Transactions transactions(10, {1});
  transactions[1] = {2};
  transactions[2] = {3};
  return transactions;
}

void make(const std::string& folder, const Kind& kind) {
  CarmaSettings settings;
  settings.GetDictionarySettings().SetSpillFileName("korassoc-unnamed-seed");  // in all seeds
  settings.GetDictionarySettings().SetInitialHashtableSet23Size(
      11);  // small tables, for more inputs a second
  settings.GetDictionarySettings().SetInitialBoundarySearchSize(11);
  settings.SetRemoveSmallFreq(5);
  settings.SetMaxLengthSet(4);
  settings.SetSupportSource(new TestSupport([](int transaction) { return transaction % 7 < 4 ? 0.3 : 0.2; }));
  kind.settings(settings);
  VectorTransactions source(kind.transactions);
  CarmaAssociationAlgorithm engine(&settings, &source);
  engine.RunPhaseI(static_cast<int>(kind.transactions.size()) + 1);
  if (kind.phaseII == 0) {
    std::fstream binary(folder + "/RestoreBinaryFuzz/" + kind.name,
                        std::ios::in | std::ios::out | std::ios::binary | std::ios::trunc);
    if (!engine.SaveState(binary).IsOK()) std::fprintf(stderr, "%s was not saved\n", kind.name);
  }
  if (kind.phaseII == 1) engine.RunPhaseII();
  if (kind.phaseII == 2) engine.RunNullPhaseII(0.5);
  std::ofstream xml(folder + "/RestoreXmlFuzz/" + kind.name, std::ios::binary);
  if (!engine.SaveStateXML(xml).IsOK()) std::fprintf(stderr, "%s was not saved as XML\n", kind.name);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: %s tests/corpus\n", arguments[0]);
    return 2;
  }
  const auto nothing = [](CarmaSettings&) {};
  const Kind kinds[] = {
      {"empty", someTransactions(0), nothing, 0},
      {"one-transaction", someTransactions(1), nothing, 0},
      {"some", someTransactions(8), nothing, 0},
      {"pruned", someTransactions(24), nothing, 0},
      {"no-sets-of-two", someTransactions(10), [](CarmaSettings& settings) { settings.SetMaxLengthSet(1); },
       0},
      {"limited", someTransactions(12),
       [](CarmaSettings& settings) {
         settings.GetDictionarySettings().SetMaxInStoreSets(8);
         settings.GetDictionarySettings().SetLeaveInMainStoreCount(4);
       },
       0},
      {"came-back-from-disk", singleItems(),
       [](CarmaSettings& settings) {
         settings.GetDictionarySettings().SetMaxInStoreSets(3);
         settings.GetDictionarySettings().SetLeaveInMainStoreCount(9);
         settings.GetDictionarySettings().SetDiskSpill(true);
         settings.SetRemoveSmallFreq(10);
       },
       0},
      {"names-a-spill-file", singleItems(),
       [](CarmaSettings& settings) {
         settings.GetDictionarySettings().SetMaxInStoreSets(3);
         settings.GetDictionarySettings().SetLeaveInMainStoreCount(9);
         settings.GetDictionarySettings().SetDiskSpill(true);
         settings.GetDictionarySettings().SetSpillFileName("never-to-be-opened");
         settings.SetRemoveSmallFreq(10);
       },
       0},
      {"lattice", someTransactions(8), nothing, 1},
      {"lattice-of-phase-one", someTransactions(12), nothing, 2},
      {"lattice-of-nothing", someTransactions(0), nothing, 1},
  };
  for (const Kind& kind : kinds) make(arguments[1], kind);
  return 0;
}
