// What the fuzz targets of the saved states do with an engine that was made from any bytes.

#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/MultiPassTransIter.h"

namespace fuzz {

// Makes an engine from a state in memory.
using Restore = std::function<std::unique_ptr<CarmaAssociationAlgorithm>(const std::string& state,
                                                                         MultiPassTransIter* iterator)>;
std::unique_ptr<CarmaAssociationAlgorithm> restoreBinary(const std::string& state,
                                                         MultiPassTransIter* iterator);
std::unique_ptr<CarmaAssociationAlgorithm> restoreXml(const std::string& state, MultiPassTransIter* iterator);

// Restores the state, several times, and leads each engine another way: saved and restored again, on through
// phase I, into each form of phase II, and to every question and document. Stops the process when an engine
// is neither good nor refused, or when what it saves is not taken back.
void tryState(const Restore& restore, const std::uint8_t* data, std::size_t size);

}  // namespace fuzz
