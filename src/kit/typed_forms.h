#pragma once
// Forms of a known class. Every form class names its kind as F::kKind, and
// the composition root registers, for each kind, the maker of that class and
// no other; so a form of kind F::kKind is an F. Result forms are made and
// found through these, never by casting at the call site.

#include "kit/form.h"
#include "kit/form_context.h"

namespace keldo {

// The form as an F, or null when it is of another kind.
template <class F>
F* FormAs(Form* form) {
  return form && form->Kind() == F::kKind ? static_cast<F*>(form) : nullptr;
}

// A new form of F's kind, numbered, placed and shown; null with the
// factory's code when it cannot be made (the caller reports).
template <class F>
F* NewFormOf(FormContext& context, int& code) {
  return FormAs<F>(context.NewForm(F::kKind, code));
}

}  // namespace keldo
