// The exceptions by which the dictionary and the record readers tell of a failure.

#pragma once

#include "korassoc/base/Export.h"

// All three carry no data: what went wrong has been written to the diagnostic streams before. IOException and
// DictionaryFailure are thrown as pointers to new objects and caught by catch-all handlers at the engine's
// border, which turn them into a KorStatus; no handler uses or frees the object.

// A record could not be read or written.
class KORASSOC_EXPORT IOException {};

// The itemset dictionary could not do its work, for example because its spill file failed.
class KORASSOC_EXPORT DictionaryFailure {};

// A file does not exist. The library never throws it; the spill store catches it by value, beside an
// IOException by value, for code of a host that might.
class KORASSOC_EXPORT FileNotFoundException {};
