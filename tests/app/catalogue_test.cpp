#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>

#include "app/catalogue.h"

namespace keldo {
namespace {

// The catalogue as typed from the message table, one row a line.
std::map<int, std::string> ExpectedRows() {
  std::ifstream in(KELDO_TEST_DATA "/catalogue.tsv");
  std::map<int, std::string> rows;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    const auto tab = line.find('\t');
    rows[std::stoi(line.substr(0, tab))] = line.substr(tab + 1);
  }
  return rows;
}

TEST(Catalogue, EveryRowShowsItsExactTextWithAFullStop) {
  const auto rows = ExpectedRows();
  ASSERT_EQ(rows.size(), 92u);
  for (const auto& [number, text] : rows) {
    EXPECT_EQ(CatalogueMessage(number), text) << "row " << number;
    EXPECT_TRUE(CatalogueHasRow(number));
  }
}

TEST(Catalogue, HasNoRowOutsideTheTable) {
  const auto rows = ExpectedRows();
  for (int n = -300; n <= 300; ++n) {
    EXPECT_EQ(CatalogueHasRow(n), rows.count(n) == 1) << "row " << n;
  }
}

TEST(Catalogue, RowsThreeAndSixNameTheUsersSpecification) {
  EXPECT_EQ(CatalogueMessage(3), "Improper graph specification.");
  EXPECT_EQ(CatalogueMessage(6), "Improper specification for one of the intervals.");
}

TEST(Catalogue, RowsWithTheirOwnPunctuationKeepBothMarks) {
  EXPECT_EQ(CatalogueMessage(24), "Sorry. This printing position/size is not supported at this time..");
  const std::string m88 = CatalogueMessage(88);
  EXPECT_EQ(m88.substr(m88.size() - 12), "compression.");
  EXPECT_EQ(m88.substr(0, 38), "Error decompressing.  This is a demo p");
}

TEST(Catalogue, UnknownNumbersShowError) {
  for (int n : {0, 92, 93, -2, 1000, -32768}) {
    EXPECT_EQ(CatalogueMessage(n), "Error.") << n;
    EXPECT_FALSE(CatalogueHasRow(n));
  }
}

TEST(Catalogue, SharedTextOfTwentyAndFortyOne) {
  EXPECT_EQ(CatalogueMessage(20), CatalogueMessage(41));
  EXPECT_EQ(CatalogueMessage(20), "Error loading file.");
}

}  // namespace
}  // namespace keldo
