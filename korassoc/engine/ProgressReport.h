// What a progress listener can ask about a run, by name.

#pragma once

#include <string>

#include "korassoc/base/Export.h"

// A report reads the live engine and lives only for the one call of OnProgress that brings it. Names are
// compared in full and with their case; which ones are known depends on the phase that reports.
class KORASSOC_EXPORT ProgressReport {
 public:
  virtual ~ProgressReport();

  // The value of that name, 0 when the report has none.
  virtual int GetIntValue(const std::string& key) const = 0;

  // The value of that name, 0.0 when the report has none.
  virtual double GetDoubleValue(const std::string& key) const = 0;
};
