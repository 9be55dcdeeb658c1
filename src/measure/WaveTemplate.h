#pragma once

#include "platform/Dialogs.h"

#include <cstdint>
#include <optional>
#include <string>

namespace zav {

// The recording template: the WAVE file whose format every recording takes.
struct WaveTemplate {
    std::int32_t SampleRate = 0; // R
    // H: the 1-based position of the data size field, that is the 0-based position behind
    // the header minus 3 (41 for the canonical 44-byte header).
    std::int64_t HeaderLength = 0;
    // The template's bytes in front of the data size field ("RIFF" ... "data").
    std::string header;
};

// Reads the template at `path`. A missing template and one that is not 16-bit mono PCM show
// a message saying so; one the WAVE reader refuses shows the reader's message. Nothing then.
std::optional<WaveTemplate> ReadWaveTemplate(const std::string& path, Dialogs& dialogs);

} // namespace zav
