// The texts by which the library names itself: version string, copyright line, product names.

#pragma once

#include <string>

namespace korassoc::detail {

// "(C) Copyright 2026 Talvane. All rights reserved.": the copyright line of every document.
const char* copyrightNotice();

// The answer of CarmaAssociationAlgorithm::GetComponentVersion(): product, version, a blank, the copyright.
std::string componentVersion();

// The application that an exported document names as its maker, by the algorithm that counted the sets
// (CARMA, or Apriori), and its version.
const char* applicationName(bool carma);
const char* applicationVersion();

}  // namespace korassoc::detail
