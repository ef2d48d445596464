#include "korassoc/engine/ProgressListener.h"

ProgressListener::~ProgressListener() = default;
