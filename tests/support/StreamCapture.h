// Collects what is written to a stream, usually std::cout or std::cerr, while the object lives.

#pragma once

#include <ostream>
#include <sstream>
#include <string>

class StreamCapture {
 public:
  explicit StreamCapture(std::ostream& stream) : stream_(stream), before_(stream.rdbuf(text_.rdbuf())) {}
  ~StreamCapture() { stream_.rdbuf(before_); }
  StreamCapture(const StreamCapture&) = delete;
  StreamCapture& operator=(const StreamCapture&) = delete;

  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
  std::ostream& stream_;
  std::streambuf* before_;
};
