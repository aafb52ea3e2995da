// The files of the one-dimensional form: .kd1 forms, .kb1 and .kdt data.

#include <algorithm>
#include <filesystem>

#include "kit/form_context.h"
#include "kit/form_file.h"
#include "kit/typed_forms.h"
#include "common/file_io.h"
#include "common/number_text.h"
#include "common/text.h"
#include "form1d/graph1_form.h"
#include "formula/formula_text.h"

namespace keldo::form1d {
namespace {

// Save, once the form has a file of its own.
const FormFileKind kFormFile{"(*.kd1)|*.kd1", ".kd1", {"mnuOpenSave(4)"}};
constexpr const char* kSaveGraphFilter = "Binary data files (*.kb1)|*.kb1";
constexpr const char* kLoadGraphFilter = "KELDO data file (*.kb1)|*.kb1|VRN data file (*.kdt)|*.kdt";


// Text in a file is one byte per character; the controls hold UTF-8.
std::string ToFile(const std::string& text) { return formula::ToFormulaText(text); }
std::string FromFile(const std::string& text) { return formula::FromAnsiText(text); }

}  // namespace

// ------------------------------------------------------------- form files

void Graph1Form::SaveTheForm(int choice) {
  SaveTheFormFile(*this, fileName_, choice == 0, kFormFile, [this](const std::string& p) { return SaveFormTo(p); });
}

bool Graph1Form::SaveFormTo(const std::string& path) {
  FormFileRecord r;
  r.winLeft = winLeft_;
  r.winRight = winRight_;
  r.winBottom = winBottom_;
  r.winTop = winTop_;
  r.intervalLeft = intervalLeft_;
  r.intervalRight = intervalRight_;
  r.points = n_;
  for (int g = 0; g < graphCount_; ++g) {
    const double* v = GraphValues(g);
    r.graphs.push_back({GraphLeft(g), GraphRight(g), GraphStep(g), std::vector<double>(v, v + n_ + 1)});
  }
  r.fileName = ToFile(path);
  r.history = formulaBox_.PlottedForFile();
  r.sideBoxKey = SideBoxKey();
  r.dots = dots_ ? 'Y' : 'N';
  r.background = background_;
  r.tracePosition = trace_.Index();
  r.caption = ToFile(controls_.Text("GraphCaption"));
  r.remarks = ToFile(controls_.Text("Remarks(0)"));
  r.grid = grid_;
  r.printerText = ToFile(controls_.Text("PrinterSpecs"));
  for (int k = 0; k < 3; ++k) r.printLabels[k] = static_cast<std::int16_t>(controls_[IndexedName("chkPrLab", k)].value);
  r.colour = controls_["MonoOrColor(0)"].value ? 'Y' : 'N';
  return WriteFileBytes(path, WriteFormFile(r));
}

bool Graph1Form::LoadForm(const std::string& path, const std::string&) {
  context_.ShowBusy();
  std::vector<std::uint8_t> bytes;
  if (!ReadFileBytes(path, bytes)) return false;
  const std::optional<FormFileRecord> record = ReadFormFile(bytes);
  if (!record) return false;
  ReadFormRecord(*record);
  fileName_ = path;
  SetAxisLabels();
  RedrawGraphs(2);
  const int count = graphCount_;
  for (graphCount_ = 0; graphCount_ <= count; ++graphCount_) ResetMenu();
  graphCount_ = count;
  for (int k = 3; k <= 6; ++k) EnableCommand(IndexedName("mnuOpenSave", k), true);
  context_.ShowIdle();
  Touch();
  return true;
}

void Graph1Form::ReadFormRecord(const FormFileRecord& r) {
  winLeft_ = r.winLeft;
  winRight_ = r.winRight;
  winBottom_ = r.winBottom;
  winTop_ = r.winTop;
  intervalLeft_ = r.intervalLeft;
  intervalRight_ = r.intervalRight;
  const int count = static_cast<int>(r.graphs.size());
  if (count > store_.capacity) {
    store_.capacity = count;
    n_ = 0;  // so that SetPoints sizes the store again
  }
  SetPoints(r.points);
  for (int g = 0; g < count; ++g) {
    const StoredGraph& src = r.graphs[static_cast<std::size_t>(g)];
    UpDateFnData(r.points, src.values, src.a, src.b, src.h, false);
  }
  graphCount_ = count;
  if (count > 0) SetIntervalData(count - 1);
  step_ = (intervalRight_ - intervalLeft_) / n_;
  formulaBox_.UpdateFromFile(r.history);
  if (r.version > 1) {
    SetSideBoxKey(r.sideBoxKey);
    RestoreSideBox();
  }
  if (r.version > 2) {
    dots_ = r.dots != 'N';
    SetMenuViewStyle();
    if (BackgroundOf(r.background) == kWhiteBackground) {
      background_ = kWhiteBackground;
      controls_.SetFromUser("OpDispStyle(5)", "1");
    }
    trace_.SetIndex(r.tracePosition, n_);
    controls_.SetText("GraphCaption", FromFile(r.caption));
    controls_.SetText("Remarks(0)", FromFile(r.remarks));
  }
  if (r.version > 3) {
    grid_ = GridStyleOf(r.grid);
    controls_.SetFromUser(grid_ == kAxes ? "OpDispStyle(1)" : grid_ == kNoGrid ? "OpDispStyle(2)" : "OpDispStyle(0)", "1");
  }
  if (r.version > 4) {
    controls_.SetText("PrinterSpecs", FromFile(r.printerText));
    for (int k = 0; k < 3; ++k) controls_[IndexedName("chkPrLab", k)].value = r.printLabels[k];
    controls_.SetFromUser(r.colour == 'Y' ? "MonoOrColor(0)" : "MonoOrColor(1)", "1");
  }
}

void Graph1Form::OpenTheForm() {
  // A new one-dimensional form takes this form's quantization parameters.
  const std::array<std::string, 3> params = quantParams_;
  if (auto* form = FormAs<Graph1Form>(context_.OpenTheForm())) form->SetQuantParams(params);
}

Graph1Form* Graph1Form::NewSiblingForm() {
  int code = 0;
  Graph1Form* sibling = NewFormOf<Graph1Form>(context_, code);
  if (!sibling) {
    context_.ReportFactoryFailure(code);
    return nullptr;
  }
  sibling->SetQuantParams(quantParams_);
  return sibling;
}

Graph1Form* Graph1Form::NewResultForm(const Graph1Result& result) {
  Graph1Form* form = NewSiblingForm();
  if (form) form->ShowResult(result);
  return form;
}

void Graph1Form::ShowResult(const Graph1Result& r) {
  if (r.show == Graph1Result::Show::FitToData) {
    // The grid grows to the result; the view fits it whatever auto fit says.
    std::string& autoFit = context_.settings().captions["LabAutoFit"];
    const std::string savedAutoFit = autoFit;
    autoFit.assign(1, 'Y');
    for (const Graph1Result::Graph& g : r.graphs) UpDateFnData(r.points, g.values, g.a, g.b, g.h, true);
    NewView();
    autoFit = savedAutoFit;
    DisplayOneGraph();
    return;
  }
  SetPoints(r.points);
  for (const Graph1Result::Graph& g : r.graphs) UpDateFnData(r.points, g.values, g.a, g.b, g.h, false);
  if (r.setInterval && !r.graphs.empty()) SetIntervalChoice(r.graphs.front().a);
  if (!r.remarks.empty()) SetRemarks(r.remarks);
  if (r.show == Graph1Result::Show::AllGraphs) DisplayGraphs(graphCount_ - 1);
  else DisplayOneGraph();
  NewWindow();
}

bool Graph1Form::AddResult(const Graph1Result& r) {
  if (r.points != n_ || r.graphs.empty()) return false;
  for (const Graph1Result::Graph& g : r.graphs) UpDateFnData(r.points, g.values, g.a, g.b, g.h, false);
  if (!r.remarks.empty()) SetRemarks(r.remarks);
  DisplayOneGraph();
  return true;
}

// -------------------------------------------------------------- data files

void Graph1Form::SaveTheGraph() {
  const auto chosen = context_.services().fileDialog->Run({platform::FileDialogMode::Save, "Save graph", kSaveGraphFilter,
                                                         1, platform::kFlagsSaveDialog, ".kb1", context_.DialogFolder(kFolderData, "Data")});
  if (!chosen) return;
  const int g = graphNumber_("TxtAnGr1", graphCount_, kOneGraphCommand);
  if (g < 0) return;
  if (!SaveFunctionFile(chosen->path, g, chosen->filterIndex)) context_.ShowError(36);
  context_.RememberDialogFolder(kFolderData, chosen->path);
}

bool Graph1Form::SaveFunctionFile(const std::string& path, int g, int filterIndex) {
  if (filterIndex != 1 || g < 0 || g >= graphCount_) return true;
  const double* v = GraphValues(g);
  const StoredGraph graph{GraphLeft(g), GraphRight(g), GraphStep(g), std::vector<double>(v, v + n_ + 1)};
  return WriteFileBytes(path, WriteKb1(graph, n_));
}

void Graph1Form::LoadTheGraph(int kind) {
  const bool sound = kind == 2;
  const int folder = sound ? kFolderSound : kFolderData;
  const auto chosen = context_.services().fileDialog->Run(
      {platform::FileDialogMode::Open, sound ? "Open sound file" : "Open data file",
       sound ? "Audio file (*.wav)|*.wav" : kLoadGraphFilter, 1, platform::kFlagFileMustExist, "",
       context_.DialogFolder(folder, sound ? "Audio" : "Data")});
  if (!chosen) return;
  const int type = static_cast<int>(DataFileTypeOf(chosen->title.empty() ? chosen->path : chosen->title));
  LoadFunction(chosen->path, chosen->title, kind, type);
  context_.RememberDialogFolder(folder, chosen->path);
}

bool Graph1Form::LoadDataFile(const std::string& path, const std::string& title) {
  const std::string tail = ToUpper(path.size() >= 3 ? path.substr(path.size() - 3) : path);
  if (tail == "WAV") return LoadFunction(path, title, 2, 0);
  return LoadFunction(path, title, 1, static_cast<int>(DataFileTypeOf(path)));
}

bool Graph1Form::LoadFunction(const std::string& path, const std::string& title, int kind, int fileType) {
  if (kind == 2) return LoadSoundFunction(path, title);
  if (kind != 1) return false;
  std::vector<std::uint8_t> bytes;
  std::optional<DataFileRecord> record;
  if (ReadFileBytes(path, bytes)) record = ReadDataFile(bytes, static_cast<DataFileType>(fileType));
  if (!record) {
    context_.ShowError(20);
    return false;
  }
  if (record->points != n_ && graphCount_ > 0) {
    Graph1Form* sibling = NewSiblingForm();
    if (!sibling) return false;
    sibling->InitializeSideBox();
    sibling->ClearSideBox();
    sibling->SetPoints(record->points);
    return sibling->LoadFunction(path, title, kind, fileType);
  }
  if (record->points != n_) SetPoints(record->points);
  const StoredGraph& g = record->graph;
  SetIntervalChoice(g.a);
  UpDateFnData(record->points, g.values, g.a, g.b, g.h, false);
  DisplayOneGraph();
  NewWindow();
  return true;
}

}  // namespace keldo::form1d
