// What each state of the engine answers to each operation: the table, as data.

#pragma once

namespace korassoc::detail {

// The operations that depend on the state, in the order of their slots. Slot 0 is the destructor.
enum class Operation {
  Cancel = 1,
  SaveState,
  SaveStateXML,
  SetProgressListener,
  AverageSupport,
  SetSupportSource,
  SetMaxInStoreSets,
  RunPhaseI,
  EndPhaseI,
  RunNullPhaseII,
  RunPhaseII,
  RunPhaseIIrandom,
  GetLattice,
  CreateNgetRules,
  GetRulesSpecial,
  GetItemsSpecial,
  GetItems,
  ExportLatticeXML,
  ExportRulesXML,
  RunPhaseIIcomplete,
};
inline constexpr int kOperations = 20;

// The states, in the order of the table's columns. Base is the default behaviour; no engine is ever in it.
// InPass and InExport come before PhaseI and PhaseII while a callback has the word, of a pass or of the
// stream of an export.
enum class State { Base, PhaseI, PhaseII, Save, Cancelled, FailedRestart, InPass, InExport };
inline constexpr int kStates = 8;

struct Answer {
  enum Kind {
    Does,     // the state carries the operation out, or refuses it for a reason of the moment
    AsBase,   // whatever Base answers
    AsState,  // whatever the state of the engine answers
    Refuses,  // the engine's status becomes code with that severity, and is the result
    Waits,    // refuses, but first carries out a cancel that was asked for: then that is the result
    Cancels,  // the engine is cancelled (again), and the status of that is the result
    Nothing,  // no effect; a value of 0.0 or null
  };
  Kind kind;
  int code = 0;
  bool warning = false;
};

// The answer of a state, with AsBase followed to what Base answers.
Answer answerOf(Operation operation, State state);

}  // namespace korassoc::detail
