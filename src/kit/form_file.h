#pragma once
// Saving a form file, as every kind of form does it: the name comes from the
// "Save form" dialog at the forms folder when asked for or when the form has
// none yet; the busy pointer shows while the form writes; a failure reports
// 36 and leaves the form's name as it was.

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace keldo {

class Form;
class FormContext;

// A kind's form files: the dialog's filter and the extension it adds, and
// the menu items that need the form to have a file of its own.
struct FormFileKind {
  const char* filter;     // "(*.kd1)|*.kd1"
  const char* extension;  // ".kd1"
  std::vector<std::string> namedItems;
  int failureMessage = 36;  // reported when the file cannot be written
};

// The path written, or nothing after a cancel or a reported failure.
// `write` writes the form to a path and says whether it could.
std::optional<std::string> SaveFormFile(FormContext& context, const std::string& knownPath, bool askForName,
                                        const char* filter, const char* extension,
                                        const std::function<bool(const std::string&)>& write, int failureMessage = 36);

// The same for a whole form that keeps its name in `fileName`: the path
// written becomes its name, the kind's named items are enabled and the form
// shows the change. False after a cancel or a reported failure.
bool SaveTheFormFile(Form& form, std::string& fileName, bool askForName, const FormFileKind& kind,
                     const std::function<bool(const std::string&)>& write);

}  // namespace keldo
