#include "Shelf.h"

int Shelf::countRules(double minSupport, double minConfidence) {
  CarmaSettings settings;
  CarmaAssociationAlgorithm carma(&settings, this);
  std::vector<AssociationRule> rules;
  carma.RunPhaseIIcomplete(minSupport);
  carma.CreateNgetRules(minSupport, minConfidence, rules);
  return carma.GetStatus().IsOK() ? static_cast<int>(rules.size()) : -1;
}
