#pragma once
// Slices of a time-frequency picture, and the signals a time-frequency form
// gives back, sent to new one-dimensional forms.
//
// A one-dimensional form holds N+1 samples with N a power of two from 64 to
// 65536. Values at equal spacing from a to b go onto the smallest such grid
// that holds them: the values first, zeros after, the spacing kept, so that
// the grid runs from a to a + N (b - a) / (count - 1).

#include <string>
#include <vector>

#include "kit/form_context.h"
#include "kit/named_calls.h"

namespace keldo {

// The audio box's settings a new form takes over.
struct AudioTexts {
  std::string rate, volume;
  bool sixteenBits = true;
};

OneDimensionalResult SliceResult(const std::vector<double>& values, double a, double b, const std::string& remarks);

// A new one-dimensional form shows the values, and takes the audio
// settings; false after 72 or 73 was reported.
bool SendToOneDimensionalForm(FormContext& context, const std::vector<double>& values, double a, double b,
                              const std::string& remarks, const AudioTexts& audio);

// Where a form's slices go: the first slice makes a new one-dimensional
// form, and later slices are added to that form as further graphs while it
// is open. A slice whose grid is not that form's points is refused with
// message 2 ("Graph data incompatible"); once the form is closed, the next
// slice makes a new one.
class SliceTarget {
 public:
  // False after a message.
  bool Send(FormContext& context, const std::vector<double>& values, double a, double b, const std::string& remarks,
            const AudioTexts& audio);
  // The form the slices go to, or null.
  Form* Target(const FormContext& context) const;

 private:
  Form* form_ = nullptr;
};

}  // namespace keldo
