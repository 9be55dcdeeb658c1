#pragma once

#include <QProcess>
#include <QTemporaryDir>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zav::test {

// A private PulseAudio server for one test program, so that the audio adapters meet a real
// sound system without a sound card: a null sink "zavsink" and a mono source "zavmic" that
// records whatever is played into the sink. Started and stopped (by its process id) by the
// harness the audio scripts use (tests/cli/pulse-server.sh); the program's own environment
// points at it (XDG_RUNTIME_DIR, PULSE_SERVER), so Qt and the command-line tools find it.
class PulseServer {
public:
    PulseServer();
    ~PulseServer();

    bool ok() const { return m_why.empty(); }
    const std::string& why() const { return m_why; }
    // Runs pactl with `args`; its standard output, or nothing with `ok` false.
    std::string Pactl(const QStringList& args, bool* ok = nullptr) const;
    // Loads the remapped source "zavmic" again if it is gone, and makes it the default.
    bool EnsureMicrophone();
    // Unloads "zavmic" (the input vanishes as a pulled-out device does).
    void RemoveMicrophone();
    // Plays `samples` (mono, 44.1 kHz) into the sink until StopPlaying, once the server plays.
    bool Play(const std::vector<std::int16_t>& samples);
    void StopPlaying();

private:
    QTemporaryDir m_dir;
    std::unique_ptr<QProcess> m_player;
    std::string m_why = "not started";
};

} // namespace zav::test
