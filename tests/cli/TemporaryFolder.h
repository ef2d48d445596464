// A folder of its own in the temporary directory, removed with all that is in it at the end of the test.

#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::random_device random;
    path_ = std::filesystem::temp_directory_path() /
            ("korassoc-test-" + std::to_string(random()) + "-" + std::to_string(random()));
    std::filesystem::create_directory(path_);
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string path(const std::string& name) const { return (path_ / name).string(); }

  // The names of all that is in the folder, in order.
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
      found.push_back(entry.path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
  }

  void store(const std::string& name, std::string_view text) const {
    std::ofstream(path_ / name, std::ios::binary) << text;
  }
  std::string contents(const std::string& name) const {
    std::ifstream in(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

 private:
  std::filesystem::path path_;
};
