#include "tests/oracle/PlainCeilings.h"

namespace oracle {

void PlainCeilings::add(double support) {
  ++total_;
  if (chunks_.empty()) {
    chunks_.push_back({support, 1});
    average_ = support;
  } else if (support == chunks_.back().ceiling) {
    ++chunks_.back().count;
    average_ = average_ + (support - average_) / total_;
  } else if (support > chunks_.back().ceiling) {
    ++chunks_.back().count;
    double sum = 0;
    for (Chunk& chunk : chunks_) {
      if (chunk.ceiling < support) chunk.ceiling = support;
      sum += chunk.count * chunk.ceiling;
    }
    average_ = sum / total_;
  } else {
    chunks_.push_back({support, 1});
    average_ = average_ + (support - average_) / total_;
  }
}

}  // namespace oracle
