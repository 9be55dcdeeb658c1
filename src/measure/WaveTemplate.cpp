#include "measure/WaveTemplate.h"

#include "measure/BinaryFile.h"
#include "measure/WaveHeader.h"
#include "platform/Version.h"

namespace zav {

std::optional<WaveTemplate> ReadWaveTemplate(const std::string& path, Dialogs& dialogs) {
    BinaryFile file;
    if (!file.Open(path)) {
        const bool missing = file.OpenError() == "No such file or directory";
        dialogs.ShowMessage(
            "Error: recording wave file: the recording template \"" + path +
                (missing ? "\" is missing." : "\" cannot be read: " + file.OpenError() + "."),
            kAppTitle, MessageIcon::Critical);
        return std::nullopt;
    }
    const WaveInfo info = ReadWaveHeader(file, dialogs);
    if (info.SampleRate == 0)
        return std::nullopt; // the reader has said why
    WaveTemplate t;
    t.SampleRate = info.SampleRate;
    t.HeaderLength = file.Position() - 3;
    file.Seek(22);
    const std::int16_t channels = file.ReadInt16();
    file.Seek(34);
    const std::int16_t bits = file.ReadInt16();
    // Every recording is 16-bit mono; a template that says otherwise would mislabel it.
    if (channels != 1 || bits != 16 || t.SampleRate <= 0) {
        dialogs.ShowMessage("Error: recording wave file: the recording template \"" + path +
                                "\" is not a 16-bit mono PCM file.",
                            kAppTitle, MessageIcon::Critical);
        return std::nullopt;
    }
    t.header.resize(static_cast<std::size_t>(t.HeaderLength - 1));
    file.Seek(0);
    file.Read(t.header.data(), t.header.size());
    return t;
}

} // namespace zav
