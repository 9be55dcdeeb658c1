#include "cli/ProfileCommand.h"

#include "cli/Commands.h"
#include "cli/HeadlessModel.h"
#include "cli/Json.h"
#include "config/BooleanText.h"

#include <filesystem>

namespace zav {
int ProfileCommand(const std::vector<std::string>& args, CliIo& io) {
    std::string path;
    bool json = false;
    for (const std::string& a : args) {
        if (a == "--json")
            json = true;
        else if (a.size() > 1 && a[0] == '-')
            return UsageError(io, "profile", "unknown option \"" + a + "\"");
        else if (path.empty())
            path = a;
        else
            return UsageError(io, "profile", "one profile only");
    }
    if (path.empty())
        return UsageError(io, "profile", "no profile given");

    // A profile that is there but cannot be read is reported by the loader itself.
    std::error_code ec;
    if (!std::filesystem::exists(std::filesystem::path(std::u8string(path.begin(), path.end())),
                                 ec))
        io.err << "zavcli profile: " << path
               << " cannot be read; every setting shows its default\n";

    // The profile opens as the desktop opens it, antenna file included.
    HeadlessModel headless(path, io.err);
    const SetupRecord& record = headless.model().setup;
    const Options& options = headless.model().options;
    const PersistentState& state = headless.model().state;

    const TransferSettings& t = state.transfer;
    const std::pair<const char*, std::string> rows[] = {
        {"Receiver", record.Receiver},
        {"Antenna", record.Antenna},
        {"Feedline", record.Feedline},
        {"Tester", record.Tester},
        {"Location", record.Location},
        {"Lat", record.lat},
        {"Lon", record.lon},
        {"RxNF", record.RxNF},
        {"Bandwidth", record.Bandwidth},
        {"Frequency", record.Frequency},
        {"AntGain", record.AntGain},
        {"Attenuator", record.Attenuator},
        {"AGC", record.AGC},
        {"Loss", record.Loss},
        {"Environment", record.Environment},
        {"AntFilename", record.AntFileName},
        {"Verbose", BooleanText(options.Verbose)},
        {"Samples", BooleanText(options.Samples)},
        {"Interval", record.Interval},
        {"AntFact", BooleanText(options.AntFact)},
        {"AutoTsv", BooleanText(options.AutoTsv)},
        {"username", t.username},
        {"password", t.password},
        {"email", t.Email},
        {"url", t.URL},
        {"AtfEmail", t.AtfEmail},
        {"online", BooleanText(t.online)},
    };
    if (json) {
        io.out << "{";
        const char* separator = "";
        for (const auto& [key, value] : rows) {
            io.out << separator << "\n  " << JsonString(key) << ": " << JsonString(value);
            separator = ",";
        }
        io.out << "\n}\n";
    } else {
        for (const auto& [key, value] : rows)
            io.out << key << '\t' << value << '\n';
    }
    return kExitOk;
}

} // namespace zav
