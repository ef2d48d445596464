// Four baskets, in half of which 1 and 2 stand, always together: 1 => 2 and 2 => 1, both at 100%.

#include <iostream>

#include "Shelf.h"

int main() {
  Shelf shelf({{1, 2}, {1, 2}, {3}, {4}});
  const int rules = shelf.countRules(0.5, 0.75);
  std::cout << rules << " rules\n";
  return rules == 2 ? 0 : 1;
}
