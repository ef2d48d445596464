// Going through the rows of a table.

#pragma once

#include <compare>
#include <cstddef>
#include <iterator>

namespace korassoc::detail {

// An iterator over a Table with operator[](row). What it gives is a view of the row, made when it is asked
// for.
template <typename Table, typename Row>
class RowIterator {
 public:
  using value_type = Row;
  using reference = value_type;
  using pointer = void;
  using difference_type = std::ptrdiff_t;
  using iterator_category = std::input_iterator_tag;  // what it gives is no reference

  RowIterator() = default;
  RowIterator(const Table& table, std::size_t row) : table_(&table), row_(row) {}

  value_type operator*() const { return (*table_)[row_]; }
  RowIterator& operator++() {
    ++row_;
    return *this;
  }
  RowIterator operator++(int) {
    const RowIterator before = *this;
    ++row_;
    return before;
  }
  friend bool operator==(const RowIterator& a, const RowIterator& b) { return a.row_ == b.row_; }

 private:
  const Table* table_ = nullptr;
  std::size_t row_ = 0;
};

}  // namespace korassoc::detail
