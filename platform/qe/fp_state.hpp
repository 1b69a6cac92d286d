// The floating-point state of a thread around code that expects the default one. A host may run its threads with
// exceptions unmasked, denormals off or another rounding; image libraries then fail or give other texels.
#pragma once

namespace QE {

/// `false`: keeps the calling thread's floating-point environment aside and sets the default one, for foreign code.
/// `true`: puts the kept environment back. Asking for the state that the thread is in does nothing. Each thread has its
/// own state and starts with its caller's (`true`).
void set_fp_state(bool callers);

}  // namespace QE
