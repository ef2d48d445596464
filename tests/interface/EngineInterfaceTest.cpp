// The names and signatures of status, settings, host classes and engine that hosts compile against, and the
// order of the virtual operations.

#include <fstream>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <vector>

#include "korassoc/korassoc.h"
#include "tests/interface/InterfaceTest.h"

namespace {

using KorAssoc::KorStatus;
using Engine = CarmaAssociationAlgorithm;
using Rules = std::vector<AssociationRule>;
using Items = std::vector<ConsequentDescriptor>;

class HostTransaction : public Transaction {
 public:
  int GetItem(int) const override { return 0; }
  int GetTransactionID() const override { return 0; }
  int GetLength() const override { return 0; }
};

class HostIterator : public MultiPassTransIter {
 public:
  bool HasNext() override { return false; }
  Transaction* Next() override { return nullptr; }
  int Rewind() override { return 0; }
  int Restart() override { return 0; }
};

class HostSource : public SupportSource {
 public:
  double GetSupport(int) override { return 1.0; }
};

class HostReport : public ProgressReport {
 public:
  int GetIntValue(const std::string&) const override { return 0; }
  double GetDoubleValue(const std::string&) const override { return 0.0; }
};

class HostListener : public ProgressListener {
 public:
  void OnProgress(ProgressReport*) override {}
};

TEST(Interface, HasTheStatus) {
  static_assert(std::is_nothrow_default_constructible_v<KorStatus>);
  static_assert(std::is_constructible_v<KorStatus, long, bool>);
  static_assert(std::is_copy_constructible_v<KorStatus> && std::is_copy_assignable_v<KorStatus>);
  has<bool (KorStatus::*)(const KorStatus&) const>(&KorStatus::operator==);
  has<bool (KorStatus::*)() const>(&KorStatus::IsOK);
  has<bool (KorStatus::*)() const>(&KorStatus::IsError);
  has<bool (KorStatus::*)() const>(&KorStatus::IsWarning);
  has<long (KorStatus::*)() const>(&KorStatus::GetCode);
  has<short (KorStatus::*)() const>(&KorStatus::GetSeverity);
  has<long (KorStatus::*)(unsigned int) const>(&KorStatus::GetDiscreteDatum);
  has<double (KorStatus::*)(unsigned int) const>(&KorStatus::GetScaleDatum);
  has<void (KorStatus::*)(unsigned int, long)>(&KorStatus::SetDiscreteDatum);
  has<void (KorStatus::*)(unsigned int, double)>(&KorStatus::SetScaleDatum);
}

TEST(Interface, HasTheExceptionsWithoutData) {
  static_assert(std::is_empty_v<IOException>);
  static_assert(std::is_empty_v<FileNotFoundException>);
  static_assert(std::is_empty_v<DictionaryFailure>);
}

template <typename Settings>
void hasNumber(int (Settings::*get)() const, void (Settings::*set)(int)) {
  Settings settings;
  (settings.*set)(77);
  EXPECT_EQ((settings.*get)(), 77);
}

TEST(Interface, HasTheSettingsOfTheDictionary) {
  using Settings = DictionarySettings;
  has<void (Settings::*)(const char*)>(&Settings::SetSpillFileName);
  has<const char* (Settings::*)() const>(&Settings::GetSpillFileName);
  hasNumber<Settings>(&Settings::GetNumberOfFixedSets, &Settings::SetNumberOfFixedSets);
  hasNumber<Settings>(&Settings::GetInitialSetSize, &Settings::SetInitialSetSize);
  has<int (Settings::*)() const>(&Settings::GetInitialBoundarySize);
  hasNumber<Settings>(&Settings::GetInitialBoundarySearchSize, &Settings::SetInitialBoundarySearchSize);
  hasNumber<Settings>(&Settings::GetInitialHashtableSet23Size, &Settings::SetInitialHashtableSet23Size);
  hasNumber<Settings>(&Settings::GetInitialRulesSize, &Settings::SetInitialRulesSize);
  hasNumber<Settings>(&Settings::GetReportFrequency, &Settings::SetReportFrequency);
  hasNumber<Settings>(&Settings::GetMaxInStoreSets, &Settings::SetMaxInStoreSets);
  hasNumber<Settings>(&Settings::GetLeaveInMainStoreCount, &Settings::SetLeaveInMainStoreCount);
  has<bool (Settings::*)() const>(&Settings::GetDiskSpill);
  has<void (Settings::*)(bool)>(&Settings::SetDiskSpill);
  has<std::uint64_t (Settings::*)(std::fstream&) const>(&Settings::WriteObject);
  has<std::uint64_t (Settings::*)(std::fstream&)>(&Settings::ReadObject);
  has<std::uint64_t (Settings::*)(std::ostream&, int) const>(&Settings::WriteObjectXML);
  has<std::uint64_t (Settings::*)(std::ifstream&)>(&Settings::ReadObjectXML);
  static_assert(!std::is_polymorphic_v<Settings>);
}

TEST(Interface, HasTheSettingsOfTheAlgorithm) {
  using Base = AssociationAlgorithmSettings;
  static_assert(std::is_base_of_v<Base, CarmaSettings> && std::has_virtual_destructor_v<Base>);
  static_assert(!std::is_copy_constructible_v<CarmaSettings> && !std::is_copy_assignable_v<CarmaSettings>);
  has<DictionarySettings& (Base::*)()>(&Base::GetDictionarySettings);
  has<const DictionarySettings& (Base::*)() const>(&Base::GetDictionarySettings);
  hasNumber<Base>(&Base::GetMaxTranLength, &Base::SetMaxTranLength);
  hasNumber<Base>(&Base::GetMaxLengthSet, &Base::SetMaxLengthSet);
  has<ProgressListener* (Base::*)() const>(&Base::GetProgressListener);
  has<void (Base::*)(ProgressListener*)>(&Base::SetProgressListener);
  has<SupportSource* (CarmaSettings::*)() const>(&CarmaSettings::GetSupportSource);
  has<void (CarmaSettings::*)(SupportSource*)>(&CarmaSettings::SetSupportSource);
  hasNumber<CarmaSettings>(&CarmaSettings::GetMaxNumSigmaChunks, &CarmaSettings::SetMaxNumSigmaChunks);
  hasNumber<CarmaSettings>(&CarmaSettings::GetReportFreqPhaseI, &CarmaSettings::SetReportFreqPhaseI);
  hasNumber<CarmaSettings>(&CarmaSettings::GetReportFreqPhaseII, &CarmaSettings::SetReportFreqPhaseII);
  hasNumber<CarmaSettings>(&CarmaSettings::GetRemoveSmallFreq, &CarmaSettings::SetRemoveSmallFreq);
  has<std::uint64_t (Base::*)(std::fstream&)>(&Base::ReadObject);
  has<std::uint64_t (Base::*)(std::fstream&) const>(&Base::WriteObject);
  has<std::uint64_t (Base::*)(std::ifstream&)>(&Base::ReadObjectXML);
  has<std::uint64_t (Base::*)(std::ostream&) const>(&Base::WriteObjectXML);
  inConsecutiveSlots(2, &Base::ReadObject, &Base::WriteObject, &Base::ReadObjectXML, &Base::WriteObjectXML);
}

TEST(Interface, LetsHostsImplementTheirClasses) {
  EXPECT_EQ(HostTransaction().GetLength(), 0);
  EXPECT_FALSE(HostIterator().HasNext());
  EXPECT_EQ(HostSource().GetSupport(1), 1.0);
  EXPECT_EQ(HostReport().GetIntValue("nTrans"), 0);
  HostReport report;
  HostListener().OnProgress(&report);
  static_assert(!std::has_virtual_destructor_v<Transaction> && !std::is_destructible_v<Transaction>);
  static_assert(std::has_virtual_destructor_v<TransactionIterator>);
  static_assert(std::is_base_of_v<TransactionIterator, MultiPassTransIter>);
  static_assert(std::has_virtual_destructor_v<SupportSource>);
  static_assert(std::has_virtual_destructor_v<ProgressReport>);
  static_assert(std::has_virtual_destructor_v<ProgressListener>);
  static_assert(std::is_copy_constructible_v<HostTransaction> && std::is_copy_assignable_v<HostIterator>);
  static_assert(std::is_copy_constructible_v<HostSource> && std::is_copy_assignable_v<HostListener>);
  inConsecutiveSlots(0, &Transaction::GetItem, &Transaction::GetTransactionID, &Transaction::GetLength);
  inConsecutiveSlots(0, &TransactionIterator::HasNext, &TransactionIterator::Next,
                     &TransactionIterator::Rewind);
  inConsecutiveSlots(5, &MultiPassTransIter::Restart);  // behind the destructor
  inConsecutiveSlots(0, &SupportSource::GetSupport);
  inConsecutiveSlots(2, &ProgressListener::OnProgress);
  inConsecutiveSlots(2, &ProgressReport::GetIntValue, &ProgressReport::GetDoubleValue);
}

TEST(Interface, HasTheReportersOfThePhases) {
  static_assert(std::is_base_of_v<ProgressReport, PhaseIReporter>);
  static_assert(std::is_base_of_v<ProgressReport, PhaseIIReporter>);
}

TEST(Interface, HasTheEngine) {
  static_assert(std::is_constructible_v<Engine, CarmaSettings*, MultiPassTransIter*>);
  static_assert(std::is_constructible_v<Engine, std::fstream&, MultiPassTransIter*>);
  static_assert(std::is_constructible_v<Engine, std::ifstream&, MultiPassTransIter*>);
  static_assert(!std::is_copy_constructible_v<Engine> && !std::is_move_constructible_v<Engine>);
  static_assert(!std::is_copy_assignable_v<Engine> && !std::is_move_assignable_v<Engine>);
  has<void (Engine::*)()>(&Engine::Cancel);
  has<KorStatus (Engine::*)(std::fstream&)>(&Engine::SaveState);
  has<KorStatus (Engine::*)(std::ostream&)>(&Engine::SaveStateXML);
  has<void (Engine::*)(ProgressListener*)>(&Engine::SetProgressListener);
  has<double (Engine::*)() const>(&Engine::AverageSupport);
  has<void (Engine::*)(SupportSource*)>(&Engine::SetSupportSource);
  has<void (Engine::*)(int)>(&Engine::SetMaxInStoreSets);
  has<KorStatus (Engine::*)(int)>(&Engine::RunPhaseI);
  has<KorStatus (Engine::*)()>(&Engine::RunPhaseII);
  has<KorStatus (Engine::*)()>(&Engine::RunPhaseIIrandom);
  has<KorStatus (Engine::*)(double)>(&Engine::RunNullPhaseII);
  has<KorStatus (Engine::*)(double)>(&Engine::RunPhaseIIcomplete);
  has<SemiLattice* (Engine::*)()>(&Engine::GetLattice);
  has<KorStatus (Engine::*)(double, double, Rules&)>(&Engine::CreateNgetRules);
  has<KorStatus (Engine::*)(double, double, double, double, double, char, ItemSet*, ItemSet*, int, int,
                            ItemSet*, ItemSet*, int, int, int, bool, Rules&)>(&Engine::GetRulesSpecial);
  has<KorStatus (Engine::*)(double, double, double, double, double, char, ItemSet*, ItemSet*, int, int,
                            ItemSet*, int, Items&)>(&Engine::GetItemsSpecial);
  has<KorStatus (Engine::*)(ItemSet*, int, Items&)>(&Engine::GetItems);
  has<KorStatus (Engine::*)(std::ostream&)>(&Engine::ExportLatticeXML);
  has<KorStatus (Engine::*)(std::ostream&, double, double, bool)>(&Engine::ExportRulesXML);
  has<KorStatus (Engine::*)() const>(&Engine::GetStatus);
  has<bool (Engine::*)() const>(&Engine::IsLatticeBuilt);
  has<int (Engine::*)() const>(&Engine::NumberOfSets);
  has<int (Engine::*)() const>(&Engine::NumberOfTransactions);
  has<int (Engine::*)() const>(&Engine::LongestSet);
  has<int (Engine::*)(int) const>(&Engine::CountSetsOfSize);
  has<void (Engine::*)() const>(&Engine::DisplayDictInfo);
  has<std::string (*)()>(&Engine::GetComponentVersion);
}

TEST(Interface, HasTheRecordsOfTheQueries) {
  static_assert(
      std::is_constructible_v<AssociationRule, const ItemSet&, const ItemSet&, double, double, double>);
  static_assert(std::is_constructible_v<ConsequentDescriptor, int, double, double, double>);
  static_assert(std::is_copy_constructible_v<AssociationRule> && std::is_copy_assignable_v<AssociationRule>);
  has<double (AssociationRule::*)() const>(&AssociationRule::getSupport);
  has<double (AssociationRule::*)() const>(&AssociationRule::getConfidence);
  has<double (AssociationRule::*)() const>(&AssociationRule::getLift);
}

}  // namespace
