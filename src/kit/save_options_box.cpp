#include "kit/save_options_box.h"

#include <algorithm>
#include <cmath>

#include "common/number_text.h"

namespace keldo {
namespace {

const char* const kTiff[8] = {"Uncompressed", "CCIT RLE", "CCIT Group 3 Fax", "CCIT Group 4 FAX",
                              "LZW",          "Pack Bits", "JPEG",            "Deflate"};
const char* const kCompress[3] = {"Binary", "Huffman", "Arithmetic:"};
const char* const kModel[2] = {"0-Order", "1/0 Mixed"};
const char* const kScan[4] = {"ZigZag", "Static Tree", "Dynamic (Parent/Child)", "Dynamic (Context predict)"};
const char* const kLossy[2] = {"Lossy", "Lossless"};

const std::vector<std::string>& Wavelets() {
  static const std::vector<std::string> kNames = {"Daub 9/7", "DD (2+2,2) Integer", "DD 5/3 Integer"};
  return kNames;
}

// Every control whose value the frame keeps.
std::vector<std::string> KeptControls() {
  std::vector<std::string> names = {"txtJPEGQuality", "chkGreyScale", "chkProgressive", "chkPNGInterlaced",
                                    "txtLevels",      "WaveletType",  "OpCompRatio",    "txtBitRate",
                                    "OpPSNR",         "txtPSNR",      "chkROI",         "txtROIFraction",
                                    "chkDisplayImage"};
  const std::pair<const char*, int> groups[] = {{"OpTIFF", 8}, {"OpCompress", 3}, {"OpModel", 2}, {"OpScanOrder", 4},
                                                {"OpLossy", 2}};
  for (const auto& [base, count] : groups)
    for (int k = 0; k < count; ++k) names.push_back(IndexedName(base, k));
  return names;
}

bool Valued(ControlKind kind) {
  return kind == ControlKind::Check || kind == ControlKind::Option;
}

void Keep(ControlModel& controls, FrameSettings& settings) {
  for (const std::string& name : KeptControls()) {
    const Control& c = controls[name];
    settings.saveOptions[name] = Valued(c.kind) ? std::to_string(c.value) : c.text;
  }
}

int Chosen(ControlModel& controls, const char* base, int count) {
  for (int k = 0; k < count; ++k)
    if (controls[IndexedName(base, k)].value) return k;
  return 0;
}

void Choose(ControlModel& controls, const std::string& name) { controls.SetFromUser(name, "1"); }

}  // namespace

void AddSaveOptionsControls(ControlModel& controls) {
  controls.Add("txtJPEGQuality", ControlKind::Text, "70").tip = "Enter an integer from 1 to 99.";
  controls.Add("chkGreyScale", ControlKind::Check, "Grey scale");
  controls.Add("chkProgressive", ControlKind::Check, "Progressive");
  for (int k = 0; k < 8; ++k) controls.AddOption(IndexedName("OpTIFF", k), kTiff[k], "OpTIFF", k == 0);
  controls.Add("chkPNGInterlaced", ControlKind::Check, "Interlaced");
  controls.Add("txtLevels", ControlKind::Text, "7");
  Control& list = controls.Add("WaveletType", ControlKind::List, "Daub 9/7");
  list.items = Wavelets();
  controls.AddOption("OpCompRatio", "Compression rate.  Target rate (bpp):", "WcTarget", true);
  controls.Add("txtBitRate", ControlKind::Text, "0.25");
  controls.AddOption("OpPSNR", "Distortion rate.  Target PSNR:", "WcTarget");
  controls.Add("txtPSNR", ControlKind::Text, "34");
  for (int k = 0; k < 3; ++k) controls.AddOption(IndexedName("OpCompress", k), kCompress[k], "OpCompress", k == 2);
  for (int k = 0; k < 2; ++k) controls.AddOption(IndexedName("OpModel", k), kModel[k], "OpModel", k == 1);
  for (int k = 0; k < 4; ++k) controls.AddOption(IndexedName("OpScanOrder", k), kScan[k], "OpScanOrder", k == 2);
  for (int k = 0; k < 2; ++k) controls.AddOption(IndexedName("OpLossy", k), kLossy[k], "OpLossy", k == 0);
  controls.Add("chkROI", ControlKind::Check, "ROI (when image zoomed)").value = 1;
  controls.Add("txtROIFraction", ControlKind::Text, "0.9");
  controls.Add("chkDisplayImage", ControlKind::Check, "Display compressed image");
  if (!controls.Has("cmdApply")) controls.Add("cmdApply", ControlKind::Button, "Apply");
  if (!controls.Has("cmdCancel")) controls.Add("cmdCancel", ControlKind::Button, "Cancel");
}

LayoutNode SaveOptionsPanel() {
  using namespace layout;
  // Choices two or three to a line, so that the box stays short.
  auto options = [](const char* base, int count, int columns) {
    std::vector<LayoutNode> items;
    for (int k = 0; k < count; ++k) items.push_back(Item(IndexedName(base, k)));
    return Grid(columns, std::move(items));
  };
  return Column({Group("JPEG", Rows({Field("Quality factor:     (1 to 99)", "txtJPEGQuality"),
                                     Line({Item("chkGreyScale"), Item("chkProgressive"), Stretch()})})),
                 Group("TIFF", options("OpTIFF", 8, 2)), Group("PNG", Line({Item("chkPNGInterlaced"), Stretch()})),
                 Group("Wavelet compressed",
                       Rows({Field("Levels:", "txtLevels"), Line({Text("Wavelet:"), Item("WaveletType", LayoutNode::kStretch)}),
                             Pair("OpCompRatio", "txtBitRate"), Pair("OpPSNR", "txtPSNR"), options("OpCompress", 3, 3),
                             options("OpModel", 2, 2), options("OpScanOrder", 4, 2), options("OpLossy", 2, 2),
                             Item("chkROI"), Field("Fraction of bits to ROI:", "txtROIFraction"),
                             Item("chkDisplayImage")})),
                 Line({Item("cmdApply"), Item("cmdCancel")})});
}

void OpenSaveOptions(ControlModel& controls, const FrameSettings& settings) {
  for (const auto& [name, value] : settings.saveOptions) {
    Control* c = controls.Find(name);
    if (!c) continue;
    if (Valued(c->kind)) {
      if (c->kind == ControlKind::Check || value == "1") controls.SetFromUser(name, value);
    } else {
      controls.SetText(name, value);
    }
  }
  const auto caption = [&](const char* name) {
    const auto it = settings.captions.find(name);
    return it == settings.captions.end() ? std::string() : it->second;
  };
  controls.SetText("txtJPEGQuality", caption("JPEGCompression").empty() ? "70" : caption("JPEGCompression"));
  const int tiff = static_cast<int>(Val(caption("OpTIFF")));
  Choose(controls, IndexedName("OpTIFF", std::clamp(tiff, 0, 7)));
  const std::string wavelet = caption("WaveletType2D");
  if (std::find(Wavelets().begin(), Wavelets().end(), wavelet) != Wavelets().end())
    controls.SetText("WaveletType", wavelet);
  // The rules between the controls hold from the start.
  controls.SetEnabled("OpCompress(0)", controls["OpLossy(0)"].value != 0);
  controls.SetEnabled("OpPSNR", controls["chkROI"].value == 0);
}

bool SaveOptionsControlChanged(ControlModel& controls, const std::string& name) {
  if (name == "WaveletType") {
    const bool lossy = controls.Text("WaveletType") == "Daub 9/7";
    Choose(controls, lossy ? "OpLossy(0)" : "OpLossy(1)");
    SaveOptionsControlChanged(controls, lossy ? "OpLossy(0)" : "OpLossy(1)");
    return true;
  }
  if (name == "OpLossy(1)" && controls[name].value) {
    if (controls["OpCompress(0)"].value) Choose(controls, "OpCompress(2)");
    controls.SetEnabled("OpCompress(0)", false);
    return true;
  }
  if (name == "OpLossy(0)" && controls[name].value) {
    controls.SetEnabled("OpCompress(0)", true);
    return true;
  }
  if (name.rfind("OpModel(", 0) == 0) {
    Choose(controls, "OpCompress(2)");
    return true;
  }
  if (name == "chkROI") {
    // A distortion target and a region of interest exclude each other.
    if (controls["chkROI"].value) {
      if (controls["OpPSNR"].value) Choose(controls, "OpCompRatio");
      controls.SetEnabled("OpPSNR", false);
    } else {
      controls.SetEnabled("OpPSNR", true);
    }
    return true;
  }
  return false;
}

SaveOptionsCheck ApplySaveOptions(ControlModel& controls, FrameSettings& settings) {
  const bool lossy = controls["OpLossy(0)"].value != 0;
  const bool psnr = controls["OpPSNR"].value != 0;
  const double target = Val(controls.Text(psnr ? "txtPSNR" : "txtBitRate"));
  const std::string targetBox = psnr ? "txtPSNR" : "txtBitRate";
  if (lossy && target <= 0) return {psnr ? 81 : 82, targetBox};
  if (!lossy && target < 0) return {psnr ? 83 : 84, targetBox};
  if (controls["chkROI"].value) {
    const double fraction = Val(controls.Text("txtROIFraction"));
    if (fraction <= 0) return {86, "txtROIFraction"};
    if (fraction > 1) return {87, "txtROIFraction"};
  }
  const double quality = Val(controls.Text("txtJPEGQuality"));
  if (!(quality >= 1 && quality <= 99)) return {-1, "txtJPEGQuality"};
  settings.captions["JPEGCompression"] = controls.Text("txtJPEGQuality");
  settings.captions["OpTIFF"] = std::to_string(Chosen(controls, "OpTIFF", 8));
  // The coder's eleven codes.
  std::array<float, 11>& c = settings.wavCompCodes;
  c[0] = static_cast<float>(Val(controls.Text("txtLevels")));
  c[1] = psnr ? 1.0f : 0.0f;
  c[2] = static_cast<float>(target);
  c[3] = static_cast<float>(Chosen(controls, "OpCompress", 3));
  if (c[3] == 2.0f) c[4] = controls["OpModel(1)"].value ? 1.0f : 0.0f;
  c[5] = static_cast<float>(Chosen(controls, "OpScanOrder", 4));
  c[6] = lossy ? 0.0f : 1.0f;
  c[7] = controls["chkROI"].value ? 1.0f : 0.0f;
  c[8] = static_cast<float>(Val(controls.Text("txtROIFraction")));
  const auto at = std::find(Wavelets().begin(), Wavelets().end(), controls.Text("WaveletType"));
  c[9] = static_cast<float>(at == Wavelets().end() ? 1 : (at - Wavelets().begin()) + 1);
  c[10] = controls["chkDisplayImage"].value ? 1.0f : 0.0f;
  settings.captions["WaveletType2D"] = controls.Text("WaveletType");
  Keep(controls, settings);
  return {};
}

void CancelSaveOptions(ControlModel& controls, FrameSettings& settings) {
  Keep(controls, settings);
  const auto quality = settings.captions.find("JPEGCompression");
  settings.saveOptions["txtJPEGQuality"] = quality == settings.captions.end() ? "70" : quality->second;
  const auto tiff = settings.captions.find("OpTIFF");
  const int chosen = std::clamp(static_cast<int>(Val(tiff == settings.captions.end() ? "0" : tiff->second)), 0, 7);
  for (int k = 0; k < 8; ++k) settings.saveOptions[IndexedName("OpTIFF", k)] = k == chosen ? "1" : "0";
  OpenSaveOptions(controls, settings);
}

ImageSaveChoices SaveChoicesOf(const FrameSettings& settings) {
  ImageSaveChoices out;
  const auto caption = [&](const char* name) {
    const auto it = settings.captions.find(name);
    return it == settings.captions.end() ? std::string() : it->second;
  };
  if (!caption("JPEGCompression").empty())
    out.jpegQuality = std::clamp(static_cast<int>(Val(caption("JPEGCompression"))), 1, 99);
  out.tiffCompression = std::clamp(static_cast<int>(Val(caption("OpTIFF"))), 0, 7);
  const auto ticked = [&](const char* name) {
    const auto it = settings.saveOptions.find(name);
    return it != settings.saveOptions.end() && it->second == "1";
  };
  out.greyScale = ticked("chkGreyScale");
  out.progressive = ticked("chkProgressive");
  out.interlaced = ticked("chkPNGInterlaced");
  return out;
}

}  // namespace keldo
