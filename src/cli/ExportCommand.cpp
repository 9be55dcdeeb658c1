#include "cli/ExportCommand.h"

#include "cli/CliDialogs.h"
#include "cli/Commands.h"
#include "measure/Observation.h"
#include "platform/AtomicFile.h"
#include "report/WaveSampleReader.h"
#include "report/WaveformText.h"

#include <chrono>
#include <filesystem>
#include <system_error>

namespace zav {
namespace {

namespace fs = std::filesystem;

// The observation stamp of a recording made elsewhere: when the file was last written.
std::string fileObsTime(const std::string& path) {
    std::error_code ec;
    const auto modified =
        fs::last_write_time(fs::path(std::u8string(path.begin(), path.end())), ec);
    if (ec)
        return {};
    return FormatObsTime(std::chrono::system_clock::to_time_t(
        std::chrono::time_point_cast<std::chrono::system_clock::duration>(
            std::chrono::file_clock::to_sys(modified))));
}

} // namespace

int ExportCommand(const std::vector<std::string>& args, CliIo& io) {
    std::vector<std::string> positional;
    std::string title = "External Noise";
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--title") {
            if (i + 1 >= args.size())
                return UsageError(io, "export", "--title needs a text");
            title = args[++i];
            // The title ends up inside a double-quoted gnuplot string on one line.
            if (title.find_first_of("\"\r\n") != std::string::npos)
                return UsageError(io, "export",
                                  "the title cannot hold a double quote or a line end");
        } else if (a.size() > 1 && a[0] == '-') {
            return UsageError(io, "export", "unknown option \"" + a + "\"");
        } else {
            positional.push_back(a);
        }
    }
    if (positional.size() < 2 || positional.size() > 3)
        return UsageError(io, "export", "give the format, the recording and at most one output");
    const std::string& format = positional[0];
    if (format != "gnuplot" && format != "table")
        return UsageError(io, "export", "the format is gnuplot or table, not \"" + format + "\"");
    const std::string& path = positional[1];

    CliDialogs dialogs(io.err);
    WaveSampleReader samples;
    switch (samples.Open(path, dialogs)) {
    case WaveSampleReader::Status::Ok:
        break;
    case WaveSampleReader::Status::CannotOpen:
        io.err << "zavcli export: cannot open " << path << ": " << samples.OpenError() << "\n";
        return kExitFailed;
    case WaveSampleReader::Status::NoSamples:
        if (dialogs.messages().empty())
            io.err << "zavcli export: " << path << ": no samples to export\n";
        return kExitFailed;
    }

    auto write = [&](std::ostream& out) {
        return format == "gnuplot" ? WriteGnuplotScript(samples, title, fileObsTime(path), out)
                                   : WriteSampleTable(samples, out);
    };
    if (positional.size() == 2) {
        if (!write(io.out)) {
            io.err << "zavcli export: cannot write to standard output\n";
            return kExitFailed;
        }
        io.out.flush();
        return kExitOk;
    }
    const std::string& outPath = positional[2];
    AtomicFileWriter writer(outPath);
    std::string error;
    if (!write(writer.Stream()) || !writer.Commit(&error)) {
        io.err << "zavcli export: " << (error.empty() ? "cannot write " + outPath : error) << "\n";
        return kExitFailed;
    }
    return kExitOk;
}

} // namespace zav
