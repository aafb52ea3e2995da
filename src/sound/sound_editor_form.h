#pragma once
// The sound editor: a form that holds a whole wave file, however long. Its
// editing commands come later; it opens files too long for a graph.

#include <memory>
#include <string>
#include <vector>

#include "kit/form.h"
#include "kit/named_calls.h"

namespace keldo::sound {

class SoundEditorForm final : public Form, public WaveFileReceiver {
 public:
  static constexpr FormKind kKind = FormKind::SoundEditor;

  explicit SoundEditorForm(FormContext& context);
  // Reads a mono wave file whole; false on failure (the caller reports).
  bool LoadWavFile(const std::string& path) override;
  int Rate() const { return rate_; }
  int Bits() const { return bits_; }
  long long SampleCount() const { return static_cast<long long>(samples_.size()); }
  int Points() const override { return static_cast<int>(samples_.size()); }
  std::vector<GraphSummary> Graphs() const override;

 private:
  std::vector<double> samples_;
  int rate_ = 0, bits_ = 16;
};

std::unique_ptr<Form> MakeSoundEditorForm(FormContext& context);

}  // namespace keldo::sound
