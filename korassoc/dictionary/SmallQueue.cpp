#include "korassoc/dictionary/SmallQueue.h"

namespace korassoc::detail {

void SmallQueue::push(ItemSet* set) {
  if (head_ == nullptr) {
    set->setNext(set);
    set->setPrev(set);
    head_ = set;
  } else {
    ItemSet* last = head_->getPrev();
    last->setNext(set);
    set->setPrev(last);
    set->setNext(head_);
    head_->setPrev(set);
  }
  ++count_;
}

ItemSet* SmallQueue::pop() {
  ItemSet* first = head_;
  if (first != nullptr) detach(first);
  return first;
}

void SmallQueue::putBack(ItemSet* first) {
  push(first);  // the end of the circle is its front
  head_ = first;
  --count_;
}

void SmallQueue::unlink(ItemSet* set) {
  if (set->getNext() == nullptr) return;
  detach(set);
  --count_;
}

void SmallQueue::detach(ItemSet* set) {
  if (set->getNext() == set) {
    head_ = nullptr;
  } else {
    set->getPrev()->setNext(set->getNext());
    set->getNext()->setPrev(set->getPrev());
    if (head_ == set) head_ = set->getNext();
  }
  set->setNext(nullptr);
  set->setPrev(nullptr);
}

}  // namespace korassoc::detail
