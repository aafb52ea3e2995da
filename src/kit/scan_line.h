#pragma once
// The scan line of the time-frequency forms: while a form plays its signal,
// a vertical line walks across its picture from the left edge, one step of
// pixels per tick of a timer on the event loop, so that it crosses the
// picture in about the time the sound lasts.
//
// A form keeps one ScanLine, starts it after it started the sound, draws
// it over its picture in Paint, and shows its positions in the dump:
//
//   ScanLine scanLine_{context.services(), [this] { Touch(); }};
//   ...  if (played) scanLine_.Start(samples, sampleRate);
//   ...  Paint(0, surface): draw the picture, then scanLine_.Draw(surface);
//   ...  Graphs(): signal.fields.push_back(scanLine_.DumpField());

#include <functional>
#include <vector>

#include "kit/form.h"
#include "platform/services.h"

namespace keldo {

// The timing of an animation: a tick every `intervalMs`, the line moving
// `stepPixels` a tick, `ticks` positions 0, step, 2 step, ... below the
// width.
struct ScanLineTiming {
  int intervalMs = 0;
  int stepPixels = 0;
  int ticks = 0;
};

// The timer ticks at most every kFinestScanInterval milliseconds.
inline constexpr int kFinestScanInterval = 20;
// The width taken for a picture that no view has drawn yet (a script run
// without screenshots, a test), in pixels.
inline constexpr int kUndrawnPictureWidth = 512;

// InitializeScanLineAnimation's arithmetic. A sound of `samples` at
// `sampleRate` lasts D = 1000 samples / rate ms, D / width ms a pixel. The
// step is the fewest whole pixels whose time is at least the finest
// interval, step = ceil(20 width / D) = ceil(width rate / (50 samples)),
// at least 1; the interval is that step's time rounded to the nearest
// millisecond (halves up), round(D step / width), which is then at least
// 20; ticks = ceil(width / step). All zero when the width, the samples or
// the rate is not above 0.
ScanLineTiming ScanLineTimingOf(int widthPixels, long long samples, int sampleRate);

class ScanLine {
 public:
  // `changed` runs whenever the line moves, shows or hides (a form passes
  // its Touch, so that a view redraws).
  ScanLine(const platform::Services& services, std::function<void()> changed);
  ~ScanLine();
  ScanLine(const ScanLine&) = delete;
  ScanLine& operator=(const ScanLine&) = delete;

  // After a sound of `samples` at `sampleRate` started: stops an animation
  // that runs, then InitializeScanLineAnimation (the line at the left edge,
  // shown; the positions cleared) and the timer's start with PlayTimer as
  // its tick. Nothing starts when the timing is all zero.
  void Start(long long samples, int sampleRate);
  // Switches the timer off and hides the line; the positions stay.
  void Stop();

  // The timing measured for the picture as it was last drawn (or
  // kUndrawnPictureWidth pixels wide) and the sound.
  void InitializeScanLineAnimation(long long samples, int sampleRate);
  // One tick: if the sound was stopped or replaced since Start, Stop.
  // Otherwise, while position * step is below the width, the line moves to
  // position * step (recorded) and the position rises by one; once it is
  // not, Stop. So a sound gives `ticks` moves and one more tick that ends
  // the animation.
  void PlayTimer();

  bool Running() const { return timer_ != 0; }
  bool Visible() const { return visible_; }
  // Where the line stands, in pixels from the picture's left edge.
  int X() const { return x_; }
  // Every place the ticks moved the line to since the last Start, in order.
  const std::vector<int>& Positions() const { return positions_; }
  const ScanLineTiming& Timing() const { return timing_; }
  int Width() const { return width_; }

  // Draws the line, while it shows, over a picture of any size: at
  // X() * surface width / Width(), from top to bottom, in kScanLineColour.
  // Notes the surface's width, which the next Start measures; the scale is
  // left at one unit a pixel.
  void Draw(platform::Surface& surface) const;
  // "scanline" with the positions, for a graph of the dump.
  GraphSummary::Field DumpField() const;

 private:
  platform::Timers* timers_;
  platform::Audio* audio_;
  std::function<void()> changed_;
  ScanLineTiming timing_;
  int width_ = 0;
  int position_ = 0;  // the ticks' count of steps
  int x_ = 0;
  bool visible_ = false;
  int timer_ = 0;
  long long sound_ = 0;  // the audio's SoundNumber at Start
  std::vector<int> positions_;
  // The width of the surface the picture was last drawn on; 0 before any.
  mutable int drawnWidth_ = 0;
};

// A red that shows on the grey levels and on the white background.
inline constexpr platform::Rgb kScanLineColour = platform::MakeRgb(255, 0, 0);

}  // namespace keldo
