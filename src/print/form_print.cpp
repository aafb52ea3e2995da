#include "print/form_print.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

#include "common/file_io.h"
#include "kit/form.h"
#include "kit/form_context.h"
#include "print/graph_image.h"

namespace keldo::print {
namespace {

// The corners are given in inches of 1500 twips; a printer inch is 1440.
constexpr double kTwipsPerCornerUnit = 1500.0;
constexpr double kTwipsPerInch = 1440.0;
// The screen's pixels per inch, for the printed size of the captured form.
constexpr double kScreenDotsPerInch = 96.0;
// A picture cell of the captured form, when the picture has no side of its own.
constexpr int kCellWidth = 480;
constexpr int kCellHeight = 360;
constexpr double kCaptionPoints = 11.0;
constexpr int kFormFolder = 8;

const char* const kResultWord = "LabPrintForm";

void SetResult(Form& form, const std::string& word) { form.context().settings().captions[kResultWord] = word; }

// GetFormFileName: where the picture of the form goes.
std::optional<platform::FileDialogResult> GetFormFileName(Form& form) {
  FormContext& context = form.context();
  platform::FileDialogRequest request;
  request.mode = platform::FileDialogMode::Save;
  request.filter = "Bitmap files (*.bmp)|*.bmp|PNG files (*.png)|*.png|JPEG files (*.jpg)|*.jpg";
  request.defaultExtension = ".bmp";
  request.flags = platform::kFlagsSaveDialog;
  request.initialFolder = context.DialogFolder(kFormFolder, "LaTeX");
  auto chosen = context.services().fileDialog->Run(request);
  if (chosen) context.RememberDialogFolder(kFormFolder, chosen->path);
  return chosen;
}

// Saves through the imaging service into a temporary file of the same
// extension, renamed over the target once whole.
bool SavePicture(FormContext& context, const std::string& path, const platform::RgbImage& picture) {
  const std::filesystem::path target(path);
  const std::string temporary = TemporaryPathFor(path) + target.extension().string();
  if (!context.services().imaging->Save(temporary, picture, {})) {
    SafeKill2(temporary);
    return false;
  }
  std::error_code failed;
  std::filesystem::rename(temporary, target, failed);
  if (failed) SafeKill2(temporary);
  return !failed;
}

}  // namespace

platform::RgbImage CaptureForm(Form& form) {
  platform::RgbImage window = form.context().CaptureWindow(form);
  if (!window.Empty()) return window;
  const std::vector<Picture> pictures = form.Pictures();
  if (pictures.empty()) return {};
  int rows = 0, columns = 0, cellW = kCellWidth, cellH = kCellHeight;
  for (const Picture& p : pictures) {
    rows = std::max(rows, p.row + 1);
    columns = std::max(columns, p.column + 1);
    if (p.side > 0) cellW = cellH = std::max(p.side, 256);
  }
  platform::RgbImage whole(columns * cellW, rows * cellH, platform::kWhite);
  for (std::size_t k = 0; k < pictures.size(); ++k) {
    const auto surface = form.context().services().surfaces->Create(cellW, cellH);
    form.Paint(static_cast<int>(k), *surface);
    const platform::RgbImage cell = surface->Snapshot();
    for (int y = 0; y < std::min(cell.height, cellH); ++y)
      for (int x = 0; x < std::min(cell.width, cellW); ++x)
        whole.Set(pictures[k].column * cellW + x, pictures[k].row * cellH + y, cell.At(x, y));
  }
  return whole;
}

void PrintTheForm(Form& form, const std::string& destination, const ValueReader& readValue) {
  if (destination == "C" || destination.empty()) return;
  FormContext& context = form.context();
  ControlModel& c = form.controls();
  // Every field is read before anything is printed.
  // A form without the dialog's fields prints at an inch from the corner,
  // with its own caption.
  bool badTop = false, badLeft = false;
  const auto corner = [&](const char* name, bool& bad) {
    const double units = c.Has(name) ? readValue(c.Text(name), bad) : 1.0;
    return units * kTwipsPerCornerUnit / kTwipsPerInch;
  };
  const double top = corner("TopCorner", badTop);
  const double left = corner("LeftCorner", badLeft);
  const std::string caption = c.Has("txtFormCaption") ? c.Text("txtFormCaption") : form.Caption();
  const platform::RgbImage picture = CaptureForm(form);
  if (destination == "File") {
    const auto chosen = GetFormFileName(form);
    if (!chosen) return;
    if (picture.Empty() || !SavePicture(context, chosen->path, picture)) context.ShowError(32);
    return;
  }
  if (destination == "Clipboard") {
    if (!picture.Empty()) context.services().clipboard->SetImage(picture);
    return;
  }
  platform::Printer& printer = *context.services().printer;
  if (badTop || badLeft || top < 0.0 || left < 0.0 || picture.Empty() || (!printer.IsOpen() && !printer.Begin("KELDO"))) {
    context.ShowError(33);
    return;
  }
  const double width = picture.width / kScreenDotsPerInch, height = picture.height / kScreenDotsPerInch;
  printer.Picture(left, top, width, height, picture);
  printer.SetFont("Helvetica", kCaptionPoints);
  printer.Text(left, top + height + 1.6 * kCaptionPoints / 72.0, caption);
  if (destination == "PE") printer.End();
}

bool PressPrintFormButton(Form& form, const std::string& name, const ValueReader& readValue) {
  ControlModel& c = form.controls();
  std::string word;
  if (name == "cmdCancel") {
    word = "C";
  } else if (name == "cmdEject") {
    platform::Printer& printer = *form.context().services().printer;
    if (printer.IsOpen()) printer.End();
    word = "C";
  } else if (name == "cmdPrint" || name == "cmdPrintAndEject") {
    if (c["OpClipboard"].value) word = "Clipboard";
    else if (c["OpFile"].value) word = "File";
    else word = name == "cmdPrint" ? "P" : "PE";
  } else {
    return false;
  }
  SetResult(form, word);
  PrintTheForm(form, word, readValue);
  form.Touch();
  return true;
}

}  // namespace keldo::print
