#pragma once
// Draws a form as the desktop program shows it, without a screen: the same
// FormView, rendered offscreen, into a PNG file or a picture.
#include <string>

#include "platform/image.h"

namespace keldo {
class Frame;
class Form;
}  // namespace keldo
namespace keldo::qt {
bool SaveFormSnapshot(Frame& frame, Form* form, const std::string& path);
// The form's view at its preferred size, drawn offscreen.
platform::RgbImage RenderFormView(Form& form);
}  // namespace keldo::qt
