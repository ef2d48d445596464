// Who is told how a run proceeds.

#pragma once

#include "korassoc/base/Export.h"

class ProgressReport;

// Implemented by the host; owned by the settings once installed there.
class KORASSOC_EXPORT ProgressListener {
 public:
  virtual ~ProgressListener();

  // Called on the engine's thread at each report point. The report dies when the call returns. Cancel() of
  // the engine may be called from here and stops the running phase at its next check.
  //
  // RunPhaseIIcomplete reports in this order:
  //   while it first reads     every CarmaSettings::GetReportFreqPhaseII() transactions; "itemsets" is 0
  //   while it enumerates      every DictionarySettings::GetReportFrequency() itemsets found, and earlier
  //                            where it finds few; "nTransII" stays, "itemsets" grows. None when one of the
  //                            two frequencies is 0
  //   at its end, when done    once
  virtual void OnProgress(ProgressReport* report) = 0;
};
