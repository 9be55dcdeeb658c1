#include "report/DataLog.h"

#include "platform/Format.h"
#include "platform/UrlCoding.h"
#include "platform/Version.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <vector>

#if defined(__unix__) || defined(__APPLE__)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace zav {

std::string DataLogHeader() {
    static constexpr const char* kKeys[] = {
        "Program",     "Version",   "ObsTime",  "Tester",     "Location", "Latitude", "Longitude",
        "Environment", "Frequency", "Receiver", "Bandwidth",  "MBW",      "MeasInt",  "RxNF",
        "Antenna",     "AntGain",   "AntFact",  "Attenuator", "AGC",      "Loss",     "RxRms",
        "RxQp",        "RxPk",      "FsRms",    "FsQp",       "FsPk",     "NormRms",  "NormQp",
        "NormPk",      "QpRms",     "PkRms",    "Notes"};
    std::string header;
    for (const char* key : kKeys) {
        header += key;
        header += '\t';
    }
    return header + "\r\n";
}

std::string DataLogRow(const ReportSource& s) {
    const SetupRecord& f = s.setup;
    const ResultGrid& calc = s.gridCalc;
    const char sep = s.decimalSeparator;
    const std::vector<std::string> values = {
        "ZAV",
        VersionText(),
        s.observation.ObsTime,
        f.Tester,
        f.Location,
        s.observation.ObsLat,
        s.observation.ObsLon,
        f.Environment,
        f.Frequency,
        f.Receiver,
        f.Bandwidth,
        MeasurementBandwidthText(s),
        Format(s.observation.durationSeconds, "0.000", sep),
        f.RxNF,
        f.Antenna,
        Format(s.NumAntGain, "0.00", sep),
        Format(s.NumAntFact, "0.00", sep),
        f.Attenuator,
        f.AGC,
        f.Loss,
        calc.Text(9),
        calc.Text(13),
        calc.Text(17),
        calc.Text(10),
        calc.Text(14),
        calc.Text(18),
        calc.Text(11),
        calc.Text(15),
        calc.Text(19),
        s.gridMeas.Text(23),
        s.gridMeas.Text(27),
        UrlEncode(f.Notes, true),
    };
    std::string row;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0)
            row += '\t';
        row += values[i];
    }
    return row + "\r\n";
}

bool AppendDataLog(const std::string& path, const ReportSource& source, std::string* error) {
    auto fail = [&](int code) {
        if (error)
            *error = "cannot write " + path + ": " + std::generic_category().message(code);
        return false;
    };
#if defined(__unix__) || defined(__APPLE__)
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY, 0666);
    if (fd < 0)
        return fail(errno);
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        const int code = S_ISREG(info.st_mode) ? errno : EINVAL;
        ::close(fd);
        return fail(code);
    }
    const off_t length = info.st_size;
    const std::string text = (length == 0 ? DataLogHeader() : std::string()) + DataLogRow(source);
    // Written at the end as it was found; a write the disk cuts short is taken back, so the
    // next row never starts inside this one.
    std::size_t done = 0;
    int code = 0;
    while (done < text.size()) {
        const ssize_t n =
            ::pwrite(fd, text.data() + done, text.size() - done, length + static_cast<off_t>(done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            code = n < 0 ? errno : ENOSPC;
            break;
        }
        done += static_cast<std::size_t>(n);
    }
    if (!code && ::fsync(fd) != 0 && errno != EINVAL)
        code = errno;
    if (code && ::ftruncate(fd, length) != 0) {
        // Nothing more can be done: the reason of the failed write is the one to tell.
    }
    if (::close(fd) != 0 && !code)
        code = errno;
    return code ? fail(code) : true;
#else
    std::FILE* file = std::fopen(path.c_str(), "ab");
    if (!file)
        return fail(errno);
    const std::string text =
        (std::ftell(file) == 0 ? DataLogHeader() : std::string()) + DataLogRow(source);
    bool ok = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    ok = std::fflush(file) == 0 && ok;
    const int code = errno;
    ok = std::fclose(file) == 0 && ok;
    return ok ? true : fail(code ? code : EIO);
#endif
}

} // namespace zav
