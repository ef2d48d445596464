// What every verb that reads baskets is told about them.

#pragma once

#include <optional>
#include <string>

#include "cli/input/BasketReader.h"
#include "cli/input/Separator.h"

namespace CLI {
class App;
}

namespace korassoc::cli {

// Declares FILE and --separator; what is shared by verbs that read baskets and mine them.
class InputOptions {
 public:
  // The command refers to this object, which must outlive the parsing.
  void addTo(CLI::App& command);

  // Reads the texts that were parsed. Throws CliError (kUsage). To be called before all below.
  void check();

  // Reads the file. Throws CliError (kInput).
  BasketInput read() const;

  const std::string& file() const { return file_; }

  // "FILE: integers separated by blanks (recognised)" and what was passed over, one line each, on standard
  // error.
  void report(const BasketInput& input) const;

 private:
  // As parsed.
  std::string file_;
  std::optional<std::string> separatorText_;

  std::optional<Separator> separator_;  // as understood by check()
};

}  // namespace korassoc::cli
