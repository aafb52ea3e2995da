#include "qt/program_folder.h"

#include <cstdlib>

namespace keldo::qt {

std::string ProgramFolder() {
  if (const char* home = std::getenv("KELDO_HOME"); home && *home) return home;
  return KELDO_DEFAULT_HOME;
}

}  // namespace keldo::qt
