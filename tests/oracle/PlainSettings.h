// The settings that the plain engine knows, with the library's defaults. Memory is never limited here.

#pragma once

namespace oracle {

struct PlainSettings {
  int maxLengthSet = 10;          // the largest set stored
  int removeSmallFreq = 500;      // transactions between prunings; 0: at the end of each call only
  int reportFreqPhaseI = 10000;   // transactions between reports, which come at prunings only
  int reportFreqPhaseII = 10000;  // transactions between reports

  // Bucket counts to begin with.
  int initialSetSize = 89;
  int initialBoundarySize = 89;
  int initialBoundarySearchSize = 2879;
  int initialHashtableSet23Size = 23039;
  int initialRulesSize = 200;
};

}  // namespace oracle
