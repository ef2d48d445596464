// A host whose callbacks, all of them, can call the engine back.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/MultiPassTransIter.h"
#include "korassoc/engine/ProgressListener.h"
#include "korassoc/engine/SupportSource.h"
#include "tests/support/CallingBuffer.h"
#include "tests/support/TemporaryFile.h"

// Where the host has the word: its callbacks, and the streams that it hands in.
enum class Callback { HasNext, Next, Restart, GetLength, GetItem, GetSupport, OnProgress, Write, Read };
inline constexpr std::array<const char*, 9> kCallbackNames = {
    "HasNext", "Next", "Restart", "GetLength", "GetItem", "GetSupport", "OnProgress", "Write", "Read"};

// Counts the calls of each callback and does something in those that it is told. What the engine calls
// meanwhile does not count, and nothing is done there either unless that is allowed.
class Hook {
 public:
  // number: of the call, from 1. depth: 0 unless it comes from within what the hook does.
  using Moment = std::function<bool(Callback callback, int number, int depth)>;

  // Starts to count from 0, and does nothing yet.
  void reset() { *this = {}; }
  void arm(Moment moment, std::function<void()> act, int deepest = 1) {
    moment_ = std::move(moment);
    act_ = std::move(act);
    deepest_ = deepest;
  }
  void disarm() { act_ = nullptr; }
  int calls(Callback callback) const { return calls_[static_cast<std::size_t>(callback)]; }

  void call(Callback callback) {
    int& calls = calls_[static_cast<std::size_t>(callback)];
    if (depth_ == 0) ++calls;
    if (!act_ || depth_ == deepest_ || !moment_(callback, calls, depth_)) return;
    const Deeper deeper(depth_);
    const std::function<void()> act = act_;  // what it does may disarm the hook
    act();
  }

 private:
  struct Deeper {
    explicit Deeper(int& counter) : depth(counter) { ++depth; }
    ~Deeper() { --depth; }
    Deeper(const Deeper&) = delete;
    Deeper& operator=(const Deeper&) = delete;
    int& depth;
  };

  std::array<int, kCallbackNames.size()> calls_ = {};
  Moment moment_;
  std::function<void()> act_;
  int deepest_ = 1;
  int depth_ = 0;
};

// A callback may replace the object that it is called on, which is gone then: nothing of it is used after the
// call of the hook.
class HookedSupport : public SupportSource {
 public:
  explicit HookedSupport(Hook& hook) : hook_(hook) {}
  double GetSupport(int transaction) override {
    const double support = transaction % 7 < 4 ? 0.3 : 0.2;
    hook_.call(Callback::GetSupport);
    return support;
  }

 private:
  Hook& hook_;
};

class HookedListener : public ProgressListener {
 public:
  explicit HookedListener(Hook& hook) : hook_(hook) {}
  void OnProgress(ProgressReport*) override { hook_.call(Callback::OnProgress); }

 private:
  Hook& hook_;
};

class HookedSource : public MultiPassTransIter {
 public:
  HookedSource(Hook& hook, std::vector<std::vector<int>> transactions)
      : hook_(hook), transactions_(std::move(transactions)), transaction_(*this) {}

  bool HasNext() override {
    hook_.call(Callback::HasNext);
    return next_ < transactions_.size();
  }
  Transaction* Next() override {
    hook_.call(Callback::Next);
    return next_ < transactions_.size() ? (++next_, &transaction_) : nullptr;
  }
  int Rewind() override { return 1; }
  int Restart() override {
    hook_.call(Callback::Restart);
    next_ = 0;
    return 0;
  }
  int size() const { return static_cast<int>(transactions_.size()); }

 private:
  struct Current : Transaction {
    explicit Current(HookedSource& of) : source(of) {}
    const std::vector<int>& items() const { return source.transactions_[source.next_ - 1]; }
    int GetItem(int position) const override {
      source.hook_.call(Callback::GetItem);
      return items().at(static_cast<std::size_t>(position));
    }
    int GetTransactionID() const override { return 0; }
    int GetLength() const override {
      source.hook_.call(Callback::GetLength);
      return static_cast<int>(items().size());
    }
    HookedSource& source;
  };

  Hook& hook_;
  std::vector<std::vector<int>> transactions_;
  std::size_t next_ = 0;
  Current transaction_;
};

// Gives the bytes of a text in small pieces.
class HookedReader : public std::streambuf {
 public:
  HookedReader(Hook& hook, std::string text) : hook_(hook), text_(std::move(text)) {}

 protected:
  int_type underflow() override {
    hook_.call(Callback::Read);
    constexpr std::size_t kPiece = 64;
    const std::size_t size = std::min(kPiece, text_.size() - at_);
    if (size == 0) return traits_type::eof();
    setg(text_.data() + at_, text_.data() + at_, text_.data() + at_ + size);
    at_ += size;
    return traits_type::to_int_type(*gptr());
  }

 private:
  Hook& hook_;
  std::string text_;
  std::size_t at_ = 0;
};

struct ReentrantHost {
  ReentrantHost() : source(hook, {{1, 2, 3}, {1, 2}, {1, 3}, {1, 2, 3}, {2, 3}, {3, 2, 1}, {1}, {1, 2, 3}}) {
    settings.SetSupportSource(new HookedSupport(hook));
    settings.SetProgressListener(new HookedListener(hook));
    settings.SetRemoveSmallFreq(3);
    settings.SetReportFreqPhaseI(3);
    settings.SetReportFreqPhaseII(3);
    settings.GetDictionarySettings().SetReportFrequency(1);
    settings.GetDictionarySettings().SetMaxInStoreSets(kMaxSets);
    settings.GetDictionarySettings().SetSpillFileName(spillName().c_str());  // in every state the same
    settings.GetDictionarySettings().SetInitialBoundarySearchSize(7);        // small tables are made fast
    settings.GetDictionarySettings().SetInitialHashtableSet23Size(7);
    engine = std::make_unique<CarmaAssociationAlgorithm>(&settings, &source);
  }
  static constexpr int kMaxSets = 1000;
  static const std::string& spillName() {
    static const std::string name = TemporaryFile().name();
    return name;
  }

  // The lattice that the operations are called on; null as long as there is none.
  SetDictionary* sets() const {
    return lattice != nullptr ? lattice : dynamic_cast<SetDictionary*>(engine->GetLattice());
  }

  Hook hook;
  CarmaSettings settings;
  HookedSource source;
  std::unique_ptr<CarmaAssociationAlgorithm> engine;
  std::unique_ptr<SetDictionary> own;  // a lattice beside the engine's
  SetDictionary* lattice = nullptr;    // null: the engine's, where it gives it out
};
