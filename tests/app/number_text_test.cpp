#include <gtest/gtest.h>

#include <cstdlib>

#include "common/number_text.h"

namespace keldo {
namespace {

TEST(StrInt, LeadingBlankForNonNegative) {
  EXPECT_EQ(StrInt(1), " 1");
  EXPECT_EQ(StrInt(0), " 0");
  EXPECT_EQ(StrInt(-3), "-3");
  EXPECT_EQ(StrInt(65536), " 65536");
}

TEST(FormatLabel, AtMostThreeDecimalsAndNoTrailingPoint) {
  EXPECT_EQ(FormatLabel(0.5), "0.5");
  EXPECT_EQ(FormatLabel(-0.5), "-0.5");
  EXPECT_EQ(FormatLabel(2.0), "2");
  EXPECT_EQ(FormatLabel(0.12345), "0.123");
  EXPECT_EQ(FormatLabel(0.0006), "0.001");
  EXPECT_EQ(FormatLabel(0.0004), "0");
  EXPECT_EQ(FormatLabel(-0.0004), "0");
  EXPECT_EQ(FormatLabel(1234.5), "1234.5");
}

TEST(RoundTripText, ReadsBackToTheSameDouble) {
  for (double v : {0.1, 1.0 / 3.0, -2.5e-300, 6.28318530717958, 1e22, 0.0}) {
    EXPECT_EQ(std::strtod(RoundTripText(v).c_str(), nullptr), v);
  }
  EXPECT_EQ(RoundTripText(0.1), "0.1");
}

}  // namespace
}  // namespace keldo
