#include "korassoc/base/Version.h"

namespace korassoc::detail {

const char* copyrightNotice() { return "(C) Copyright 2026 Talvane. All rights reserved."; }

std::string componentVersion() {
  return std::string("Talvane AssociationRule -- CARMA Version 1.1 ") + copyrightNotice();
}

}  // namespace korassoc::detail
