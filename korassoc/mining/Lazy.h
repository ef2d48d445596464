// A value that is made when it is first asked for.

#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

namespace korassoc::detail {

// Makes the value once, whichever thread asks first; the others wait for it. When making it throws, the next
// one to ask tries again.
template <typename Value>
class Lazy {
 public:
  Lazy() = default;
  Lazy(const Lazy&) = delete;
  Lazy& operator=(const Lazy&) = delete;

  template <typename Make>
  const Value& get(Make&& make) const {
    const Value* made = made_.load(std::memory_order_acquire);
    if (made != nullptr) return *made;
    const std::lock_guard lock(making_);
    if (value_ == nullptr) {
      value_.reset(new const Value(std::forward<Make>(make)()));  // made in place: it need not be movable
      made_.store(value_.get(), std::memory_order_release);
    }
    return *value_;
  }

 private:
  mutable std::mutex making_;
  mutable std::unique_ptr<const Value> value_;
  mutable std::atomic<const Value*> made_ = nullptr;
};

}  // namespace korassoc::detail
