#include "cli/InputOptions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "cli/CliError.h"
#include "cli/Notes.h"
#include "cli/Printable.h"
#include "cli/input/Input.h"
#include "cli/input/LineReader.h"
#include "cli/output/ItemText.h"

namespace korassoc::cli {

void InputOptions::addTo(CLI::App& command) {
  command.add_option("FILE", file_, "Baskets, a transaction a line; - reads standard input")
      ->required()
      ->type_name("");
  command
      .add_option("--separator", separatorText_,
                  "What separates items: comma, semicolon, tab or blanks (default: recognised)")
      ->type_name("NAME");
}

void InputOptions::check() {
  if (!separatorText_) return;
  separator_ = separatorFromName(*separatorText_);
  if (separator_) return;
  throw CliError(ExitCode::kUsage, fmt::format("--separator {}: is none of comma, semicolon, tab and blanks",
                                               labelText(*separatorText_)));
}

BasketInput InputOptions::read() const { return LineReader(separator_).read(Input::open(file_)); }

void InputOptions::report(const BasketInput& input) const {
  note("input         {}: {}\n", file_ == "-" ? "standard input" : printable(file_), input.format);
  note("transactions  {}\n", input.baskets.size());
  note("items         {} different, {} in all\n", input.names.size(), input.baskets.occurrences());
  if (input.emptyLines > 0) {
    note("passed over   {} lines without an item\n", input.emptyLines);
  }
  if (input.emptyItems > 0) {
    note("passed over   {} empty places between separators\n", input.emptyItems);
  }
  if (input.basketsWithRepeats > 0) {
    note("repeats       {} baskets name an item more than once; it counts once\n", input.basketsWithRepeats);
  }
}

}  // namespace korassoc::cli
