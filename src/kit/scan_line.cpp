#include "kit/scan_line.h"

namespace keldo {

ScanLineTiming ScanLineTimingOf(int widthPixels, long long samples, int sampleRate) {
  if (widthPixels <= 0 || samples <= 0 || sampleRate <= 0) return {};
  const long long width = widthPixels, rate = sampleRate;
  // step = ceil(width rate / (50 samples)): 20 ms over D / width ms a pixel.
  const long long perStep = 1000 / kFinestScanInterval * samples;
  long long step = (width * rate + perStep - 1) / perStep;
  if (step < 1) step = 1;
  // interval = round(1000 samples step / (width rate)), halves up.
  const long long interval = (2 * 1000 * samples * step + width * rate) / (2 * width * rate);
  ScanLineTiming timing;
  timing.stepPixels = static_cast<int>(step);
  timing.intervalMs = static_cast<int>(interval);
  timing.ticks = static_cast<int>((width + step - 1) / step);
  return timing;
}

ScanLine::ScanLine(const platform::Services& services, std::function<void()> changed)
    : timers_(services.timers), audio_(services.audio), changed_(std::move(changed)) {}

ScanLine::~ScanLine() {
  if (timer_ != 0) timers_->Stop(timer_);
}

void ScanLine::InitializeScanLineAnimation(long long samples, int sampleRate) {
  width_ = drawnWidth_ > 0 ? drawnWidth_ : kUndrawnPictureWidth;
  timing_ = ScanLineTimingOf(width_, samples, sampleRate);
  position_ = 0;
  positions_.clear();
  x_ = 0;
  visible_ = timing_.ticks > 0;
}

void ScanLine::Start(long long samples, int sampleRate) {
  Stop();
  InitializeScanLineAnimation(samples, sampleRate);
  if (timing_.ticks > 0) {
    sound_ = audio_->SoundNumber();
    timer_ = timers_->Start(timing_.intervalMs, [this] { PlayTimer(); });
  }
  if (changed_) changed_();
}

void ScanLine::Stop() {
  const bool was = timer_ != 0 || visible_;
  if (timer_ != 0) timers_->Stop(timer_);
  timer_ = 0;
  visible_ = false;
  if (was && changed_) changed_();
}

void ScanLine::PlayTimer() {
  if (audio_->SoundNumber() != sound_) {
    Stop();
    return;
  }
  const long long x = static_cast<long long>(position_) * timing_.stepPixels;
  if (x >= width_) {
    Stop();
    return;
  }
  x_ = static_cast<int>(x);
  positions_.push_back(x_);
  ++position_;
  visible_ = true;
  if (changed_) changed_();
}

void ScanLine::Draw(platform::Surface& surface) const {
  const int w = surface.PixelWidth(), h = surface.PixelHeight();
  drawnWidth_ = w;
  if (!visible_ || width_ <= 0 || w <= 0 || h <= 0) return;
  // One unit a pixel, the whole height.
  surface.SetScale({0.0, 0.0, static_cast<double>(w), static_cast<double>(h)});
  const double x = static_cast<double>(static_cast<long long>(x_) * w / width_);
  surface.Line(x, 0.0, x, static_cast<double>(h), kScanLineColour);
}

GraphSummary::Field ScanLine::DumpField() const {
  return {"scanline", "", std::vector<double>(positions_.begin(), positions_.end()), {}, true};
}

}  // namespace keldo
