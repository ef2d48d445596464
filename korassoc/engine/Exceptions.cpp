#include "korassoc/engine/Exceptions.h"

namespace korassoc::detail {

void discardCurrentException() {
  try {
    throw;
  } catch (const IOException* failure) {
    delete failure;
  } catch (const DictionaryFailure* failure) {
    delete failure;
  } catch (...) {
    // Thrown by value: it frees itself.
  }
}

}  // namespace korassoc::detail
