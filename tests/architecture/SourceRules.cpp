#include "tests/architecture/SourceRules.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <utility>

namespace korassoc::architecture {
namespace {

constexpr std::string_view kEngineUmbrella = "korassoc/korassoc.h";
constexpr std::string_view kMiningUmbrella = "korassoc/mining.h";
constexpr std::string_view kMiningFolder = "korassoc/mining/";
constexpr std::string_view kExportMacro = "korassoc/base/Export.h";
constexpr std::string_view kNotes = "cli/Notes.cpp";
constexpr int kEngineMachine = 6;
constexpr int kEngineUmbrellaFloor = 7;
constexpr int kMiningFloor = 8;
constexpr int kToolFloor = 10;

// What dictionary, rules and engine share of korassoc/engine: file names without their ending.
constexpr std::array<std::string_view, 14> kVocabulary = {"AssociationAlgorithmSettings",
                                                          "Caught",
                                                          "CarmaSettings",
                                                          "CreateRulesReporter",
                                                          "DictionarySettings",
                                                          "Exceptions",
                                                          "ItemsetColumns",
                                                          "KorStatus",
                                                          "MultiPassTransIter",
                                                          "ProgressListener",
                                                          "ProgressReport",
                                                          "SupportSource",
                                                          "Transaction",
                                                          "TransactionIterator"};

// The inner headers of the engine that korassoc/mining/ uses beside the public ones.
constexpr std::array<std::string_view, 1> kInnerForMining = {"korassoc/engine/CompletePass.h"};

std::string_view stem(std::string_view path) {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  return name.substr(0, name.find('.'));
}

bool isHeader(const SourceFile& file) { return file.path.ends_with(".h"); }

std::string at(const std::string& path, std::size_t line) { return path + ":" + std::to_string(line) + ": "; }

std::string onFloor(int floor) { return " (floor " + std::to_string(floor) + ")"; }

bool isUmbrella(std::string_view path) { return path == kEngineUmbrella || path == kMiningUmbrella; }

using Paths = std::set<std::string, std::less<>>;

// What an umbrella header among the files includes.
Paths includesOf(const std::vector<SourceFile>& files, std::string_view umbrella) {
  Paths included;
  for (const SourceFile& file : files) {
    if (file.path != umbrella) continue;
    for (const Include& include : quotedIncludes(file.text)) included.insert(include.path);
  }
  return included;
}

bool isOpenToMining(std::string_view path, const Paths& publicHeaders) {
  return publicHeaders.contains(path) ||
         std::find(kInnerForMining.begin(), kInnerForMining.end(), path) != kInnerForMining.end();
}

// What is wrong with one include of a file, or nothing.
std::string breach(const SourceFile& file, const Include& include, const Paths& publicHeaders) {
  const std::optional<int> from = floorOf(file.path);
  const std::optional<int> to = floorOf(include.path);
  const bool intoLibrary = to && *to < kToolFloor;
  if (!from || *from == kToolFloor) {
    if (intoLibrary && !isUmbrella(include.path)) {
      return "sees the library through " + std::string(kEngineUmbrella) + " and " +
             std::string(kMiningUmbrella);
    }
    if (!from || to) return {};
  }
  if (!to) return "includes are written from the root and stay in the library: " + include.path;
  if (*to > *from) {
    return file.path + onFloor(*from) + " includes " + include.path + onFloor(*to) + " above it";
  }
  if (*from == kMiningFloor && *to < kMiningFloor && !isOpenToMining(include.path, publicHeaders)) {
    return file.path + " includes " + include.path + ", which the engine keeps for itself";
  }
  return {};
}

}  // namespace

std::vector<SourceFile> readSources(const std::filesystem::path& root,
                                    const std::vector<std::string>& folders) {
  std::vector<SourceFile> files;
  for (const std::string& folder : folders) {
    if (!std::filesystem::is_directory(root / folder)) continue;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / folder)) {
      const std::filesystem::path& path = entry.path();
      if (!entry.is_regular_file() || (path.extension() != ".h" && path.extension() != ".cpp")) continue;
      std::ifstream in(path, std::ios::binary);
      files.push_back({std::filesystem::relative(path, root).generic_string(),
                       std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>())});
    }
  }
  std::sort(files.begin(), files.end(),
            [](const SourceFile& a, const SourceFile& b) { return a.path < b.path; });
  return files;
}

std::vector<Include> quotedIncludes(std::string_view text) {
  std::vector<Include> includes;
  std::istringstream lines{std::string(text)};
  std::string line;
  for (std::size_t number = 1; std::getline(lines, line); ++number) {
    std::istringstream words(line);
    std::string directive, target;
    words >> std::ws;
    if (words.peek() != '#') continue;
    words.get();
    words >> directive >> target;
    if (directive.starts_with("include\"")) target = directive.substr(7);
    if (!directive.starts_with("include") || target.size() < 2 || target.front() != '"') continue;
    includes.push_back({target.substr(1, target.find('"', 1) - 1), number});
  }
  return includes;
}

std::optional<int> floorOf(std::string_view path) {
  const auto within = [path](std::string_view folder) { return path.starts_with(folder); };
  if (path == kEngineUmbrella) return kEngineUmbrellaFloor;
  if (path == kMiningUmbrella || within(kMiningFolder)) return kMiningFloor;
  if (within("cli/")) return kToolFloor;
  if (within("korassoc/itemsets/") || within("korassoc/base/")) return 0;
  if (within("korassoc/xml/export/")) return 5;
  if (within("korassoc/xml/")) return 1;
  if (within("korassoc/dictionary/")) return 3;
  if (within("korassoc/rules/")) return 4;
  if (!within("korassoc/engine/")) return std::nullopt;
  return std::find(kVocabulary.begin(), kVocabulary.end(), stem(path)) != kVocabulary.end() ? 2
                                                                                            : kEngineMachine;
}

std::vector<std::string> upwardIncludes(const std::vector<SourceFile>& files) {
  std::vector<std::string> breaches;
  const Paths publicHeaders = includesOf(files, kEngineUmbrella);
  for (const SourceFile& file : files) {
    if (file.path.starts_with("korassoc/") && !floorOf(file.path)) {
      breaches.push_back(at(file.path, 1) + "lives on no floor of the library");
      continue;
    }
    for (const Include& include : quotedIncludes(file.text)) {
      const std::string wrong = breach(file, include, publicHeaders);
      if (!wrong.empty()) breaches.push_back(at(file.path, include.line) + wrong);
    }
  }
  return breaches;
}

std::vector<std::string> unguardedHeaders(const std::vector<SourceFile>& files) {
  std::vector<std::string> breaches;
  for (const SourceFile& file : files) {
    if (!isHeader(file) || file.text.starts_with("#pragma once\n")) continue;
    if (file.text.find("\n#pragma once\n") == std::string::npos) {
      breaches.push_back(at(file.path, 1) + "a header without #pragma once");
    }
  }
  return breaches;
}

std::vector<std::string> longFiles(const std::vector<SourceFile>& files, std::size_t limit) {
  std::vector<std::string> breaches;
  for (const SourceFile& file : files) {
    const auto lines = static_cast<std::size_t>(std::count(file.text.begin(), file.text.end(), '\n'));
    if (lines > limit)
      breaches.push_back(at(file.path, lines) + "more than " + std::to_string(limit) + " lines");
  }
  return breaches;
}

std::vector<std::string> otherVoices(const std::vector<SourceFile>& files) {
  std::vector<std::string> breaches;
  for (const SourceFile& file : files) {
    if (floorOf(file.path) != kToolFloor || file.path == kNotes) continue;
    std::istringstream text(file.text);
    std::string line;
    for (std::size_t number = 1; std::getline(text, line); ++number) {
      if (line.find("stderr") == std::string::npos) continue;
      breaches.push_back(at(file.path, number) + "leave standard error to " + std::string(kNotes));
    }
  }
  return breaches;
}

std::vector<std::string> missingFromUmbrella(const std::vector<SourceFile>& files) {
  const Paths ofEngine = includesOf(files, kEngineUmbrella);
  const Paths ofMining = includesOf(files, kMiningUmbrella);
  std::vector<std::string> breaches;
  for (const SourceFile& file : files) {
    if (!isHeader(file) || isUmbrella(file.path) || file.path == kExportMacro) continue;
    if (file.text.find("KORASSOC_EXPORT") == std::string::npos) continue;
    const bool isMining = file.path.starts_with(kMiningFolder);
    if ((isMining ? ofMining : ofEngine).contains(file.path)) continue;
    breaches.push_back(at(file.path, 1) + "exports something, but " +
                       std::string(isMining ? kMiningUmbrella : kEngineUmbrella) + " leaves it out");
  }
  return breaches;
}

}  // namespace korassoc::architecture
