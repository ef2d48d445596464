// A stream's buffer that calls back whenever something is written to it.

#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <utility>

// Keeps what is written. Calls are told their number, from 1; none is made while one is on.
class CallingBuffer : public std::stringbuf {
 public:
  using Call = std::function<void(int number)>;

  explicit CallingBuffer(Call call) : call_(std::move(call)) {}

  int calls() const { return calls_; }

 protected:
  int_type overflow(int_type c) override {
    callBack();
    return std::stringbuf::overflow(c);
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    callBack();
    return std::stringbuf::xsputn(text, size);
  }

 private:
  void callBack() {
    if (std::exchange(calling_, true)) return;
    call_(++calls_);
    calling_ = false;
  }

  Call call_;
  int calls_ = 0;
  bool calling_ = false;
};
