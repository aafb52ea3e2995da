#pragma once
// Settings shared between forms for the length of a run. The frame owns one
// record; a new form copies what it needs from it.

#include <array>
#include <map>
#include <string>
#include <vector>

namespace keldo {

struct FormulaList {
  int maxFormNum = 0;                     // highest formula index
  int formCount = 0;                      // current formula index
  std::vector<std::string> formulas{""};  // index 0 up
};

struct FrameSettings {
  FormulaList formulas1d;
  FormulaList formulas2d;
  std::array<std::string, 12> dialogFolders{};  // index 1 to 11 used
  int documentStatus = 0;
  std::string wavPasteValue = "N";
  int specDispType = 0;
  int scalDispType = 2;
  // rows 0..4 by columns 1..5 (column 0 unused)
  std::array<std::array<std::string, 6>, 5> scalogramParams{};
  std::string formCaption;
  // Where the sound buffer files go; empty for the program's own folder, or
  // a per-user folder when that cannot be written.
  std::string soundBufferFolder;
  // The same for the workshop's compressed files; empty for the program's
  // own "Compress/Data".
  std::string compressFolder;
  std::array<float, 11> wavCompCodes{};
  // The controls of the image save options as they were last left, by
  // name: texts as typed, ticks and choices as "0" or "1".
  std::map<std::string, std::string> saveOptions;
  // Hidden caption fields read and written by name: the last choices that
  // new forms take over ("WaveletType2D", "LabLineStyle", "labHelp" ...).
  std::map<std::string, std::string> captions;
};

// Dialog folder numbers.
constexpr int kFolderForms = 1;
constexpr int kFolderData = 2;
constexpr int kFolderSound = 3;
constexpr int kFolderImages = 4;
constexpr int kFolderFormulas = 6;
constexpr int kFolderSoundSave = 11;

// The defaults of every field.
void DeclareVariables(FrameSettings& s);
void InitializeWavCompCodes(FrameSettings& s);

// The names of the hidden caption fields, in a fixed order.
const std::vector<std::string>& HiddenCaptionNames();

// UpdateAllFormulas: max index and count become `index`, the list grows to
// hold it (keeping its contents) and takes the formula there.
void UpdateAllFormulas(FormulaList& list, const std::string& formula, int index);
// GetAllFormulas: entries 0 to count.
std::vector<std::string> GetAllFormulas(const FormulaList& list, int count);

}  // namespace keldo
