#include "fuzz/RestoredEngine.h"

#include <sstream>
#include <utility>
#include <vector>

#include "fuzz/Checks.h"
#include "korassoc/dictionary/SemiLattice.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/engine/SupportSource.h"
#include "korassoc/engine/Transaction.h"
#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"
#include "tests/support/EngineTestAccess.h"

namespace fuzz {
namespace {

using Engine = CarmaAssociationAlgorithm;

class Basket final : public Transaction {
 public:
  explicit Basket(std::vector<int> items) : items_(std::move(items)) {}
  int GetItem(int position) const override { return items_[static_cast<std::size_t>(position)]; }
  int GetTransactionID() const override { return 0; }
  int GetLength() const override { return static_cast<int>(items_.size()); }

 private:
  std::vector<int> items_;
};

// A dozen transactions, over and over when asked to restart.
class Baskets : public MultiPassTransIter {
 public:
  bool HasNext() override { return next_ < baskets_.size(); }
  Transaction* Next() override { return &baskets_[next_++]; }
  int Rewind() override { return 0; }
  int Restart() override {
    next_ = 0;
    return 0;
  }

 private:
  std::vector<Basket> baskets_ = {
      Basket({1, 2, 3}),    Basket({1, 2}),       Basket({2, 3, 5}), Basket({1, 2, 3, 5}),
      Basket({}),           Basket({5}),          Basket({1, 1, 2}), Basket({-7, 2147483647}),
      Basket({1, 2, 3, 5}), Basket({3, 5, 8, 9}), Basket({2, 3}),    Basket({1, 3, 5})};
  std::size_t next_ = 0;
};

class Third : public SupportSource {
 public:
  double GetSupport(int /*transaction*/) override { return 0.3; }
};

bool isUsable(const Engine& engine) { return engine.GetStatus().GetCode() != 5; }

// A file stream over memory.
template <class Stream>
class InMemory {
 public:
  explicit InMemory(const std::string& bytes = {})
      : buffer_(bytes, std::ios::in | std::ios::out | std::ios::ate | std::ios::binary) {
    static_cast<std::ios&>(stream_).rdbuf(&buffer_);
  }
  Stream& stream() { return stream_; }
  std::string bytes() const { return buffer_.str(); }

 private:
  std::stringbuf buffer_;
  Stream stream_;
};

// Whatever can be asked of a lattice, and answered or refused.
void ask(Engine& engine) {
  std::vector<AssociationRule> rules;
  std::vector<ConsequentDescriptor> items;
  const std::vector<int> some = {1, 2};
  ItemSet antecedent(some.data(), 2);
  ItemSet three(3);
  engine.CreateNgetRules(0.1, 0.3, rules);
  engine.GetRulesSpecial(0.1, 1.0, 0.0, 1.0, 0.0, 'c', nullptr, nullptr, 0, 5, nullptr, nullptr, 0, 5, 50,
                         false, rules);
  engine.GetRulesSpecial(0.0, 1.0, 0.0, 1.0, 0.5, 'l', &three, nullptr, 1, 3, nullptr, &antecedent, 1, 2, 50,
                         true, rules);
  engine.GetItemsSpecial(0.0, 1.0, 0.0, 1.0, 0.0, 's', nullptr, &antecedent, 0, 4, nullptr, 20, items);
  engine.GetItems(&antecedent, 10, items);
  Nowhere nowhere;
  std::ostream document(&nowhere);
  engine.ExportRulesXML(document, 0.1, 0.2, true);
  engine.ExportLatticeXML(document);
  engine.DisplayDictInfo();
  if (SemiLattice* lattice = engine.GetLattice()) {
    lattice->display();
    lattice->findSupport(three, 2);
    std::set<ItemSet> sets;
    lattice->superSets(three, sets);
    lattice->findItemSets(ItemSet(), 1, 0, 3, sets);
    const std::unique_ptr<SemiLattice> copy(lattice->filteredCopy(0.2, three));
  }
}

// A binary state can hold doubles that are no finite numbers. They are written as such, and refused in XML.
bool holdsOnlyNumbers(const std::string& xml) {
  return xml.find("nan\"/>") == std::string::npos && xml.find("inf\"/>") == std::string::npos;
}

// What an engine saves must be taken back, with as many sets.
void checkXml(Engine& engine) {
  std::ostringstream saved;
  if (!engine.SaveStateXML(saved).IsOK() || !holdsOnlyNumbers(saved.str())) return;
  Baskets baskets;
  const std::unique_ptr<Engine> again = restoreXml(saved.str(), &baskets);
  check(isUsable(*again), "an XML state that an engine saved was refused");
  check(again->NumberOfSets() == engine.NumberOfSets(), "an XML state lost sets");
  check(again->IsLatticeBuilt() == engine.IsLatticeBuilt(), "an XML state lost its phase");
}

void checkBinary(Engine& engine) {
  InMemory<std::fstream> saved;
  if (!engine.SaveState(saved.stream()).IsOK()) return;
  Baskets baskets;
  const std::unique_ptr<Engine> again = restoreBinary(saved.bytes(), &baskets);
  check(isUsable(*again), "a state that an engine saved was refused");
  check(again->NumberOfSets() == engine.NumberOfSets(), "a state lost sets");
}

// Leads the engine on; how: one of several ways.
void leadOn(Engine& engine, int how) {
  if (!engine.IsLatticeBuilt()) engine.SetSupportSource(new Third);  // in phase II it would stay ours
  engine.SetMaxInStoreSets(5000);
  if (how % 2 == 0 && engine.RunPhaseI(12).IsOK()) {
    checkXml(engine);
    checkBinary(engine);
  }
  switch (how) {
    case 0:
      engine.RunPhaseII();
      break;
    case 1:
      engine.RunPhaseIIrandom();
      break;
    case 2:
      engine.RunNullPhaseII(0.1);
      break;
    case 3:
      engine.RunPhaseIIcomplete(0.3);
      break;
    default:
      break;
  }
  ask(engine);
  checkXml(engine);
}

}  // namespace

std::unique_ptr<Engine> restoreBinary(const std::string& state, MultiPassTransIter* iterator) {
  InMemory<std::fstream> in(state);
  return std::make_unique<Engine>(in.stream(), iterator);
}

std::unique_ptr<Engine> restoreXml(const std::string& state, MultiPassTransIter* iterator) {
  InMemory<std::ifstream> in(state);
  return std::make_unique<Engine>(in.stream(), iterator);
}

void tryState(const Restore& restore, const std::uint8_t* data, std::size_t size) {
  const Silence silence;
  const std::string state(reinterpret_cast<const char*>(data), size);
  for (int how = 0; how < 5; ++how) {
    Baskets baskets;
    const std::unique_ptr<Engine> engine = restore(state, &baskets);
    if (!isUsable(*engine)) {
      check(engine->GetStatus().IsError() && engine->NumberOfSets() == -1, "an engine was refused by half");
      return;
    }
    check(engine->GetStatus().IsOK(), "a restored engine is not OK");
    check(!CarmaAssociationAlgorithmTestAccess::dictionary(*engine)->settings().HasSpillFileName(),
          "an engine would spill to a file that its state names");
    if (how == 4) {
      ask(*engine);
      checkXml(*engine);
    } else {
      leadOn(*engine, how);
    }
  }
}

}  // namespace fuzz
