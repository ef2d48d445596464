// A file stream that reads from memory: for readers that ask for a std::ifstream.

#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <utility>

class InputText {
 public:
  explicit InputText(std::string text) : buffer_(std::move(text), std::ios::in) {
    static_cast<std::ios&>(stream_).rdbuf(&buffer_);  // also clears the state of the file that is not open
  }
  InputText(const InputText&) = delete;
  InputText& operator=(const InputText&) = delete;

  std::ifstream& stream() { return stream_; }

 private:
  std::stringbuf buffer_;
  std::ifstream stream_;
};
