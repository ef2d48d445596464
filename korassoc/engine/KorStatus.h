// The result of an engine operation: a code, its severity and a few detail values.

#pragma once

#include <array>
#include <cstdint>

#include "korassoc/base/Export.h"

namespace KorAssoc {

// A KorStatus is a value; a default-made one says OK. The severity alone decides between OK (0), warning
// (positive) and error (negative); the code says what happened.
//
//   code   severity          meaning
//   0      OK                all went well
//   1      error or warning  the run was cancelled
//   2      error             a stream could not be written, or the transactions could not be restarted
//   3      error             too many itemsets in store
//   4      warning or error  saving is not possible now
//   5      error             construction or restore failed, the engine is unusable
//   6      warning or error  the operation is not permitted in the engine's present state
//   40001  error or warning  an exception was caught inside the engine's or the dictionary's work
//   40002  warning           a rule or consequent query could not be answered
class KORASSOC_EXPORT KorStatus {
 public:
  KorStatus() = default;

  // A warning (severity 1) with the given code when warning is true, else an error (severity -1). The code is
  // kept in 32 bits.
  KorStatus(long code, bool warning)
      : code_(static_cast<std::int32_t>(code)), severity_(warning ? std::int16_t{1} : std::int16_t{-1}) {}

  // Equal when code, severity and all six detail values are.
  bool operator==(const KorStatus& other) const;

  bool IsOK() const { return severity_ == 0; }
  bool IsError() const { return severity_ < 0; }
  bool IsWarning() const { return severity_ > 0; }

  long GetCode() const { return code_; }
  short GetSeverity() const { return severity_; }

  // Detail values, 0 until set; the engine itself sets none. Requires index <= 2, which is not checked.
  long GetDiscreteDatum(unsigned int index) const { return discrete_[index]; }
  double GetScaleDatum(unsigned int index) const { return scale_[index]; }

  // A discrete datum is kept in 32 bits.
  void SetDiscreteDatum(unsigned int index, long value) {
    discrete_[index] = static_cast<std::int32_t>(value);
  }
  void SetScaleDatum(unsigned int index, double value) { scale_[index] = value; }

 private:
  std::int32_t code_ = 0;
  std::int16_t severity_ = 0;
  std::array<std::int32_t, 3> discrete_{};
  std::array<double, 3> scale_{};
};

}  // namespace KorAssoc
