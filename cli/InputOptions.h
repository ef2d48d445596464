// What every verb that reads baskets is told about them.

#pragma once

#include <optional>
#include <string>

#include "cli/input/BasketReader.h"

namespace CLI {
class App;
}

namespace korassoc::cli {

// Declares FILE and --separator; what is shared by verbs that read baskets and mine them.
class InputOptions {
 public:
  // The command refers to this object, which must outlive the parsing.
  void addTo(CLI::App& command);

  // Reads the file. Throws CliError (kUsage, kInput).
  BasketInput read() const;

  const std::string& file() const { return file_; }

  // "FILE: integers separated by blanks (recognised)" and what was passed over, one line each, on standard
  // error.
  void report(const BasketInput& input) const;

 private:
  std::string file_;
  std::optional<std::string> separator_;
};

}  // namespace korassoc::cli
