#include "korassoc/mining/Error.h"

namespace korassoc {

// Not inline: the type information that catch clauses compare stands in the library alone.
Error::~Error() = default;

}  // namespace korassoc
