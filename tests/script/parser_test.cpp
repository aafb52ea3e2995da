#include <gtest/gtest.h>

#include "script/script_parser.h"

namespace keldo::script {
namespace {

using Words = std::vector<std::string>;

TEST(ScriptParser, SplitsAtBlanksAndDropsComments) {
  EXPECT_EQ(ParseLine("  set   EndRValue\t2  # right end").words, (Words{"set", "EndRValue", "2"}));
  EXPECT_TRUE(ParseLine("# only a comment").words.empty());
  EXPECT_TRUE(ParseLine("").words.empty());
  EXPECT_EQ(ParseLine("menu mnuQuantize 3").words, (Words{"menu", "mnuQuantize", "3"}));
}

TEST(ScriptParser, QuotesDoubleQuotesAndBackslashes) {
  EXPECT_EQ(ParseLine(R"~(set Formula "sin(2*pi*x)")~").words, (Words{"set", "Formula", "sin(2*pi*x)"}));
  EXPECT_EQ(ParseLine(R"~(set Formula "a*x\a=2\b")~").words, (Words{"set", "Formula", R"(a*x\a=2\b)"}));
  EXPECT_EQ(ParseLine(R"~(answer "say ""hi"" # not a comment")~").words,
            (Words{"answer", R"(say "hi" # not a comment)"}));
  EXPECT_EQ(ParseLine(R"~(answer "")~").words, (Words{"answer", ""}));
  EXPECT_EQ(ParseLine(R"~(set Formula x\y)~").words, (Words{"set", "Formula", R"(x\y)"}));
}

TEST(ScriptParser, BadQuotingIsAnError) {
  EXPECT_FALSE(ParseLine(R"~(set Formula "open)~").error.empty());
  EXPECT_FALSE(ParseLine(R"~(set Formula "a"b)~").error.empty());
}

TEST(ScriptParser, SplitLinesDropsCarriageReturns) {
  EXPECT_EQ(SplitLines("new 1d\r\ndump\n"), (Words{"new 1d", "dump"}));
  EXPECT_EQ(SplitLines("a\n\nb"), (Words{"a", "", "b"}));
}

}  // namespace
}  // namespace keldo::script
