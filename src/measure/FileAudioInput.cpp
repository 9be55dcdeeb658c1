#include "measure/FileAudioInput.h"

#include "measure/BinaryFile.h"
#include "measure/WaveHeader.h"
#include "platform/SilentDialogs.h"
#include "platform/Version.h"

#include <chrono>
#include <filesystem>
#include <system_error>

namespace zav {

namespace fs = std::filesystem;

Recording FileAudioInput::RecordWave(const RecordingRequest& request) {
    Recording rec;
    const std::optional<std::string> source = m_chooseFile();
    if (!source) {
        rec.status = RecordingStatus::Cancelled;
        return rec;
    }
    std::error_code ec;
    const auto modified = fs::last_write_time(*source, ec);
    if (!ec) {
        const bool same =
            fs::exists(request.wavefile, ec) && fs::equivalent(*source, request.wavefile, ec);
        if (!same && !ec)
            fs::copy_file(*source, request.wavefile, fs::copy_options::overwrite_existing, ec);
    }
    if (ec) {
        m_dialogs.ShowMessage("Error: recording wave file: " + *source + ": " + ec.message(),
                              kAppTitle, MessageIcon::Critical);
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
