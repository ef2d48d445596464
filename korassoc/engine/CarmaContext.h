// The states of the engine: what they have in common, and how an operation is refused.

#pragma once

#include <functional>
#include <iosfwd>

#include "korassoc/engine/ContextAnswers.h"
#include "korassoc/engine/KorStatus.h"

class CarmaAssociationAlgorithm;
class ProgressListener;
class SemiLattice;
class SetDictionary;
class SupportSource;

// A state decides which operations of the engine work and what the others answer. The engine hands every
// operation that depends on its state to the one it is in:
//
//   PhaseIContext    EndPhaseI ->  PhaseIIContext
//   either of these  a save ->     CarmaSaveContext, and back
//   any              doCancel ->   CarmaCancelContext, out of which nothing leads
//   a construction   failed ->     CarmaFailedRestartContext, out of which only a doCancel leads
//
// What every state answers stands in one table (ContextAnswers). The operations of this class read it: they
// refuse, cancel, do nothing, or do what all states that carry the operation out do alike. A state overrides
// those that it carries out in its own way.
//
// A state holds nothing: there is one constant object of each, shared by all engines, and every operation
// gets the engine that it works on. So a state can be entered when memory is short.
// Errors: no operation that returns a status throws.
class CarmaContext {
 public:
  using Engine = CarmaAssociationAlgorithm;

  // A question to the dictionary of an engine in phase II; it may throw.
  using Query = std::function<KorAssoc::KorStatus(SetDictionary&)>;

  constexpr CarmaContext() = default;
  virtual ~CarmaContext();
  CarmaContext(const CarmaContext&) = delete;
  CarmaContext& operator=(const CarmaContext&) = delete;

  virtual void Cancel(Engine& engine) const;
  virtual KorAssoc::KorStatus SaveState(Engine& engine, std::fstream& stream) const;
  virtual KorAssoc::KorStatus SaveStateXML(Engine& engine, std::ostream& stream) const;

  // The settings take the object over where the state allows it; otherwise it stays the caller's.
  virtual void SetProgressListener(Engine& engine, ProgressListener* listener) const;
  virtual double AverageSupport(const Engine& engine) const;
  virtual void SetSupportSource(Engine& engine, SupportSource* source) const;
  virtual void SetMaxInStoreSets(Engine& engine, int sets) const;

  virtual KorAssoc::KorStatus RunPhaseI(Engine& engine, int transactions) const;
  virtual KorAssoc::KorStatus EndPhaseI(Engine& engine) const;
  virtual KorAssoc::KorStatus RunNullPhaseII(Engine& engine, double fraction) const;
  virtual KorAssoc::KorStatus RunPhaseII(Engine& engine) const;
  virtual KorAssoc::KorStatus RunPhaseIIrandom(Engine& engine) const;
  virtual SemiLattice* GetLattice(Engine& engine) const;

  // The rule and consequent queries and the exports, CreateNgetRules to ExportRulesXML: which one it is
  // decides about the answer, the query about what the dictionary is asked.
  virtual KorAssoc::KorStatus Ask(Engine& engine, korassoc::detail::Operation operation,
                                  const Query& query) const;

  virtual KorAssoc::KorStatus RunPhaseIIcomplete(Engine& engine, double minSupport) const;

 protected:
  virtual korassoc::detail::State state() const { return korassoc::detail::State::Base; }

  bool does(korassoc::detail::Operation operation) const;

  // Gives the table's answer to an operation that this state does not carry out.
  KorAssoc::KorStatus answer(Engine& engine, korassoc::detail::Operation operation) const;
};
