// How this layer says that it cannot do what it was asked.

#pragma once

#include <stdexcept>
#include <string>

#include "korassoc/base/Export.h"

namespace korassoc {

// Thrown by everything of this layer. what() is one sentence for people, without a full stop and without the
// name of an option: a tool or a binding adds what its users can do about it.
//
//   kind         what happened                                        the object afterwards
//   kInput       an argument or a column is not what it has to be     as it was
//   kLimit       a limit of memory, time or itemsets was reached      as it was; there is no partial result
//   kCancelled   the caller's stop token asked for it                 as it was
//   kDamaged     bytes to restore from are not what was saved         not made
//   kInternal    the library has failed: please report it             unspecified, may be destroyed
//
// std::bad_alloc passes through as it is, and so does whatever a callback of the caller throws.
class KORASSOC_EXPORT Error : public std::runtime_error {
 public:
  enum class Kind { kInput, kLimit, kCancelled, kDamaged, kInternal };

  Error(Kind kind, const std::string& sentence) : std::runtime_error(sentence), kind_(kind) {}
  Error(const Error&) = default;
  Error& operator=(const Error&) = default;
  ~Error() override;

  Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

}  // namespace korassoc
