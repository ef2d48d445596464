// Every public operation of the engine and of its lattice, to be called from anywhere.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/ReentrantHost.h"

struct HostOperation {
  enum Kind {
    Asks,       // changes nothing; the answer of a lattice that stays as it is stays the same
    Settles,    // changes nothing that is counted, but answers what depends on the moment
    Stops,      // tells the engine or its lattice to stop
    Changes,    // changes what is stored, or leads the engine on, unless it is refused
    Increments  // adds to a count, whoever holds the lattice
  };
  std::string name;  // begins with the operation's own
  Kind kind;
  std::function<std::string(ReentrantHost&)> run;  // gives the answer as a text
  bool needsLattice = false;                       // called on sets(), which are not null then
};

const std::vector<HostOperation>& hostOperations();
