// Labels given on the command line.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/input/ItemNames.h"

namespace korassoc::cli {

// "bread,milk" as its labels. A label with a comma is quoted as in the input: "\"milk, whole\",bread". Blanks
// around labels are dropped. option is what messages call it. Throws CliError (kUsage) for an unclosed quote,
// text behind a quote, and a list without a label.
std::vector<std::string> parseLabels(const std::string& option, std::string_view text);

// The items of the labels, ascending, without repeats. Throws CliError (kUsage) for a label that the input
// does not have, with the three nearest ones.
std::vector<int> itemsOf(const std::string& option, const std::vector<std::string>& labels,
                         const ItemNames& names);

}  // namespace korassoc::cli
