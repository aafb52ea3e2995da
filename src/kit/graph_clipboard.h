#pragma once
// The graph clipboard's rule of where a pasted graph goes, shared by Paste
// graph (from the frame's exchange area) and by pasting a graph from the
// system clipboard's text:
//
//   the form's grid has the graph's size and the form has room   ThisForm
//   otherwise, the form holds no graph                           ThisFormResized
//   otherwise (it holds graphs of another size, or is full)      NewForm
//
// A new form is made with the graph's size and takes the paste whole.

namespace keldo {

enum class PasteTarget { ThisForm, ThisFormResized, NewForm };

// `points` are the pasted graph's intervals, `formPoints` the form's.
PasteTarget WherePasted(int points, int formPoints, int graphCount, bool full = false);

}  // namespace keldo
