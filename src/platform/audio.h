#pragma once
// Playback of 16-bit mono sound. A machine with no audio device answers false
// to Play, and the caller reports the catalogue's sound message.

#include <cstdint>
#include <vector>

namespace keldo::platform {

class Audio {
 public:
  virtual ~Audio() = default;
  // Starts playing; false when no device can take the sound.
  virtual bool Play(const std::vector<std::int16_t>& samples, int sampleRate) = 0;
  virtual void Stop() = 0;
  virtual bool IsPlaying() const = 0;
  // Samples played so far of the current sound.
  virtual long long Position() const = 0;
  // Returns when the current sound has ended, letting events run meanwhile.
  virtual void WaitUntilDone() = 0;
  // A number that changes with every Play and every Stop, and with nothing
  // else: whoever started a sound can tell that it was since stopped or
  // replaced (a sound that simply ran out keeps its number).
  virtual long long SoundNumber() const = 0;
};

}  // namespace keldo::platform
