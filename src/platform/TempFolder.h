#pragma once

#include <string>
#include <vector>

namespace zav {

// The step recordings are written where no other user can plant a file or a link: the
// session's runtime folder ($XDG_RUNTIME_DIR/zav), else a folder of this user's own in the
// shared temporary folder, created with mode 0700. A folder of that name that is a link,
// belongs to someone else or is open to others is not used; a fresh 0700 folder with an
// unguessable name is made instead. The result ends in a separator; "" when no private
// folder can be had (`error` says why).
std::string PrivateTempFolder(std::string* error = nullptr);

// The same choice below `runtimeDir` (may be "") and `sharedTempDir`, for tests.
std::string PrivateTempFolder(const std::string& runtimeDir, const std::string& sharedTempDir,
                              std::string* error = nullptr);

// Removes the recordings ("~" + 8 hex digits of a process id + ".wav" or ".tmp") that runs
// which are no longer alive left in `folder`, a killed run's for instance.
void RemoveStaleRecordings(const std::string& folder);

// Removes `paths` when the program is ended by SIGTERM, SIGINT or SIGHUP, then ends as the
// signal would have. Replaces any earlier list.
void RemoveOnTermination(const std::vector<std::string>& paths);

} // namespace zav
