// What every fuzz target of the library needs: to stop at a broken promise, and silence.

#pragma once

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <streambuf>
#include <string>

namespace fuzz {

[[noreturn]] inline void fail(const std::string& what) {
  std::fprintf(stderr, "%s\n", what.c_str());
  std::abort();
}

inline void check(bool good, const char* what) {
  if (!good) fail(what);
}

// Takes every character and keeps none.
class Nowhere : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
};

// The library's diagnostics would fill the screen, and cost most of the time.
class Silence {
 public:
  Silence() : out_(std::cout.rdbuf(&nowhere_)), err_(std::cerr.rdbuf(&nowhere_)) {}
  ~Silence() {
    std::cout.rdbuf(out_);
    std::cerr.rdbuf(err_);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  Nowhere nowhere_;
  std::streambuf* out_;
  std::streambuf* err_;
};

}  // namespace fuzz
