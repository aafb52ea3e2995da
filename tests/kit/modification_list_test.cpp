// The modification list of a time-frequency form: the report it grows, the
// stored entries a form file holds, and a stored list refused whole.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/modification_list.h"

namespace keldo {
namespace {

using Kind = ModificationList::Kind;

TEST(ModificationList, StartsAsTheBaseAlone) {
  const ModificationList list;
  EXPECT_TRUE(list.Entries().empty());
  EXPECT_TRUE(list.Stored().empty());
  EXPECT_EQ(list.All(), std::vector<std::string>{"B"});
  EXPECT_EQ(list.Report(), "");
}

TEST(ModificationList, ReportsAThresholdThenAFormulaInTwoLinesEach) {
  ModificationList list;
  list.AddThreshold("0.5");
  EXPECT_EQ(list.Report(), "1. Threshold\r\nValue: 0.5\r\n");
  list.AddFormula("(g1)(g1>2)");
  EXPECT_EQ(list.Report(), "1. Threshold\r\nValue: 0.5\r\n2. Formula\r\n(g1)(g1>2)\r\n");
  list.AddThreshold("3e2");
  EXPECT_EQ(list.Report(), "1. Threshold\r\nValue: 0.5\r\n2. Formula\r\n(g1)(g1>2)\r\n3. Threshold\r\nValue: 3e2\r\n");
}

TEST(ModificationList, ListsEntriesInOrderWithTheirKinds) {
  ModificationList list;
  list.AddFormula("g1*2");
  list.AddThreshold("0");
  ASSERT_EQ(list.Entries().size(), 2u);
  EXPECT_EQ(list.Entries()[0].kind, Kind::Formula);
  EXPECT_EQ(list.Entries()[0].text, "g1*2");
  EXPECT_EQ(list.Entries()[1].kind, Kind::Threshold);
  EXPECT_EQ(list.Entries()[1].text, "0");
  EXPECT_EQ(list.Stored(), (std::vector<std::string>{"G:g1*2", "T:0"}));
  EXPECT_EQ(list.All(), (std::vector<std::string>{"B", "G:g1*2", "T:0"}));
}

TEST(ModificationList, ResetLeavesTheBaseAndAnEmptyReport) {
  ModificationList list;
  list.AddThreshold("1");
  list.AddFormula("1");
  list.Reset();
  EXPECT_TRUE(list.Entries().empty());
  EXPECT_EQ(list.All(), std::vector<std::string>{"B"});
  EXPECT_EQ(list.Report(), "");
  // Numbering starts again after a reset.
  list.AddFormula("x");
  EXPECT_EQ(list.Report(), "1. Formula\r\nx\r\n");
}

TEST(ModificationList, SetStoredTakesBothKindsAndKeepsTheReport) {
  ModificationList list;
  list.SetReport("kept\r\n");
  ASSERT_TRUE(list.SetStored({"T:0.5", "G:(g1)(g1>2)", "T:", "G:T:x"}));
  ASSERT_EQ(list.Entries().size(), 4u);
  EXPECT_EQ(list.Entries()[0].kind, Kind::Threshold);
  EXPECT_EQ(list.Entries()[0].text, "0.5");
  EXPECT_EQ(list.Entries()[1].kind, Kind::Formula);
  EXPECT_EQ(list.Entries()[1].text, "(g1)(g1>2)");
  EXPECT_EQ(list.Entries()[2].kind, Kind::Threshold);
  EXPECT_EQ(list.Entries()[2].text, "");
  EXPECT_EQ(list.Entries()[3].kind, Kind::Formula);
  EXPECT_EQ(list.Entries()[3].text, "T:x");
  EXPECT_EQ(list.Stored(), (std::vector<std::string>{"T:0.5", "G:(g1)(g1>2)", "T:", "G:T:x"}));
  EXPECT_EQ(list.All(), (std::vector<std::string>{"B", "T:0.5", "G:(g1)(g1>2)", "T:", "G:T:x"}));
  EXPECT_EQ(list.Report(), "kept\r\n");
  // An empty list stored is the base alone.
  ASSERT_TRUE(list.SetStored({}));
  EXPECT_EQ(list.All(), std::vector<std::string>{"B"});
}

TEST(ModificationList, SetStoredRefusesAnEntryOfAnotherKindAndLeavesTheListAsItWas) {
  ModificationList list;
  list.AddThreshold("2");
  list.AddFormula("g1");
  const std::string report = list.Report();
  for (const std::vector<std::string>& stored :
       {std::vector<std::string>{"T:1", "B"}, {"X:1"}, {"t:1"}, {"G:1", ""}, {"T"}, {"G"}, {"G;1"}, {" T:1"}}) {
    EXPECT_FALSE(list.SetStored(stored)) << stored.back();
    EXPECT_EQ(list.Stored(), (std::vector<std::string>{"T:2", "G:g1"}));
    EXPECT_EQ(list.Report(), report);
  }
}

}  // namespace
}  // namespace keldo
