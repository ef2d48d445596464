// The state after phase I: a second pass can be made, and the lattice answers.

#pragma once

#include "korassoc/engine/CarmaContext.h"

class CarmaCore;

class PhaseIIContext : public CarmaContext {
 public:
  static const PhaseIIContext& instance();

  KorAssoc::KorStatus SaveStateXML(Engine& engine, std::ostream& stream) const override;
  KorAssoc::KorStatus RunNullPhaseII(Engine& engine, double fraction) const override;
  KorAssoc::KorStatus RunPhaseII(Engine& engine) const override;
  KorAssoc::KorStatus RunPhaseIIrandom(Engine& engine) const override;
  KorAssoc::KorStatus RunPhaseIIcomplete(Engine& engine, double minSupport) const override;
  SemiLattice* GetLattice(Engine& engine) const override;
  KorAssoc::KorStatus Ask(Engine& engine, korassoc::detail::Operation operation,
                          const Query& query) const override;

 protected:
  korassoc::detail::State state() const override { return korassoc::detail::State::PhaseII; }

 private:
  struct Variant;

  // Runs one form of the phase and makes its result the engine's status.
  template <typename Work>
  KorAssoc::KorStatus run(Engine& engine, Work&& work) const;

  KorAssoc::KorStatus pass(Engine& engine, const Variant& variant) const;
  KorAssoc::KorStatus countAgain(Engine& engine, SetDictionary& dictionary, CarmaCore& core,
                                 const Variant& variant) const;
  static bool restart(Engine& engine, const SetDictionary& dictionary);
  static bool readAgain(Engine& engine, const SetDictionary& dictionary, CarmaCore& core);
  KorAssoc::KorStatus countCompletely(Engine& engine, double minSupport) const;
  static void report(Engine& engine, const SetDictionary& dictionary);
};
