#pragma once
// The named calls between forms. A command on one form often creates a form
// of another kind and fills it: a histogram of an image goes to a new
// one-dimensional form, a wave file too long for a graph to a new audio
// editor. The calls a form answers for other kinds are these small
// interfaces, implemented by the forms; the caller makes the form through
// the context by its kind and reaches it through the interface alone, so no
// form names another form's class and no form library links another.
//
// Besides these, every form answers the calls of its base: LoadForm (fill
// from a form file) and LoadDataFile (read a data file as a new graph).

#include <cstddef>
#include <string>
#include <vector>

#include "kit/form.h"
#include "kit/form_context.h"
#include "kit/form_kind.h"

namespace keldo {

// A whole one-dimensional result for a new form: its graphs over one grid
// of `points` intervals, and how the form shows them.
struct OneDimensionalResult {
  struct Graph {
    std::vector<double> values;
    double a = 0.0, b = 0.0, h = 0.0;
  };
  enum class Show {
    NewWindow,   // the window fitted to the graphs as filed
    AllGraphs,   // every graph through the display rules, then the window
    FitToData,   // the view fitted to the data, whatever the auto-fit setting
  };
  // One graph over `points` intervals.
  static OneDimensionalResult Of(int points, std::vector<double> values, double a, double b, double h) {
    OneDimensionalResult r;
    r.points = points;
    r.graphs.push_back({std::move(values), a, b, h});
    return r;
  }
  int points = 0;
  std::vector<Graph> graphs;
  bool setInterval = false;  // the interval choice follows the first graph's left end
  std::string remarks;
  Show show = Show::NewWindow;
};

// ShowResult: a new, empty one-dimensional form files and shows a result.
// AddResult: a form that already holds graphs files the result's graphs
// after its own and shows the last; false, with nothing filed, when the
// result's points are not the form's.
class OneDimensionalReceiver {
 public:
  virtual void ShowResult(const OneDimensionalResult& result) = 0;
  virtual bool AddResult(const OneDimensionalResult& result) = 0;

 protected:
  ~OneDimensionalReceiver() = default;
};

// LoadWavFile: a new audio editor takes a whole mono wave file, however
// long; false when it cannot read it, after its own message.
class WaveFileReceiver {
 public:
  virtual bool LoadWavFile(const std::string& path) = 0;

 protected:
  ~WaveFileReceiver() = default;
};

// InputSoundArray: a new one-dimensional form takes `count` samples of a
// sound as its first graph, over count - 1 intervals (a power of two from
// 64 to 65536), each sample as a wave file holds it (an 8-bit one as its
// unsigned byte, 0 to 255), at `rate` samples a second; false after a
// message when the count does not fit the form's points.
class SoundArrayReceiver {
 public:
  virtual bool InputSoundArray(const std::vector<double>& samples, int bits, int rate, int count) = 0;

 protected:
  ~SoundArrayReceiver() = default;
};

// DisplayImage: a two-dimensional form files (points+1) by (points+1)
// samples, row-major with `stride` samples a row, over [left, right] in
// steps `step`, and shows them; false after reporting when it could not.
class ImageReceiver {
 public:
  virtual bool DisplayImage(int points, const float* values, std::size_t stride, float left, float right,
                            float step) = 0;

 protected:
  ~ImageReceiver() = default;
};

// LoadImageFile: a new image processor takes a picture file of any shape,
// a PGM file by its own reader and other types through the imaging
// service; false after a message.
class ImageFileReceiver {
 public:
  virtual bool LoadImageFile(const std::string& path) = 0;

 protected:
  ~ImageFileReceiver() = default;
};

// AudioSettings: a form takes the audio box's sampling rate and volume, as
// texts, and with `sixteenBits` chooses 16 bits.
class AudioReceiver {
 public:
  virtual void AudioSettings(const std::string& rate, const std::string& volume, bool sixteenBits) = 0;

 protected:
  ~AudioReceiver() = default;
};

// SetSignalValues: a time-frequency form takes a signal sig[0..points] over
// [a, b] in steps dt, with the audio settings to play it.
class SignalReceiver : public AudioReceiver {
 public:
  virtual void SetSignalValues(const std::vector<double>& values, int points, double a, double b, double dt) = 0;

 protected:
  ~SignalReceiver() = default;
};

// The spectrogram's calls: ShowSpecgramBox opens its compute box;
// ComputeTheSpectrogram checks the box and computes (false after a
// message); DenoiseOption prepares the Gabor threshold formula.
class SpectrogramCalls : public SignalReceiver {
 public:
  virtual void ShowSpecgramBox() = 0;
  virtual bool ComputeTheSpectrogram() = 0;
  virtual void DenoiseOption() = 0;

 protected:
  ~SpectrogramCalls() = default;
};

// The scalogram's calls: ShowScalogramBox opens its compute box;
// SetTrueAudioSignal gives it the sound to play in place of its signal (a
// pulse train of a drum track plays as the track); SetScalogramFields fills
// the compute box: the wavelet by its number in the list (1 to 5) and the
// octaves, voices, width and frequency as texts; ComputeTheScalogram checks
// the box and computes (false after a message).
class ScalogramCalls : public SignalReceiver {
 public:
  virtual void ShowScalogramBox() = 0;
  virtual void SetTrueAudioSignal(const std::vector<double>& samples) = 0;
  virtual void SetScalogramFields(int wavelet, const std::string& octaves, const std::string& voices,
                                  const std::string& width, const std::string& frequency) = 0;
  virtual bool ComputeTheScalogram() = 0;

 protected:
  ~ScalogramCalls() = default;
};

// What a one-dimensional form does for the percussion scalogram:
// SoundFileForPercScalogram keeps a sound to hand to the scalogram it opens
// next; ComputeScalogram opens the scalogram of the graph chosen in its box
// (null after a message).
class ScalogramSource {
 public:
  virtual void SoundFileForPercScalogram(const std::vector<double>& samples) = 0;
  virtual ScalogramCalls* ComputeScalogram() = 0;

 protected:
  ~ScalogramSource() = default;
};

// A new form of the kind, numbered, placed and shown, reached through the
// call it answers; null after reporting 72 or 73 (also when the kind does
// not answer the call, which then leaves no form behind).
template <class Call>
Call* NewFormFor(FormContext& context, FormKind kind) {
  int code = 0;
  Form* form = context.NewForm(kind, code);
  if (!form) {
    context.ReportFactoryFailure(code);
    return nullptr;
  }
  if (Call* call = dynamic_cast<Call*>(form)) return call;
  context.CloseForm(*form);
  context.ReportFactoryFailure(-1);
  return nullptr;
}

// The form behind a call, for what every form has (caption, closing).
template <class Call>
Form& FormOf(Call& call) {
  return dynamic_cast<Form&>(call);
}

}  // namespace keldo
