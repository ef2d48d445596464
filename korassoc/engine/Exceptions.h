// The exceptions by which the dictionary and the record readers tell of a failure.

#pragma once

#include "korassoc/base/Export.h"

// All three carry no data: what went wrong has been written to the diagnostic streams before. IOException and
// DictionaryFailure are thrown as pointers to new objects; who catches them lets discardCurrentException()
// free them. The engine's border turns them into a KorStatus.

// A record could not be read or written.
class KORASSOC_EXPORT IOException {};

// The itemset dictionary could not do its work, for example because its spill file failed.
class KORASSOC_EXPORT DictionaryFailure {};

// A file does not exist. The library never throws it; the spill store catches it by value, beside an
// IOException by value, for code of a host that might.
class KORASSOC_EXPORT FileNotFoundException {};

namespace korassoc::detail {

// To be called in a catch-all handler: frees the object behind a pointer that is being handled, if it is one
// of the above. Any other exception is left alone.
KORASSOC_EXPORT void discardCurrentException();

}  // namespace korassoc::detail
