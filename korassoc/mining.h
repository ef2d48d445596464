// Mining for programs: baskets in, itemsets and rules out, in one include.

#pragma once

#include "korassoc/mining/Baskets.h"
#include "korassoc/mining/Error.h"
#include "korassoc/mining/Item.h"
#include "korassoc/mining/ItemsetTable.h"
#include "korassoc/mining/Labels.h"
#include "korassoc/mining/Measure.h"
#include "korassoc/mining/Mining.h"
#include "korassoc/mining/MiningOptions.h"
#include "korassoc/mining/Model.h"
#include "korassoc/mining/Recommender.h"
#include "korassoc/mining/RuleOrder.h"
#include "korassoc/mining/RuleQuery.h"
#include "korassoc/mining/RuleTable.h"
#include "korassoc/mining/Support.h"
