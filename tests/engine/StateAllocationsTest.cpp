// Memory that runs out anywhere in a save, a restore or an export.

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <ostream>
#include <string>

#include "tests/support/AllocationHost.h"

namespace {

using KorAssoc::KorStatus;
using Engine = CarmaAssociationAlgorithm;

// A stream of a kind that an engine asks for, over a buffer.
template <typename Stream>
class StreamOver {
 public:
  explicit StreamOver(std::streambuf& buffer) { static_cast<std::ios&>(stream_).rdbuf(&buffer); }
  Stream& stream() { return stream_; }

 private:
  Stream stream_;
};

// After phase I, or after phase II.
class StateHost : public AllocationHost {
 protected:
  explicit StateHost(bool lattice, int maxInStoreSets = 2147483647) {
    DictionarySettings& dictionarySettings = settings_.GetDictionarySettings();
    dictionarySettings.SetSpillFileName("spilled");
    if (maxInStoreSets < 2147483647) {
      dictionarySettings.SetMaxInStoreSets(maxInStoreSets);
      dictionarySettings.SetLeaveInMainStoreCount(10);
    }
    makeEngine();
    EXPECT_EQ(shortForm(engine_->RunPhaseI(130)), "OK");
    if (lattice) {
      EXPECT_EQ(shortForm(engine_->RunPhaseII()), "OK");
    }
  }
};

class Writing : public StateHost {
 public:
  using Write = KorStatus (*)(Engine&, std::fstream& binary, std::ostream& text);
  Writing(Write write, bool lattice) : StateHost(lattice), write_(write), text_(&buffer_) {
    if (lattice) before_ = counts();
  }

  KorStatus run() override {
    buffer_.empty();
    return write_(*engine_, binary_.stream(), text_);
  }
  std::string answer() override {
    expectUnchanged();
    return buffer_.text();
  }
  bool mayRefuseWith(const KorStatus& status) const override {
    return status == error(2) || status == error(40001);
  }
  void checkAfterRefusal() override {
    expectUnchanged();
    binary_.stream().clear();
    text_.clear();
  }

 private:
  Write write_;
  // Of phase I the sets are packed, and stay so only while nobody looks at them.
  void expectUnchanged() const {
    if (!before_.empty()) {
      EXPECT_EQ(counts(), before_);
    }
  }

  oracle::brute::Counts before_;
  FixedBuffer buffer_;
  StreamOver<std::fstream> binary_{buffer_};
  std::ostream text_;
};

class Saving : public StateHost {
 public:
  Saving(bool lattice, int maxInStoreSets) : StateHost(lattice, maxInStoreSets) {}
  KorStatus run() override { return {}; }
  std::string answer() override { return {}; }
  std::string state(bool xml) {
    FixedBuffer buffer;
    StreamOver<std::fstream> binary(buffer);
    std::ostream text(&buffer);
    EXPECT_EQ(shortForm(xml ? engine_->SaveStateXML(text) : engine_->SaveState(binary.stream())), "OK");
    return buffer.text();
  }
};

// What a state restores, and how it goes on.
class Restoring : public AllocationHost {
 public:
  Restoring(const std::string& state, bool xml, bool lattice)
      : xml_(xml), lattice_(lattice), buffer_(state), binary_(buffer_), text_(buffer_) {}

  KorStatus run() override {
    buffer_.rewind();
    binary_.stream().clear();
    text_.stream().clear();
    if (xml_) {
      engine_.emplace(text_.stream(), &source_);
    } else {
      engine_.emplace(binary_.stream(), &source_);
    }
    return engine_->GetStatus();
  }
  std::string answer() override {
    std::string text = contents();
    source_.Restart();
    if (!lattice_) {
      for (int i = 0; i < 130; ++i) source_.Next();
      engine_->SetSupportSource(new TestSupport(0.11));
      EXPECT_EQ(shortForm(engine_->RunPhaseI(70)), "OK");
      EXPECT_EQ(shortForm(engine_->RunPhaseII()), "OK");
      expectExactCounts(2, 200);
    }
    return text;
  }
  bool mayRefuseWith(const KorStatus& status) const override { return status == error(5); }
  void checkAfterRefusal() override {
    EXPECT_EQ(engine_->NumberOfSets(), -1);
    EXPECT_EQ(shortForm(engine_->RunPhaseI(1)), "E5");
  }

 private:
  bool xml_;
  bool lattice_;
  FixedBuffer buffer_;
  StreamOver<std::fstream> binary_;
  StreamOver<std::ifstream> text_;
};

void failAllocationsOfWriting(Writing::Write write, bool lattice) {
  failAllocations([=]() -> std::unique_ptr<Attempt> { return std::make_unique<Writing>(write, lattice); });
}

void failAllocationsOfRestoring(bool xml, bool lattice, int maxInStoreSets = 2147483647) {
  const std::string state = Saving(lattice, maxInStoreSets).state(xml);
  failAllocations(
      [&]() -> std::unique_ptr<Attempt> { return std::make_unique<Restoring>(state, xml, lattice); });
}

KorStatus save(Engine& engine, std::fstream& binary, std::ostream&) { return engine.SaveState(binary); }
KorStatus saveXML(Engine& engine, std::fstream&, std::ostream& text) { return engine.SaveStateXML(text); }
KorStatus exportLattice(Engine& engine, std::fstream&, std::ostream& text) {
  return engine.ExportLatticeXML(text);
}
KorStatus exportRules(Engine& engine, std::fstream&, std::ostream& text) {
  return engine.ExportRulesXML(text, 0.1, 0.2, false);
}
KorStatus exportFewRules(Engine& engine, std::fstream&, std::ostream& text) {
  return engine.ExportRulesXML(text, 0.1, 0.2, true);
}

}  // namespace

TEST(Allocations, OfASave) { failAllocationsOfWriting(save, false); }
TEST(Allocations, OfASaveAsXML) { failAllocationsOfWriting(saveXML, false); }
TEST(Allocations, OfASaveOfALatticeAsXML) { failAllocationsOfWriting(saveXML, true); }
TEST(Allocations, OfAnExportOfTheLattice) { failAllocationsOfWriting(exportLattice, true); }
TEST(Allocations, OfAnExportOfRules) { failAllocationsOfWriting(exportRules, true); }
TEST(Allocations, OfAnExportOfRulesWithoutRedundantOnes) { failAllocationsOfWriting(exportFewRules, true); }

TEST(Allocations, OfARestore) { failAllocationsOfRestoring(false, false); }
TEST(Allocations, OfARestoreWithEntries) { failAllocationsOfRestoring(false, false, 60); }
TEST(Allocations, OfARestoreFromXML) { failAllocationsOfRestoring(true, false); }
TEST(Allocations, OfARestoreOfALatticeFromXML) { failAllocationsOfRestoring(true, true); }
