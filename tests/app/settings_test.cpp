#include <gtest/gtest.h>

#include "kit/settings.h"

namespace keldo {
namespace {

TEST(Settings, DefaultsOfEveryField) {
  FrameSettings s;
  s.documentStatus = 9;
  s.captions["Junk"] = "x";
  DeclareVariables(s);
  EXPECT_EQ(s.formulas1d.maxFormNum, 0);
  EXPECT_EQ(s.formulas1d.formCount, 0);
  EXPECT_EQ(s.formulas1d.formulas, std::vector<std::string>{""});
  EXPECT_EQ(s.formulas2d.formulas, std::vector<std::string>{""});
  for (int i = 1; i <= 11; ++i) EXPECT_EQ(s.dialogFolders[i], "");
  EXPECT_EQ(s.documentStatus, 0);
  EXPECT_EQ(s.wavPasteValue, "N");
  EXPECT_EQ(s.specDispType, 0);
  EXPECT_EQ(s.scalDispType, 2);
  for (int col = 1; col <= 5; ++col) {
    EXPECT_EQ(s.scalogramParams[0][col], "8");
    EXPECT_EQ(s.scalogramParams[1][col], "16");
    EXPECT_EQ(s.scalogramParams[2][col], "1");
    EXPECT_EQ(s.scalogramParams[3][col], "1");
    EXPECT_EQ(s.scalogramParams[4][col], "");
  }
  EXPECT_EQ(s.formCaption, "");
  const float codes[11] = {7, 0, 0.25f, 2, 1, 2, 0, 1, 0.9f, 1, 0};
  for (int i = 0; i < 11; ++i) EXPECT_EQ(s.wavCompCodes[i], codes[i]) << i;
  EXPECT_EQ(s.captions.count("Junk"), 0u);
  EXPECT_EQ(s.captions.at("WaveletType2D"), "Daub 9/7");
  EXPECT_EQ(s.captions.at("labHelp"), "");
  EXPECT_EQ(s.captions.size(), HiddenCaptionNames().size());
}

TEST(Settings, UpdateAllFormulasGrowsKeepsAndPoints) {
  FormulaList list;
  UpdateAllFormulas(list, "sin(x)", 1);
  UpdateAllFormulas(list, "x^2", 2);
  EXPECT_EQ(list.maxFormNum, 2);
  EXPECT_EQ(list.formCount, 2);
  EXPECT_EQ(list.formulas, (std::vector<std::string>{"", "sin(x)", "x^2"}));
  UpdateAllFormulas(list, "cos(x)", 1);
  EXPECT_EQ(list.formulas, (std::vector<std::string>{"", "cos(x)"}));
  EXPECT_EQ(GetAllFormulas(list, 1), (std::vector<std::string>{"", "cos(x)"}));
  EXPECT_EQ(GetAllFormulas(list, 0), (std::vector<std::string>{""}));
  EXPECT_EQ(GetAllFormulas(list, 9).size(), 2u);
}

}  // namespace
}  // namespace keldo
