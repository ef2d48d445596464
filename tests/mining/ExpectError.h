// What a test expects of an error.

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korassoc/mining/Error.h"

// The statement throws an Error of the kind, whose sentence holds the part.
#define EXPECT_ERROR(statement, expectedKind, part)                                              \
  do {                                                                                           \
    try {                                                                                        \
      static_cast<void>(statement);                                                              \
      ADD_FAILURE() << "no error of " #statement;                                                \
    } catch (const korassoc::Error& error) {                                                     \
      EXPECT_EQ(static_cast<int>(error.kind()), static_cast<int>(expectedKind)) << error.what(); \
      EXPECT_THAT(error.what(), ::testing::HasSubstr(part));                                     \
    }                                                                                            \
  } while (false)
