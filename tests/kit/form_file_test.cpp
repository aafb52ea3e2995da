// Saving a form file on a small form of the test's own: the name from the
// dialog or the form's own, the items that need a name, the report of a
// failure.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/form.h"
#include "kit/form_file.h"
#include "test_frame.h"

namespace keldo {
namespace {

using testing::TestFrame;

const FormFileKind kKind{"(*.tst)|*.tst", ".tst", {"mnuSave", "mnuOther"}};

class FileForm final : public Form {
 public:
  explicit FileForm(FormContext& context) : Form(context, FormKind::Graph2) {
    for (const char* item : {"mnuSave", "mnuOther", "mnuElse"}) controls_.Add(item, ControlKind::Menu).enabled = false;
  }
  // Saves as the menu items do, noting each path written.
  bool Save(bool askForName) {
    return SaveTheFormFile(*this, fileName, askForName, kKind, [this](const std::string& path) {
      written.push_back(path);
      return writes;
    });
  }
  std::string fileName;
  std::vector<std::string> written;
  bool writes = true;
};

TEST(FormFile, TheFirstSaveAsksForANameThatBecomesTheForms) {
  TestFrame t;
  FileForm f(t.frame);
  t.platform.fileDialog.QueueAnswer("/tmp/first");
  const unsigned long long before = f.Revision();
  EXPECT_TRUE(f.Save(false));
  EXPECT_EQ(f.written, std::vector<std::string>{"/tmp/first.tst"});
  EXPECT_EQ(f.fileName, "/tmp/first.tst");
  EXPECT_TRUE(f.controls()["mnuSave"].enabled);
  EXPECT_TRUE(f.controls()["mnuOther"].enabled);
  EXPECT_FALSE(f.controls()["mnuElse"].enabled);
  EXPECT_GT(f.Revision(), before);
  // Save again: the form's own name, no dialog.
  EXPECT_TRUE(f.Save(false));
  EXPECT_EQ(f.written.back(), "/tmp/first.tst");
  EXPECT_EQ(t.platform.fileDialog.Requests().size(), 1u);
}

TEST(FormFile, SaveAsAsksAgainAndACancelChangesNothing) {
  TestFrame t;
  FileForm f(t.frame);
  f.fileName = "/tmp/kept.tst";
  t.platform.fileDialog.QueueAnswer(std::nullopt);
  EXPECT_FALSE(f.Save(true));
  EXPECT_TRUE(f.written.empty());
  EXPECT_EQ(f.fileName, "/tmp/kept.tst");
  EXPECT_FALSE(f.controls()["mnuSave"].enabled);
  t.platform.fileDialog.QueueAnswer("/tmp/other.tst");
  EXPECT_TRUE(f.Save(true));
  EXPECT_EQ(f.fileName, "/tmp/other.tst");
}

TEST(FormFile, AFailedWriteReports36AndKeepsTheName) {
  TestFrame t;
  FileForm f(t.frame);
  f.fileName = "/tmp/kept.tst";
  f.writes = false;
  t.platform.fileDialog.QueueAnswer("/tmp/new.tst");
  EXPECT_FALSE(f.Save(true));
  EXPECT_EQ(f.written, std::vector<std::string>{"/tmp/new.tst"});
  EXPECT_EQ(f.fileName, "/tmp/kept.tst");
  EXPECT_FALSE(f.controls()["mnuSave"].enabled);
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 36: Error saving form."});
}

}  // namespace
}  // namespace keldo
