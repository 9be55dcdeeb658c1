#pragma once

namespace zav {

// Where the core asks the main window to put the keyboard focus next.
enum class FocusTarget { Unchanged, Step1, Step2, Step3, RTSVB };

} // namespace zav
