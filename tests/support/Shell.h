// Other programs, run by the system's shell.

#pragma once

#include <cstdlib>
#include <string>

// Runs a command line that starts with a quoted program; 0 when it went well.
inline int runInShell(const std::string& command) {
#if defined(_WIN32)
  return std::system(("\"" + command + "\"").c_str());  // its shell takes the outer quotes off
#else
  return std::system(command.c_str());
#endif
}
