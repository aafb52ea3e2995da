#include "kit/settings.h"

#include <algorithm>

namespace keldo {

const std::vector<std::string>& HiddenCaptionNames() {
  static const std::vector<std::string> kNames = {
      "PercScalogram", "LabNewImage", "WaveletType2D", "WavInverse", "WavOrder",  "WavType",
      "OpTIFF",        "JPEGCompression", "LabPrintForm", "PlotGraph", "LabTrSet", "labBtDown",
      "labHelp",       "LabWavLev",   "LabLineStyle",  "LabAutoFit", "PowerTwo",  "Points"};
  return kNames;
}

void InitializeWavCompCodes(FrameSettings& s) {
  s.wavCompCodes = {7.0f, 0.0f, 0.25f, 2.0f, 1.0f, 2.0f, 0.0f, 1.0f, 0.9f, 1.0f, 0.0f};
}

void DeclareVariables(FrameSettings& s) {
  InitializeWavCompCodes(s);
  s.formulas1d = FormulaList{};
  s.formulas2d = FormulaList{};
  s.dialogFolders.fill("");
  s.documentStatus = 0;
  s.wavPasteValue = "N";
  s.specDispType = 0;
  s.scalDispType = 2;
  static const char* kScalDefaults[4] = {"8", "16", "1", "1"};
  for (int row = 0; row < 5; ++row)
    for (int col = 0; col < 6; ++col)
      s.scalogramParams[row][col] = (row < 4 && col >= 1) ? kScalDefaults[row] : "";
  s.formCaption.clear();
  s.saveOptions.clear();
  s.captions.clear();
  for (const std::string& name : HiddenCaptionNames()) s.captions[name] = "";
  s.captions["WaveletType2D"] = "Daub 9/7";
  s.captions["JPEGCompression"] = "70";
  s.captions["OpTIFF"] = "0";
}

void UpdateAllFormulas(FormulaList& list, const std::string& formula, int index) {
  if (index < 0) return;
  list.maxFormNum = index;
  list.formulas.resize(static_cast<std::size_t>(index) + 1);
  list.formulas[static_cast<std::size_t>(index)] = formula;
  list.formCount = index;
}

std::vector<std::string> GetAllFormulas(const FormulaList& list, int count) {
  const int last = std::min(count, static_cast<int>(list.formulas.size()) - 1);
  std::vector<std::string> out;
  for (int i = 0; i <= last; ++i) out.push_back(list.formulas[static_cast<std::size_t>(i)]);
  return out;
}

}  // namespace keldo
