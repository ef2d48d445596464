// A full disk: takes a number of bytes, keeps them, and refuses every further one.

#pragma once

#include <cstddef>
#include <streambuf>
#include <string>

class FailingBuffer : public std::streambuf {
 public:
  explicit FailingBuffer(std::size_t bytes) : left_(bytes) {}

  const std::string& text() const { return text_; }

 protected:
  int_type overflow(int_type c) override {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    if (left_ == 0) return traits_type::eof();
    --left_;
    text_ += traits_type::to_char_type(c);
    return c;
  }

 private:
  std::size_t left_;
  std::string text_;
};
