// Small hosts for the engine's tests: support sources and listeners that do as the test tells them.

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/KorStatus.h"
#include "korassoc/engine/ProgressListener.h"
#include "korassoc/engine/ProgressReport.h"
#include "korassoc/engine/SupportSource.h"

// Counts its living objects, so that a test can see who deleted it.
class Counted {
 public:
  explicit Counted(int* living = nullptr) : living_(living) {
    if (living_ != nullptr) ++*living_;
  }
  virtual ~Counted() {
    if (living_ != nullptr) --*living_;
  }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 private:
  int* living_;
};

class TestSupport : public SupportSource, private Counted {
 public:
  // The threshold of a transaction, from its number.
  using Rule = std::function<double(int)>;

  explicit TestSupport(double support, int* living = nullptr)
      : Counted(living), rule_([support](int) { return support; }) {}
  explicit TestSupport(Rule rule) : rule_(std::move(rule)) {}

  double GetSupport(int transaction) override {
    asked.push_back(transaction);
    return rule_(transaction);
  }

  std::vector<int> asked;

 private:
  Rule rule_;
};

class TestListener : public ProgressListener, private Counted {
 public:
  using Reaction = std::function<void(ProgressReport&)>;

  explicit TestListener(Reaction reaction, int* living = nullptr)
      : Counted(living), reaction_(std::move(reaction)) {}

  void OnProgress(ProgressReport* report) override {
    ++reports;
    if (reaction_) reaction_(*report);
  }

  int reports = 0;

 private:
  Reaction reaction_;
};

// Settings with a constant support threshold.
inline std::unique_ptr<CarmaSettings> settingsWithSupport(double support) {
  auto settings = std::make_unique<CarmaSettings>();
  settings->SetSupportSource(new TestSupport(support));
  return settings;
}

inline KorAssoc::KorStatus warning(long code) { return KorAssoc::KorStatus(code, true); }
inline KorAssoc::KorStatus error(long code) { return KorAssoc::KorStatus(code, false); }

// "OK", "W6", "E40001": a status in the messages of a test.
inline std::string shortForm(const KorAssoc::KorStatus& status) {
  if (status.IsOK()) return status.GetCode() == 0 ? "OK" : "OK with code " + std::to_string(status.GetCode());
  return (status.IsWarning() ? "W" : "E") + std::to_string(status.GetCode());
}
