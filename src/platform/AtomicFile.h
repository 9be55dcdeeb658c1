#pragma once

#include <filesystem>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace zav {

// Who may read a file that is written: the usual modes, or its owner alone (0600) because
// it holds a password. An owner-only file stays so, and an existing wider one is narrowed.
enum class FileAccessMode { Usual, OwnerOnly };

// Writes `bytes` as the whole new content of `path`: first to a temporary file beside it,
// then renamed into place, so that a crash or a full disk never leaves half a file and the
// old content stays until the new one is complete. A link is written through; an existing
// file keeps its permissions (narrowed for OwnerOnly). False (and `error`: the file named
// and the system's reason, "cannot write /a/b.zav: No space left on device") on failure,
// with the old file untouched.
bool WriteFileAtomically(const std::string& path, std::string_view bytes,
                         std::string* error = nullptr,
                         FileAccessMode access = FileAccessMode::Usual);

// The same guarantee for content too large to hold in memory: write to `Stream()` piece by
// piece, then `Commit()` puts the file in place. Without a successful commit (an error, an
// exception, an early return) the temporary file is removed and the old file stays as it was.
class AtomicFileWriter {
public:
    explicit AtomicFileWriter(const std::string& path,
                              FileAccessMode access = FileAccessMode::Usual);
    ~AtomicFileWriter();
    AtomicFileWriter(const AtomicFileWriter&) = delete;
    AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

    // False when the temporary file could not be created; `Commit()` then fails too.
    bool IsOpen() const;
    std::ostream& Stream() { return m_out; }
    // Closes the temporary file and renames it over the target. False (and `error`) when any
    // write failed or the rename did; the temporary file is then gone.
    bool Commit(std::string* error = nullptr);

    class Buffer;

private:
    std::filesystem::path m_target; // after following a link
    std::filesystem::path m_temporary;
    std::unique_ptr<Buffer> m_buffer;
    std::ostream m_out;
    std::string m_openError;
    FileAccessMode m_access;
    bool m_existed = false;
    bool m_done = false;
};

} // namespace zav
