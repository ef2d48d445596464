// The links of the plain engine's lattice: for each stored set the items that extend it to a stored set.

#pragma once

namespace oracle {

class PlainDictionary;

// Every stored set enters the item that it has beyond each of its subsets into that subset's adjacent list.
// Lists begin empty; the empty set's TID and max missed stay as they are. Returns the number of subsets that
// were missing.
int buildLattice(PlainDictionary& dictionary);

// Drops from the lists every item whose extension is no longer stored.
void rebuildLinks(PlainDictionary& dictionary);

}  // namespace oracle
