#pragma once
// Three hooks whose call sites stand in the commands but that do nothing:
// a code hook taking an internal code word ("ILoop", "FSE", "TMS", "TMPDS",
// "IVU", "IVO") and a number, a hook without arguments and one with one.
// They show nothing and change nothing.

#include <string>

namespace keldo {

inline std::string CodeHook(const std::string& /*word*/, double /*number*/) { return std::string(); }
inline void NoArgumentHook() {}
inline void OneArgumentHook(double /*value*/) {}

}  // namespace keldo
