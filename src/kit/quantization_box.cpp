#include "kit/quantization_box.h"

#include "common/number_text.h"

namespace keldo {
namespace {

const char* const kThresholdHints[2] = {
    "Enter an expression like 1/2^6, which quantizes to 6 bits.",
    "An expression like 1/2^7:1/2^6, quantizes trend values to 6 bits and fluctuation values to 5 bits."};

// The text after the first `skip` characters: "2^16" or "16" of "1/2^16".
std::string After(const std::string& part, std::size_t skip) { return part.size() > skip ? part.substr(skip) : ""; }

}  // namespace


QuantStrings DefaultQuantStrings() {
  return {"0|1/2^16|Q|N|B|N|", "Y|1/2^16|Y|N|Y|N|", "N|1/2^16:1/2^8|Y|N|Y|N|"};
}

std::vector<std::string> QuantFields(const std::string& text) {
  std::vector<std::string> out;
  std::size_t start = 0;
  for (std::size_t bar = text.find('|'); bar != std::string::npos; bar = text.find('|', start)) {
    out.push_back(text.substr(start, bar - start));
    start = bar + 1;
  }
  if (out.size() < 6) out.resize(6);
  return out;
}

void AddQuantizationControls(ControlModel& controls) {
  const char* methods[2] = {"Uniform Threshold.   Value:", "Multiple Thresholds.  Values:"};
  const char* methodTips[2] = {
      "Sets  wavelet coefficients that are less in mag. than the threshold value equal to 0.",
      "Sets trend and fluc. values that are less in mag. than the thresholds equal to 0."};
  const char* quantizeTips[2] = {"If checked, non-zero values are quantized. ",
                                 "If checked, non-zero trend and fluc. values are quantized. "};
  for (int k = 0; k < 2; ++k) {
    controls.AddOption(IndexedName("OpMethod", k), methods[k], "OpMethod").tip = methodTips[k];
    controls.Add(IndexedName("TxtThreshold", k), ControlKind::Text).tip = kThresholdHints[k];
    controls.Add(IndexedName("chkQuantize", k), ControlKind::Check, "Quantize").tip = quantizeTips[k];
    controls.Add(IndexedName("chkDifferences", k), ControlKind::Check,
                 k == 0 ? "Encode by  differences" : "Encode by differences");
    controls.Add(IndexedName("chkSignBit", k), ControlKind::Check, "Sign bit").tip =
        "If checked, a sign bit is used when quantizing.";
  }
  controls.Add("chkSigMap", ControlKind::Check, "Create").tip = "If checked, a graph is drawn of the significance map.";
  controls.Add("cmdApply", ControlKind::Button, "Apply").tip = "Keeps these settings for the threshold series.";
  controls.Add("cmdCancel", ControlKind::Button, "Cancel").tip = "Leaves the settings as they were.";
}

void FillQuantizationControls(ControlModel& controls, const QuantStrings& strings) {
  for (int k = 0; k < 2; ++k) {
    const auto f = QuantFields(strings[static_cast<std::size_t>(k + 1)]);
    controls[IndexedName("OpMethod", k)].value = f[0] == "Y";
    controls.SetText(IndexedName("TxtThreshold", k), f[1]);
    controls[IndexedName("chkQuantize", k)].value = f[2] == "Y";
    controls[IndexedName("chkDifferences", k)].value = f[3] == "Y";
    controls[IndexedName("chkSignBit", k)].value = f[4] == "Y";
  }
  controls["chkSigMap"].value = QuantFields(strings[0])[5] == "S";
  for (int k = 0; k < 2; ++k) controls[IndexedName("TxtThreshold", k)].tip = ThresholdToolTip(controls, k);
}

QuantStrings QuantizationStrings(ControlModel& controls) {
  const int method = controls["OpMethod(1)"].value ? 1 : 0;
  const auto flag = [&](const char* name, int k, const char* on, const char* off) {
    return std::string(controls[IndexedName(name, k)].value ? on : off) + "|";
  };
  const std::string map = controls["chkSigMap"].value ? "S|" : "N|";
  QuantStrings strings;
  strings[0] = std::to_string(method) + "|" + controls.Text(IndexedName("TxtThreshold", method)) + "|" +
               flag("chkQuantize", method, "Q", "N") + flag("chkDifferences", method, "D", "N") +
               flag("chkSignBit", method, "B", "N") + map;
  for (int k = 0; k < 2; ++k)
    strings[static_cast<std::size_t>(k + 1)] = std::string(method == k ? "Y|" : "N|") +
                                               controls.Text(IndexedName("TxtThreshold", k)) + "|" +
                                               flag("chkQuantize", k, "Y", "N") + flag("chkDifferences", k, "Y", "N") +
                                               flag("chkSignBit", k, "Y", "N") + map;
  return strings;
}


std::string ThresholdToolTip(ControlModel& controls, int k) {
  const std::string text = controls.Text(IndexedName("TxtThreshold", k));
  const bool quantize = controls[IndexedName("chkQuantize", k)].value != 0;
  const int sign = controls[IndexedName("chkSignBit", k)].value ? 1 : 0;
  if (k == 1) {
    const std::size_t colon = text.find(':');
    const std::string first = text.substr(0, colon);
    const std::string second = colon == std::string::npos ? "" : text.substr(colon + 1);
    const std::size_t shortest = quantize ? 5 : 3;
    if (first.size() < shortest || second.size() < shortest) return "Enter an expression like 1/2^16:1/2^8.";
    if (!quantize)
      return "Trends with mags less than Max/" + After(first, 2) + ", flucs  with mags less than Max/" +
             After(second, 2) + ", are set to 0.";
    return "Quantizes trend at" + StrNumber(Val(After(first, 4)) + sign) + " bpp, and flucs at" +
           StrNumber(Val(After(second, 4)) + sign) + " bpp.";
  }
  if (text.size() < (quantize ? 5u : 3u)) return "Enter an expression like 1/2^16.";
  if (!quantize) return "Coefficients with mags below Max/" + After(text, 2) + " are set to 0.";
  if (sign) return "Quantizes at" + StrNumber(Val(After(text, 4)) + 1) + " bpp.";
  return "Quantizes at " + After(text, 4) + " bpp.";
}

bool QuantizationControlChanged(ControlModel& controls, const std::string& name) {
  std::string base;
  int k = -1;
  SplitIndexedName(name, base, k);
  if (k < 0 || k > 1) return false;
  if (base == "OpMethod") {
    if (controls[name].value) controls[IndexedName("TxtThreshold", k)].tip = kThresholdHints[k];
    return true;
  }
  if (base != "TxtThreshold" && base != "chkQuantize" && base != "chkSignBit") return base == "chkDifferences";
  controls[IndexedName("TxtThreshold", k)].tip = ThresholdToolTip(controls, k);
  return true;
}

LayoutNode QuantizationPanel() {
  using namespace layout;
  std::vector<LayoutNode> items{Heading("Quantization parameters")};
  for (int k = 0; k < 2; ++k)
    items.push_back(Group("", Rows({Item(IndexedName("OpMethod", k)), Item(IndexedName("TxtThreshold", k)),
                                    Item(IndexedName("chkQuantize", k)), Item(IndexedName("chkDifferences", k)),
                                    Item(IndexedName("chkSignBit", k))})));
  items.push_back(Rows({Field("Significance map:", "chkSigMap")}));
  items.push_back(Line({Item("cmdApply"), Item("cmdCancel")}));
  return Column(std::move(items));
}

}  // namespace keldo
