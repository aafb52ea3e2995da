#pragma once
// The state of the current form (or of the frame when no form is open) as
// JSON: kind, caption, points, window, graphs, controls, messages, clipboard.

#include <string>
#include <vector>

namespace keldo {
class Frame;
class Form;
}  // namespace keldo

namespace keldo::script {

std::string DumpJson(Frame& frame, const Form* form, const std::vector<std::string>& messages,
                     const std::string& clipboardText);

}  // namespace keldo::script
