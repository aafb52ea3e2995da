#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/bytes.h"
#include "common/file_io.h"

namespace keldo {
namespace {

namespace fs = std::filesystem;

fs::path Scratch(const std::string& name) {
  const fs::path folder = fs::temp_directory_path() / ("keldo-file-io-" + std::to_string(::getpid()));
  fs::create_directories(folder);
  return folder / name;
}

TEST(FileIo, WritesAndReadsBackWholeFiles) {
  const std::string path = Scratch("whole.bin").string();
  const std::vector<std::uint8_t> bytes = {0, 1, 2, 255, 10, 13};
  ASSERT_TRUE(WriteFileBytes(path, bytes));
  std::vector<std::uint8_t> back;
  ASSERT_TRUE(ReadFileBytes(path, back));
  EXPECT_EQ(back, bytes);
  EXPECT_FALSE(fs::exists(TemporaryPathFor(path)));
}

TEST(FileIo, AFailedWriteLeavesTheOldFileWhole) {
  const std::string path = Scratch("kept.bin").string();
  ASSERT_TRUE(WriteFileBytes(path, {1, 2, 3}));
  // A folder where the temporary file would go makes the write fail.
  fs::create_directories(TemporaryPathFor(path));
  EXPECT_FALSE(WriteFileBytes(path, {9, 9, 9, 9}));
  std::vector<std::uint8_t> back;
  ASSERT_TRUE(ReadFileBytes(path, back));
  EXPECT_EQ(back, (std::vector<std::uint8_t>{1, 2, 3}));
  fs::remove_all(TemporaryPathFor(path));
}

TEST(FileIo, AMissingFolderFailsWithoutAFile) {
  const fs::path path = Scratch("no-such-folder") / "x.bin";
  EXPECT_FALSE(WriteFileBytes(path.string(), {1}));
  EXPECT_FALSE(fs::exists(path));
  std::vector<std::uint8_t> back;
  EXPECT_FALSE(ReadFileBytes(path.string(), back));
}

TEST(Bytes, ValuesRoundTripLittleEndian) {
  ByteWriter w;
  w.I16(-2);
  w.I32(0x01020304);
  w.F32(1.5f);
  w.F64(-0.25);
  w.CountedText("ab");
  EXPECT_EQ(w.bytes[0], 0xFE);
  EXPECT_EQ(w.bytes[2], 0x04);
  ByteReader r(w.bytes);
  EXPECT_EQ(r.I16(), -2);
  EXPECT_EQ(r.I32(), 0x01020304);
  EXPECT_EQ(r.F32(), 1.5f);
  EXPECT_EQ(r.F64(), -0.25);
  EXPECT_EQ(r.CountedText(), "ab");
  EXPECT_TRUE(r.ok());
  EXPECT_EQ(r.I32(), 0);
  EXPECT_FALSE(r.ok());  // past the end, and it stays failed
}

TEST(Bytes, CountsBeyondTheBytesFail) {
  ByteWriter w;
  w.I32(1000);
  ByteReader r(w.bytes);
  EXPECT_EQ(r.CountedText(), "");
  EXPECT_FALSE(r.ok());
  ByteReader r2(w.bytes);
  EXPECT_FALSE(r2.Room(2, 4));
}

}  // namespace
}  // namespace keldo
