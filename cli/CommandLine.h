// The arguments of the tool, understood.

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/Verb.h"

namespace korassoc::cli {

// CommandLine is what was asked for: a text about the tool, or a verb that is ready to run. Nothing is read
// or written for it, but for a look whether a folder that was named is one.
class CommandLine {
 public:
  // Without the program's name. Throws CliError (kUsage).
  explicit CommandLine(const std::vector<std::string>& arguments);

  // The help or the version, when it is that.
  const std::optional<std::string>& text() const { return text_; }
  // Else the verb, its options parsed and checked.
  Verb& verb() const { return *verb_; }

 private:
  std::optional<std::string> text_;
  std::unique_ptr<Verb> verb_;
};

}  // namespace korassoc::cli
