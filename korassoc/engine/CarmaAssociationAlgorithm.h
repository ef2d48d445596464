// The engine that a host drives: two phases over the transactions, then questions to the lattice.

#pragma once

#include <atomic>
#include <fstream>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/dictionary/SemiLattice.h"
#include "korassoc/engine/KorStatus.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"

class CarmaContext;
class CarmaCore;
class CarmaSettings;
class CeilArray;
class ItemSet;
class MultiPassTransIter;
class ProgressListener;
class SetDictionary;
class SupportSource;

namespace korassoc {
struct ItemsetColumns;
}

namespace korassoc::detail {
enum class Operation;
}

// A run: install a support source in the settings and construct; RunPhaseI once or several times; RunPhaseII
// (or one of its variants); then any number of queries and exports.
//
//   phase I      RunPhaseI, SaveState, SaveStateXML
//      |         RunPhaseII, RunPhaseIIrandom, RunNullPhaseII, RunPhaseIIcomplete
//   phase II     queries, exports, SaveStateXML, RunPhaseII and RunPhaseIIrandom again
//
// Cancel leads from either to a cancelled engine, a failed construction to an unusable one. Each operation is
// carried out or refused by the state that the engine is in; a refusal is a status too: code 4, saving is not
// possible now; 5, the engine is unusable; 6, not permitted in this state; 1, the engine is cancelled.
//
// Supports and confidences are fractions from 0 to 1, lengths are numbers of items.
// Ownership: settings and iterator stay the host's and must outlive the engine; settings read from a saved
//   state are the engine's own. What the host's callbacks are given dies with the call.
// Errors: no operation that returns a status lets an exception out, nor does a constructor; what a callback
//   of the host throws becomes a status like any failure of the library.
// Callbacks: what the host implements (iterator, transactions, support source, listener, streams) may call
// the
//   engine. What only asks is answered as ever. While a phase or a pass runs, or a lattice is written to a
//   stream, another phase or pass is refused with code 6, error; so are, within a second pass and an export,
//   changes of GetLattice() itself (SetDictionary::Hold), and saving within a pass with code 4. A listener
//   of a query may run a pass: the query then answers code 1, error, and nothing.
// Threads: all work runs on the caller's thread. Cancel alone may be called while another operation runs,
// from
//   any thread.
class KORASSOC_EXPORT CarmaAssociationAlgorithm {
 public:
  // An engine ready for phase I. Null settings, or an exception, leave it unusable: GetStatus() tells code
  // 5, error.
  CarmaAssociationAlgorithm(CarmaSettings* settings, MultiPassTransIter* iterator);

  // An engine that goes on from a saved state, binary or XML: in phase II when the state holds a lattice,
  // else in phase I. What is no complete state leaves the engine unusable, as above; lines about it go to the
  // standard streams. A state without its ceilings counts as complete in binary.
  // The type of the stream decides which format is read: a std::fstream binary, a std::ifstream XML.
  // To go on with phase I, the iterator must stand behind the NumberOfTransactions() that were read: an
  // iterator at its start has them counted again, and nothing can tell. Settings that are not saved, the
  // support source and the listener, are installed anew.
  CarmaAssociationAlgorithm(std::fstream& state, MultiPassTransIter* iterator);
  CarmaAssociationAlgorithm(std::ifstream& state, MultiPassTransIter* iterator);

  // An engine in phase II, whose lattice holds the given itemsets with their counts, wherever they were
  // counted. They enter their tables in the order given: those of a complete pass make the tables that the
  // pass would have made. support, a fraction, is the average support from then on. Null settings, sets of
  // more items than these allow, items that do not ascend, a set that is there twice and counts below 0 or
  // above the number of transactions leave the engine unusable, as above. A subset that is missing is
  // reported on the standard output, as by buildLattice().
  CarmaAssociationAlgorithm(CarmaSettings* settings, MultiPassTransIter* iterator,
                            const korassoc::ItemsetColumns& itemsets, double support);

  ~CarmaAssociationAlgorithm();
  CarmaAssociationAlgorithm(const CarmaAssociationAlgorithm&) = delete;
  CarmaAssociationAlgorithm& operator=(const CarmaAssociationAlgorithm&) = delete;

  // Asks the engine to stop; the running phase or rule creation notices at its next check, otherwise the next
  // operation. What was counted is given up then, and the engine answers with code 1 from there on.
  void Cancel();

  // Write the engine's whole state, from which a constructor resumes it: in binary between two calls of
  // RunPhaseI (the last of which was good), as XML also after phase II. Code 2, error: the stream failed. The
  // refusals have code 4.
  KorAssoc::KorStatus SaveState(std::fstream& stream);
  KorAssoc::KorStatus SaveStateXML(std::ostream& stream);

  // Installs the object in the settings, which own it from then on and delete the one before. An engine that
  // is cancelled or unusable, and for a support source also one in phase II, leaves it to the caller, who can
  // tell by asking the settings for it.
  void SetProgressListener(ProgressListener* listener);
  void SetSupportSource(SupportSource* source);

  // The most itemsets kept in memory. Has an effect before phase II only.
  void SetMaxInStoreSets(int sets);

  // Reads at most transactions further transactions, and prunes at the end of the call: so the size of the
  // calls has a part in the result, unless all end at a multiple of the pruning frequency. 0 or less changes
  // nothing and is OK. Code 1, warning: stopped by Cancel. Code 3, error: memory was full and nothing could
  // be evicted. Code 40001, error: the dictionary failed at a transaction, which is counted in part then.
  // Code 40001, warning: another exception in the work or in a callback, no support source or no iterator; a
  // line goes to standard output. After either a further call goes on with the next transaction.
  KorAssoc::KorStatus RunPhaseI(int transactions);

  // Closes phase I if it is open, reads the same transactions again and builds the lattice from exact counts.
  // Where phase I is known to have counted every set since it was stored, a set is counted only in what came
  // before, so that this pass takes a small part of the first one's time. An iterator that turns out to have
  // delivered other transactions is restarted and read once more: the counts are those of what it delivers.
  // Code 2, error: the iterator could not restart. Code 3, error: more sets are stored than the
  // settings allow. What breaks the pass off while it counts leaves no lattice and counts of a part:
  // IsLatticeBuilt() is false then, queries answer 40001, error, and a save 4, warning, until this or another
  // form of the pass has come to its end.
  KorAssoc::KorStatus RunPhaseII();

  // The same for an iterator that delivers its second pass in another order. It counts the one-item sets
  // anew, too.
  KorAssoc::KorStatus RunPhaseIIrandom();

  // Closes phase I and builds the lattice from phase I's counts. The number of transactions grows by its
  // given fraction, to allow for what was missed. Refused once phase II has begun. No fraction is: NaN adds
  // none, a negative one takes away, below -1 to less than no transactions, and what an int cannot hold
  // becomes the largest or smallest that it can.
  KorAssoc::KorStatus RunNullPhaseII(double fraction);

  // The queries append to their vector, in phase II only; what they answer beside the refusals: SemiLattice,
  // whose operations they are. Code 40001, error: an exception, of the listener too.
  //
  // All rules of at least this support and confidence (fractions), without redundant ones.
  KorAssoc::KorStatus CreateNgetRules(double minSupport, double minConfidence,
                                      std::vector<AssociationRule>& rules);

  // The rules within all bounds: SemiLattice::createFilteredRules.
  KorAssoc::KorStatus GetRulesSpecial(double minConfidence, double maxConfidence, double minSupport,
                                      double maxSupport, double minLift, char sortBy,
                                      ItemSet* antecedentRequired, ItemSet* antecedentAllowed,
                                      int minAntecedentLength, int maxAntecedentLength,
                                      ItemSet* consequentRequired, ItemSet* consequentAllowed,
                                      int minConsequentLength, int maxConsequentLength, int maxRules,
                                      bool minimalAntecedentsOnly, std::vector<AssociationRule>& rules);

  // The single items that such rules lead to: SemiLattice::createFilteredConsequents.
  KorAssoc::KorStatus GetItemsSpecial(double minConfidence, double maxConfidence, double minSupport,
                                      double maxSupport, double minLift, char sortBy,
                                      ItemSet* antecedentRequired, ItemSet* antecedentAllowed,
                                      int minAntecedentLength, int maxAntecedentLength,
                                      ItemSet* consequentAllowed, int maxItems,
                                      std::vector<ConsequentDescriptor>& items);

  // The items that follow from an antecedent: SemiLattice::createConsequents.
  KorAssoc::KorStatus GetItems(ItemSet* antecedent, int maxItems, std::vector<ConsequentDescriptor>& items);

  // The lattice, owned by the engine; null outside phase II.
  SemiLattice* GetLattice();

  // Writes the rules that reach both thresholds as a PMML document: those of CreateNgetRules when
  // nonRedundant is set, otherwise the redundant ones too. When they cannot be made nothing is written. The
  // stream's state is the caller's to look at.
  KorAssoc::KorStatus ExportRulesXML(std::ostream& out, double minSupport, double minConfidence,
                                     bool nonRedundant);

  // Writes every stored set as a document, with the average support as a remark in it. The stream's state is
  // the caller's to look at.
  KorAssoc::KorStatus ExportLatticeXML(std::ostream& out);

  // The engine's status: the result of the last operation that set it.
  KorAssoc::KorStatus GetStatus() const;

  // The average of the support thresholds so far, each raised to the highest that came after it; 0 when there
  // is none or the engine is cancelled.
  double AverageSupport() const;

  // Whether a form of phase II has come to its end; false when the engine is cancelled or unusable.
  bool IsLatticeBuilt() const;

  // Stored itemsets, the empty one included; transactions; items of the longest stored set; stored sets of a
  // length. All -1 when the engine is cancelled or unusable.
  int NumberOfSets() const;
  int NumberOfTransactions() const;
  int LongestSet() const;
  int CountSetsOfSize(int length) const;

  // Writes one line "sets of size k n" for each length k from 0 to LongestSet() to standard output.
  void DisplayDictInfo() const;

  // Closes phase I if it is open, then finds every itemset of at most MaxLengthSet items in at least
  // minSupport (a fraction) of the source's transactions, with its exact count, whatever phase I counted: the
  // lattice holds these and nothing else. The count asked for is the smallest integer not below minSupport
  // times the number of transactions, 1 at least; an integer up to rounding noise counts as that integer.
  // Reads the source to its end, once or as often as the settings' index budget calls for. An item that a
  // transaction repeats counts once. Codes 1, 2 and 40001 as for RunPhaseII. Code 3, error: there are more
  // such sets than the settings allow in memory, which is said as soon as it is certain; the dictionary then
  // holds what phase I left, and CountThatFits() helps. Code 40001,
  // error, and nothing changed, with phase I still open: minSupport is below 0, above 1 or NaN.
  KorAssoc::KorStatus RunPhaseIIcomplete(double minSupport);

  // When the last RunPhaseIIcomplete answered code 3: a number of transactions that few enough itemsets
  // reach. Over the same transactions and within the same limit, a support of that count, or of any higher
  // one, succeeds. 0 when none is known: too many itemsets are in as many transactions as any item is, or the
  // source could not be read again. 0 also after any other answer.
  int CountThatFits() const { return countThatFits_; }

  // The stored itemsets of one and more items with their counts, level by level in the order of the tables:
  // in phase I what it has counted so far, with what it may have missed; in phase II those of the lattice.
  // What lies on disk is not among them. Code 1, error: the engine is cancelled; 5, error: it is unusable;
  // 40001, error: memory ran out. itemsets is replaced when the answer is OK, else left as it is.
  KorAssoc::KorStatus GetItemsets(korassoc::ItemsetColumns& itemsets) const;

  // Itemsets that made room for others under the limit, since the engine was made: given up with their
  // counts, and moved to the disk. -1 when the engine is cancelled or unusable.
  int NumberOfSetsGivenUp() const;
  int NumberOfSetsSpilled() const;

  // Product, version and copyright line.
  static std::string GetComponentVersion();

 private:
  friend class CarmaContext;
  friend class CarmaSaveContext;
  friend class PhaseIContext;
  friend class PhaseIIContext;
  friend class PhaseIReporter;
  friend class PhaseIIReporter;
  friend struct CarmaAssociationAlgorithmTestAccess;

  // While one lives, doCancel only puts aside what it gives up: a callback may have cancelled the engine in
  // the middle of an operation that still works with it.
  class Running {
   public:
    explicit Running(CarmaAssociationAlgorithm& engine) : engine_(engine) { ++engine_.running_; }
    ~Running();
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

   private:
    CarmaAssociationAlgorithm& engine_;
  };

  // While one lives, a phase or a pass runs.
  class Passing {
   public:
    explicit Passing(CarmaAssociationAlgorithm& engine) : engine_(engine), running_(engine) {
      ++engine_.passes_;
    }
    ~Passing() { --engine_.passes_; }
    Passing(const Passing&) = delete;
    Passing& operator=(const Passing&) = delete;

   private:
    CarmaAssociationAlgorithm& engine_;
    Running running_;
  };

  void changeState(const CarmaContext& state) { state_ = &state; }

  // Who answers an operation: the state, or, in a callback, what guards the pass or the export that is on.
  const CarmaContext& contextFor(korassoc::detail::Operation operation) const;

  // Makes what settings_ asks for.
  void makeDictionary();
  void makeCounters();

  // Reads a state with settings of the engine's own; an exception leaves the engine unusable.
  void restore(const std::function<void()>& read);
  void readRecord(std::fstream& stream);
  void readRecordXML(std::ifstream& stream);

  // Write the state while the engine is in the state of a save. Whatever fails, the stream included, ends in
  // code 2, error, and a line to standard output.
  KorAssoc::KorStatus doSave(std::fstream& stream);
  KorAssoc::KorStatus doSaveXML(std::ostream& stream);
  KorAssoc::KorStatus save(std::ostream& stream, const char* failure, const std::function<void()>& write);
  void writeRecord(std::fstream& stream) const;
  void writeRecordXML(std::ostream& stream) const;

  // Makes status the engine's own and returns it.
  KorAssoc::KorStatus setStatus(const KorAssoc::KorStatus& status);

  // Gives up what was counted; the engine is cancelled from then on. May be repeated.
  void doCancel();

  // Gives up everything; the engine is unusable from then on.
  void failRestart();

  // Hands a question to the state, by reference.
  template <typename Query>
  KorAssoc::KorStatus ask(korassoc::detail::Operation operation, const Query& query);

  std::unique_ptr<CarmaSettings> ownSettings_;  // only when they came from a saved state
  CarmaSettings* settings_;
  MultiPassTransIter* iterator_;
  std::atomic<bool> cancelRequested_ = false;
  std::unique_ptr<CarmaCore> core_;            // null when cancelled or unusable,
  std::unique_ptr<SetDictionary> dictionary_;  // like these two
  std::unique_ptr<CeilArray> ceilings_;
  int setsRemoved_ = 0;           // by the prunings of phase I
  int peakSets_ = 0;              // the most sets at a pruning point of phase I
  double currentSupport_ = 0.0;   // what the support source said last
  int countThatFits_ = 0;         // after a complete pass that found too many itemsets
  int transactionsSeen_ = 0;      // by the end of the last good call of RunPhaseI
  double supportCount_ = 1.0;     // the count of the last pruning in phase I
  bool phaseIResumable_ = false;  // phase I stands between two calls, the last of which was good
  int running_ = 0;               // operations on the stack that work with core, dictionary and ceilings
  int passes_ = 0;                // of these
  std::unique_ptr<CarmaCore> retiredCore_;  // given up while operations ran
  std::unique_ptr<SetDictionary> retiredDictionary_;
  std::unique_ptr<CeilArray> retiredCeilings_;
  KorAssoc::KorStatus currentStatus_;
  std::atomic<const CarmaContext*> state_;  // never null; a cancel may ask it from another thread
};
