// The queue from which a full dictionary takes the sets that it gives up.

#pragma once

#include "korassoc/itemsets/ItemSet.h"

namespace korassoc::detail {

// A first-in first-out queue of itemsets, linked through the sets' own links:
//
//   head -> b -> c -> (head)       next of the last is the head, prev of the head is the last
//
// A set stands in the queue exactly while its next link is set. Owns nothing.
// Cost: every operation O(1), none allocates.
class SmallQueue {
 public:
  bool empty() const { return head_ == nullptr; }
  ItemSet* head() const { return head_; }
  // Pushes minus unlinks: a popped set is not subtracted.
  int count() const { return count_; }

  // Appends a set that stands in no queue.
  void push(ItemSet* set);
  // Takes the first set out, or answers null. The count stays as it is.
  ItemSet* pop();
  // Puts the set that was popped last back to the front.
  void putBack(ItemSet* first);
  // Takes a set out, wherever it stands; nothing happens when it stands in no queue.
  void unlink(ItemSet* set);

 private:
  void detach(ItemSet* set);

  ItemSet* head_ = nullptr;
  int count_ = 0;
};

}  // namespace korassoc::detail
