#include "measure/WaveTrim.h"

#include "measure/BinaryFile.h"
#include "platform/AtomicFile.h"

#include <filesystem>

#include <cmath>

namespace zav {
namespace {

void appendLittleEndian32(std::string& out, std::uint32_t v) {
    for (int i = 0; i < 4; ++i)
        out += static_cast<char>((v >> (8 * i)) & 0xFF);
}

bool fail(std::string* error, std::string text) {
    if (error)
        *error = std::move(text);
    return false;
}

} // namespace

bool TrimRecording(const std::string& rawPath, const std::string& wavPath,
                   std::int64_t headerLength, std::int32_t sampleRate, std::int64_t keep,
                   std::string* error) {
    BinaryFile raw;
    if (!raw.Open(rawPath))
        return fail(error, "cannot read " + rawPath);
    // The header is copied as 16-bit words, counted 1-based: word 5 (offset 8) up to word
    // round((H - 1) / 2), the last one in front of the data size field.
    const auto lastWord = static_cast<std::int64_t>(std::nearbyint((headerLength - 1) / 2.0));
    const std::int64_t headerWords = lastWord >= 5 ? lastWord - 4 : 0;
    std::string out;
    out.reserve(static_cast<std::size_t>(8 + 2 * headerWords + 4 + 2 * keep));
    out += "RIFF";
    appendLittleEndian32(out, static_cast<std::uint32_t>(2 * keep + 36));
    std::string words(static_cast<std::size_t>(2 * headerWords), '\0');
    raw.Seek(8);
    raw.Read(words.data(), words.size());
    out += words;
    appendLittleEndian32(out, static_cast<std::uint32_t>(2 * keep));
    // First sample of the raw recording at H + 3 (0-based); skip R samples behind it.
    raw.Seek(headerLength + 3 + 2 * std::int64_t{sampleRate});
    const std::size_t sampleBytes = static_cast<std::size_t>(2 * keep);
    const std::size_t start = out.size();
    out.resize(start + sampleBytes);
    if (raw.Read(out.data() + start, sampleBytes) != sampleBytes)
        return fail(error, "the raw recording " + rawPath + " holds fewer samples than kept");
    raw.Close();
    // The recording is this program's own file: a link placed at its name is replaced, not
    // written through.
    std::error_code ignored;
    if (std::filesystem::is_symlink(wavPath, ignored))
        std::filesystem::remove(wavPath, ignored);
    std::string writeError;
    if (!WriteFileAtomically(wavPath, out, &writeError))
        return fail(error, writeError);
    return true;
}

} // namespace zav
