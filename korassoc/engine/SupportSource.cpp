#include "korassoc/engine/SupportSource.h"

SupportSource::~SupportSource() = default;
