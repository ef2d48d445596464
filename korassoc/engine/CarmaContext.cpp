#include "korassoc/engine/CarmaContext.h"

#include <cassert>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/CeilArray.h"

using KorAssoc::KorStatus;
using korassoc::detail::Answer;
using korassoc::detail::Operation;

CarmaContext::~CarmaContext() = default;

bool CarmaContext::does(Operation operation) const {
  return korassoc::detail::answerOf(operation, state()).kind == Answer::Does;
}

KorStatus CarmaContext::answer(Engine& engine, Operation operation) const {
  const Answer answer = korassoc::detail::answerOf(operation, state());
  assert(answer.kind != Answer::Does);  // a state that carries an operation out overrides it
  const bool cancels = answer.kind == Answer::Waits && engine.cancelRequested_;
  if (answer.kind == Answer::Cancels || cancels) {
    engine.doCancel();
  } else if (answer.kind == Answer::Refuses || answer.kind == Answer::Waits) {
    engine.setStatus(KorStatus(answer.code, answer.warning));
  }
  return engine.currentStatus_;
}

void CarmaContext::Cancel(Engine& engine) const {
  if (!does(Operation::Cancel)) {
    answer(engine, Operation::Cancel);
    return;
  }
  // The wish comes last: who sees it may free the dictionary, on another thread.
  if (engine.dictionary_) engine.dictionary_->setRestartFailed();
  engine.cancelRequested_ = true;
}

KorStatus CarmaContext::SaveState(Engine& engine, std::fstream& /*stream*/) const {
  return answer(engine, Operation::SaveState);
}

KorStatus CarmaContext::SaveStateXML(Engine& engine, std::ostream& /*stream*/) const {
  return answer(engine, Operation::SaveStateXML);
}

void CarmaContext::SetProgressListener(Engine& engine, ProgressListener* listener) const {
  if (does(Operation::SetProgressListener)) {
    engine.settings_->SetProgressListener(listener);
  } else {
    answer(engine, Operation::SetProgressListener);
  }
}

double CarmaContext::AverageSupport(const Engine& engine) const {
  return does(Operation::AverageSupport) && engine.ceilings_ ? engine.ceilings_->average() : 0.0;
}

void CarmaContext::SetSupportSource(Engine& engine, SupportSource* source) const {
  if (does(Operation::SetSupportSource)) {
    engine.settings_->SetSupportSource(source);
  } else {
    answer(engine, Operation::SetSupportSource);
  }
}

void CarmaContext::SetMaxInStoreSets(Engine& engine, int sets) const {
  if (does(Operation::SetMaxInStoreSets)) engine.settings_->GetDictionarySettings().SetMaxInStoreSets(sets);
}

KorStatus CarmaContext::RunPhaseI(Engine& engine, int /*transactions*/) const {
  return answer(engine, Operation::RunPhaseI);
}

KorStatus CarmaContext::EndPhaseI(Engine& engine) const { return answer(engine, Operation::EndPhaseI); }

KorStatus CarmaContext::RunNullPhaseII(Engine& engine, double /*fraction*/) const {
  return answer(engine, Operation::RunNullPhaseII);
}

KorStatus CarmaContext::RunPhaseII(Engine& engine) const { return answer(engine, Operation::RunPhaseII); }

KorStatus CarmaContext::RunPhaseIIcomplete(Engine& engine, double /*minSupport*/) const {
  return answer(engine, Operation::RunPhaseIIcomplete);
}

KorStatus CarmaContext::RunPhaseIIrandom(Engine& engine) const {
  return answer(engine, Operation::RunPhaseIIrandom);
}

SemiLattice* CarmaContext::GetLattice(Engine& /*engine*/) const { return nullptr; }

KorStatus CarmaContext::Ask(Engine& engine, Operation operation, const Query& /*query*/) const {
  return answer(engine, operation);
}
