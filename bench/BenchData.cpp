#include "bench/BenchData.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

namespace bench {

namespace {

bool isNumber(const std::string& word) {
  return !word.empty() && word.size() < 10 && word.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

Transactions readBaskets(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  Transactions transactions;
  std::map<std::string, int> numbers;
  std::vector<int> basket;
  std::string word;
  const bool withBlanks = text.find(',') != std::string::npos;  // names may hold blanks then
  for (const char c : text) {
    if (c != '\n' && c != ',' && (c != ' ' || withBlanks) && c != '\r') {
      word += c;
      continue;
    }
    if (isNumber(word)) {
      basket.push_back(std::atoi(word.c_str()));
    } else if (!word.empty()) {
      basket.push_back(numbers.try_emplace(word, static_cast<int>(numbers.size())).first->second);
    }
    word.clear();
    if (c == '\n') transactions.push_back(std::move(basket));
    if (c == '\n') basket = {};
  }
  return transactions;
}

std::string optionalData(const std::string& name) {
  const char* folder = std::getenv("KORASSOC_DATA");
  const std::filesystem::path path =
      (folder != nullptr ? std::filesystem::path(folder)
                         : std::filesystem::path(KORASSOC_SOURCE_DIR) / ".." / "shared" / "data") /
      name;
  return std::filesystem::exists(path) ? path.lexically_normal().string() : std::string();
}

std::string exampleData() { return std::string(KORASSOC_SOURCE_DIR) + "/examples/baskets.csv"; }

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

}  // namespace bench
