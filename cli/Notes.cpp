#include "cli/Notes.h"

#include <cstdio>
#include <exception>

namespace korassoc::cli {

void noteText(std::string_view text) noexcept {
  static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
}

void noteFormatted(fmt::string_view format, fmt::format_args arguments) noexcept {
  try {
    noteText(fmt::vformat(format, arguments));
  } catch (const std::exception&) {  // memory ran out; what needs it next will say so
  }
}

}  // namespace korassoc::cli
