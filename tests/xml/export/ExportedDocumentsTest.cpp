// What an independent XML tool makes of the documents: well-formed, and valid by the PMML schema.
//
// Both need xmllint. The schema is not part of the project; it is looked for in the folder of test data (the
// environment variable KORASSOC_DATA, or ../shared/data beside the checkout).

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/ExportedModel.h"
#include "tests/support/Hosts.h"
#include "tests/support/Shell.h"
#include "tests/support/TemporaryFile.h"
#include "tests/support/VectorTransactions.h"
#include "tests/xml/export/DocumentReader.h"
#include "tests/xml/export/SmallModel.h"

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;

constexpr const char* kXmllint = KORASSOC_XMLLINT;

// What xmllint says of a document: its exit code, and its messages on standard error.
struct Verdict {
  bool accepted;
  std::string messages;
};

Verdict lint(const std::string& document, const std::string& options) {
  const TemporaryFile file(document);
  const TemporaryFile messages;
  const std::string command = std::string("\"") + kXmllint + "\" --noout --nonet " + options + " \"" +
                              file.name() + "\" 2>\"" + messages.name() + "\"";
  const bool accepted = runInShell(command) == 0;
  return {accepted, messages.contents().substr(0, 2000)};
}

void expectWellFormed(const std::string& document) {
  const Verdict verdict = lint(document, "");
  EXPECT_TRUE(verdict.accepted) << verdict.messages;
}

std::filesystem::path schemaFile() {
  const char* folder = std::getenv("KORASSOC_DATA");
  const std::filesystem::path data =
      folder != nullptr ? std::filesystem::path(folder)
                        : std::filesystem::path(KORASSOC_SOURCE_DIR).parent_path() / "shared" / "data";
  return data / "pmml-3-2.xsd";
}

Verdict validate(const std::string& document) {
  return lint(document, "--schema \"" + schemaFile().string() + "\"");
}

void expectValid(const std::string& document) {
  const Verdict verdict = validate(document);
  EXPECT_TRUE(verdict.accepted) << verdict.messages;
}

// Random baskets of 1 to 4 of 7 items, and three with rare items: {98}, {99} and once both.
Transactions randomBaskets(int transactions) {
  std::mt19937 random(7);
  Transactions baskets;
  for (int t = 0; t < transactions - 3; ++t) {
    std::vector<int> items;
    for (auto wanted = 1 + random() % 4; wanted > 0; --wanted) {
      const int item = static_cast<int>(random() % 7) - 3;
      if (std::find(items.begin(), items.end(), item) == items.end()) items.push_back(item);
    }
    baskets.push_back(items);
  }
  baskets.insert(baskets.end(), {Items{98}, Items{99}, Items{98, 99}});
  return baskets;
}

class RandomModel : public ExportedModel {
 public:
  RandomModel(int transactions, double support) : ExportedModel(randomBaskets(transactions), support) {}
};

class WellFormed : public testing::Test {
 protected:
  void SetUp() override {
    if (std::string(kXmllint).empty()) GTEST_SKIP() << "xmllint was not found";
  }
};

class Valid : public WellFormed {
 protected:
  void SetUp() override {
    WellFormed::SetUp();
    if (!std::filesystem::exists(schemaFile())) GTEST_SKIP() << "no schema at " << schemaFile();
  }
};

// The examples of docs/pmml.md have several attributes in a line.
std::vector<std::string> xmlExamples() {
  std::ifstream in(std::filesystem::path(KORASSOC_SOURCE_DIR) / "docs/pmml.md");
  std::vector<std::string> examples;
  bool inside = false;
  for (std::string line; std::getline(in, line);) {
    if (line == "```xml") examples.emplace_back();
    if (inside && line != "```") examples.back() += line + '\n';
    inside = line != "```" && (inside || line == "```xml");
  }
  return examples;
}

// The text with every run of blanks, tabs and line ends as one blank.
std::string collapsed(const std::string& text) {
  std::istringstream words(text);
  std::string result;
  for (std::string word; words >> word;) result += (result.empty() ? "" : " ") + word;
  return result;
}

TEST(Documentation, ShowsTheDocumentsOfItsTenBaskets) {
  auto settings = settingsWithSupport(0.3);
  settings->SetMaxLengthSet(2);
  VectorTransactions baskets({{2, 5}, {2, 5}, {2, 5}, {2, 5}, {2}, {2}, {5}, {5}, {}, {}});
  CarmaAssociationAlgorithm engine(settings.get(), &baskets);
  ASSERT_TRUE(engine.RunPhaseI(10).IsOK());
  ASSERT_TRUE(engine.RunPhaseII().IsOK());
  std::ostringstream rules, lattice;
  ASSERT_TRUE(engine.ExportRulesXML(rules, 0.3, 0.65, false).IsOK());
  ASSERT_TRUE(engine.ExportLatticeXML(lattice).IsOK());

  const std::vector<std::string> examples = xmlExamples();
  ASSERT_EQ(examples.size(), 2U);
  EXPECT_EQ(collapsed(examples[0]), collapsed(rules.str()));
  EXPECT_EQ(collapsed(examples[1]), collapsed(lattice.str()));
}

TEST_F(WellFormed, XmllintTellsABrokenDocument) {
  EXPECT_FALSE(lint(expectedDocument("rules.xml").substr(0, 2000), "").accepted);
}

TEST_F(WellFormed, AreTheDocumentsWrittenByHand) {
  expectWellFormed(expectedDocument("lattice.xml"));
  expectWellFormed(expectedDocument("rules.xml"));
}

TEST_F(WellFormed, AreTheDocumentsOfALargeModel) {
  RandomModel model(2000, 0.01);
  const std::string rules = model.rules(0.01, 0.1, false);
  EXPECT_GT(values(rules, "AssociationRule", "support").size(), 50U);
  expectWellFormed(rules);
  expectWellFormed(model.rules(0.01, 0.1, true));
  expectWellFormed(model.lattice());
}

TEST_F(WellFormed, IsADocumentWithoutRules) {
  RandomModel model(50, 0.1);
  expectWellFormed(model.rules(0.9, 1.0, false));
}

TEST_F(Valid, TheSchemaTellsAWrongDocument) {
  std::string document = expectedDocument("rules.xml");
  replaceOnce(document, "functionName=\"associationRules\"", "functionName=\"associations\"");
  EXPECT_FALSE(validate(document).accepted);
}

TEST_F(Valid, IsTheRuleDocumentWrittenByHand) { expectValid(expectedDocument("rules.xml")); }

TEST_F(Valid, IsADocumentWithoutRules) {
  RandomModel model(50, 0.1);
  expectValid(model.rules(0.9, 1.0, false));
}

TEST_F(Valid, AreRuleDocumentsDownToASupportOfATenThousandth) {
  RandomModel model(10000, 0.0001);
  const std::string rules = model.rules(0.0001, 0.05, false);
  EXPECT_THAT(values(rules, "AssociationModel", "minimumSupport"), Contains("0.0001"));
  EXPECT_THAT(values(rules, "AssociationRule", "support"), Contains("0.0001"));
  EXPECT_THAT(values(rules, "Itemset", "numberOfItems"), Contains("0"));  // the empty antecedent
  expectValid(rules);
  expectValid(model.rules(0.0001, 0.05, true));
}

TEST_F(Valid, IsNoRuleDocumentWithAnExponent) {
  RandomModel model(20000, 0.00005);
  const std::string rules = model.rules(0.00005, 0.05, false);
  EXPECT_THAT(values(rules, "AssociationRule", "support"), Contains("5e-05"));
  expectWellFormed(rules);
  EXPECT_THAT(validate(rules).messages, HasSubstr("'5e-05' is not a valid value"));
}

}  // namespace
