// Any arguments either make a plan that can be run, or end as wrong usage in one line that a terminal shows
// as it is. Nothing is read or written. Seeds lie in tests/corpus/CommandLineFuzz; every test run replays
// them.
//
// The arguments are separated by NUL bytes, which none of them can hold.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/CliError.h"
#include "cli/CommandLine.h"
#include "cli/Printable.h"
#include "cli/RuleOptions.h"
#include "cli/input/LineReader.h"
#include "tests/support/MemorySource.h"

namespace {

using namespace korassoc::cli;

void check(bool good, const std::string& what) {
  if (good) return;
  std::fprintf(stderr, "%s\n", what.c_str());
  std::abort();
}

void checkRefusal(const CliError& error) {
  const std::string message = error.what();
  check(error.code() == ExitCode::kUsage, "another exit code: " + message);
  check(!message.empty() && printable(message) == message, "not fit for a terminal: " + message);
}

std::vector<std::string> argumentsIn(std::string_view text) {
  std::vector<std::string> arguments;
  for (;;) {
    const std::size_t end = text.find('\0');
    arguments.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return arguments;
    text.remove_prefix(end + 1);
  }
}

ItemNames namesOf(std::string_view baskets) {
  return LineReader().read(Input(std::make_unique<MemorySource>(baskets), "FILE")).names;
}

void checkSide(const SideFilter& side, int leastItems) {
  const auto isSet = [](const std::vector<int>& items) {
    return std::adjacent_find(items.begin(), items.end(), std::greater_equal<>()) == items.end();
  };
  check(isSet(side.required), "required items that are no set");
  check(!side.allowed || isSet(*side.allowed), "allowed items that are no set");
  check(!side.allowed || std::includes(side.allowed->begin(), side.allowed->end(), side.required.begin(),
                                       side.required.end()),
        "a required item is not allowed");
  check(side.length.shortest >= leastItems && side.length.shortest <= side.length.longest,
        "an impossible length");
}

void checkQuery(const RuleQuery& query, int transactions) {
  check(query.transactions == transactions, "another number of transactions");
  check(query.minCount >= 1 && query.maxCount >= 0, "impossible counts");
  check(query.minConfidence >= 0 && query.minConfidence <= query.maxConfidence && query.maxConfidence <= 1,
        "impossible confidences");
  check(query.minLift >= 0, "a negative lift");
  check(query.top == -1 || query.top >= 1, "an impossible number of rules");
  checkSide(query.lhs, 0);
  checkSide(query.rhs, 1);
}

// What the options ask of an input that was read.
void ask(std::vector<std::string> arguments, const ItemNames& names, int transactions) {
  CLI::App app;
  app.allow_extras();
  RuleOptions rules;
  rules.addTo(app);
  try {
    std::reverse(arguments.begin(), arguments.end());
    app.parse(std::move(arguments));
    rules.check();
    const RuleQuery query = rules.query(names, transactions);
    checkQuery(query, transactions);
    const std::string text = rules.describe(query, names);
    check(printable(text) == text, "not fit for a terminal: " + text);
  } catch (const CLI::ParseError&) {
  } catch (const CliError& error) {
    checkRefusal(error);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ItemNames labels =
      namesOf("bread,milk,\"milk, whole\"\n\"beer \"\"dark\"\"\",7,\xE2\x80\x8B\n");
  static const ItemNames numbers = namesOf("1 7 2147483647\n");
  const auto arguments = argumentsIn({reinterpret_cast<const char*>(data), size});
  try {
    const CommandLine line(arguments);
    check(!line.text() || !line.text()->empty(), "an empty text");
    if (line.text()) return 0;
    check(!line.verb().name().empty(), "no verb");
  } catch (const CliError& error) {
    checkRefusal(error);
    return 0;
  }
  ask(arguments, labels, 10);
  ask(arguments, numbers, std::numeric_limits<int>::max());
  return 0;
}
