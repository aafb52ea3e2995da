#pragma once
#include <string>
namespace keldo::qt {
// The program's folder: $KELDO_HOME when set, else the source tree it was
// built from. docs/, examples/ and the data folders live under it.
std::string ProgramFolder();
}  // namespace keldo::qt
