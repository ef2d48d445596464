// From baskets to a model.

#pragma once

#include "korassoc/base/Export.h"
#include "korassoc/mining/Baskets.h"
#include "korassoc/mining/MiningOptions.h"
#include "korassoc/mining/Model.h"

namespace korassoc {

// Finds every itemset that reaches the support, of at most the length asked for, with its exact count. The
// same baskets give the same model, whatever their order.
//
// All work is done on the caller's thread. The baskets are read at least once more than they were to be made;
// a basket of weight w takes the time of w baskets. Throws Error: kInput for options outside their range;
// kLimit when a limit of the options is reached, or when the baskets stand for more than 2,147,483,647
// transactions; kCancelled. There is no partial result.
KORASSOC_EXPORT Model mine(const Baskets& baskets, const MiningOptions& options);

}  // namespace korassoc
