#pragma once

namespace zav {

// Where the core asks the main window to put the keyboard focus next.
// SetupBox: the set-up box that refused its value (the model names which).
enum class FocusTarget { Unchanged, Step1, Step2, Step3, recordTsvButtonEnabled, SetupBox };

} // namespace zav
