#pragma once
// The kinds of child form, and the one record that describes a kind: the
// word scripts and dumps use, its caption, the files that open into it, its
// File > New item and its maker. The composition root holds one row per
// kind; the frame, the script runner and the dump read that table, so a new
// kind is one row, one folder and its maker.

#include <functional>
#include <memory>
#include <span>
#include <string_view>

namespace keldo {

class Form;
class FormContext;

enum class FormKind { Graph1, Graph2, SoundEditor, Spectrogram, Scalogram, Workshop, ImageProcessor };
constexpr int kFormKinds = 7;

// Builds a form of one kind; may throw std::bad_alloc or any exception.
using FormMaker = std::function<std::unique_ptr<Form>(FormContext&)>;

// The File > New item of a kind. Forms index their New items as
// mnuNew(position); the frame and some forms name them instead.
struct NewFormItem {
  int position = -1;                  // -1: the kind has no New item
  const char* frameName = nullptr;    // the frame's item: "mnuNew1Dim"
  const char* frameCaption = nullptr; // its caption: "New &1 Dim "
  const char* otherName = nullptr;    // another name a form gives it, or null
};

// An item of the frame's File menu that opens a data file into a new form
// of the kind: the new form runs its own mnuOpenSave(index).
struct DataFileItem {
  const char* name;     // "mnuOpenSoundFile"
  const char* caption;  // "Open sound file (*.wav)"
  int openSaveIndex;         // the form's mnuOpenSave index that asks for the file
};

struct FormKindInfo {
  FormKind kind = FormKind::Graph1;
  std::string_view word = {};         // "1d", "2d", "audio" ...: scripts and dumps
  std::string_view captionWord = {};  // "1DGraph ": the caption, then the number
  bool numbered = true;          // whether the caption takes the kind's count
  // The form file it opens, or empty: its extension and filter text, its
  // place in the "Open form" filter (1 up, 0 not there), and whether a
  // command line may name it.
  std::string_view formExtension = {};
  std::string_view formFilter = {};
  int openFormPosition = 0;
  bool fromCommandLine = false;
  // Data files a script's `open` reads into a new form of the kind,
  // lower-case extensions with their dot.
  std::span<const std::string_view> dataFiles = {};
  std::span<const DataFileItem> dataFileItems = {};
  NewFormItem newItem = {};
  FormMaker maker = {};
};

// The row of a kind in a table, or null.
const FormKindInfo* FindKind(std::span<const FormKindInfo> kinds, FormKind kind);

}  // namespace keldo
