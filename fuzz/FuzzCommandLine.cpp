// The command line as the desktop program reads it: any text decides without a crash.
#include "app/Startup.h"
#include "platform/MemorySettingsStore.h"
#include "platform/SilentDialogs.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string line(reinterpret_cast<const char*>(data), size);
    zav::MemorySettingsStore settings;
    zav::SilentDialogs dialogs;
    zav::DecideStartup(line, "/home/op", settings, dialogs);
    return 0;
}
