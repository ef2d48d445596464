#include "korassoc/engine/ProgressReport.h"

ProgressReport::~ProgressReport() = default;
