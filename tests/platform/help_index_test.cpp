#include <gtest/gtest.h>

#include <filesystem>

#include "platform/help_index.h"

namespace keldo::platform {
namespace {

TEST(HelpIndex, FindsByKeywordIgnoringCaseAndBlanks) {
  const auto index = HelpIndex::FromText(
      "# comment\nKELDOX.HLP\tGraphing\tp/graphing.md\n*\tFourier transform\tp/ft.md\n"
      "KELDOX.HLP\tcontents\tp/index.md\r\nbroken line\n",
      "/docs");
  EXPECT_EQ(index.Topics().size(), 3u);
  EXPECT_EQ(index.Find("\\Help\\keldox.hlp", "  graphing "), "/docs/p/graphing.md");
  EXPECT_EQ(index.Find("KELDOX.HLP", "FOURIER TRANSFORM"), "/docs/p/ft.md");
  EXPECT_EQ(index.Find("OTHER.HLP", "Graphing"), std::nullopt);
  EXPECT_EQ(index.Contents("c:/x/KELDOX.HLP"), "/docs/p/index.md");
  EXPECT_EQ(index.Find("KELDOX.HLP", ""), std::nullopt);
}

// "Help for " plus a topic: the topic is the caption less its nine characters,
// and every such topic of the side boxes lands on a page of the guide.
TEST(HelpIndex, SideBoxTopicsLandOnPages) {
  const auto index = HelpIndex::Load(KELDO_SOURCE_DIR "/docs");
  for (const char* caption : {"Help for Graphing", "Help for Getting started", "Help for One-dimensional formulas"}) {
    const std::string topic = std::string(caption).substr(9);
    const auto page = index.Find("KELDOX.HLP", topic);
    ASSERT_TRUE(page) << topic;
    EXPECT_TRUE(std::filesystem::exists(*page)) << *page;
  }
  for (const auto& t : index.Topics())
    EXPECT_TRUE(std::filesystem::exists(std::string(KELDO_SOURCE_DIR "/docs/") + t.page)) << t.page;
}

}  // namespace
}  // namespace keldo::platform
