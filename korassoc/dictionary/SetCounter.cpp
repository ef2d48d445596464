#include "korassoc/dictionary/SetCounter.h"

#include <iostream>

SetCounter::~SetCounter() = default;

int SetCounter::getTID() const { return TID; }

void SetCounter::setTID(int transaction) { TID = transaction; }

void SetCounter::display() const { Display(std::cout); }

void SetCounter::Display(std::ostream& out) const {
  out << " count=" << count << ", TID=" << TID << std::endl;
}

int SetCounter::getMaxMissed() const { return 0; }

void SetCounter::setMaxMissed(int) {}

void SetCounter::decrementMaxMissed() {}
