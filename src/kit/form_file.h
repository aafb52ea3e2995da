#pragma once
// Saving a form file, as every kind of form does it: the name comes from the
// "Save form" dialog at the forms folder when asked for or when the form has
// none yet; the busy pointer shows while the form writes; a failure reports
// 36 and leaves the form's name as it was.

#include <functional>
#include <optional>
#include <string>

namespace keldo {

class FormContext;

// The path written, or nothing after a cancel or a reported failure.
// `write` writes the form to a path and says whether it could.
std::optional<std::string> SaveFormFile(FormContext& context, const std::string& knownPath, bool askForName,
                                        const char* filter, const char* extension,
                                        const std::function<bool(const std::string&)>& write);

}  // namespace keldo
