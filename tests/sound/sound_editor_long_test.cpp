// The audio editor on files of minutes: a ten-minute file at 44.1 kHz,
// written here byte by byte, opened, edited and saved, with every sample
// of the saved file checked; and a file larger than memory allows, which
// gives the editor's sound error and opens nothing.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "kit/typed_forms.h"
#include "sound/sound_editor_form.h"
#include "test_frame.h"

namespace keldo::testing {
namespace {

using sound::SoundEditorForm;

constexpr std::int64_t kTenMinutes = 10LL * 60 * 44100;

// The test signal: every sample a different mixture of its index, so that
// any sample out of place shows.
std::int16_t Signal(std::int64_t i) {
  return static_cast<std::int16_t>(static_cast<std::uint16_t>((i * 7919 + (i >> 9)) & 0xFFFF));
}

void PutLittle(std::ofstream& out, std::uint32_t value, int bytes) {
  for (int k = 0; k < bytes; ++k) out.put(static_cast<char>((value >> (8 * k)) & 0xFF));
}

// A plain 16-bit mono PCM header for `frames` samples.
void WriteHeader(std::ofstream& out, std::uint32_t dataBytes, int rate) {
  out.write("RIFF", 4);
  PutLittle(out, 36 + dataBytes, 4);
  out.write("WAVEfmt ", 8);
  PutLittle(out, 16, 4);
  PutLittle(out, 1, 2);             // PCM
  PutLittle(out, 1, 2);             // mono
  PutLittle(out, static_cast<std::uint32_t>(rate), 4);
  PutLittle(out, static_cast<std::uint32_t>(rate) * 2, 4);
  PutLittle(out, 2, 2);
  PutLittle(out, 16, 2);
  out.write("data", 4);
  PutLittle(out, dataBytes, 4);
}

std::string TempPath(const std::string& name) {
  const auto dir = std::filesystem::temp_directory_path() / ("keldo-editor-long-" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  return (dir / name).string();
}

// The 16-bit samples of the data chunk of a wave file, read byte by byte.
std::vector<std::int16_t> DataChunk(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::size_t at = 12;
  auto little = [&](std::size_t p) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[p])) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[p + 1])) << 8 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[p + 2])) << 16 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[p + 3])) << 24;
  };
  while (at + 8 <= bytes.size()) {
    const std::uint32_t size = little(at + 4);
    if (std::string(&bytes[at], 4) == "data") {
      std::vector<std::int16_t> out(size / 2);
      for (std::size_t i = 0; i < out.size() && at + 9 + 2 * i < bytes.size(); ++i)
        out[i] = static_cast<std::int16_t>(static_cast<unsigned char>(bytes[at + 8 + 2 * i]) |
                                           static_cast<unsigned char>(bytes[at + 9 + 2 * i]) << 8);
      return out;
    }
    at += 8 + size + (size & 1);
  }
  return {};
}

TEST(SoundEditorLong, TenMinutesOpenedEditedAndSavedSampleForSample) {
  const std::string path = TempPath("ten-minutes.wav");
  {
    std::ofstream out(path, std::ios::binary);
    WriteHeader(out, static_cast<std::uint32_t>(kTenMinutes * 2), 44100);
    std::vector<char> block;
    block.reserve(2 * 65536);
    for (std::int64_t i = 0; i < kTenMinutes; ++i) {
      const auto s = static_cast<std::uint16_t>(Signal(i));
      block.push_back(static_cast<char>(s & 0xFF));
      block.push_back(static_cast<char>(s >> 8));
      if (block.size() == block.capacity()) {
        out.write(block.data(), static_cast<std::streamsize>(block.size()));
        block.clear();
      }
    }
    out.write(block.data(), static_cast<std::streamsize>(block.size()));
  }
  TestFrame t;
  int code = 0;
  SoundEditorForm& e = *NewFormOf<SoundEditorForm>(t.frame, code);
  ASSERT_TRUE(e.LoadWavFile(path));
  ASSERT_EQ(e.SampleCount(), kTenMinutes);
  EXPECT_EQ(e.controls().Text("labSamples"), "Samples: 26460000");
  // Copy the largest clip, from 10,000,000: 40,000 samples on ask for 79,600.
  e.Mouse(MouseAction::Down, 10000000, 0, MouseButton::Left);
  e.Mouse(MouseAction::Down, 10040000, 0, MouseButton::Left);
  ASSERT_EQ(e.ClipLength(), 65536);
  ASSERT_TRUE(e.RunMenu("mnuCopy"));
  e.EraseClipLines();
  e.Mouse(MouseAction::Down, 20000000, 0, MouseButton::Left);
  ASSERT_TRUE(e.RunMenu("mnuPaste"));
  ASSERT_EQ(e.SampleCount(), kTenMinutes + 65536);
  // Cut 512 samples at 5,000,000.
  e.EraseClipLines();
  e.Mouse(MouseAction::Down, 5000000, 0, MouseButton::Left);
  e.Mouse(MouseAction::Down, 5000300, 0, MouseButton::Left);
  ASSERT_EQ(e.ClipLength(), 512);
  ASSERT_TRUE(e.RunMenu("mnuCut"));
  const std::string saved = TempPath("ten-minutes-edited.wav");
  ASSERT_TRUE(e.SaveTo(saved));
  EXPECT_TRUE(t.lines.empty());

  // The file after the paste, then after the cut, by index.
  auto pasted = [](std::int64_t j) {
    if (j < 20000000) return Signal(j);
    if (j < 20000000 + 65536) return Signal(10000000 + (j - 20000000));
    return Signal(j - 65536);
  };
  auto edited = [&](std::int64_t j) { return j < 5000000 ? pasted(j) : pasted(j + 512); };
  const std::vector<std::int16_t> got = DataChunk(saved);
  ASSERT_EQ(static_cast<std::int64_t>(got.size()), kTenMinutes + 65536 - 512);
  std::int64_t wrong = 0, first = -1;
  for (std::int64_t j = 0; j < static_cast<std::int64_t>(got.size()); ++j)
    if (got[static_cast<std::size_t>(j)] != edited(j) && wrong++ == 0) first = j;
  EXPECT_EQ(wrong, 0) << "first wrong sample " << first;
  std::filesystem::remove(path);
  std::filesystem::remove(saved);
}

#if !defined(__SANITIZE_ADDRESS__)
// The process is held to its present size plus 512 MB, and the file claims
// a billion 16-bit samples (2 GB, a sparse file on disk): the editor cannot
// hold them, says so through its sound error, and keeps nothing.
TEST(SoundEditorLongDeathTest, LargerThanMemoryAllowsOpensNothing) {
  const std::string path = TempPath("huge.wav");
  constexpr std::uint32_t kBytes = 2000000000u;
  {
    std::ofstream out(path, std::ios::binary);
    WriteHeader(out, kBytes, 44100);
  }
  std::filesystem::resize_file(path, 44 + static_cast<std::uintmax_t>(kBytes));
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        TestFrame t;
        int code = 0;
        SoundEditorForm& e = *NewFormOf<SoundEditorForm>(t.frame, code);
        rlimit limit{};
        getrlimit(RLIMIT_AS, &limit);
        std::ifstream status("/proc/self/status");
        std::string word;
        long long kilobytes = 0;
        while (status >> word)
          if (word == "VmSize:") status >> kilobytes;
        limit.rlim_cur = static_cast<rlim_t>(kilobytes * 1024 + (512LL << 20));
        setrlimit(RLIMIT_AS, &limit);
        const bool opened = e.LoadWavFile(path);
        const bool told = t.lines == std::vector<std::string>{"message: Error converting sound values."};
        std::exit(!opened && told && e.SampleCount() == 0 && !e.controls()["cmdPlay"].enabled ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
  std::filesystem::remove(path);
}
#endif

}  // namespace
}  // namespace keldo::testing
