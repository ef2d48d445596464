#include "korassoc/engine/TransactionIterator.h"

TransactionIterator::~TransactionIterator() = default;
