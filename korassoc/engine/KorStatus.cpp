#include "korassoc/engine/KorStatus.h"

namespace KorAssoc {

bool KorStatus::operator==(const KorStatus& other) const {
  return code_ == other.code_ && severity_ == other.severity_ && discrete_ == other.discrete_ &&
         scale_ == other.scale_;
}

}  // namespace KorAssoc
