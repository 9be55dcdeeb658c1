#pragma once

#include <ostream>

namespace zav {

// Where a zavcli command writes: results on `out`, messages and progress on `err`.
struct CliIo {
    std::ostream& out;
    std::ostream& err;
    bool errIsTerminal = false; // progress is shown only on a terminal
};

} // namespace zav
