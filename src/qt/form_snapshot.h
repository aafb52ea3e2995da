#pragma once
// Draws a form as the desktop program shows it, into a PNG file, without a
// screen: the same FormView, rendered offscreen.
#include <string>
namespace keldo {
class Frame;
class Form;
}  // namespace keldo
namespace keldo::qt {
bool SaveFormSnapshot(Frame& frame, Form* form, const std::string& path);
}  // namespace keldo::qt
