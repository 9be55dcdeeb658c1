#include "gps/NmeaLineAssembler.h"

namespace zav {

std::vector<std::string> NmeaLineAssembler::Add(std::string_view chunk) {
    std::vector<std::string> lines;
    for (;;) {
        const std::size_t end = chunk.find('\n');
        const std::string_view part = chunk.substr(0, end);
        if (m_pending.size() < kMaxLineBytes)
            m_pending.append(part.substr(0, kMaxLineBytes - m_pending.size()));
        if (end == std::string_view::npos)
            return lines;
        // A CR cut off by the length cap is lost with the rest of the overlong line.
        if (!m_pending.empty() && m_pending.back() == '\r')
            m_pending.pop_back();
        lines.push_back(std::move(m_pending));
        m_pending.clear();
        chunk.remove_prefix(end + 1);
    }
}

} // namespace zav
