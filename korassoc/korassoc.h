// Everything that a host of the library compiles against, in one include.

#pragma once

#include "korassoc/base/Export.h"
#include "korassoc/engine/AssociationAlgorithmSettings.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/engine/Exceptions.h"
#include "korassoc/engine/KorStatus.h"
#include "korassoc/engine/MultiPassTransIter.h"
#include "korassoc/engine/ProgressListener.h"
#include "korassoc/engine/ProgressReport.h"
#include "korassoc/engine/SupportSource.h"
#include "korassoc/engine/Transaction.h"
#include "korassoc/engine/TransactionIterator.h"
#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/itemsets/KorMV.h"
#include "korassoc/itemsets/KorPower.h"
#include "korassoc/itemsets/OrderedArray.h"
#include "korassoc/itemsets/SimpleArray.h"
