// The one interface of everything that the tool does.

#pragma once

#include <string>

#include "cli/output/ResultStream.h"

namespace CLI {
class App;
}

namespace korassoc::cli {

class Verb {
 public:
  virtual ~Verb() = default;

  // What it is called on the command line, and what it does in half a line.
  virtual std::string name() const = 0;
  virtual std::string summary() const = 0;

  // Declares its options. The command refers to this object from then on.
  virtual void declare(CLI::App& command) = 0;

  // Makes sense of the options as parsed, as far as that takes neither the input nor a file to write. Throws
  // CliError (kUsage).
  virtual void check() = 0;

  // Does it, after check(). Results go to out, and only when they are complete in memory; notes
  // go to standard error. Throws CliError.
  virtual void run(ResultStream& out) = 0;
};

}  // namespace korassoc::cli
