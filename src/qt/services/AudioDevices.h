#pragma once

#include <QAudioDevice>

#include <optional>
#include <string>
#include <vector>

namespace zav {

// The names of the recording inputs the sound system offers, for the "Audio &input" menu
// and the "InputDevice" setting.
std::vector<std::string> AudioInputNames();

// The input stored as `name` (its description, or the sound system's own id); the system's
// default input for an empty name. Nothing when there is no such input.
std::optional<QAudioDevice> FindAudioInput(const std::string& name);

// Whether the input with the sound system's id `id` is still there.
bool AudioInputPresent(const QByteArray& id);

// The sound server's names of the inputs this process records from right now, when the
// server can say (PulseAudio, or a server that speaks its protocol); nothing otherwise. The
// server may move a recording to another input without the recording noticing.
std::optional<std::vector<std::string>> InputsRecordedNow();

} // namespace zav
