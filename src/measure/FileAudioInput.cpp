#include "measure/FileAudioInput.h"

#include "measure/BinaryFile.h"
#include "measure/WaveHeader.h"
#include "platform/FileAccess.h"
#include "platform/SilentDialogs.h"
#include "platform/Version.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace zav {

namespace fs = std::filesystem;

namespace {

// Copies the chosen recording to the step's own file: only from a regular file (a device or
// a pipe would never end), and into a file created new, so that nothing planted at the
// step's name (a link) is written through. False and `error` when it cannot.
bool copyRecording(const std::string& from, const std::string& to, std::string& error) {
    std::FILE* in = OpenRegularFile(from, &error);
    if (!in)
        return false;
    std::remove(to.c_str());
    std::FILE* out = CreateExclusiveFile(to, &error);
    if (!out) {
        std::fclose(in);
        return false;
    }
    char buffer[65536];
    std::size_t got;
    bool ok = true;
    while (ok && (got = std::fread(buffer, 1, sizeof buffer, in)) > 0)
        ok = std::fwrite(buffer, 1, got, out) == got;
    if (std::ferror(in))
        ok = false;
    const std::string reason = ok ? "" : LastErrorText();
    std::fclose(in);
    ok = std::fclose(out) == 0 && ok;
    if (!ok) {
        error = reason.empty() ? LastErrorText() : reason;
        std::remove(to.c_str());
    }
    return ok;
}

} // namespace

Recording FileAudioInput::RecordWave(const RecordingRequest& request) {
    Recording rec;
    const std::optional<std::string> source = m_chooseFile();
    if (!source) {
        rec.status = RecordingStatus::Cancelled;
        return rec;
    }
    std::error_code ec;
    const auto modified = fs::last_write_time(*source, ec);
    std::string error = ec ? ec.message() : "";
    if (!ec) {
        const bool same =
            fs::exists(request.wavefile, ec) && fs::equivalent(*source, request.wavefile, ec);
        if (!same && !copyRecording(*source, request.wavefile, error) && error.empty())
            error = "cannot be copied";
    }
    if (!error.empty()) {
        m_dialogs.ShowMessage("Error: recording wave file: " + *source + ": " + error, kAppTitle,
                              MessageIcon::Critical);
        return rec;
    }
    BinaryFile file(request.wavefile);
    // Read only for the recording's length: an unusable file is reported once, by the
    // analysis that follows.
    SilentDialogs silent;
    const WaveInfo info = ReadWaveHeader(file, silent);
    rec.status = RecordingStatus::Recorded;
    rec.samples = info.Samples;
    rec.sampleRate = info.SampleRate;
    rec.time = std::chrono::system_clock::to_time_t(
        std::chrono::time_point_cast<std::chrono::system_clock::duration>(
            std::chrono::file_clock::to_sys(modified)));
    return rec;
}

} // namespace zav
