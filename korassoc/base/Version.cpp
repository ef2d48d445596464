#include "korassoc/base/Version.h"

namespace korassoc::detail {

const char* copyrightNotice() { return "(C) Copyright 2026 Talvane. All rights reserved."; }

std::string componentVersion() {
  return std::string("Talvane AssociationRule -- CARMA Version 1.1 ") + copyrightNotice();
}

const char* applicationName(bool carma) {
  return carma ? "Talvane Association Carma C++" : "Talvane Association Apriori C++";
}

const char* applicationVersion() { return "1.1"; }

}  // namespace korassoc::detail
