#include "kit/graph_clipboard.h"

namespace keldo {

PasteTarget WherePasted(int points, int formPoints, int graphCount, bool full) {
  if (points == formPoints && !full) return PasteTarget::ThisForm;
  return graphCount > 0 ? PasteTarget::NewForm : PasteTarget::ThisFormResized;
}

}  // namespace keldo
