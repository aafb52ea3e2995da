#pragma once
// Registers a maker for every form kind with the frame.
namespace keldo {
class Frame;
void InstallFormKinds(Frame& frame);
}  // namespace keldo
