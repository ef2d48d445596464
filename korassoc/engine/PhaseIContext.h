// The state in which transactions are read for the first time.

#pragma once

#include "korassoc/engine/CarmaContext.h"

class PhaseIContext : public CarmaContext {
 public:
  static const PhaseIContext& instance();

  // Only between two calls of RunPhaseI, the last of which was good.
  KorAssoc::KorStatus SaveState(Engine& engine, std::fstream& stream) const override;
  KorAssoc::KorStatus SaveStateXML(Engine& engine, std::ostream& stream) const override;

  void SetMaxInStoreSets(Engine& engine, int sets) const override;

  // Reads at most transactions transactions: takes in the support that holds at each, lets the core count it,
  // and prunes every RemoveSmallFreq transactions. A report is sent at those of these points that are
  // multiples of ReportFreqPhaseI as well, and at the end.
  KorAssoc::KorStatus RunPhaseI(Engine& engine, int transactions) const override;

  // Prunes with the average support of all transactions, reports, and leads to phase II. When that fails the
  // engine stays in phase I, with code 40001, error.
  KorAssoc::KorStatus EndPhaseI(Engine& engine) const override;

 protected:
  korassoc::detail::State state() const override { return korassoc::detail::State::PhaseI; }

 private:
  struct Pass;

  void readTransactions(Engine& engine, int transactions, Pass& pass) const;
  void close(Engine& engine, const Pass& pass) const;
  bool isLeft(const Engine& engine) const;
  static void prune(Engine& engine, double transactionsAtSupport);
  static void report(Engine& engine);
};
