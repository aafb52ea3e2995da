#pragma once
// Open and save dialogs. The filter is "Caption|*.ext|Caption|*.ext...",
// the filter index counts from 1.

#include <optional>
#include <string>

namespace keldo::platform {

enum class FileDialogMode { Open, Save };

// Dialog flags as numbers, combined by addition.
constexpr int kFlagOverwritePrompt = 2;
constexpr int kFlagPathMustExist = 2048;
constexpr int kFlagFileMustExist = 4096;
// The save dialogs' flags: 4098.
constexpr int kFlagsSaveDialog = kFlagFileMustExist + kFlagOverwritePrompt;

struct FileDialogRequest {
  FileDialogMode mode = FileDialogMode::Open;
  std::string title;
  std::string filter;
  int filterIndex = 1;
  int flags = 0;
  std::string defaultExtension;
  std::string initialFolder;
};

struct FileDialogResult {
  std::string path;       // full path
  std::string title;      // the file name alone
  int filterIndex = 1;    // the filter that was chosen
};

class FileDialog {
 public:
  virtual ~FileDialog() = default;
  // Nothing when the user cancels.
  virtual std::optional<FileDialogResult> Run(const FileDialogRequest& request) = 0;
};

}  // namespace keldo::platform
