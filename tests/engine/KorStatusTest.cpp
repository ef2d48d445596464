#include "korassoc/engine/KorStatus.h"

#include <gtest/gtest.h>

#include <limits>

using KorAssoc::KorStatus;

TEST(KorStatus, IsOkByDefault) {
  const KorStatus status;
  EXPECT_TRUE(status.IsOK());
  EXPECT_FALSE(status.IsError());
  EXPECT_FALSE(status.IsWarning());
  EXPECT_EQ(status.GetCode(), 0);
  EXPECT_EQ(status.GetSeverity(), 0);
  for (unsigned int i = 0; i < 3; ++i) {
    EXPECT_EQ(status.GetDiscreteDatum(i), 0) << i;
    EXPECT_EQ(status.GetScaleDatum(i), 0.0) << i;
  }
}

TEST(KorStatus, IsAWarningOrAnErrorByItsFlag) {
  const KorStatus warning(7, true);
  EXPECT_TRUE(warning.IsWarning());
  EXPECT_FALSE(warning.IsOK());
  EXPECT_FALSE(warning.IsError());
  EXPECT_EQ(warning.GetCode(), 7);
  EXPECT_EQ(warning.GetSeverity(), 1);
  const KorStatus error(7, false);
  EXPECT_TRUE(error.IsError());
  EXPECT_FALSE(error.IsOK());
  EXPECT_FALSE(error.IsWarning());
  EXPECT_EQ(error.GetCode(), 7);
  EXPECT_EQ(error.GetSeverity(), -1);
}

TEST(KorStatus, IsNotOkWithCodeZeroOnceItHasASeverity) { EXPECT_FALSE(KorStatus(0, true).IsOK()); }

TEST(KorStatus, ComparesCodeAndSeverity) {
  EXPECT_TRUE(KorStatus(7, true) == KorStatus(7, true));
  EXPECT_FALSE(KorStatus(7, true) == KorStatus(8, true));
  EXPECT_FALSE(KorStatus(7, true) == KorStatus(7, false));
  EXPECT_FALSE(KorStatus(7, true) == KorStatus());
}

TEST(KorStatus, ComparesEveryDetailValue) {
  for (unsigned int i = 0; i < 3; ++i) {
    KorStatus discrete(7, true);
    discrete.SetDiscreteDatum(i, 1);
    EXPECT_FALSE(discrete == KorStatus(7, true)) << "discrete " << i;
    KorStatus scale(7, true);
    scale.SetScaleDatum(i, 0.5);
    EXPECT_FALSE(scale == KorStatus(7, true)) << "scale " << i;
    KorStatus same(7, true);
    same.SetScaleDatum(i, 0.5);
    EXPECT_TRUE(scale == same) << "scale " << i;
  }
}

TEST(KorStatus, KeepsDetailValuesThroughACopy) {
  KorStatus status(3, false);
  for (unsigned int i = 0; i < 3; ++i) {
    status.SetDiscreteDatum(i, 10 + static_cast<long>(i));
    status.SetScaleDatum(i, 0.25 * (i + 1));
  }
  const KorStatus copy = status;
  EXPECT_TRUE(copy == status);
  EXPECT_EQ(copy.GetDiscreteDatum(2), 12);
  EXPECT_EQ(copy.GetScaleDatum(2), 0.75);
}

TEST(KorStatus, KeepsNumbersIn32Bits) {
  KorStatus status(std::numeric_limits<std::int32_t>::min(), false);
  status.SetDiscreteDatum(0, std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(status.GetCode(), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(status.GetDiscreteDatum(0), std::numeric_limits<std::int32_t>::max());
}
