// The profile reader on any bytes, and its writer's round trip: what it writes reads back
// the same.
#include "config/IniFile.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const zav::IniFile ini =
        zav::IniFile::Parse(std::string_view(reinterpret_cast<const char*>(data), size));
    const std::string written = ini.Text();
    if (zav::IniFile::Parse(written).Text() != written)
        std::abort();
    return 0;
}
