#include "measure/WaveTemplate.h"

#include "measure/BinaryFile.h"
#include "measure/WaveHeader.h"
#include "platform/Version.h"

#include <string>

namespace zav {
namespace {

// Passes every message on and notes that one was shown: the header reader gives (0, 0) both
// when it refused the file (and said so) and for a readable header that claims 0 Hz.
struct NotingDialogs : Dialogs {
    explicit NotingDialogs(Dialogs& inner) : inner(inner) {}
    MessageResult ShowMessage(const std::string& text, const std::string& title, MessageIcon icon,
                              MessageButtons buttons) override {
        shown = true;
        return inner.ShowMessage(text, title, icon, buttons);
    }
    std::optional<std::string> OpenFileName(const FileDialogRequest& request) override {
        return inner.OpenFileName(request);
    }
    std::optional<std::string> SaveFileName(const FileDialogRequest& request) override {
        return inner.SaveFileName(request);
    }
    Dialogs& inner;
    bool shown = false;
};

} // namespace

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
    NotingDialogs noting(dialogs);
    const WaveInfo info = ReadWaveHeader(file, noting);
    if (noting.shown)
        return std::nullopt; // the reader has said why
    if (info.SampleRate <= 0) {
        dialogs.ShowMessage("Error: recording wave file: the recording template \"" + path +
                                "\" gives a sample rate of " + std::to_string(info.SampleRate) +
                                " Hz.",
                            kAppTitle, MessageIcon::Critical);
        return std::nullopt;
    }
    WaveTemplate t;
    t.SampleRate = info.SampleRate;
    t.HeaderLength = file.Position() - 3;
    file.Seek(22);
    const std::int16_t channels = file.ReadInt16();
    file.Seek(34);
    const std::int16_t bits = file.ReadInt16();
    // Every recording is 16-bit mono; a template that says otherwise would mislabel it.
    if (channels != 1 || bits != 16) {
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
