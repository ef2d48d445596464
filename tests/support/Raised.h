// Which of the library's pointer exceptions an operation raised, freed.

#pragma once

#include <string>

#include "korassoc/engine/Exceptions.h"

// "IOException", "DictionaryFailure" or "" for none. Anything else goes on up.
template <typename Operation>
std::string raised(Operation&& operation) {
  try {
    operation();
  } catch (const IOException* failure) {
    delete failure;
    return "IOException";
  } catch (const DictionaryFailure* failure) {
    delete failure;
    return "DictionaryFailure";
  }
  return "";
}
