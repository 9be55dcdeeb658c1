#pragma once

namespace zav {

// A key typed into a box, as far as the boxes tell keys apart: only Enter acts, everything
// else is plain typing.
enum class Key { Enter, Other };

// What became of a key after a box's handler saw it: left for the box, or swallowed.
enum class KeyOutcome { PassedOn, Swallowed };

} // namespace zav
