#include "kit/slices.h"

#include <algorithm>

namespace keldo {
namespace {

constexpr int kMinPoints = 64;
constexpr int kMaxPoints = 65536;

// The smallest grid from 64 up whose N+1 samples hold count values.
int PointsFor(std::size_t count) {
  int n = kMinPoints;
  while (n < kMaxPoints && static_cast<std::size_t>(n) + 1 < count) n *= 2;
  return n;
}

}  // namespace

OneDimensionalResult SliceResult(const std::vector<double>& values, double a, double b, const std::string& remarks) {
  const int points = PointsFor(values.size());
  std::vector<double> y(static_cast<std::size_t>(points) + 1, 0.0);
  std::copy_n(values.begin(), std::min(values.size(), y.size()), y.begin());
  const double h = values.size() > 1 ? (b - a) / static_cast<double>(values.size() - 1) : (b - a);
  OneDimensionalResult result = OneDimensionalResult::Of(points, std::move(y), a, a + h * points, h);
  result.remarks = remarks;
  return result;
}

Form* SliceTarget::Target(const FormContext& context) const {
  return form_ != nullptr && context.IsOpenForm(form_) ? form_ : nullptr;
}

bool SliceTarget::Send(FormContext& context, const std::vector<double>& values, double a, double b,
                       const std::string& remarks, const AudioTexts& audio) {
  if (Form* open = Target(context)) {
    if (auto* receiver = dynamic_cast<OneDimensionalReceiver*>(open)) {
      if (receiver->AddResult(SliceResult(values, a, b, remarks))) return true;
      context.ShowError(2);
      return false;
    }
  }
  form_ = nullptr;
  OneDimensionalReceiver* form = NewFormFor<OneDimensionalReceiver>(context, FormKind::Graph1);
  if (!form) return false;
  form->ShowResult(SliceResult(values, a, b, remarks));
  if (auto* receiver = dynamic_cast<AudioReceiver*>(form)) receiver->AudioSettings(audio.rate, audio.volume, audio.sixteenBits);
  form_ = &FormOf(*form);
  return true;
}

bool SendToOneDimensionalForm(FormContext& context, const std::vector<double>& values, double a, double b,
                              const std::string& remarks, const AudioTexts& audio) {
  OneDimensionalReceiver* form = NewFormFor<OneDimensionalReceiver>(context, FormKind::Graph1);
  if (!form) return false;
  form->ShowResult(SliceResult(values, a, b, remarks));
  if (auto* receiver = dynamic_cast<AudioReceiver*>(form))
    receiver->AudioSettings(audio.rate, audio.volume, audio.sixteenBits);
  return true;
}

}  // namespace keldo
