// The files of the two-dimensional form: .kd2 forms, .kb2 data, PGM images
// read and written here, and the other picture formats through the imaging
// service.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "common/file_io.h"
#include "common/text.h"
#include "form2d/graph2_form.h"
#include "kit/save_options_box.h"
#include "form2d/image_files.h"
#include "formula/formula_text.h"
#include "kit/form_context.h"
#include "kit/form_file.h"
#include "kit/settings.h"
#include "kit/typed_forms.h"
#include "platform/file_dialog.h"
#include "platform/imaging.h"
#include "platform/services.h"

namespace keldo::form2d {
namespace {

// Save, and the item of the graph images, once the form has a file of its own.
const FormFileKind kFormFile{"(*.kd2)|*.kd2", ".kd2", {"mnuSaveForm", "mnuSaveGraphImage"}};
constexpr const char* kSaveDataFilter = "Binary data file (*.kb2)|*.kb2";
constexpr const char* kLoadDataFilter = "Binary data files (*.kb2)|*.kb2";
// Types 2 to 9: the filter index plus 1.
constexpr const char* kSaveImageFilter =
    "PGM|*.pgm|BMP|*.bmp|WC2|*.wc2|DIB|*.dib|JPEG|*.jpg|PCX|*.pcx|PNG|*.png|TIFF|*.tif";
constexpr const char* kLoadImageFilter =
    "PGM|*.pgm|BMP|*.bmp|WC2|*wc2|DIB|*.dib|JPEG|*.jpg|PCX|*.pcx|PNG|*.png|TIFF|*.tif";
constexpr const char* kImageFilterSetting = "ImageFilterIndex";

// Text in a file is one byte per character; the controls hold UTF-8.
std::string ToFile(const std::string& text) { return formula::ToFormulaText(text); }
std::string FromFile(const std::string& text) { return formula::FromAnsiText(text); }

std::string Tail3(const std::string& path) { return ToUpper(path.size() >= 3 ? path.substr(path.size() - 3) : path); }

ColorMethod ColorMethodOf(char c) {
  return c == 'C' ? kColor : c == 'T' ? kGreyPlusMinus : kGrey;
}

Intensity IntensityOf(char c) { return c == 'L' ? kLog : c == 'W' ? kLinLog : kLinear; }

struct ChosenGraphFile {
  std::string path;
  int type = kFileData;
};

// The dialog of a data file or, with `image`, of a picture: the image
// dialogs start at the last image filter, shared through the frame, and
// number file types from the filter index plus 1. The folder is remembered.
std::optional<ChosenGraphFile> GraphFileDialog(FormContext& context, bool image, bool save) {
  const int folder = image ? kFolderImages : kFolderData;
  std::string& filter = context.settings().captions[kImageFilterSetting];
  const int lastFilter = std::clamp(filter.empty() ? 1 : std::atoi(filter.c_str()), 1, 8);
  const char* title = save ? (image ? "Save image" : "Save graph") : (image ? "Open image file" : "Open data file");
  const char* filters = image ? (save ? kSaveImageFilter : kLoadImageFilter) : (save ? kSaveDataFilter : kLoadDataFilter);
  const auto chosen = context.services().fileDialog->Run(
      {save ? platform::FileDialogMode::Save : platform::FileDialogMode::Open, title, filters, image ? lastFilter : 1,
       save ? platform::kFlagsSaveDialog : platform::kFlagFileMustExist, save && !image ? ".kb2" : "",
       context.DialogFolder(folder, image ? "Images" : "Data")});
  if (!chosen) return std::nullopt;
  if (image) filter = std::to_string(chosen->filterIndex);
  context.RememberDialogFolder(folder, chosen->path);
  return ChosenGraphFile{chosen->path, image ? chosen->filterIndex + 1 : kFileData};
}

}  // namespace

int FileTypeOfName(const std::string& path) {
  const std::string tail = Tail3(path);
  if (tail == "KB2") return kFileData;
  if (tail == "PGM") return kFilePgm;
  if (tail == "WC2") return kFileWc2;
  return kFileBmp;  // every other picture goes through the imaging service
}

// ------------------------------------------------------------- form files

void Graph2Form::SaveTheForm(int asKnown) {
  SaveTheFormFile(*this, fileName_, asKnown == 0, kFormFile, [this](const std::string& p) { return SaveFormTo(p); });
}

bool Graph2Form::SaveFormTo(const std::string& path) {
  Kd2Record r;
  r.plotLeft = plotLeft_;
  r.plotRight = plotRight_;
  r.plotLow = plotLow_;
  r.plotHigh = plotHigh_;
  r.formulaLeft = formulaLeft_;
  r.formulaRight = formulaRight_;
  r.points = n_;
  r.view = viewSize_;
  r.selected = static_cast<std::int16_t>(popUpGraph_);
  for (int g = 0; g < graphCount_; ++g) {
    const GraphLook& look = looks_[static_cast<std::size_t>(g)];
    StoredImageGraph s;
    s.left = GraphLeft(g);
    s.right = GraphRight(g);
    s.step = GraphStep(g);
    s.max = GraphMax(g);
    s.viewXLeft = look.viewXLeft;
    s.viewXRight = look.viewXRight;
    s.viewYLow = look.viewYLow;
    s.viewYHigh = look.viewYHigh;
    s.colorMethod = look.colorMethod;
    s.intensity = look.intensity;
    s.threshold = look.threshold;
    s.drawWidths = static_cast<std::int16_t>(look.drawWidths);
    s.caption = ToFile(look.caption);
    s.thresholdText = ToFile(look.thresholdText);
    s.samples = PackedSamples(g);
    r.graphs.push_back(std::move(s));
    r.linReg.push_back(static_cast<std::int16_t>(look.linReg));
  }
  r.fileName = ToFile(path);
  r.history = formulaBox_.PlottedForFile();
  r.sideBoxKey = SideBoxKey();
  r.cursorCol = cursorCol_;
  r.cursorRow = cursorRow_;
  r.remarks = ToFile(controls_.Text("Remarks"));
  return WriteFileBytes(path, WriteKd2(r));
}

bool Graph2Form::LoadForm(const std::string& path, const std::string&) {
  context_.ShowBusy();
  std::vector<std::uint8_t> bytes;
  if (!ReadFileBytes(path, bytes)) return false;
  const std::optional<Kd2Record> record = ReadKd2(bytes);
  if (!record) return false;
  const Kd2Record& r = *record;
  plotLeft_ = r.plotLeft;
  plotRight_ = r.plotRight;
  plotLow_ = r.plotLow;
  plotHigh_ = r.plotHigh;
  formulaLeft_ = r.formulaLeft;
  formulaRight_ = r.formulaRight;
  SetPoints(r.points);
  viewSize_ = r.view == 'L' ? 'L' : 'S';
  const int count = static_cast<int>(r.graphs.size());
  popUpGraph_ = std::clamp<int>(r.selected, 0, kMaxGraphs - 1);
  const std::size_t side = static_cast<std::size_t>(n_) + 1;
  for (int g = 0; g < count; ++g) {
    const StoredImageGraph& s = r.graphs[static_cast<std::size_t>(g)];
    float* v = store_.Row(g);
    for (std::size_t i = 0; i < side; ++i) std::copy_n(s.samples.begin() + static_cast<std::ptrdiff_t>(i * side), side, v + i * Stride());
    const auto k = static_cast<std::size_t>(g);
    store_.a[k] = s.left;
    store_.b[k] = s.right;
    store_.h[k] = s.step;
    store_.peak[k] = s.max;
    GraphLook& look = looks_[k];
    look.viewXLeft = s.viewXLeft;
    look.viewXRight = s.viewXRight;
    look.viewYLow = s.viewYLow;
    look.viewYHigh = s.viewYHigh;
    look.colorMethod = ColorMethodOf(s.colorMethod);
    look.intensity = IntensityOf(s.intensity);
    look.threshold = s.threshold;
    // A zoom factor is a power of two from 1 up.
    look.drawWidths = s.drawWidths >= 1 && s.drawWidths <= 4096 && (s.drawWidths & (s.drawWidths - 1)) == 0 ? s.drawWidths : 1;
    look.caption = FromFile(s.caption);
    look.thresholdText = FromFile(s.thresholdText);
  }
  graphCount_ = count;
  formulaBox_.UpdateFromFile(r.history);
  if (r.sections > 1 && !r.sideBoxKey.empty()) RestoreSideBoxFromKey(r.sideBoxKey);
  if (r.sections > 2) {
    cursorCol_ = std::clamp<int>(r.cursorCol, 0, n_);
    cursorRow_ = std::clamp<int>(r.cursorRow, 0, n_);
    controls_.SetText("Remarks", FromFile(r.remarks));
  }
  if (r.sections > 3)
    for (int g = 0; g < count; ++g) looks_[static_cast<std::size_t>(g)].linReg = r.linReg[static_cast<std::size_t>(g)];
  fileName_ = path;
  // The picture is rebuilt by the view change from the opposite letter.
  const char stored = viewSize_;
  viewSize_ = stored == 'L' ? 'S' : 'L';
  if (stored == 'L') ChangeToLargeGraph(false);
  else ChangeToSmallGraphs();
  for (graphCount_ = 0; graphCount_ <= count; ++graphCount_) ResetMenu();
  graphCount_ = count;
  controls_.SetEnabled("mnuSaveForm", true);
  controls_.SetEnabled("mnuSaveGraphImage", true);
  context_.ShowIdle();
  Touch();
  return true;
}

void Graph2Form::OpenTheForm() {
  const std::array<std::string, 3> params = quantParams_;
  if (auto* form = FormAs<Graph2Form>(context_.OpenTheForm())) form->SetQuantParams(params);
}

// ------------------------------------------------------ data and pictures

void Graph2Form::SaveTheGraph(int kind) {
  const std::optional<ChosenGraphFile> chosen = GraphFileDialog(context_, kind == 2, true);
  if (!chosen || popUpGraph_ >= graphCount_) return;
  SaveFunctionFile(chosen->path, popUpGraph_, chosen->type);
}

bool Graph2Form::SaveFunctionFile(const std::string& path, int g, int type) {
  if (g < 0 || g >= graphCount_) return false;
  if (type == kFileWc2) return SaveToWaveletCompressedFile(path, g);
  bool saved = false;
  context_.ShowBusy();
  if (type == kFileData) {
    Kb2Record r;
    r.points = n_;
    r.left = GraphLeft(g);
    r.right = GraphRight(g);
    r.colorMethod = looks_[static_cast<std::size_t>(g)].colorMethod;
    r.samples = PackedSamples(g);
    saved = WriteFileBytes(path, WriteKb2(r));
  } else {
    saved = SaveImageFile2(path, g, type);
  }
  context_.ShowIdle();
  if (!saved) context_.ShowError(32);
  return saved;
}

std::vector<std::uint8_t> Graph2Form::ImageBytesOf(int g) const { return ImageBytes(Image(g)); }

std::vector<float> Graph2Form::PackedSamples(int g) const {
  const std::size_t side = static_cast<std::size_t>(n_) + 1;
  std::vector<float> out(side * side);
  for (std::size_t i = 0; i < side; ++i)
    std::copy_n(GraphValues(g) + i * Stride(), side, out.begin() + static_cast<std::ptrdiff_t>(i * side));
  return out;
}

bool Graph2Form::SaveImageFile2(const std::string& path, int g, int type) {
  const std::vector<std::uint8_t> bytes = ImageBytesOf(g);
  if (type == kFilePgm) return WriteFileBytes(path, WritePgm(bytes, n_));
  // Every other format through the imaging service, with the frame's
  // options: a grey picture, row 0 at the bottom.
  platform::RgbImage picture(n_, n_);
  for (int r = 0; r < n_; ++r)
    for (int c = 0; c < n_; ++c) {
      const int level = bytes[static_cast<std::size_t>(r) * static_cast<std::size_t>(n_) + static_cast<std::size_t>(c)];
      picture.Set(c, n_ - 1 - r, platform::MakeRgb(level, level, level));
    }
  const ImageSaveChoices choices = SaveChoicesOf(context_.settings());
  platform::ImageSaveOptions options;
  options.jpegQuality = choices.jpegQuality;
  options.tiffCompression = choices.tiffCompression;
  options.greyScale = choices.greyScale;
  options.progressive = choices.progressive;
  options.interlaced = choices.interlaced;
  // The picture is written beside the target and renamed onto it, so that
  // a failed save leaves an older file whole.
  const std::string temporary = TemporaryPathFor(path) + "." + ToLower(Tail3(path));
  if (!context_.services().imaging->Save(temporary, picture, options)) {
    std::remove(temporary.c_str());
    return false;
  }
  if (std::rename(temporary.c_str(), path.c_str()) != 0) {
    std::remove(temporary.c_str());
    return false;
  }
  return true;
}

void Graph2Form::LoadTheGraph(int kind) {
  const std::optional<ChosenGraphFile> chosen = GraphFileDialog(context_, kind == 2, false);
  if (chosen) LoadFunction(chosen->path, chosen->type);
}

bool Graph2Form::LoadDataFile(const std::string& path, const std::string&) {
  return LoadFunction(path, FileTypeOfName(path));
}

bool Graph2Form::LoadFunction(const std::string& path, int type) {
  if (type == kFileWc2) return GetWaveletCompressedFile(path);
  int points = 0;
  std::vector<float> values;
  float left = -0.5f, right = 0.5f;
  ColorMethod method = kGrey;
  context_.ShowBusy();
  std::vector<std::uint8_t> bytes;
  if (type == kFileData || type == kFilePgm) {
    if (!ReadFileBytes(path, bytes)) {
      context_.ShowError(20);
      return false;
    }
    if (type == kFileData) {
      std::optional<Kb2Record> r = ReadKb2(bytes);
      if (!r) {
        context_.ShowError(20);
        return false;
      }
      points = r->points;
      left = r->left;
      right = r->right;
      method = ColorMethodOf(r->colorMethod);
      values = std::move(r->samples);
    } else {
      std::optional<PgmImage> p = ReadPgm(bytes);
      if (!p) {
        context_.ShowError(20);
        return false;
      }
      points = p->points;
      values = std::move(p->samples);
    }
  } else {
    std::optional<platform::RgbImage> picture = context_.services().imaging->Load(path);
    if (!picture || picture->Empty()) {
      context_.ShowError(20);
      return false;
    }
    if (picture->width != picture->height) {
      // Such a picture belongs to the image processor: a new one takes the
      // file; this form stays as it is.
      context_.ShowIdle();
      if (ImageFileReceiver* processor = NewFormFor<ImageFileReceiver>(context_, FormKind::ImageProcessor))
        processor->LoadImageFile(path);
      return false;
    }
    std::optional<LoadedImage> loaded = SamplesOfPicture(*picture);
    if (!loaded) {
      context_.ShowError(20);
      return false;
    }
    points = loaded->points;
    values = std::move(loaded->samples);
  }
  if (points != n_) {
    if (graphCount_ > 0) {
      // A graph of another side goes to a new form; this one stays as it is.
      Graph2Form* form = NewResultForm(points);
      if (!form) return false;
      form->SetPoints(points);
      return form->LoadFunction(path, type);
    }
    SetPoints(points);
    controls_.SetEnabled("mnuPasteGraph", false);
  }
  context_.ShowIdle();
  const float step = (right - left) / static_cast<float>(points);
  const int slot = std::min(graphCount_, kMaxGraphs - 1);
  looks_[static_cast<std::size_t>(slot)].colorMethod = method;
  Graph2Form* holder = DisplayFunction(points, values.data(), static_cast<std::size_t>(points) + 1, left, right, step);
  if (holder && holder != this) holder->SetGrColorMethod(holder->NumGraphsPlotted() - 1, method);
  return holder != nullptr;
}

}  // namespace keldo::form2d
