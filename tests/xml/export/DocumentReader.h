// Picks attributes out of a formatted document, in which every attribute has a line of its own.

#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

// The values of one attribute of every element of that name, in document order.
inline std::vector<std::string> values(const std::string& document, const std::string& element,
                                       const std::string& attribute) {
  std::vector<std::string> found;
  std::istringstream lines(document);
  std::string line;
  bool inside = false;
  while (std::getline(lines, line)) {
    const std::size_t start = line.find_first_not_of('\t');
    if (start == std::string::npos) continue;
    const std::string text = line.substr(start);
    if (text.front() == '<') inside = text == "<" + element;
    const std::string opening = attribute + "=\"";
    if (!inside || !text.starts_with(opening)) continue;
    found.push_back(text.substr(opening.size(), text.find('"', opening.size()) - opening.size()));
  }
  return found;
}

// Replaces the only occurrence of a text.
inline void replaceOnce(std::string& text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  ASSERT_NE(at, std::string::npos) << from;
  ASSERT_EQ(text.find(from, at + 1), std::string::npos) << from;
  text.replace(at, from.size(), to);
}
