#include "script/dump.h"

#include "kit/focus.h"
#include "kit/form.h"
#include "app/frame.h"
#include "script/json_writer.h"

namespace keldo::script {
namespace {

bool UsesText(ControlKind kind) { return kind == ControlKind::Text || kind == ControlKind::List; }

std::string ControlsJson(const ControlModel& model) {
  std::string out = "{";
  bool first = true;
  for (const auto& [name, c] : model.All()) {
    out += first ? "\n    " : ",\n    ";
    first = false;
    out += JsonString(name) + ": {";
    out += UsesText(c.kind) ? "\"text\": " : "\"caption\": ";
    out += JsonString(c.text);
    // The focus request's count only tells a view that a request is new:
    // which box has the focus is its text.
    out += ", \"value\": " + std::to_string(name == kActiveControl ? 0 : c.value);
    out += std::string(", \"enabled\": ") + (c.enabled ? "true" : "false");
    out += std::string(", \"visible\": ") + (c.visible ? "true" : "false");
    if (!c.tip.empty()) out += ", \"tip\": " + JsonString(c.tip);
    out += "}";
  }
  out += first ? "}" : "\n  }";
  return out;
}

std::string NumbersJson(const std::vector<double>& values) {
  std::string out = "[";
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i) out += ", ";
    out += JsonNumber(values[i]);
  }
  return out + "]";
}

}  // namespace

std::string DumpJson(Frame& frame, const Form* form, const std::vector<std::string>& messages,
                     const std::string& clipboardText, MatrixValues matrices) {
  std::string out = "{\n";
  if (form) {
    const FormKindInfo* kind = frame.KindInfo(form->Kind());
    out += "  \"kind\": " + JsonString(kind ? kind->word : std::string_view()) + ",\n";
    out += "  \"caption\": " + JsonString(form->Caption()) + ",\n";
    out += "  \"points\": " + std::to_string(form->Points()) + ",\n";
    const auto w = form->Window();
    out += "  \"window\": " + NumbersJson({w[0], w[1], w[2], w[3]}) + ",\n";
    out += "  \"graphs\": [";
    const auto graphs = form->Graphs();
    for (std::size_t g = 0; g < graphs.size(); ++g) {
      out += g ? ",\n    {" : "\n    {";
      out += "\"a\": " + JsonNumber(graphs[g].a) + ", \"b\": " + JsonNumber(graphs[g].b);
      out += ", \"h\": " + JsonNumber(graphs[g].h) + ", \"peak\": " + JsonNumber(graphs[g].peak);
      if (graphs[g].rows > 0) {
        // A matrix: one array per row, row 0 first.
        const std::size_t rows = static_cast<std::size_t>(graphs[g].rows);
        const std::size_t columns = graphs[g].values.size() / rows;
        out += ", \"rows\": " + std::to_string(rows);
        if (matrices == MatrixValues::Brief) {
          out += ", \"columns\": " + std::to_string(columns);
        } else {
          out += ", \"values\": [";
          for (std::size_t i = 0; i < rows; ++i) {
            const auto first = graphs[g].values.begin() + static_cast<std::ptrdiff_t>(i * columns);
            const auto last = first + static_cast<std::ptrdiff_t>(columns);
            out += (i ? ",\n      " : "\n      ") + NumbersJson(std::vector<double>(first, last));
          }
          out += "]";
        }
      } else {
        out += ", \"values\": " + NumbersJson(graphs[g].values);
      }
      for (const GraphSummary::Field& f : graphs[g].fields) {
        out += ", " + JsonString(f.name) + ": ";
        if (!f.texts.empty()) {
          out += "[";
          for (std::size_t t = 0; t < f.texts.size(); ++t) out += (t ? ", " : "") + JsonString(f.texts[t]);
          out += "]";
        } else if (f.numberList) out += NumbersJson(f.numbers);
        else if (!f.text.empty() || f.numbers.empty()) out += JsonString(f.text);
        else if (f.numbers.size() == 1) out += JsonNumber(f.numbers[0]);
        else out += NumbersJson(f.numbers);
      }
      out += "}";
    }
    out += graphs.empty() ? "],\n" : "\n  ],\n";
    out += "  \"controls\": " + ControlsJson(form->controls()) + ",\n";
  } else {
    out += "  \"kind\": \"frame\",\n  \"caption\": \"KELDO\",\n  \"points\": 0,\n";
    out += "  \"window\": [0, 0, 0, 0],\n  \"graphs\": [],\n";
    out += "  \"controls\": " + ControlsJson(frame.controls()) + ",\n";
  }
  out += "  \"messages\": [";
  for (std::size_t i = 0; i < messages.size(); ++i) out += (i ? ", " : "") + JsonString(messages[i]);
  out += "],\n";
  out += "  \"clipboard\": " + JsonString(clipboardText) + "\n}\n";
  return out;
}

}  // namespace keldo::script
