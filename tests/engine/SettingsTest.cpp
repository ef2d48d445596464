// Defaults, accessors, ownership and the binary records of the three settings classes.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <iostream>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/Exceptions.h"
#include "tests/support/Hosts.h"
#include "tests/support/RecordStream.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFile.h"

namespace {

// "DS" with the name "f.tmp" and the numbers 1 to 9.
const std::string kDictionaryRecord =
    "DS" + int32Bytes(6) + std::string("f.tmp\0", 6) + int32Bytes({1, 2, 3, 4, 5, 6, 7, 8, 9});
const std::string kBaseRecord = "AAS" + int32Bytes({500, 7}) + kDictionaryRecord;
const std::string kCarmaRecord = "CS" + kBaseRecord + int32Bytes({11, 12, 13, 14});

// What a read came to: the bytes it says it has read, or that it threw; and what it printed.
struct Reading {
  std::uint64_t bytes = 0;
  bool threw = false;
  std::string output;
  std::string errors;
  bool failed = false;  // the stream, afterwards
};

template <typename Settings>
Reading readInto(Settings& settings, const std::string& bytes) {
  const TemporaryFile file(bytes);
  std::fstream stream = file.reader();
  const StreamCapture output(std::cout);
  const StreamCapture errors(std::cerr);
  Reading reading;
  try {
    reading.bytes = settings.ReadObject(stream);
  } catch (IOException* exception) {
    delete exception;
    reading.threw = true;
  }
  reading.output = output.text();
  reading.errors = errors.text();
  reading.failed = stream.fail();
  return reading;
}

template <typename Settings>
std::string written(const Settings& settings, std::uint64_t* bytes = nullptr) {
  const TemporaryFile file;
  std::fstream stream = file.writer();
  const std::uint64_t count = settings.WriteObject(stream);
  if (bytes != nullptr) *bytes = count;
  stream.close();
  return file.contents();
}

}  // namespace

TEST(DictionarySettings, HasItsDefaults) {
  const DictionarySettings settings;
  EXPECT_EQ(settings.GetNumberOfFixedSets(), 10);
  EXPECT_EQ(settings.GetInitialSetSize(), 89);
  EXPECT_EQ(settings.GetInitialBoundarySize(), 89);
  EXPECT_EQ(settings.GetInitialBoundarySearchSize(), 2879);
  EXPECT_EQ(settings.GetInitialHashtableSet23Size(), 23039);
  EXPECT_EQ(settings.GetInitialRulesSize(), 200);
  EXPECT_EQ(settings.GetReportFrequency(), 1000);
  EXPECT_EQ(settings.GetMaxInStoreSets(), 2147483647);
  EXPECT_EQ(settings.GetLeaveInMainStoreCount(), 0);
  EXPECT_FALSE(settings.GetDiskSpill());
}

TEST(DictionarySettings, KeepsWhatIsSet) {
  DictionarySettings settings;
  settings.SetNumberOfFixedSets(1);
  settings.SetInitialSetSize(2);
  settings.SetInitialBoundarySearchSize(4);
  settings.SetInitialHashtableSet23Size(5);
  settings.SetInitialRulesSize(6);
  settings.SetReportFrequency(7);
  settings.SetMaxInStoreSets(8);
  settings.SetLeaveInMainStoreCount(9);
  settings.SetDiskSpill(true);
  EXPECT_EQ(settings.GetNumberOfFixedSets(), 1);
  EXPECT_EQ(settings.GetInitialSetSize(), 2);
  EXPECT_EQ(settings.GetInitialBoundarySearchSize(), 4);
  EXPECT_EQ(settings.GetInitialHashtableSet23Size(), 5);
  EXPECT_EQ(settings.GetInitialRulesSize(), 6);
  EXPECT_EQ(settings.GetReportFrequency(), 7);
  EXPECT_EQ(settings.GetMaxInStoreSets(), 8);
  EXPECT_EQ(settings.GetLeaveInMainStoreCount(), 9);
  EXPECT_TRUE(settings.GetDiskSpill());
}

TEST(SpillFileName, IsMadeUpInTheTemporaryDirectoryAnewForEveryObject) {
  const DictionarySettings first;
  const DictionarySettings second;
  EXPECT_STRNE(first.GetSpillFileName(), second.GetSpillFileName());
  EXPECT_FALSE(first.HasSpillFileName());
  EXPECT_EQ(std::filesystem::path(first.GetSpillFileName()).lexically_normal().parent_path(),
            temporaryFolder());
  EXPECT_FALSE(std::filesystem::exists(first.GetSpillFileName())) << "a name takes no file";
}

TEST(SpillFileName, IsCopiedWhenSet) {
  DictionarySettings settings;
  char name[] = "spill.tmp";
  settings.SetSpillFileName(name);
  name[0] = 'X';
  EXPECT_STREQ(settings.GetSpillFileName(), "spill.tmp");
  EXPECT_TRUE(settings.HasSpillFileName());
  settings.SetSpillFileName("a much longer name than the one before, beyond every small buffer");
  EXPECT_STREQ(settings.GetSpillFileName(),
               "a much longer name than the one before, beyond every small buffer");
}

TEST(SpillFileName, StaysWhenItIsSetToItself) {
  DictionarySettings settings;
  const std::string before = settings.GetSpillFileName();
  settings.SetSpillFileName(settings.GetSpillFileName());
  EXPECT_EQ(settings.GetSpillFileName(), before);
  EXPECT_FALSE(settings.HasSpillFileName()) << "nobody has chosen it yet";
  settings.SetSpillFileName("abcdef");
  settings.SetSpillFileName(settings.GetSpillFileName() + 2);  // into its own storage
  EXPECT_STREQ(settings.GetSpillFileName(), "cdef");
}

TEST(SpillFileName, IsMadeUpAgainWhenSetToNull) {
  DictionarySettings settings;
  settings.SetSpillFileName("mine");
  settings.SetSpillFileName(nullptr);
  EXPECT_FALSE(settings.HasSpillFileName());
  EXPECT_STRNE(settings.GetSpillFileName(), "mine");
}

TEST(SpillFileName, GoesIntoACopyOfTheSettings) {
  DictionarySettings settings;
  settings.SetSpillFileName("mine");
  DictionarySettings copy = settings;
  settings.SetSpillFileName("other");
  EXPECT_STREQ(copy.GetSpillFileName(), "mine");
}

TEST(SpillFileName, CountsAsSetByNobodyOnceItIsRead) {
  const DictionarySettings madeUp;
  DictionarySettings named;
  named.SetSpillFileName("named");
  for (const DictionarySettings* saved : {&madeUp, static_cast<const DictionarySettings*>(&named)}) {
    DictionarySettings settings;
    settings.SetSpillFileName("mine");
    readInto(settings, written(*saved));
    EXPECT_STREQ(settings.GetSpillFileName(), saved->GetSpillFileName());
    EXPECT_FALSE(settings.HasSpillFileName());
    settings.SetSpillFileName(settings.GetSpillFileName());
    EXPECT_FALSE(settings.HasSpillFileName()) << "its own pointer sets nothing";
    const std::string same = settings.GetSpillFileName();
    settings.SetSpillFileName(same.c_str());
    EXPECT_TRUE(settings.HasSpillFileName()) << "now the host has said it";
  }
}

TEST(AssociationAlgorithmSettings, HasItsDefaults) {
  AssociationAlgorithmSettings settings;
  EXPECT_EQ(settings.GetMaxTranLength(), 1000);
  EXPECT_EQ(settings.GetMaxLengthSet(), 10);
  EXPECT_EQ(settings.GetProgressListener(), nullptr);
  settings.SetMaxTranLength(20);
  settings.SetMaxLengthSet(3);
  EXPECT_EQ(settings.GetMaxTranLength(), 20);
  EXPECT_EQ(settings.GetMaxLengthSet(), 3);
  settings.GetDictionarySettings().SetMaxInStoreSets(4);
  EXPECT_EQ(std::as_const(settings).GetDictionarySettings().GetMaxInStoreSets(), 4);
}

TEST(AssociationAlgorithmSettings, CannotBeCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<AssociationAlgorithmSettings>);
  EXPECT_FALSE(std::is_copy_assignable_v<AssociationAlgorithmSettings>);
  EXPECT_FALSE(std::is_copy_constructible_v<CarmaSettings>);
  EXPECT_FALSE(std::is_copy_assignable_v<CarmaSettings>);
}

TEST(CarmaSettings, HasItsDefaults) {
  CarmaSettings settings;
  EXPECT_EQ(settings.GetSupportSource(), nullptr);
  EXPECT_EQ(settings.GetMaxNumSigmaChunks(), 1000);
  EXPECT_EQ(settings.GetReportFreqPhaseI(), 10000);
  EXPECT_EQ(settings.GetReportFreqPhaseII(), 10000);
  EXPECT_EQ(settings.GetRemoveSmallFreq(), 500);
  settings.SetMaxNumSigmaChunks(1);
  settings.SetReportFreqPhaseI(2);
  settings.SetReportFreqPhaseII(3);
  settings.SetRemoveSmallFreq(4);
  EXPECT_EQ(settings.GetMaxNumSigmaChunks(), 1);
  EXPECT_EQ(settings.GetReportFreqPhaseI(), 2);
  EXPECT_EQ(settings.GetReportFreqPhaseII(), 3);
  EXPECT_EQ(settings.GetRemoveSmallFreq(), 4);
}

TEST(CarmaSettings, OwnsItsListenerAndItsSupportSource) {
  int listeners = 0;
  int sources = 0;
  {
    CarmaSettings settings;
    auto* listener = new TestListener(nullptr, &listeners);
    auto* source = new TestSupport(0.5, &sources);
    settings.SetProgressListener(listener);
    settings.SetSupportSource(source);
    EXPECT_EQ(settings.GetProgressListener(), listener);
    EXPECT_EQ(settings.GetSupportSource(), source);
    settings.SetProgressListener(listener);
    settings.SetSupportSource(source);
    EXPECT_EQ(listeners, 1) << "installing the same object again does not delete it";
    EXPECT_EQ(sources, 1);
    settings.SetProgressListener(new TestListener(nullptr, &listeners));
    settings.SetSupportSource(new TestSupport(0.25, &sources));
    EXPECT_EQ(listeners, 1) << "the one before is gone";
    EXPECT_EQ(sources, 1);
    settings.SetProgressListener(nullptr);
    EXPECT_EQ(listeners, 0);
    settings.SetProgressListener(new TestListener(nullptr, &listeners));
  }
  EXPECT_EQ(listeners, 0);
  EXPECT_EQ(sources, 0);
}

TEST(CarmaSettings, DeletesTheSupportSourceBeforeTheListener) {
  std::string order;
  struct Source : SupportSource {
    explicit Source(std::string& deleted) : deleted_(deleted) {}
    ~Source() override { deleted_ += "source "; }
    double GetSupport(int) override { return 0.5; }
    std::string& deleted_;
  };
  struct Listener : ProgressListener {
    explicit Listener(std::string& deleted) : deleted_(deleted) {}
    ~Listener() override { deleted_ += "listener "; }
    void OnProgress(ProgressReport*) override {}
    std::string& deleted_;
  };
  {
    std::unique_ptr<AssociationAlgorithmSettings> settings = std::make_unique<CarmaSettings>();
    settings->SetProgressListener(new Listener(order));
    static_cast<CarmaSettings&>(*settings).SetSupportSource(new Source(order));
  }
  EXPECT_EQ(order, "source listener ");
}

TEST(SettingsRecord, OfDefaultSettingsIsAsLongAsItsParts) {
  const CarmaSettings settings;
  std::uint64_t bytes = 0;
  const std::string record = written(settings, &bytes);
  const std::size_t name = std::strlen(settings.GetDictionarySettings().GetSpillFileName()) + 1;
  EXPECT_EQ(bytes, 18 + 11 + 42 + name);
  EXPECT_EQ(record.size(), bytes);
}

TEST(SettingsRecord, HoldsItsValuesInOrder) {
  CarmaSettings settings;
  DictionarySettings& dictionary = settings.GetDictionarySettings();
  settings.SetMaxTranLength(500);
  settings.SetMaxLengthSet(7);
  settings.SetMaxNumSigmaChunks(11);
  settings.SetReportFreqPhaseI(12);
  settings.SetReportFreqPhaseII(13);
  settings.SetRemoveSmallFreq(14);
  dictionary.SetSpillFileName("f.tmp");
  dictionary.SetNumberOfFixedSets(1);
  dictionary.SetInitialSetSize(2);
  dictionary.SetInitialBoundarySearchSize(4);
  dictionary.SetInitialHashtableSet23Size(5);
  dictionary.SetInitialRulesSize(6);
  dictionary.SetReportFrequency(7);
  dictionary.SetMaxInStoreSets(8);
  dictionary.SetLeaveInMainStoreCount(9);
  std::string expected = kCarmaRecord;
  expected.replace(expected.find("DS") + 2 + 4 + 6 + 8, 4, int32Bytes(89));  // no setter for the third number
  EXPECT_EQ(written(settings), expected);
}

TEST(SettingsRecord, RestoresEveryNumberAndLeavesTheRest) {
  int listeners = 0;
  CarmaSettings settings;
  auto* source = new TestSupport(0.5);
  settings.SetSupportSource(source);
  settings.SetProgressListener(new TestListener(nullptr, &listeners));
  settings.GetDictionarySettings().SetDiskSpill(true);
  const Reading reading = readInto(settings, kCarmaRecord);
  EXPECT_FALSE(reading.threw);
  EXPECT_EQ(reading.output + reading.errors, "");
  EXPECT_EQ(reading.bytes, kCarmaRecord.size());
  EXPECT_EQ(reading.bytes, 18U + 11 + 42 + 6);
  EXPECT_EQ(written(settings), kCarmaRecord);
  EXPECT_EQ(settings.GetMaxTranLength(), 500);
  EXPECT_EQ(settings.GetMaxLengthSet(), 7);
  EXPECT_EQ(settings.GetMaxNumSigmaChunks(), 11);
  EXPECT_EQ(settings.GetReportFreqPhaseI(), 12);
  EXPECT_EQ(settings.GetReportFreqPhaseII(), 13);
  EXPECT_EQ(settings.GetRemoveSmallFreq(), 14);
  const DictionarySettings& dictionary = settings.GetDictionarySettings();
  EXPECT_STREQ(dictionary.GetSpillFileName(), "f.tmp");
  EXPECT_EQ(dictionary.GetNumberOfFixedSets(), 1);
  EXPECT_EQ(dictionary.GetInitialSetSize(), 2);
  EXPECT_EQ(dictionary.GetInitialBoundarySize(), 3);
  EXPECT_EQ(dictionary.GetInitialBoundarySearchSize(), 4);
  EXPECT_EQ(dictionary.GetInitialHashtableSet23Size(), 5);
  EXPECT_EQ(dictionary.GetInitialRulesSize(), 6);
  EXPECT_EQ(dictionary.GetReportFrequency(), 7);
  EXPECT_EQ(dictionary.GetMaxInStoreSets(), 8);
  EXPECT_EQ(dictionary.GetLeaveInMainStoreCount(), 9);
  EXPECT_TRUE(dictionary.GetDiskSpill());
  EXPECT_EQ(settings.GetSupportSource(), source);
  EXPECT_EQ(listeners, 1);
}

TEST(SettingsRecord, TakesANameLongerThanTheOneItReplaces) {
  const std::string name(1000000, 'n');
  DictionarySettings settings;
  settings.SetSpillFileName("n");
  const Reading reading =
      readInto(settings, "DS" + int32Bytes(1000001) + name + '\0' + int32Bytes({1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_FALSE(reading.threw);
  EXPECT_EQ(settings.GetSpillFileName(), name);
}

TEST(SettingsRecord, ReportsAWrongTagInTheWayOfEachClass) {
  {
    CarmaSettings settings;
    const Reading reading = readInto(settings, "XX" + kBaseRecord);
    EXPECT_TRUE(reading.threw);
    EXPECT_EQ(reading.output, "");
    EXPECT_EQ(reading.errors, "Error reading CarmaSettings!\n");
  }
  {
    AssociationAlgorithmSettings settings;
    const Reading reading = readInto(settings, "AAX" + kBaseRecord);
    EXPECT_FALSE(reading.threw);
    EXPECT_EQ(reading.bytes, 0U);
    EXPECT_EQ(reading.output, "Error reading AssocAlgSettings!\n");
    EXPECT_EQ(reading.errors, "");
    EXPECT_EQ(settings.GetMaxTranLength(), 1000);
  }
  {
    DictionarySettings settings;
    const Reading reading = readInto(settings, "DX" + kDictionaryRecord);
    EXPECT_TRUE(reading.threw);
    EXPECT_EQ(reading.output, "Error reading DictionarySettings!\n");
    EXPECT_EQ(reading.errors, "");
  }
}

TEST(SettingsRecord, GoesOnBehindAWrongTagOfTheBaseRecord) {
  CarmaSettings settings;
  const Reading reading = readInto(settings, "CSAAX" + int32Bytes({21, 22, 23, 24}));
  EXPECT_FALSE(reading.threw);
  EXPECT_EQ(reading.output, "Error reading AssocAlgSettings!\n");
  EXPECT_EQ(reading.errors, "");
  EXPECT_EQ(reading.bytes, 18U);
  EXPECT_EQ(settings.GetMaxNumSigmaChunks(), 21);
  EXPECT_EQ(settings.GetRemoveSmallFreq(), 24);
  EXPECT_EQ(settings.GetMaxTranLength(), 1000);
}

TEST(SettingsRecord, LetsAFailureOfTheDictionarysPartThrough) {
  CarmaSettings settings;
  const Reading reading = readInto(settings, "CSAAS" + int32Bytes({500, 7}) + "XX" + kDictionaryRecord);
  EXPECT_TRUE(reading.threw);
  EXPECT_EQ(reading.output, "Error reading DictionarySettings!\n");
  EXPECT_EQ(reading.errors, "");
}

TEST(SettingsRecord, IsRefusedWhereverItIsCutShort) {
  for (std::size_t length = 0; length < kCarmaRecord.size(); ++length) {
    CarmaSettings settings;
    const Reading reading = readInto(settings, kCarmaRecord.substr(0, length));
    EXPECT_TRUE(reading.threw) << length;
    EXPECT_NE(reading.output + reading.errors, "") << length;
    EXPECT_EQ(settings.GetRemoveSmallFreq(), 500) << length;
  }
}

TEST(SettingsRecord, RefusesALengthThatTheStreamDoesNotHold) {
  for (const int length : {0, -1, -2147483647 - 1, 2147483647, 48}) {
    DictionarySettings settings;
    const std::string before = settings.GetSpillFileName();
    const Reading reading = readInto(settings, "DS" + int32Bytes(length) + std::string("f.tmp\0", 6) +
                                                   int32Bytes({1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_TRUE(reading.threw) << length;
    EXPECT_EQ(reading.output, "Error reading DictionarySettings!\n") << length;
    EXPECT_EQ(settings.GetSpillFileName(), before) << length;
    EXPECT_EQ(settings.GetNumberOfFixedSets(), 10) << length;
  }
}

TEST(SettingsRecord, CanFollowAnotherOneInAStream) {
  const TemporaryFile file;
  std::fstream stream = file.writer();
  CarmaSettings first;
  CarmaSettings second;
  second.SetMaxLengthSet(3);
  first.WriteObject(stream);
  second.WriteObject(stream);
  stream.seekg(0);
  CarmaSettings settings;
  settings.ReadObject(stream);
  EXPECT_EQ(settings.GetMaxLengthSet(), 10);
  settings.ReadObject(stream);
  EXPECT_EQ(settings.GetMaxLengthSet(), 3);
}
