#include "app/ObservationQueue.h"

#include "platform/AtomicFile.h"

#include <filesystem>
#include <fstream>

namespace zav {
namespace {
// A request body is a few hundred bytes; a queue file past this is not ours.
constexpr std::uintmax_t kMaxQueueBytes = 64 * 1024 * 1024;
} // namespace

bool ObservationQueue::Load(std::string* error) {
    m_entries.clear();
    std::error_code ec;
    if (!std::filesystem::exists(m_path, ec))
        return true;
    if (!std::filesystem::is_regular_file(m_path, ec) ||
        std::filesystem::file_size(m_path, ec) > kMaxQueueBytes || ec) {
        if (error)
            *error = "the queue " + m_path + " is not a file of queued observations";
        return false;
    }
    std::ifstream in(m_path, std::ios::binary);
    if (!in) {
        if (error)
            *error = "the queue " + m_path + " cannot be read";
        return false;
    }
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (!line.empty())
            m_entries.push_back(line);
    }
    return true;
}

bool ObservationQueue::Push(const std::string& body, std::string* error) {
    m_entries.push_back(body);
    return save(error);
}

bool ObservationQueue::Pop(std::string* error) {
    if (!m_entries.empty())
        m_entries.pop_front();
    return save(error);
}

bool ObservationQueue::save(std::string* error) {
    std::error_code ignored;
    if (m_entries.empty()) {
        std::filesystem::remove(m_path, ignored);
        return !std::filesystem::exists(m_path, ignored);
    }
    std::string text;
    for (const std::string& body : m_entries)
        text += body + "\n";
    // Each body carries the account's password: readable by its owner alone.
    return WriteFileAtomically(m_path, text, error, FileAccessMode::OwnerOnly);
}

} // namespace zav
