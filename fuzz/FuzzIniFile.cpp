// The profile reader on any bytes, and its writer's round trip: what it writes reads back
// the same. Read from a file too, where the path may name a folder, a pipe or a device.
#include "FuzzFile.h"
#include "config/IniFile.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const zav::IniFile ini = zav::IniFile::Parse(bytes);
    const std::string written = ini.Text();
    if (zav::IniFile::Parse(written).Text() != written)
        std::abort();
    zav::IniFile loaded;
    std::string error;
    const bool ok = loaded.Load(FuzzFile(data, size, ".zav"), &error);
    // A file that loads is the text parsed; one that does not is empty and says why.
    if (ok ? loaded.Text() != written : (!loaded.Text().empty() || error.empty()))
        std::abort();
    return 0;
}
