// The names of the files that a run makes for itself, and what becomes of those that a run left behind.

#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace korassoc::cli {

// Names that no file has yet, by 128 and 64 random bits:
//
//   .korassoc-0123456789abcdef0123456789abcdef.tmp    a document that is being written
//   korassoc-0123456789abcdef.spill                   itemsets for which there is no room in memory
//
// They are the same from version to version: a later one removes what an earlier one left.
std::string newDocumentName();
std::string newSpillName();

// Whether a file name has one of these forms, to the letter.
bool isTemporaryName(std::string_view name);

// Removes what earlier runs left in a folder because they were ended by force (kill -9, a loss of power), with
// a line for each on standard error: regular files with such a name, of the current user, that have not been
// changed for a day. A run that has used its file for longer than that keeps the file, which only loses its
// name, or is told when it comes to move it. What cannot be read or removed is passed over.
void removeLeftovers(const std::filesystem::path& folder);

}  // namespace korassoc::cli
