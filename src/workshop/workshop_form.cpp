#include "workshop/workshop_form.h"

#include <cmath>
#include <filesystem>

#include "common/file_io.h"
#include "common/number_text.h"
#include "kit/form_context.h"
#include "kit/kb2_file.h"
#include "kit/menu_table.h"
#include "platform/file_dialog.h"
#include "platform/services.h"
#include "wavelet/wdr_denoise.h"
#include "wavelet/wdr_scan.h"
#include "wavelet/workshop_entropy.h"
#include "workshop/workshop_menu.h"

namespace keldo::workshop {
namespace {

constexpr const char* kTransformFilter = "2-Dim data (*.kb2)|*.kb2";
constexpr const char* kCompressedFilter = "Compressed transforms (*.wic)|*.wic";
constexpr const char* kScanLabels[] = {"ZigZag", "Static Tree", "Dynamic Tree (Parent/Child)",
                                       "Dynamic Tree  (context predict)"};

// The side of the test aids' scan order, and its levels.
constexpr int kTestSide = 8;
constexpr int kTestLevels = 2;

// A grid of visit numbers, row y a line, for the test aids.
std::string VisitGrid(const std::vector<std::int32_t>& order, int side) {
  std::vector<int> visit(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), 0);
  for (std::size_t k = 0; k < order.size(); ++k)
    if (order[k] >= 0 && order[k] < static_cast<std::int32_t>(visit.size()))
      visit[static_cast<std::size_t>(order[k])] = static_cast<int>(k) + 1;
  std::string out;
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const std::string number = std::to_string(visit[static_cast<std::size_t>(y) * side + x]);
      out += std::string(4 - std::min<std::size_t>(number.size(), 3), ' ') + number;
    }
    out += "\r\n";
  }
  return out;
}

}  // namespace

WorkshopForm::WorkshopForm(FormContext& context) : Form(context, FormKind::Workshop) {
  BuildControls();
  BindCommands();
  AddCommonFileHandlers();
  DisableItemsWithoutHandler();
}

void WorkshopForm::BuildControls() {
  SetMenu(BuildMenu(WorkshopMenuBar(), controls_));
  const auto button = [this](const char* name, const char* caption, const char* tip) {
    controls_.Add(name, ControlKind::Button, caption).tip = tip;
  };
  button("cmdEncode", "Encode Transform", "Codes a stored transform into a .wic file.");
  button("cmdDecode", "Decode Transform", "Decodes a .wic file into a matrix beside it (_quant.kb2).");
  button("cmdDenoise", "Denoise Transform", "Denoises a stored transform.");
  button("cmdScanOrder", "Create Scan Order", "Prints the scan order of an 8 by 8 transform of two levels.");
  button("cmdZigZag", "Zig Zag", "Prints the zigzag of an 8 by 8 block.");
  button("cmdLookUp", "Create Lookup Table", "Prints the weights by which symbols and bits are packed.");
  button("cmdArithCode", "Arithmetic CoDec", "Codes and decodes a string with the arithmetic coder.");
  button("cmdHelp", "Help", "Help on the workshop.");
  controls_.Add("txtLevels", ControlKind::Text, "5").tip = "Levels of the stored transform.";
  controls_.Add("txtBitRate", ControlKind::Text, "0.5").tip = "The bit rate to reach, bits per pixel.";
  controls_.Add("txtPSNR", ControlKind::Text, "30").tip = "The PSNR to reach, in dB.";
  controls_.Add("txtDNLevels", ControlKind::Text, "5");
  controls_.Add("txtDepth", ControlKind::Text, "2");
  controls_.Add("txtDescents", ControlKind::Text, "1");
  controls_.Add("txtDNThresh", ControlKind::Text, "10");
  controls_.Add("chkRefine", ControlKind::Check, "Refine values");
  controls_.Add("chkShrinkage", ControlKind::Check, "Perform shrinkage");
  controls_.AddOption("OpLossy(0)", "Lossy", "OpLossy", true);
  controls_.AddOption("OpLossy(1)", "Lossless", "OpLossy");
  const char* stages[] = {"Binary", "Huffman", "Arithmetic:"};
  for (int k = 0; k < 3; ++k) controls_.AddOption(IndexedName("OpCompress", k), stages[k], "OpCompress", k == 2);
  controls_.AddOption("OpModel(0)", "0-Order", "OpModel", true);
  controls_.AddOption("OpModel(1)", "1/0-Mixed Orders", "OpModel");
  controls_.AddOption("OpPSNR", "Achieve PSNR. Target value:", "OpTarget");
  controls_.AddOption("OpCompRatio", "Achieve compression rate.  Target (bpp):", "OpTarget", true);
  for (int k = 0; k < 4; ++k) controls_.AddOption(IndexedName("OpScan", k), kScanLabels[k], "OpScan", k == 0);
  controls_.Add("TxtData", ControlKind::Text, "");
}

void WorkshopForm::BindCommands() {
  OnButton("cmdEncode", [this](int) { RunPaced([this] { EncodeCommand(); }); });
  OnButton("cmdDecode", [this](int) { RunPaced([this] { DecodeCommand(); }); });
  OnButton("cmdDenoise", [this](int) { RunPaced([this] { DenoiseCommand(); }); });
  OnButton("cmdScanOrder", [this](int) { ScanOrderCommand(); });
  OnButton("cmdZigZag", [this](int) { ZigZagCommand(); });
  OnButton("cmdLookUp", [this](int) { LookUpCommand(); });
  OnButton("cmdArithCode", [this](int) { ArithmeticCoDecCommand(); });
  OnButton("cmdHelp", [this](int) { context_.GetHelp("Compress.HLP", ""); });
  OnMenu("mnuHelpWorkshop", [this](int) { context_.GetHelp("Compress.HLP", ""); });
  OnMenu("mnuOpenForm", [this](int) { context_.OpenTheForm(); });
}

int WorkshopForm::Chosen(const std::string& base, int count) const {
  for (int k = 0; k < count; ++k)
    if (const Control* c = controls_.Find(IndexedName(base, k)); c && c->value) return k;
  return 0;
}

void WorkshopForm::Report(const std::string& text) { controls_.SetText("TxtData", text); }

void WorkshopForm::ControlChanged(const std::string& name) {
  if (name == "OpLossy(0)" || name == "OpLossy(1)") LossyChanged();
  // A source model is a choice of the arithmetic coder.
  if ((name == "OpModel(0)" || name == "OpModel(1)") && Chosen("OpCompress", 3) != 2)
    controls_.SetFromUser("OpCompress(2)", "1");
}

void WorkshopForm::LossyChanged() {
  const bool lossless = controls_["OpLossy(1)"].value != 0;
  controls_.SetEnabled("OpCompress(0)", !lossless);
  controls_.SetEnabled("OpCompress(1)", !lossless);
  controls_.SetEnabled("OpPSNR", !lossless);
  controls_.SetEnabled("txtPSNR", !lossless);
  if (lossless) {
    controls_.SetFromUser("OpCompress(2)", "1");
    controls_.SetFromUser("OpCompRatio", "1");
    controls_.SetText("txtBitRate", "");
    controls_.SetText("txtPSNR", "");
  }
  Touch();
}

// ---------------------------------------------------------------- coding

bool WorkshopForm::GetTestData(const std::string& levelsBox, int& levels) {
  const auto chosen = context_.services().fileDialog->Run({platform::FileDialogMode::Open, "Transform data",
                                                          kTransformFilter, 1, platform::kFlagFileMustExist, "",
                                                          context_.DialogFolder(kFolderData, "Data")});
  if (!chosen) return false;
  context_.RememberDialogFolder(kFolderData, chosen->path);
  std::vector<std::uint8_t> bytes;
  std::optional<Kb2Record> record;
  if (ReadFileBytes(chosen->path, bytes)) record = ReadKb2(bytes);
  if (!record) {
    context_.ShowError(20);
    return false;
  }
  const int n = record->points;
  const int most = wavelet::HighestLevel(n);
  const double typed = compiler_.VALU(controls_.Text(levelsBox));
  if (most == 0 || !(typed >= 1) || typed > most) {
    context_.ShowError(21);
    return false;
  }
  levels = static_cast<int>(std::nearbyint(typed));
  // The matrix's first n rows of n samples; the grid's last row and column
  // lie outside the transform.
  transform_.assign(static_cast<std::size_t>(n) * static_cast<std::size_t>(n), 0.0f);
  const auto stride = static_cast<std::size_t>(n) + 1;
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x)
      transform_[static_cast<std::size_t>(y) * n + x] = record->samples[static_cast<std::size_t>(y) * stride + x];
  n_ = n;
  const std::string title = std::filesystem::path(chosen->path).filename().string();
  baseName_ = title.size() > 4 ? title.substr(0, title.size() - 4) : title;
  return true;
}

void WorkshopForm::EncodeCommand() {
  wavelet::WdrEncodeOptions options;
  options.lossless = controls_["OpLossy(1)"].value != 0;
  options.stopKind = controls_["OpPSNR"].value != 0 ? wavelet::WdrStopKind::Psnr : wavelet::WdrStopKind::BitRate;
  const std::string targetText = controls_.Text(options.stopKind == wavelet::WdrStopKind::Psnr ? "txtPSNR" : "txtBitRate");
  const double target = targetText.empty() && options.lossless ? 0.0 : compiler_.VALU(targetText);
  options.target = std::isfinite(target) ? target : -1.0;
  // The target is checked before the file is asked for.
  const bool psnr = options.stopKind == wavelet::WdrStopKind::Psnr;
  if (!options.lossless && !(options.target > 0)) {
    context_.ShowError(psnr ? 81 : 82);
    return;
  }
  if (options.lossless && !(options.target >= 0)) {
    context_.ShowError(psnr ? 83 : 84);
    return;
  }
  Report("");
  int levels = 0;
  if (!GetTestData("txtLevels", levels)) return;
  options.levels = levels;
  options.scanMode = Chosen("OpScan", 4) + 1;
  const int stage = Chosen("OpCompress", 3);
  options.stage = stage == 0 ? wavelet::WdrEntropyStage::Binary
                  : stage == 1 ? wavelet::WdrEntropyStage::Huffman
                               : wavelet::WdrEntropyStage::Arithmetic;
  options.model = Chosen("OpModel", 2) == 1 ? wavelet::WdrSourceModel::MixedOrders : wavelet::WdrSourceModel::ZeroOrder;
  context_.ShowBusy();
  const wavelet::WdrEncodeResult result = wavelet::EncodeTransform(transform_, n_, options);
  context_.ShowIdle();
  if (result.message != 0) {
    context_.ShowError(result.message);
    return;
  }
  if (result.status != wavelet::WdrEncodeStatus::Ok) {
    context_.ShowError(32);
    return;
  }
  // Small test data take a name of their own.
  const std::string name = n_ >= 10 ? baseName_ + ".wic" : "Test" + std::to_string(n_) + ".wic";
  const std::string path = (std::filesystem::path(context_.CompressFolder()) / name).string();
  if (!WriteFileBytes(path, wavelet::WriteWicFile(result.file))) {
    context_.ShowError(32);
    return;
  }
  Report(wavelet::WdrReportText(result.report) + "Compressed data saved in file:  " + path + "\r\n");
}

void WorkshopForm::DecodeCommand() {
  const auto chosen = context_.services().fileDialog->Run({platform::FileDialogMode::Open, "Compressed transform",
                                                          kCompressedFilter, 1, platform::kFlagFileMustExist, "",
                                                          context_.CompressFolder()});
  if (!chosen) return;
  std::vector<std::uint8_t> bytes;
  std::optional<wavelet::WdrDecodedFile> decoded;
  context_.ShowBusy();
  if (ReadFileBytes(chosen->path, bytes)) decoded = wavelet::DecodeWicFile(bytes, false);
  context_.ShowIdle();
  if (!decoded) {
    context_.ShowError(85);
    return;
  }
  decoded_ = std::move(decoded->plane);
  const int n = decoded_.width;
  std::string path = chosen->path;
  if (path.size() > 4) path.resize(path.size() - 4);
  path += "_quant.kb2";
  if (!SaveQuantizationMatrix(decoded_, path)) return;
  std::string text = "Decoded matrix saved in file:  " + path + "\r\n";
  // The distortion against the transform last read, when it is that one;
  // none for an exact decoding.
  if (n == n_ && transform_.size() == decoded_.v.size()) {
    double d = 0.0;
    for (std::size_t k = 0; k < transform_.size(); ++k) {
      const double e = (static_cast<double>(transform_[k]) - decoded_.v[k]) / n;
      d += e * e;
    }
    if (d > 0) text += "Distortion (PSNR): " + PlainNumber(wavelet::FPSNR(d)) + "\r\n";
  }
  Report(text);
}

bool WorkshopForm::SaveQuantizationMatrix(const wavelet::ImagePlane& matrix, const std::string& path) {
  const int n = matrix.width;
  const auto stride = static_cast<std::size_t>(n) + 1;
  Kb2Record record;
  record.points = n;
  record.left = 0.0f;
  record.right = static_cast<float>(n);
  record.samples.assign(stride * stride, 0.0f);
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) record.samples[static_cast<std::size_t>(y) * stride + x] = matrix.At(x, y);
  if (WriteFileBytes(path, WriteKb2(record))) return true;
  context_.ShowError(32);
  return false;
}

void WorkshopForm::DenoiseCommand() {
  wavelet::WdrDenoiseOptions options;
  std::string thresholdText = controls_.Text("txtDNThresh");
  options.floor = compiler_.VALU(thresholdText);
  if (thresholdText == "N!N" || !std::isfinite(options.floor)) {
    context_.ShowError(10);
    return;
  }
  if (!(options.floor > 0)) {
    context_.ShowError(11);
    return;
  }
  const double depth = compiler_.VALU(controls_.Text("txtDepth"));
  const double descents = compiler_.VALU(controls_.Text("txtDescents"));
  if (!(depth >= 1 && depth <= 32) || !(descents >= 0 && descents <= 32)) {
    context_.ShowError(21);
    return;
  }
  options.depth = static_cast<int>(std::nearbyint(depth));
  options.descents = static_cast<int>(std::nearbyint(descents));
  options.refine = controls_["chkRefine"].value != 0;
  options.shrink = controls_["chkShrinkage"].value != 0;
  Report("");
  if (!GetTestData("txtDNLevels", options.levels)) return;
  wavelet::ImagePlane plane(n_, n_);
  plane.v = transform_;
  context_.ShowBusy();
  bool ok = false;
  wavelet::WdrDenoiseResult result = wavelet::ArrayDeNoiseEncode(plane, options, ok);
  context_.ShowIdle();
  if (!ok) {
    context_.ShowError(21);
    return;
  }
  decoded_ = std::move(result.plane);
  const std::string path = (std::filesystem::path(context_.CompressFolder()) / (baseName_ + "_quant.kb2")).string();
  if (!SaveQuantizationMatrix(decoded_, path)) return;
  Report("Number of Completed Passes: " + std::to_string(result.passes) + "\r\nThreshold: " +
         PlainNumber(result.lastThreshold) + "\r\nNumber of significant values: " + std::to_string(result.significant) +
         "\r\nValues kept in trees of " + std::to_string(options.depth) + " levels: " + std::to_string(result.kept) +
         "\r\nDenoised matrix saved in file:  " + path + "\r\n");
}

// ------------------------------------------------------------ test aids

void WorkshopForm::ScanOrderCommand() {
  const int mode = Chosen("OpScan", 4) + 1;
  // The static base of the chosen mode: the subband order for 1 and 3, the
  // tree order for 2 and 4.
  const wavelet::WdrBaseOrder base =
      mode == 2 || mode == 4 ? wavelet::WdrBaseOrder::Tree : wavelet::WdrBaseOrder::Subband;
  wavelet::ScanOrder order;
  wavelet::CreateScanOrder(order, kTestLevels, kTestSide, base);
  Report("Testing Scan Order, N =" + std::to_string(kTestSide) + ", L =" + std::to_string(kTestLevels) + "\r\n" +
         VisitGrid(wavelet::WalkScanOrder(order), kTestSide));
}

void WorkshopForm::ZigZagCommand() {
  const std::vector<std::int32_t> links = wavelet::GetZigZag(kTestSide - 1);
  std::vector<std::int32_t> walk;
  std::int32_t p = 0;
  for (std::size_t k = 0; k < links.size(); ++k) {
    walk.push_back(p);
    if (links[static_cast<std::size_t>(p)] == p) break;
    p = links[static_cast<std::size_t>(p)];
  }
  Report("Zig Zag, N =" + std::to_string(kTestSide) + "\r\n" + VisitGrid(walk, kTestSide));
}

void WorkshopForm::LookUpCommand() {
  const wavelet::PackingLookupTables tables = wavelet::CreateLookupTable();
  std::string text = "Symbol weights (place 0 to 3):\r\n";
  const char symbols[] = {'0', '1', '+', '-'};
  for (int s = 0; s < 4; ++s) {
    text += std::string(1, symbols[s]) + ":";
    for (int place = 0; place < 4; ++place) text += " " + std::to_string(tables.symbolWeight[place][s]);
    text += "\r\n";
  }
  text += "Bit weights (place 0 to 7):\r\n";
  for (int b = 0; b < 2; ++b) {
    text += std::to_string(b) + ":";
    for (int place = 0; place < 8; ++place) text += " " + std::to_string(tables.bitWeight[place][b]);
    text += "\r\n";
  }
  Report(text);
}

void WorkshopForm::ArithmeticCoDecCommand() {
  // A string of the significance alphabet through the coder and back.
  const std::string text = "0+1-00+10-0+++1-0001+-";
  const std::vector<std::uint8_t> coded = wavelet::TestArithEncode(text, wavelet::WorkshopAlphabet::Significance);
  const wavelet::ArithDecodedText back =
      wavelet::TestArithDecode(coded, wavelet::WorkshopAlphabet::Significance, text.size() + 1);
  Report("Arithmetic CoDec\r\nInput:  " + text + "\r\nBytes:  " + std::to_string(coded.size()) +
         "\r\nDecoded:  " + back.symbols + "\r\n" + (back.symbols == text ? "Decoded as coded." : "Decoding differs.") +
         "\r\n");
}

void WorkshopForm::FormulaError(int number) { context_.ShowError(number); }

platform::Random* WorkshopForm::FormulaRandom() { return context_.services().random; }

std::unique_ptr<Form> MakeWorkshopForm(FormContext& context) { return std::make_unique<WorkshopForm>(context); }

}  // namespace keldo::workshop
