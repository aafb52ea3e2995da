#include <gtest/gtest.h>

#include "platform/headless/simple_images.h"

namespace keldo::platform {
namespace {

RgbImage Sample() {
  RgbImage img(5, 3);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 5; ++x) img.Set(x, y, MakeRgb(x * 50, y * 100, (x + y) * 20));
  return img;
}

TEST(SimpleImages, BmpRoundTripIsExact) {
  const RgbImage img = Sample();
  const auto back = DecodeBmp(EncodeBmp(img));
  ASSERT_TRUE(back);
  EXPECT_EQ(back->width, 5);
  EXPECT_EQ(back->height, 3);
  EXPECT_EQ(back->pixels, img.pixels);
}

TEST(SimpleImages, BmpHeaderByHand) {
  const std::string b = EncodeBmp(RgbImage(2, 1, MakeRgb(1, 2, 3)));
  // 54-byte header, one row of 6 bytes padded to 8.
  ASSERT_EQ(b.size(), 62u);
  EXPECT_EQ(b.substr(0, 2), "BM");
  EXPECT_EQ(static_cast<unsigned char>(b[2]), 62);
  EXPECT_EQ(static_cast<unsigned char>(b[10]), 54);
  EXPECT_EQ(static_cast<unsigned char>(b[54]), 3);  // blue first
  EXPECT_EQ(static_cast<unsigned char>(b[56]), 1);
}

TEST(SimpleImages, PgmPlainAndRaw) {
  const auto plain = DecodePgm("P2\n# comment\n3 1\n4\n0 2 4\n");
  ASSERT_TRUE(plain);
  EXPECT_EQ(plain->At(0, 0), MakeRgb(0, 0, 0));
  EXPECT_EQ(plain->At(1, 0), MakeRgb(127, 127, 127));
  EXPECT_EQ(plain->At(2, 0), MakeRgb(255, 255, 255));
  RgbImage grey(2, 2, MakeRgb(10, 10, 10));
  const auto raw = DecodePgm(EncodePgm(grey));
  ASSERT_TRUE(raw);
  EXPECT_EQ(raw->pixels, grey.pixels);
}

TEST(SimpleImages, BadBytesGiveNothing) {
  for (const std::string& bytes : {std::string(), std::string("BM"), std::string("P5\n2 2\n255\nab"),
                                  std::string("P2 99999999999 1 255"), std::string(60, '\0'),
                                  std::string("P5\n-1 2\n255\n")}) {
    EXPECT_FALSE(DecodePgm(bytes));
    EXPECT_FALSE(DecodeBmp(bytes));
  }
  std::string truncated = EncodeBmp(Sample());
  truncated.resize(truncated.size() - 1);
  EXPECT_FALSE(DecodeBmp(truncated));
}

}  // namespace
}  // namespace keldo::platform
