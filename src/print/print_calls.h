#pragma once
// The print library as the kit's PrintCalls, for the composition root to
// install.

#include "kit/print_box.h"

namespace keldo::print {

PrintCalls& PrintLibrary();

}  // namespace keldo::print
