// A file of its own in the temporary directory, removed at the end of the test.

#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

// The folder of temporary files, which some systems name with a separator at its end.
inline std::filesystem::path temporaryFolder() {
  return (std::filesystem::temp_directory_path() / "").lexically_normal().parent_path();
}

class TemporaryFile {
 public:
  TemporaryFile() {
    std::random_device random;
    path_ = std::filesystem::temp_directory_path() /
            ("korassoc-test-" + std::to_string(random()) + "-" + std::to_string(random()));
  }
  explicit TemporaryFile(std::string_view contents) : TemporaryFile() { write(contents); }
  ~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  std::string name() const { return path_.string(); }

  void write(std::string_view contents) const {
    std::ofstream out(path_, std::ios::binary | std::ios::trunc);
    out.write(contents.data(), static_cast<std::streamsize>(contents.size()));
  }

  std::string contents() const {
    std::ifstream in(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

  // The file opened for binary records: emptied for writing, or from its start for reading.
  std::fstream writer() const {
    return std::fstream(path_, std::ios::in | std::ios::out | std::ios::binary | std::ios::trunc);
  }
  std::fstream reader() const { return std::fstream(path_, std::ios::in | std::ios::binary); }

 private:
  std::filesystem::path path_;
};
