// Saved states of a small run, and engines made from them.

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/engine/CarmaFailedRestartContext.h"
#include "tests/support/EngineHost.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFile.h"

// 23 transactions with sets of up to three items, and a support that falls and rises.
inline Transactions someTransactions() {
  Transactions transactions;
  for (int i = 0; i < 23; ++i) {
    std::vector<int> items = {1};
    if (i % 2 == 0) items.push_back(2);
    if (i % 3 != 0) items.push_back(3);
    if (i % 5 == 0) items.push_back(40 + i);
    transactions.push_back(items);
  }
  return transactions;
}

inline double someSupport(int transaction) { return transaction % 7 < 4 ? 0.3 : 0.2; }

struct Running : EngineHost {
  Running() : EngineHost(someTransactions()) { support(someSupport); }
};

template <typename Object, typename Write>
std::string bytesOf(Object& object, Write&& write) {
  const TemporaryFile file;
  std::fstream stream = file.writer();
  write(object, stream);
  stream.close();
  return file.contents();
}

inline std::string binaryState(CarmaAssociationAlgorithm& engine) {
  return bytesOf(engine, [](CarmaAssociationAlgorithm& saved, std::fstream& stream) {
    EXPECT_EQ(shortForm(saved.SaveState(stream)), "OK");
  });
}

inline std::string xmlState(CarmaAssociationAlgorithm& engine) {
  std::ostringstream out;
  EXPECT_EQ(shortForm(engine.SaveStateXML(out)), "OK");
  return out.str();
}

// An engine made from the bytes of a state, and what was printed meanwhile.
struct Restored {
  enum Format { Binary, Xml };

  Restored(const std::string& state, Format format) : source(someTransactions()) {
    const TemporaryFile file(state);
    if (format == Binary) {
      std::fstream stream = file.reader();
      restore(stream);
    } else {
      std::ifstream stream(file.name(), std::ios::binary);
      restore(stream);
    }
  }
  // The same from whatever gives the bytes.
  Restored(std::streambuf& state, Format format) : source(someTransactions()) {
    if (format == Binary) {
      std::fstream stream;
      static_cast<std::ios&>(stream).rdbuf(&state);
      restore(stream);
    } else {
      std::ifstream stream;
      static_cast<std::ios&>(stream).rdbuf(&state);
      restore(stream);
    }
  }

  // The source stands where the saved run left it, with the support of that run.
  void goOnBehind(int transactions) {
    for (int i = 0; i < transactions; ++i) source.Next();
    engine->SetSupportSource(new TestSupport(someSupport));
  }

  bool unusable() const {
    return &CarmaAssociationAlgorithmTestAccess::state(*engine) == &CarmaFailedRestartContext::instance();
  }

  VectorTransactions source;
  std::unique_ptr<CarmaAssociationAlgorithm> engine;
  std::string output;
  std::string errors;

 private:
  template <class Stream>
  void restore(Stream& stream) {
    const StreamCapture out(std::cout);
    const StreamCapture err(std::cerr);
    engine = std::make_unique<CarmaAssociationAlgorithm>(stream, &source);
    output = out.text();
    errors = err.text();
  }
};

// Where the record of the ceilings starts: 28 bytes for the core and 16 for each chunk come behind its head
// of 18.
inline std::size_t ceilingsAt(const std::string& state, const CarmaAssociationAlgorithm& engine) {
  return state.size() - 20 - 18 -
         16 * static_cast<std::size_t>(CarmaAssociationAlgorithmTestAccess::ceilings(engine)->used());
}
