#pragma once
// The platform services one frame works with. The frame and its forms hold a
// reference to one Services record; its pointers are never null.

#include "platform/audio.h"
#include "platform/beep.h"
#include "platform/clipboard.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/file_dialog.h"
#include "platform/help.h"
#include "platform/imaging.h"
#include "platform/pointer.h"
#include "platform/printer.h"
#include "platform/random.h"
#include "platform/screen.h"
#include "platform/surface.h"
#include "platform/timer.h"

namespace keldo::platform {

struct Services {
  Dialogs* dialogs = nullptr;
  Pointer* pointer = nullptr;
  Beeper* beeper = nullptr;
  EventLoop* eventLoop = nullptr;
  FileDialog* fileDialog = nullptr;
  Imaging* imaging = nullptr;
  Audio* audio = nullptr;
  Printer* printer = nullptr;
  Clipboard* clipboard = nullptr;
  Random* random = nullptr;
  Help* help = nullptr;
  Screen* screen = nullptr;
  SurfaceFactory* surfaces = nullptr;
  Timers* timers = nullptr;
};

}  // namespace keldo::platform
