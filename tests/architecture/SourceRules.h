// The rules that the source tree keeps, as functions over the text of its files: which floor a file lives on
// and what it may include, what a header opens with, how long a file may grow.

#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korassoc::architecture {

// A file of the tree: its path from the repository root, with forward slashes, and its text.
struct SourceFile {
  std::string path;
  std::string text;
};

// An #include "..." line: the path as written, and the line it stands on, counted from 1.
struct Include {
  std::string path;
  std::size_t line;
};

// Every .h and .cpp file below the given folders of root, in order of path. A folder that is missing holds
// none.
std::vector<SourceFile> readSources(const std::filesystem::path& root,
                                    const std::vector<std::string>& folders);

// The quoted includes of a file, in their order. Includes in angle brackets belong to nobody's floor.
std::vector<Include> quotedIncludes(std::string_view text);

// The floor that a path lives on, or nothing when it is not part of the library or the tool.
//   0  korassoc/itemsets, korassoc/base
//   1  korassoc/xml
//   2  korassoc/engine, the vocabulary: status, exceptions, settings, host interfaces
//   3  korassoc/dictionary
//   4  korassoc/rules
//   5  korassoc/xml/export
//   6  korassoc/engine, the machine
//   7  korassoc/korassoc.h
//   8  korassoc/mining, korassoc/mining.h
//   10 cli, which sees the library through the two umbrella headers alone
std::optional<int> floorOf(std::string_view path);

// Each of the following answers one line for each breach, "path:line: what is wrong"; none when the rule
// holds.

// Includes that are not written from the root, run up the floors, or open a door of the library other than
// korassoc/korassoc.h and korassoc/mining.h from outside. Files that live on no floor are hosts: they may
// include what is beside them. Of the engine, korassoc/mining may include what korassoc/korassoc.h does, and
// a list of inner headers that stands with the rule.
std::vector<std::string> upwardIncludes(const std::vector<SourceFile>& files);

// Headers without #pragma once.
std::vector<std::string> unguardedHeaders(const std::vector<SourceFile>& files);

// Files of more than `limit` lines.
std::vector<std::string> longFiles(const std::vector<SourceFile>& files, std::size_t limit);

// Lines of the tool that name standard error where it is not cli/Notes.cpp, the one place that may write
// there: a message that cannot be written must not end a run.
std::vector<std::string> otherVoices(const std::vector<SourceFile>& files);

// Headers that mark something KORASSOC_EXPORT, and that the umbrella header of its floor leaves out.
std::vector<std::string> missingFromUmbrella(const std::vector<SourceFile>& files);

}  // namespace korassoc::architecture
