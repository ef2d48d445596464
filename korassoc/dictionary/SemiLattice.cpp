#include "korassoc/dictionary/SemiLattice.h"

SemiLattice::~SemiLattice() = default;
