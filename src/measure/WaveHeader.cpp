#include "measure/WaveHeader.h"

#include "platform/Version.h"

#include <limits>

namespace zav {

std::int32_t SamplesFromDataSize(std::int32_t dataBytes) {
    const std::int32_t down = dataBytes >> 1; // floor(dataBytes / 2), also for negatives
    if ((dataBytes & 1) == 0)
        return down;
    return (down & 1) == 0 ? down : down + 1; // a tie goes to the even neighbour
}

WaveInfo ReadWaveHeader(BinaryFile& file, Dialogs& dialogs) {
    auto fail = [&dialogs] {
        dialogs.ShowMessage("Unsupported WAVE file format.", kAppTitle, MessageIcon::Critical,
                            MessageButtons::Ok);
        return WaveInfo{};
    };
    // The reads go in this order, at these offsets, so that a short file fails on the first
    // identifier it no longer holds.
    if (file.ReadChars(4) != "RIFF")
        return fail();
    file.Seek(8);
    if (file.ReadChars(4) != "WAVE")
        return fail();
    file.Seek(12);
    if (file.ReadChars(4) != "fmt ")
        return fail();
    const std::int32_t formatSize = file.ReadInt32();
    if (file.ReadInt16() != 1) // PCM
        return fail();
    file.Seek(32);
    if (file.ReadInt16() != 2) // block alignment: 16-bit mono is what the detectors read
        return fail();
    file.Seek(24);
    const std::int32_t sampleRate = file.ReadInt32();
    // The data chunk must follow the format chunk directly. An offset outside the 32-bit
    // range (or before the start) cannot hold it.
    const std::int64_t dataChunk = std::int64_t{20} + formatSize;
    if (dataChunk < 0 || dataChunk > std::numeric_limits<std::int32_t>::max())
        return fail();
    file.Seek(dataChunk);
    if (file.ReadChars(4) != "data")
        return fail();
    const std::int32_t dataBytes = file.ReadInt32();
    return WaveInfo{sampleRate, SamplesFromDataSize(dataBytes)};
}

} // namespace zav
