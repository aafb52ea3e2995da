#pragma once
// The compression workshop: a file-to-file tool. "Encode Transform" reads a
// stored transform (.kb2) and codes it with the bit-plane coder, to a bit
// rate or a PSNR, binary, prefix-coded or arithmetic, lossy or lossless,
// along one of four scan orders, into a .wic file; "Decode Transform" reads
// a .wic file back to the coefficient matrix and stores it beside the file
// as "_quant.kb2". Four test aids print a scan order, a zigzag, the packing
// tables and an arithmetic round trip. The report is TxtData.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "formula/compiler.h"
#include "kit/form.h"
#include "wavelet/wdr_files.h"

namespace keldo::workshop {

class WorkshopForm final : public Form, private formula::FormulaHost {
 public:
  static constexpr FormKind kKind = FormKind::Workshop;

  explicit WorkshopForm(FormContext& context);

  void EncodeCommand();
  void DecodeCommand();
  // "Denoise Transform": the stored transform through the bit-plane passes
  // down to the box's threshold, keeping trees of the box's depth; the
  // matrix is stored as "_quant.kb2" in the workshop's folder.
  void DenoiseCommand();
  void ScanOrderCommand();
  void ZigZagCommand();
  void LookUpCommand();
  void ArithmeticCoDecCommand();
  // "Lossy" or "Lossless" chosen: the coders and targets the option allows.
  void LossyChanged();

  const FormLayout& Layout() const override;
  void ControlChanged(const std::string& name) override;

  // The last transform read, its side and name, and the last matrix decoded.
  const std::vector<float>& Transform() const { return transform_; }
  int Side() const { return n_; }
  const wavelet::ImagePlane& Decoded() const { return decoded_; }

 private:
  void BuildControls();
  void BindCommands();
  // GetTestData: a .kb2 file chosen in the dialog; its side must be one the
  // coders take and the levels box within its limit. False after a message.
  bool GetTestData(const std::string& levelsBox, int& levels);
  // SaveQuantizationMatrix: a matrix as a .kb2 file; false after a message.
  bool SaveQuantizationMatrix(const wavelet::ImagePlane& matrix, const std::string& path);
  void Report(const std::string& text);
  int Chosen(const std::string& base, int count) const;

  // FormulaHost: the number fields.
  int FormulaPoints() const override { return 0; }
  int FormulaGraphCount() const override { return 0; }
  double FormulaIntervalLength() const override { return 1.0; }
  std::optional<std::string> FormulaPrompt(const std::string&, const std::string&) override { return std::nullopt; }
  void FormulaError(int number) override;
  platform::Random* FormulaRandom() override;
  const formula::GraphTable* FormulaGraphs() override { return nullptr; }

  std::vector<float> transform_;
  int n_ = 0;
  std::string baseName_;
  wavelet::ImagePlane decoded_;
  formula::FormulaState formula_;
  formula::Compiler compiler_{formula_, *this};
};

std::unique_ptr<Form> MakeWorkshopForm(FormContext& context);

}  // namespace keldo::workshop
