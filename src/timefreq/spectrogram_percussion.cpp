// The percussion scalogram: the spectrogram of a drum track turned into a
// train of pulses, filed on a new one-dimensional form that keeps the track
// itself to play, and a scalogram of that train whose settings follow from
// the pulses' own rate, so that the rhythm shows as a scale.

#include "common/number_text.h"
#include "fourier/percussion.h"
#include "kit/form_context.h"
#include "kit/named_calls.h"
#include "timefreq/spectrogram_form.h"

namespace keldo::timefreq {

void SpectrogramForm::ComputePercScalgrm() {
  if (!present_) {
    context_.Beep();
    return;
  }
  const fourier::SpectrogramShape& s = spectrum_.shape;
  const int n = fourier::AssignPoints(s.ncols);
  std::vector<double> train = fourier::PercussionTrain(spectrum_, n);
  if (train.empty()) {
    context_.Beep();
    return;
  }
  // The train's samples are the spectrogram's columns, a step apart in time.
  const double step = static_cast<double>(s.step) * dt_;
  const double duration = n * step;
  const fourier::PulseRateResult rate = fourier::PulseRate(train, step);
  OneDimensionalReceiver* form = NewFormFor<OneDimensionalReceiver>(context_, FormKind::Graph1);
  if (!form) return;
  form->ShowResult(OneDimensionalResult::Of(n, std::move(train), a_, a_ + duration, step));
  auto* source = dynamic_cast<ScalogramSource*>(form);
  if (!source) return;
  source->SoundFileForPercScalogram(signal_);
  if (auto* audio = dynamic_cast<AudioReceiver*>(form)) {
    const AudioTexts texts = Audio();
    audio->AudioSettings(texts.rate, texts.volume, texts.sixteenBits);
  }
  ScalogramCalls* scalogram = source->ComputeScalogram();
  if (!scalogram) return;
  const fourier::PercussionSettings settings = fourier::PercussionScalogramSettings(n, duration, rate.rate);
  scalogram->SetScalogramFields(5, std::to_string(settings.octaves), std::to_string(settings.voices),
                                PlainNumber(settings.width), PlainNumber(settings.frequency));
}

}  // namespace keldo::timefreq
