#include "korassoc/dictionary/SpillFile.h"

#include <utility>

#include "korassoc/base/PlatformFile.h"

namespace korassoc::detail {
namespace {

class DiskSpillFile : public SpillFile {
 public:
  explicit DiskSpillFile(std::unique_ptr<PlatformFile> file) : file_(std::move(file)) {}

  const std::string& name() const override { return file_->name(); }
  std::size_t read(std::uint64_t offset, char* bytes, std::size_t size) override {
    return file_->read(offset, bytes, size);
  }
  bool write(std::uint64_t offset, const char* bytes, std::size_t size) override {
    return file_->write(offset, bytes, size);
  }
  bool resize(std::uint64_t size) override { return file_->resize(size); }

 private:
  std::unique_ptr<PlatformFile> file_;
};

}  // namespace

SpillFile::~SpillFile() = default;

std::unique_ptr<SpillFile> openSpillFile(const char* name) {
  const bool named = name != nullptr && *name != '\0';
  auto file = named ? PlatformFile::createNamed(name) : PlatformFile::createTemporary("korassoc-spill-");
  return file != nullptr ? std::make_unique<DiskSpillFile>(std::move(file)) : nullptr;
}

}  // namespace korassoc::detail
