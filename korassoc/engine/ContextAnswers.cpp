#include "korassoc/engine/ContextAnswers.h"

#include <array>
#include <cstddef>

namespace korassoc::detail {
namespace {

constexpr Answer does{Answer::Does};
constexpr Answer base{Answer::AsBase};
constexpr Answer usual{Answer::AsState};
constexpr Answer waits{Answer::Waits, 6, false};
constexpr Answer cancels{Answer::Cancels};
constexpr Answer nothing{Answer::Nothing};
constexpr Answer W(int code) { return {Answer::Refuses, code, true}; }
constexpr Answer E(int code) { return {Answer::Refuses, code, false}; }

struct Row {
  Operation operation;
  std::array<Answer, kStates> answers;
};

// The unevenness is meant: hosts tell the states apart by it.
// clang-format off
constexpr std::array<Row, kOperations> kAnswers{{
    // operation                        Base      PhaseI   PhaseII  Save     Cancelled  FailedRestart  InPass  InExport
    {Operation::Cancel,               {{W(6),     does,    does,    does,    nothing,   does,          usual,  usual}}},
    {Operation::SaveState,            {{W(4),     does,    base,    E(4),    E(4),      E(5),          W(4),   usual}}},
    {Operation::SaveStateXML,         {{W(4),     does,    does,    E(4),    E(4),      E(5),          W(4),   usual}}},
    {Operation::SetProgressListener,  {{does,     base,    base,    base,    cancels,   E(5),          usual,  usual}}},
    {Operation::AverageSupport,       {{nothing,  does,    does,    does,    nothing,   nothing,       usual,  usual}}},
    {Operation::SetSupportSource,     {{does,     base,    nothing, W(6),    cancels,   E(5),          usual,  usual}}},
    {Operation::SetMaxInStoreSets,    {{does,     does,    nothing, nothing, nothing,   nothing,       usual,  usual}}},
    {Operation::RunPhaseI,            {{W(6),     does,    base,    base,    cancels,   E(5),          waits,  waits}}},
    {Operation::EndPhaseI,            {{W(6),     does,    base,    base,    cancels,   E(5),          waits,  waits}}},
    {Operation::RunNullPhaseII,       {{W(6),     base,    does,    base,    cancels,   E(5),          waits,  waits}}},
    {Operation::RunPhaseII,           {{W(6),     base,    does,    base,    cancels,   E(5),          waits,  waits}}},
    {Operation::RunPhaseIIrandom,     {{W(6),     base,    does,    base,    base,      base,          waits,  waits}}},
    {Operation::GetLattice,           {{nothing,  nothing, does,    nothing, nothing,   nothing,       usual,  usual}}},
    {Operation::CreateNgetRules,      {{W(6),     base,    does,    base,    cancels,   E(5),          usual,  usual}}},
    {Operation::GetRulesSpecial,      {{W(6),     base,    does,    E(6),    cancels,   E(5),          usual,  usual}}},
    {Operation::GetItemsSpecial,      {{W(6),     base,    does,    base,    base,      base,          usual,  usual}}},
    {Operation::GetItems,             {{W(6),     base,    does,    base,    base,      base,          usual,  usual}}},
    {Operation::ExportLatticeXML,     {{W(6),     base,    does,    base,    W(1),      E(5),          usual,  usual}}},
    {Operation::ExportRulesXML,       {{W(6),     base,    does,    base,    W(1),      E(5),          usual,  usual}}},
    {Operation::RunPhaseIIcomplete,   {{W(6),     base,    does,    base,    cancels,   E(5),          waits,  waits}}},
}};
// clang-format on

constexpr bool rowsFollowTheSlots() {
  for (std::size_t row = 0; row < kAnswers.size(); ++row) {
    if (static_cast<std::size_t>(kAnswers[row].operation) != row + 1) return false;
  }
  return true;
}
static_assert(rowsFollowTheSlots());

}  // namespace

Answer answerOf(Operation operation, State state) {
  const Row& row = kAnswers[static_cast<std::size_t>(operation) - 1];
  const Answer& answer = row.answers[static_cast<std::size_t>(state)];
  return answer.kind == Answer::AsBase ? row.answers[static_cast<std::size_t>(State::Base)] : answer;
}

}  // namespace korassoc::detail
