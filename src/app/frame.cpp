#include "app/frame.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>

#include "app/catalogue.h"
#include "kit/menu_table.h"
#include "common/number_text.h"
#include "common/text.h"

namespace keldo {
namespace {

// The frame's menu, used when no child is open: File with the New items and
// the data-file items of the kinds, then titles from Edit to Analysis that
// stay empty until a child brings its own menu, and Help.
constexpr MenuRow kFileTitle[] = {{0, "mnuFile", "&File"}};
constexpr MenuRow kOpenForm[] = {{1, "-", ""}, {1, "mnuOpenForm", "&Open form"}};
constexpr MenuRow kFileEnd[] = {
    {1, "-", ""},
    {1, "mnuExit", "E&xit"},
    {0, "mnuEdit", "&Edit"},
    {0, "mnuView", "&View"},
    {0, "mnuGraph", "&Graph"},
    {0, "mnuSeries", "&Series"},
    {0, "mnuTransform", "&Transform"},
    {0, "mnuConvolve", "&Convolve"},
    {0, "mnuAnalysis", "&Analysis"},
    {0, "mnuHelp", "&Help"},
    {1, "mnuGettingStarted", "&Getting started"},
    {1, "mnuAbout", "&About KELDO"},
};

// The kinds that load form files, in the order of the "Open form" filter.
std::vector<const FormKindInfo*> OpenFormKinds(std::span<const FormKindInfo> kinds) {
  std::vector<const FormKindInfo*> out;
  for (const FormKindInfo& k : kinds)
    if (k.openFormPosition > 0) out.push_back(&k);
  std::sort(out.begin(), out.end(),
            [](const FormKindInfo* x, const FormKindInfo* y) { return x->openFormPosition < y->openFormPosition; });
  return out;
}

}  // namespace

std::string GetFileTitle(const std::string& path) {
  const auto cut = path.find_last_of("\\/");
  return cut == std::string::npos ? path : path.substr(cut + 1);
}

Frame::Frame(platform::Services& services, std::string programFolder)
    : services_(services), programFolder_(std::move(programFolder)) {
  BuildMenu();
  DeclareVariables();
}

Frame::~Frame() {
  listener_ = nullptr;
  owned_.clear();
  closed_.clear();
}

std::string Frame::Folder(const std::string& name) const { return programFolder_ + "/" + name; }

std::string Frame::DialogFolder(int index, const std::string& fallback) const {
  const std::string& folder = settings_.dialogFolders[static_cast<std::size_t>(index)];
  return folder.empty() ? Folder(fallback) : folder;
}

void Frame::RememberDialogFolder(int index, const std::string& chosenPath) {
  settings_.dialogFolders[static_cast<std::size_t>(index)] = std::filesystem::path(chosenPath).parent_path().string();
}

namespace {

namespace fs = std::filesystem;

// A folder files can be written to: made when missing, then probed.
bool Writable(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error || !fs::is_directory(folder)) return false;
  const fs::path probe = folder / ".keldo-probe";
  FILE* f = std::fopen(probe.string().c_str(), "wb");
  if (!f) return false;
  std::fclose(f);
  fs::remove(probe, error);
  return true;
}

// The folder a setting chooses when it can be written to; else `relative`
// under the program's folder; else the same under the user's data folder.
std::string UsableFolder(const std::string& chosen, const std::string& programFolder, const fs::path& relative) {
  if (!chosen.empty() && Writable(chosen)) return chosen;
  const fs::path own = fs::path(programFolder) / relative;
  if (Writable(own)) return own.string();
  const char* data = std::getenv("XDG_DATA_HOME");
  const char* home = std::getenv("HOME");
  const fs::path user = (data && *data ? fs::path(data) / "KELDO"
                                       : fs::path(home ? home : "/tmp") / ".local" / "share" / "KELDO") /
                        relative;
  Writable(user);
  return user.string();
}

}  // namespace

std::string Frame::SoundBufferFolder() {
  // The folder is found once for each setting, not at every buffer file.
  if (!soundFolder_.empty() && soundFolderSetting_ == settings_.soundBufferFolder) return soundFolder_;
  soundFolderSetting_ = settings_.soundBufferFolder;
  soundFolder_ = UsableFolder(settings_.soundBufferFolder, programFolder_, "SndBuff");
  return soundFolder_;
}

std::string Frame::CompressFolder() {
  return UsableFolder(settings_.compressFolder, programFolder_, fs::path("Compress") / "Data");
}

void Frame::BuildMenu() {
  std::vector<MenuRow> rows(std::begin(kFileTitle), std::end(kFileTitle));
  std::vector<const FormKindInfo*> news;
  for (const FormKindInfo& k : kinds_)
    if (k.newItem.position >= 0) news.push_back(&k);
  std::sort(news.begin(), news.end(), [](const FormKindInfo* x, const FormKindInfo* y) {
    return x->newItem.position < y->newItem.position;
  });
  for (const FormKindInfo* k : news) rows.push_back({1, k->newItem.frameName, k->newItem.frameCaption});
  rows.insert(rows.end(), std::begin(kOpenForm), std::end(kOpenForm));
  for (const FormKindInfo& k : kinds_)
    for (const DataFileItem& item : k.dataFileItems) rows.push_back({1, item.name, item.caption});
  rows.insert(rows.end(), std::begin(kFileEnd), std::end(kFileEnd));
  controls_ = ControlModel{};
  menuBar_ = keldo::BuildMenu(rows, controls_);
}

void Frame::InstallKinds(std::span<const FormKindInfo> kinds) {
  kinds_.assign(kinds.begin(), kinds.end());
  BuildMenu();
}

const FormKindInfo* Frame::KindOfWord(std::string_view word) const {
  const std::string lower = ToLower(std::string(word));
  for (const FormKindInfo& k : kinds_)
    if (k.word == lower) return &k;
  return nullptr;
}

void Frame::DeclareVariables() { keldo::DeclareVariables(settings_); }

void Frame::RegisterKind(FormKind kind, FormMaker maker) {
  for (FormKindInfo& k : kinds_) {
    if (k.kind == kind) {
      k.maker = std::move(maker);
      return;
    }
  }
  FormKindInfo row{};
  row.kind = kind;
  row.maker = std::move(maker);
  kinds_.push_back(std::move(row));
}

bool Frame::HasKind(FormKind kind) const {
  const FormKindInfo* k = KindInfo(kind);
  return k && k->maker;
}

Form* Frame::NewForm(FormKind kind, int& code) {
  code = 0;
  const int k = static_cast<int>(kind);
  const FormKindInfo* info = KindInfo(kind);
  if (!info || !info->maker) {
    code = -1;
    return nullptr;
  }
  std::unique_ptr<Form> form;
  try {
    form = info->maker(*this);
  } catch (const std::bad_alloc&) {
    code = kOutOfMemoryCode;
    return nullptr;
  } catch (...) {
    code = -1;
    return nullptr;
  }
  form->SetCaption(std::string(info->captionWord) + (info->numbered ? StrInt(counts_[k] + 1) : ""));
  const int slot = cascade_ % 7;
  if (!form->maximized) {
    const platform::ScreenSize screen = services_.screen->Size();
    form->left = slot * screen.width / 20;
    form->top = slot * screen.height / 20;
  }
  ++cascade_;
  ++counts_[k];
  Form* raw = form.get();
  owned_.push_back(std::move(form));
  created_.push_back(raw);
  current_ = raw;
  if (listener_) listener_->FormCreated(*raw);
  return raw;
}

void Frame::ReportFactoryFailure(int code) {
  if (code < 0) ShowError(code == kOutOfMemoryCode ? 72 : 73);
}

bool Frame::CloseForm(Form& form) {
  if (form.Working()) {
    Beep();
    return false;
  }
  if (!form.QueryClose()) return false;
  if (listener_) listener_->FormClosed(form);
  cascade_ = std::max(0, cascade_ - 1);
  std::replace(created_.begin(), created_.end(), &form, static_cast<Form*>(nullptr));
  const bool wasCurrent = current_ == &form;
  auto it = std::find_if(owned_.begin(), owned_.end(), [&](const auto& p) { return p.get() == &form; });
  if (it != owned_.end()) {
    closed_.push_back(std::move(*it));
    owned_.erase(it);
  }
  if (wasCurrent) {
    current_ = owned_.empty() ? nullptr : owned_.back().get();
    if (listener_) listener_->CurrentFormChanged(current_);
  }
  return true;
}

bool Frame::IsOpenForm(const Form* form) const {
  for (const auto& f : owned_)
    if (f.get() == form) return true;
  return false;
}

std::vector<Form*> Frame::OpenForms() const {
  std::vector<Form*> out;
  for (const auto& f : owned_) out.push_back(f.get());
  return out;
}

void Frame::SetCurrent(Form* form) {
  if (current_ == form) return;
  current_ = form;
  if (listener_) listener_->CurrentFormChanged(form);
}

void Frame::Process(const std::string& commandLine) {
  std::string text = ToUpper(Trim(commandLine));
  if (text.size() <= 6) return;
  // The path as typed keeps its case for reading; the decision and the
  // caption use the upper-cased text.
  std::string path = Trim(commandLine);
  text = text.substr(1, text.size() - 2);
  path = path.substr(1, path.size() - 2);
  const std::string extension = text.substr(text.size() - std::min<std::size_t>(4, text.size()));
  for (const FormKindInfo& k : kinds_) {
    if (k.fromCommandLine && ToUpper(std::string(k.formExtension)) == extension) {
      OpenFormFile(k.kind, path, GetFileTitle(text));
      return;
    }
  }
}

Form* Frame::LoadIntoNewForm(FormKind kind, const std::function<bool(Form&)>& load, int failureMessage) {
  int code = 0;
  Form* form = NewForm(kind, code);
  if (!form) {
    ReportFactoryFailure(code);
    return nullptr;
  }
  bool loaded = false;
  int message = failureMessage;
  try {
    loaded = load(*form);
  } catch (const std::bad_alloc&) {
    message = 72;
  } catch (...) {
    loaded = false;
  }
  if (!loaded) {
    // The failed form is not kept, so a bad file changes nothing.
    CloseForm(*form);
    ShowIdle();
    if (message != 0) ShowError(message);
    return nullptr;
  }
  return form;
}

Form* Frame::OpenFormFile(FormKind kind, const std::string& path, const std::string& title) {
  Form* form = LoadIntoNewForm(kind, [&](Form& f) { return f.LoadForm(path, title); }, 73);
  if (!form) return nullptr;
  form->SetCaption(title);
  form->Touch();
  return form;
}

Form* Frame::OpenDataFile(FormKind kind, const std::string& path) {
  // The data loader reports its own failures.
  return LoadIntoNewForm(kind, [&](Form& f) { return f.LoadDataFile(path, GetFileTitle(path)); }, 0);
}

Form* Frame::OpenTheForm() {
  const std::vector<const FormKindInfo*> kinds = OpenFormKinds(kinds_);
  if (kinds.empty()) return nullptr;
  std::string filter;
  for (const FormKindInfo* k : kinds)
    filter += (filter.empty() ? "" : "|") + std::string(k->formFilter) + "|*" + std::string(k->formExtension);
  const auto chosen = services_.fileDialog->Run({platform::FileDialogMode::Open, "Open form", filter, 1,
                                                  platform::kFlagFileMustExist, "", DialogFolder(kFolderForms, "figures")});
  if (!chosen) return nullptr;  // cancel ends the command silently
  const int index = std::clamp(chosen->filterIndex, 1, static_cast<int>(kinds.size()));
  Form* form = OpenFormFile(kinds[static_cast<std::size_t>(index - 1)]->kind, chosen->path, chosen->title);
  RememberDialogFolder(kFolderForms, chosen->path);
  return form;
}

void Frame::ShowError(int number) {
  platform::MessageRequest request;
  request.text = CatalogueMessage(number);
  request.icon = platform::MessageIcon::Critical;
  request.catalogueNumber = number;
  request.fromCatalogue = true;
  services_.dialogs->ShowMessage(request);
  services_.pointer->SetShape(platform::PointerShape::Default);
}

void Frame::ShowCritical(const std::string& text) {
  platform::MessageRequest request;
  request.text = text;
  request.icon = platform::MessageIcon::Critical;
  services_.dialogs->ShowMessage(request);
}

void Frame::ShowMessage(const std::string& text) {
  platform::MessageRequest request;
  request.text = text;
  request.icon = platform::MessageIcon::Information;
  services_.dialogs->ShowMessage(request);
}

void Frame::ShowBusy() { services_.pointer->SetShape(platform::PointerShape::Hourglass); }
void Frame::ShowBusyArrow() { services_.pointer->SetShape(platform::PointerShape::ArrowHourglass); }
void Frame::ShowIdle() { services_.pointer->SetShape(platform::PointerShape::Default); }
void Frame::Beep() { services_.beeper->Beep(); }

void Frame::GetHelp(const std::string& helpFile, const std::string& topic) {
  const bool shown = topic.empty() ? services_.help->ShowContents(helpFile)
                                   : services_.help->ShowTopic(helpFile, topic);
  if (!shown) ShowError(22);
}

void Frame::QuickHelp(const std::string& title, const std::string& text, const std::string& helpFile,
                      const std::string& topic) {
  std::string& flag = settings_.captions["labHelp"];
  flag = services_.dialogs->QuickHelp(title, text) ? "Y" : "N";
  if (flag == "Y") GetHelp(helpFile, topic);
}

std::vector<std::string> Frame::AboutText() {
  return {"KELDO", "A Fourier/Wavelet Analyzer", "Version 2.0"};
}

bool Frame::RunMenu(const std::string& name) {
  const Control* item = controls_.Find(name);
  if (!item || item->kind != ControlKind::Menu) return false;
  if (!item->enabled || !item->visible) return true;
  int code = 0;
  for (const FormKindInfo& k : kinds_) {
    if (k.newItem.frameName && name == k.newItem.frameName) {
      if (!NewForm(k.kind, code)) ReportFactoryFailure(code);
      return true;
    }
    for (const DataFileItem& item : k.dataFileItems) {
      if (name != item.name) continue;
      if (Form* form = NewForm(k.kind, code)) form->RunMenu("mnuOpenSave", item.openSaveIndex);
      else ReportFactoryFailure(code);
      return true;
    }
  }
  if (name == "mnuOpenForm") {
    OpenTheForm();
  } else if (name == "mnuExit") {
    exitRequested_ = true;
  } else if (name == "mnuGettingStarted") {
    GetHelp("KELDOX.HLP", "Getting started");
  } else if (name == "mnuAbout") {
    platform::MessageRequest request;
    const auto lines = AboutText();
    request.title = "About KELDO";
    request.icon = platform::MessageIcon::Information;
    for (const auto& line : lines) request.text += (request.text.empty() ? "" : "\n") + line;
    services_.dialogs->ShowMessage(request);
  }
  return true;
}

}  // namespace keldo
