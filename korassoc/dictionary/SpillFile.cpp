#include "korassoc/dictionary/SpillFile.h"

#include <utility>

#include "korassoc/base/PlatformFile.h"

namespace korassoc::detail {
namespace {

class DiskSpillFile : public SpillFile {
 public:
  explicit DiskSpillFile(std::unique_ptr<PlatformFile> file) : file_(std::move(file)) {}

  const std::string& name() const override { return file_->name(); }
  std::uint64_t size() const override { return file_->size(); }
  std::size_t read(std::uint64_t offset, char* bytes, std::size_t size) override {
    return file_->read(offset, bytes, size);
  }
  bool write(std::uint64_t offset, const char* bytes, std::size_t size) override {
    return file_->write(offset, bytes, size);
  }
  bool resize(std::uint64_t size) override { return file_->resize(size); }
  bool takeOver() { return file_->takeOver(); }

 private:
  std::unique_ptr<PlatformFile> file_;
};

std::unique_ptr<DiskSpillFile> spillFileOf(std::unique_ptr<PlatformFile> file) {
  return file != nullptr ? std::make_unique<DiskSpillFile>(std::move(file)) : nullptr;
}

}  // namespace

SpillFile::~SpillFile() = default;

std::unique_ptr<SpillFile> openSpillFile(const char* name, const RecognizesLeftover& recognizes) {
  if (name == nullptr || *name == '\0') return spillFileOf(PlatformFile::createTemporary("korassoc-spill-"));
  if (auto created = spillFileOf(PlatformFile::createNamed(name))) return created;
  auto found = spillFileOf(PlatformFile::openLeftover(name));
  if (found == nullptr || (found->size() > 0 && !recognizes(*found)) || !found->takeOver()) return nullptr;
  return found;
}

}  // namespace korassoc::detail
