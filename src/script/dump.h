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

// How much of a matrix a dump writes: its values row by row, or, brief, its
// shape alone ("rows" and "columns").
enum class MatrixValues { Full, Brief };

std::string DumpJson(Frame& frame, const Form* form, const std::vector<std::string>& messages,
                     const std::string& clipboardText, MatrixValues matrices = MatrixValues::Full);

}  // namespace keldo::script
