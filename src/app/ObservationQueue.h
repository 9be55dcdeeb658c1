#pragma once

#include <deque>
#include <string>

namespace zav {

// Observations waiting to be posted, kept on disk so that a stopped run or a crash does not
// lose them: one line per request body, the file rewritten whole at every change. An entry
// leaves the queue as soon as its request may have reached the server, so none is sent twice.
class ObservationQueue {
public:
    explicit ObservationQueue(std::string path) : m_path(std::move(path)) {}

    // Reads what an earlier run left. False (and `error`) when the file exists but cannot be
    // read; the queue is then empty.
    bool Load(std::string* error = nullptr);
    // False (and `error`) when the file could not be written; the entry is queued in memory.
    bool Push(const std::string& body, std::string* error = nullptr);
    // Takes off the oldest entry.
    bool Pop(std::string* error = nullptr);

    const std::string& Front() const { return m_entries.front(); }
    bool Empty() const { return m_entries.empty(); }
    std::size_t Size() const { return m_entries.size(); }
    const std::string& Path() const { return m_path; }

private:
    bool save(std::string* error);

    std::string m_path;
    std::deque<std::string> m_entries;
};

} // namespace zav
