#include "cli/DocumentOptions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <ostream>

#include "cli/CliError.h"
#include "cli/Notes.h"
#include "cli/Printable.h"
#include "cli/Stopwatch.h"

namespace korassoc::cli {
namespace {

std::optional<DocumentFile> fileAt(const std::optional<std::string>& path, const char* option,
                                   const std::string& input) {
  if (!path) return std::nullopt;
  DocumentFile file(*path);
  if (input == "-" ? file.isStandardInput() : file.isSameAs(input)) {
    throw CliError(ExitCode::kUsage, fmt::format("{} {}: is the basket file; give the document another name",
                                                 option, printable(*path)));
  }
  return file;
}

void reportFile(const std::string& path, const char* what, Stopwatch& watch) {
  note("document      {}: {}, {:.3f} seconds\n", printable(path), what, watch.lap());
}

}  // namespace

void DocumentOptions::addTo(CLI::App& command) {
  const std::string group = "Documents (replaced as a whole, or left as they were)";
  command
      .add_option("--pmml", pmmlPath_,
                  "Also write the rules of --support and --confidence as PMML 3.2; of the other options only "
                  "--nonredundant counts")
      ->type_name("FILE")
      ->group(group);
  command
      .add_option("--lattice", latticePath_, "Also write the itemsets with their counts as an XML document")
      ->type_name("FILE")
      ->group(group);
}

void DocumentOptions::check(const std::string& input) {
  pmml_ = fileAt(pmmlPath_, "--pmml", input);
  lattice_ = fileAt(latticePath_, "--lattice", input);
  if (pmml_ && lattice_ && pmml_->isReplaced() && pmml_->isSameAs(*lattice_)) {
    throw CliError(ExitCode::kUsage, fmt::format("--lattice {}: is the file of --pmml; give each its own",
                                                 printable(*latticePath_)));
  }
}

void DocumentOptions::write(Mining& mining, const RuleQuery& query) const {
  Stopwatch watch;
  if (pmml_) {
    pmml_->write([&](std::ostream& out) {
      if (mining.exportRules(query, out)) return;
      throw CliError(
          ExitCode::kRunFailed,
          fmt::format("{}: not written: no item is in {} transactions, so there is nothing to make "
                      "rules of; try a lower support",
                      printable(*pmmlPath_), query.minCount));
    });
    reportFile(*pmmlPath_, "the rules as PMML", watch);
  }
  if (lattice_) {
    lattice_->write([&](std::ostream& out) { mining.exportLattice(out); });
    reportFile(*latticePath_, "the lattice", watch);
  }
}

}  // namespace korassoc::cli
