// Where a pasted graph goes: the form itself, the form resized, or a new
// form of the graph's size.

#include <gtest/gtest.h>

#include "kit/graph_clipboard.h"

namespace keldo {
namespace {

TEST(GraphClipboard, AGraphOfTheFormsSizeStaysWhileThereIsRoom) {
  EXPECT_EQ(WherePasted(1024, 1024, 0), PasteTarget::ThisForm);
  EXPECT_EQ(WherePasted(1024, 1024, 3), PasteTarget::ThisForm);
  EXPECT_EQ(WherePasted(256, 256, 3, false), PasteTarget::ThisForm);
}

TEST(GraphClipboard, AnEmptyFormTakesTheSizeOfTheGraph) {
  EXPECT_EQ(WherePasted(64, 1024, 0), PasteTarget::ThisFormResized);
  // An empty form is never full, but if it says so it still takes the graph.
  EXPECT_EQ(WherePasted(256, 256, 0, true), PasteTarget::ThisFormResized);
}

TEST(GraphClipboard, AFormHoldingOtherGraphsOrFullSendsItToANewForm) {
  EXPECT_EQ(WherePasted(64, 1024, 1), PasteTarget::NewForm);
  EXPECT_EQ(WherePasted(2048, 128, 2), PasteTarget::NewForm);
  EXPECT_EQ(WherePasted(256, 256, 4, true), PasteTarget::NewForm);
}

}  // namespace
}  // namespace keldo
