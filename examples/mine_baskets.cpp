// mine_baskets FILE: the rules in a file of baskets, a basket a line, item names separated by commas.

#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/korassoc.h"

// Hands out the baskets one by one; it is itself the transaction that it stands at.
struct Baskets : MultiPassTransIter, Transaction {
  std::vector<std::vector<int>> rows;
  std::size_t next = 0;

  bool HasNext() override { return next < rows.size(); }
  Transaction* Next() override { return ++next, this; }
  int Restart() override { return next = 0, 0; }
  int Rewind() override { return Restart(); }
  int GetLength() const override { return static_cast<int>(rows[next - 1].size()); }
  int GetItem(int position) const override { return rows[next - 1].data()[position]; }
  int GetTransactionID() const override { return static_cast<int>(next); }
};

int main(int argc, char** argv) {
  Baskets baskets;
  std::map<std::string, int> items;
  std::vector<std::string> names;
  std::ifstream file(argc > 1 ? argv[1] : "examples/baskets.csv");
  for (std::string line, name; std::getline(file, line);) {
    std::istringstream fields(line);
    for (baskets.rows.emplace_back(); std::getline(fields, name, ',');) {
      const auto [item, isNew] = items.try_emplace(name, static_cast<int>(names.size()));
      if (isNew) names.push_back(name);
      baskets.rows.back().push_back(item->second);
    }
  }

  CarmaSettings settings;
  CarmaAssociationAlgorithm carma(&settings, &baskets);
  std::vector<AssociationRule> rules;
  carma.RunPhaseIIcomplete(0.02);            // every itemset of this support
  carma.CreateNgetRules(0.02, 0.75, rules);  // support, confidence

  const auto print = [&names](const ItemSet& set, const char* between) {
    for (int i = 0; i < set.length(); ++i)
      std::cout << (i > 0 ? between : "") << names.data()[set.getItemAt(i)];
  };
  for (const AssociationRule& rule : rules) {
    print(rule.getAntecedent(), " + ");
    std::cout << " => ";
    print(rule.getConsequent(), " + ");
    std::cout << "  (" << rule.getConfidence() * 100 << "% of " << rule.getSupport() * 100 << "%)\n";
  }
  return carma.GetStatus().IsOK() ? 0 : 1;
}
