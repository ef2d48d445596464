// The tree as it stands keeps its rules, and the rules catch a tree that does not.

#include "tests/architecture/SourceRules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace korassoc::architecture {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::vector<SourceFile> library() { return readSources(KORASSOC_SOURCE_DIR, {"korassoc"}); }

std::vector<SourceFile> libraryAndHosts() {
  return readSources(KORASSOC_SOURCE_DIR, {"korassoc", "cli", "examples"});
}

std::vector<SourceFile> everything() {
  return readSources(KORASSOC_SOURCE_DIR, {"korassoc", "cli", "examples", "tests", "fuzz", "bench"});
}

std::string lines(std::size_t count) { return std::string(count, '\n'); }

TEST(Tree, IncludesRunDownwards) { EXPECT_THAT(upwardIncludes(libraryAndHosts()), IsEmpty()); }

TEST(Tree, EveryHeaderIsReadOnce) { EXPECT_THAT(unguardedHeaders(everything()), IsEmpty()); }

TEST(Tree, NoFileIsLongerThanSixHundredLines) { EXPECT_THAT(longFiles(everything(), 600), IsEmpty()); }

TEST(Tree, TheToolHasOneVoiceOnStandardError) { EXPECT_THAT(otherVoices(libraryAndHosts()), IsEmpty()); }

TEST(Tree, TheUmbrellaHeadersCoverEveryExport) { EXPECT_THAT(missingFromUmbrella(library()), IsEmpty()); }

TEST(Tree, IsReadAtAll) {
  const std::vector<SourceFile> files = library();
  ASSERT_FALSE(files.empty());
  EXPECT_TRUE(std::any_of(files.begin(), files.end(),
                          [](const SourceFile& file) { return file.path == "korassoc/base/Export.h"; }));
}

TEST(FloorOf, PutsEachFolderOnItsFloor) {
  struct Case {
    const char* path;
    std::optional<int> floor;
  };
  const Case cases[] = {{"korassoc/itemsets/ItemSet.h", 0},
                        {"korassoc/base/Export.h", 0},
                        {"korassoc/xml/XMLWriter.cpp", 1},
                        {"korassoc/engine/KorStatus.h", 2},
                        {"korassoc/engine/CarmaSettings.cpp", 2},
                        {"korassoc/engine/Transaction.h", 2},
                        {"korassoc/dictionary/HashTable.h", 3},
                        {"korassoc/rules/AssociationRule.h", 4},
                        {"korassoc/xml/export/RuleDocument.h", 5},
                        {"korassoc/engine/CarmaCore.h", 6},
                        {"korassoc/engine/TransactionLog.h", 6},
                        {"korassoc/korassoc.h", 7},
                        {"korassoc/mining/Labels.h", 8},
                        {"korassoc/mining.h", 8},
                        {"cli/main.cpp", 10},
                        {"tests/engine/RunPhaseITest.cpp", std::nullopt},
                        {"ItemSet.h", std::nullopt}};
  for (const Case& c : cases) EXPECT_EQ(floorOf(c.path), c.floor) << c.path;
}

TEST(QuotedIncludes, AreFoundHoweverTheyAreSpaced) {
  const auto found = quotedIncludes(
      "// #include \"no.h\"\n#include \"a.h\"\n  #  include   \"b.h\"  // b\n"
      "#include <vector>\n#include\"c.h\"\n#define X \"d.h\"\n");
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(found[0].path, "a.h");
  EXPECT_EQ(found[0].line, 2U);
  EXPECT_EQ(found[1].path, "b.h");
  EXPECT_EQ(found[1].line, 3U);
  EXPECT_EQ(found[2].path, "c.h");
  EXPECT_EQ(found[2].line, 5U);
}

TEST(UpwardIncludes, CatchesAnArrowThatRunsUp) {
  const std::vector<SourceFile> files = {
      {"korassoc/itemsets/ItemSet.h", "#pragma once\n\n#include \"korassoc/rules/AssociationRule.h\"\n"}};
  EXPECT_THAT(upwardIncludes(files),
              ElementsAre("korassoc/itemsets/ItemSet.h:3: korassoc/itemsets/ItemSet.h (floor 0) includes "
                          "korassoc/rules/AssociationRule.h (floor 4) above it"));
}

TEST(UpwardIncludes, CatchesTheVocabularyReachingForTheMachine) {
  const std::vector<SourceFile> files = {
      {"korassoc/engine/KorStatus.cpp", "#include \"korassoc/engine/CarmaCore.h\"\n"}};
  EXPECT_THAT(upwardIncludes(files), ElementsAre(HasSubstr("(floor 2) includes")));
}

TEST(UpwardIncludes, CatchesTheRecordWriterReachingForTheExports) {
  const std::vector<SourceFile> files = {
      {"korassoc/xml/XMLWriter.cpp", "#include \"korassoc/xml/export/RuleDocument.h\"\n"}};
  EXPECT_THAT(upwardIncludes(files), ElementsAre(HasSubstr("(floor 1) includes")));
}

TEST(UpwardIncludes, CatchesTheLibraryIncludingItsOwnUmbrella) {
  const std::vector<SourceFile> files = {
      {"korassoc/engine/CarmaCore.h", "#include \"korassoc/korassoc.h\"\n"}};
  EXPECT_THAT(upwardIncludes(files), ElementsAre(HasSubstr("(floor 6) includes")));
}

TEST(UpwardIncludes, CatchesAnIncludeNotWrittenFromTheRoot) {
  const std::vector<SourceFile> files = {
      {"korassoc/rules/AssociationRule.cpp", "#include \"AssociationRule.h\"\n"},
      {"cli/main.cpp", "#include \"Verb.h\"\n"}};
  EXPECT_THAT(upwardIncludes(files),
              ElementsAre(HasSubstr("written from the root"), HasSubstr("written from the root")));
}

TEST(UpwardIncludes, CatchesTheLibraryReachingIntoTheTests) {
  const std::vector<SourceFile> files = {
      {"korassoc/rules/AssociationRule.cpp", "#include \"tests/support/StreamCapture.h\"\n"}};
  EXPECT_THAT(upwardIncludes(files), ElementsAre(HasSubstr("stay in the library")));
}

TEST(UpwardIncludes, CatchesAToolOrAHostThatOpensASideDoor) {
  const std::vector<SourceFile> files = {
      {"cli/main.cpp", "#include \"korassoc/dictionary/HashTable.h\"\n"},
      {"examples/mine_baskets.cpp", "#include \"korassoc/dictionary/HashTable.h\"\n"}};
  EXPECT_THAT(upwardIncludes(files), ElementsAre(HasSubstr("through korassoc/korassoc.h"),
                                                 HasSubstr("through korassoc/korassoc.h")));
}

TEST(UpwardIncludes, CatchesMiningReachingForAnInnerClass) {
  const std::vector<SourceFile> files = {
      {"korassoc/engine/CeilArray.h", "#pragma once\n"},
      {"korassoc/engine/KorStatus.h", "#pragma once\n"},
      {"korassoc/korassoc.h", "#include \"korassoc/engine/KorStatus.h\"\n"},
      {"korassoc/mining/Model.cpp",
       "#include \"korassoc/mining/Model.h\"\n#include \"korassoc/engine/KorStatus.h\"\n"
       "#include \"korassoc/engine/CeilArray.h\"\n"}};
  EXPECT_THAT(upwardIncludes(files), ElementsAre(HasSubstr("korassoc/mining/Model.cpp:3: ")));
}

TEST(UpwardIncludes, CatchesTheEngineReachingForMining) {
  const std::vector<SourceFile> files = {
      {"korassoc/rules/RuleOrder.cpp", "#include \"korassoc/mining/Measure.h\"\n"}};
  EXPECT_THAT(upwardIncludes(files), ElementsAre(HasSubstr("(floor 8) above it")));
}

TEST(UpwardIncludes, CatchesALibraryFileOutsideTheRooms) {
  const std::vector<SourceFile> files = {{"korassoc/Helpers.h", "#pragma once\n"}};
  EXPECT_THAT(upwardIncludes(files), ElementsAre(HasSubstr("lives on no floor")));
}

TEST(UpwardIncludes, LetsArrowsRunDownAndAcross) {
  const std::vector<SourceFile> files = {
      {"korassoc/rules/RuleCreation.h",
       "#include \"korassoc/rules/AssociationRule.h\"\n#include \"korassoc/engine/KorStatus.h\"\n"},
      {"korassoc/korassoc.h", "#include \"korassoc/engine/CarmaAssociationAlgorithm.h\"\n"},
      {"cli/main.cpp", "#include \"cli/input/Reader.h\"\n#include \"korassoc/korassoc.h\"\n"},
      {"cli/Tool.cpp", "#include \"korassoc/mining.h\"\n"},
      {"examples/mine_baskets.cpp", "#include \"korassoc/korassoc.h\"\n#include \"near.h\"\n"}};
  EXPECT_THAT(upwardIncludes(files), IsEmpty());
}

TEST(UnguardedHeaders, CatchesAHeaderWithoutPragmaOnce) {
  const std::vector<SourceFile> files = {{"a.h", "// #pragma once\nint a();\n"},
                                         {"b.h", "// What b is.\n\n#pragma once\n"},
                                         {"c.h", "#pragma once\n"},
                                         {"d.cpp", "int d();\n"}};
  EXPECT_THAT(unguardedHeaders(files), ElementsAre(HasSubstr("a.h:1: ")));
}

TEST(LongFiles, CountsTheLimitItselfAsShortEnough) {
  EXPECT_THAT(longFiles({{"a.cpp", lines(600)}, {"b.cpp", lines(601)}}, 600),
              ElementsAre("b.cpp:601: more than 600 lines"));
}

TEST(OtherVoices, CatchesAFileThatWritesToStandardErrorItself) {
  const std::vector<SourceFile> files = {{"cli/Tool.cpp", "\nfmt::print(stderr, \"hello\");\n"},
                                         {"cli/Notes.cpp", "std::fputs(\"hello\", stderr);\n"},
                                         {"korassoc/Helpers.cpp", "std::fputs(\"hello\", stderr);\n"}};
  EXPECT_THAT(otherVoices(files), ElementsAre("cli/Tool.cpp:2: leave standard error to cli/Notes.cpp"));
}

TEST(MissingFromUmbrella, CatchesAnExportThatIsLeftOut) {
  const std::vector<SourceFile> files = {
      {"korassoc/base/Export.h", "#define KORASSOC_EXPORT\n"},
      {"korassoc/itemsets/ItemSet.h", "class KORASSOC_EXPORT ItemSet {};\n"},
      {"korassoc/itemsets/CountBound.h", "int countBound();\n"},
      {"korassoc/rules/AssociationRule.h", "class KORASSOC_EXPORT AssociationRule {};\n"},
      {"korassoc/korassoc.h", "#include \"korassoc/itemsets/ItemSet.h\"\n"},
      {"korassoc/mining/Labels.h", "class KORASSOC_EXPORT Labels {};\n"},
      {"korassoc/mining/Model.h", "class KORASSOC_EXPORT Model {};\n"},
      {"korassoc/mining.h", "#include \"korassoc/mining/Labels.h\"\n"}};
  EXPECT_THAT(missingFromUmbrella(files), ElementsAre(HasSubstr("korassoc/rules/AssociationRule.h:1: "),
                                                      HasSubstr("korassoc/mining/Model.h:1: ")));
}

}  // namespace
}  // namespace korassoc::architecture
