#pragma once
// The message catalogue: every validation and failure message the user can
// meet has a number. The stored texts carry no final full stop; the shown
// text does (see CatalogueMessage).

#include <string>
#include <string_view>

namespace keldo {

// The text of row `number` without its final full stop; "Error" for a number
// that has no row.
std::string_view CatalogueText(int number);

// The text as the user sees it: the row's text followed by ".". Rows that end
// in their own punctuation (24, 88) still get the full stop.
std::string CatalogueMessage(int number);

// True when `number` has its own row (1 to 91 and -1).
bool CatalogueHasRow(int number);

}  // namespace keldo
