#include "cli/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <utility>

#include "cli/CliError.h"
#include "cli/MineVerb.h"
#include "cli/Printable.h"
#include "cli/RecommendVerb.h"
#include "korassoc/korassoc.h"

namespace korassoc::cli {
namespace {

struct Command {
  std::unique_ptr<Verb> verb;
  CLI::App* parser;
};

constexpr const char* kFooter =
    "Exit codes: 0 done, also when no rule was found; 1 the run failed; 2 wrong usage; 3 unreadable or\n"
    "unintelligible input; 4 a limit on memory (--max-sets) decided the result, or left none.\n"
    "\n"
    "Example:\n"
    "  korassoc mine baskets.csv -s 1% -c 50%\n"
    "\n"
    "'korassoc VERB --help' shows the options of a verb.";

std::vector<Command> declareVerbs(CLI::App& app) {
  std::vector<std::unique_ptr<Verb>> verbs;
  verbs.push_back(std::make_unique<MineVerb>());
  verbs.push_back(std::make_unique<RecommendVerb>());
  std::vector<Command> commands;
  for (auto& verb : verbs) {
    CLI::App* parser = app.add_subcommand(verb->name(), verb->summary());
    verb->declare(*parser);
    commands.push_back({std::move(verb), parser});
  }
  return commands;
}

// A value that begins with a minus sign and a digit would be taken for an option: "-s -1" becomes "-s-1", and
// "--support -1" becomes "--support=-1", so that the option itself can say what is wrong with it.
std::vector<std::string> withNegativeValues(const std::vector<std::string>& arguments) {
  std::vector<std::string> joined;
  for (const std::string& argument : arguments) {
    const bool negative = argument.size() > 1 && argument[0] == '-' &&
                          (argument[1] == '.' || (argument[1] >= '0' && argument[1] <= '9'));
    const bool isShort =
        !joined.empty() && joined.back().size() == 2 && joined.back()[0] == '-' && joined.back()[1] != '-';
    const bool isLong = !joined.empty() && joined.back().size() > 2 && joined.back().substr(0, 2) == "--" &&
                        joined.back().find('=') == std::string::npos;
    if (negative && isShort) {
      joined.back() += argument;
    } else if (negative && isLong) {
      joined.back() += "=" + argument;
    } else {
      joined.push_back(argument);
    }
  }
  return joined;
}

// The parser's own words in one line, with where to look.
std::string usageMessage(const CLI::App& app, const std::vector<std::string>& arguments,
                         const CLI::ParseError& error) {
  const auto chosen = app.get_subcommands();
  const std::string help =
      chosen.empty() ? "korassoc --help" : "korassoc " + chosen.front()->get_name() + " --help";
  if (chosen.empty() && error.get_name() == "RequiredError") {
    const std::string first = arguments.empty() ? "no verb" : "'" + printable(arguments.front()) + "'";
    return fmt::format("{} is given where mine or recommend should stand; try '{}'", first, help);
  }
  std::string what = error.what();
  while (!what.empty() && (what.back() == '\n' || what.back() == '.')) what.pop_back();
  return fmt::format("{}; try '{}'", printable(what.substr(0, what.find('\n'))), help);
}

}  // namespace

CommandLine::CommandLine(const std::vector<std::string>& arguments) {
  CLI::App app("Finds association rules in baskets: which items come with which.", "korassoc");
  app.set_version_flag("--version", fmt::format("korassoc {}\n{}", KORASSOC_VERSION,
                                                CarmaAssociationAlgorithm::GetComponentVersion()));
  app.require_subcommand(1);
  app.get_formatter()->column_width(32);
  app.footer(kFooter);
  std::vector<Command> commands = declareVerbs(app);
  try {
    std::vector<std::string> reversed = withNegativeValues(arguments);
    std::reverse(reversed.begin(), reversed.end());  // as the parser wants them
    app.parse(std::move(reversed));
  } catch (const CLI::Success& request) {  // help or version
    std::ostringstream text;
    app.exit(request, text, text);
    text_ = text.str();
    return;
  } catch (const CLI::ParseError& error) {
    throw CliError(ExitCode::kUsage, usageMessage(app, arguments, error));
  }
  for (Command& command : commands) {
    if (command.parser->parsed()) verb_ = std::move(command.verb);
  }
  verb_->check();
}

}  // namespace korassoc::cli
