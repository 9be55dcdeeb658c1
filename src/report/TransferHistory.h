#pragma once

#include <string>

namespace zav {

// What the transfer remembers for the rest of the run, across openings of its dialog: the
// last observation that went out, so it is never sent twice, and the server debug flag.
struct TransferHistory {
    std::string lastObsTime; // ObsTime of the last successful transfer; empty at first
    std::string lastReceipt; // the server's receipt for it, or "by Email"
    int serverDebug = 0;     // 1 once a user name began with "*"; never cleared
};

} // namespace zav
