#include "cli/GpsCommand.h"

#include "cli/Commands.h"
#include "cli/NmeaInput.h"
#include "config/GpsSettings.h"
#include "gps/GetPositionModel.h"
#include "gps/NumberConversion.h"
#include "gps/RuntimeError.h"
#include "platform/Beeper.h"
#include "platform/Format.h"
#include "platform/Number.h"
#include "qt/services/QtSerialPort.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <optional>

namespace zav {
namespace {

// zavcli makes no sound.
class SilentBeeper : public Beeper {
public:
    void Beep(int, int) override {}
};

// Stands in for the port when the sentences come from a file.
class NoPort : public SerialPort {
public:
    int SetSettings(const std::string&) override { return 0; }
    int SetCommPort(int) override { return 0; }
    int SetDevice(const std::string&) override { return 0; }
    int SetPortOpen(bool) override { return 0; }
    bool PortOpen() const override { return false; }
    void SetReceiveHandler(ReceiveHandler) override {}
    void SetErrorHandler(ErrorHandler) override {}
    std::vector<std::string> ListPorts() const override { return {}; }
};

struct Request {
    std::optional<std::string> device;
    std::optional<std::string> file;
    GpsSettings settings;
    double timeoutSeconds = 60;
};

// Reads the options; a message on `err` and nothing when they are not usable.
std::optional<Request> parseArgs(const std::vector<std::string>& args, std::ostream& err) {
    Request request;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& option = args[i];
        if (i + 1 >= args.size()) {
            err << (option.rfind("--", 0) == 0 ? "zavcli gps: " + option + " needs a value\n"
                                               : "zavcli gps: unexpected " + option + "\n");
            return std::nullopt;
        }
        const std::string& value = args[++i];
        try {
            if (option == "--device") {
                // A bare number is a port number; anything else names the device.
                request.device = value;
                if (!value.empty() && value.find_first_not_of("0123456789") == std::string::npos)
                    request.settings.Port = ToInt16(value);
                else
                    request.settings.Device = value;
            } else if (option == "--file") {
                request.file = value;
            } else if (option == "--acc") {
                // As the set-up dialog takes it: below 0 is 0, whole metres.
                if (!IsNumber(value))
                    throw RuntimeError::TypeMismatch();
                request.settings.Acc =
                    RoundToInt16(Number(Format(std::max(0.0, Number(value)), "0")));
            } else if (option == "--speed") {
                request.settings.Speed = ToBaudRate(value);
            } else if (option == "--timeout") {
                if (!IsNumber(value) || Number(value) <= 0)
                    throw RuntimeError::TypeMismatch();
                request.timeoutSeconds = Number(value);
            } else {
                err << "zavcli gps: unknown option " << option << "\n";
                return std::nullopt;
            }
        } catch (const RuntimeError& e) {
            err << "Error: " << e.what() << " (" << option << " " << value << ")\n";
            return std::nullopt;
        }
    }
    if (request.device.has_value() == request.file.has_value()) {
        err << "zavcli gps: give one of --device and --file\n";
        return std::nullopt;
    }
    return request;
}

// Prints a newly shown error the way the dialog shows it, in its `record` box.
void reportNewError(const GetPositionModel& model, std::size_t& seen, CliIo& io) {
    if (model.ErrorsShown() != seen) {
        seen = model.ErrorsShown();
        io.err << model.record << '\n';
    }
}

int finish(const GetPositionModel& model, CliIo& io) {
    if (model.Count == 0) {
        io.err << "zavcli gps: no fix met the accuracy before the time-out\n";
        return kExitFailed;
    }
    io.out << model.lat << '\t' << model.lon << '\t' << model.fixCount << '\t' << model.acc << '\n';
    io.out.flush();
    return kExitOk;
}

int fromFile(const Request& request, CliIo& io) {
    NmeaInput in;
    std::string error;
    if (!in.Open(*request.file, error)) {
        io.err << "zavcli: cannot read " << *request.file << ": " << error << "\n";
        return kExitFailed;
    }
    // A file is replayed to its end; a pipe or a device (a receiver) is read until the
    // time-out, whether or not it sends anything.
    std::optional<NmeaInput::Clock::time_point> deadline;
    if (!in.IsRegularFile())
        deadline = NmeaInput::Clock::now() + std::chrono::milliseconds(static_cast<long long>(
                                                 std::min(request.timeoutSeconds, 2e6) * 1000));
    NoPort port;
    SilentBeeper beeper;
    GetPositionModel model(request.settings, port, beeper, false);
    model.open();
    std::size_t errors = 0;
    std::string line;
    NmeaInput::Next next;
    while ((next = in.Read(line, deadline)) == NmeaInput::Next::Line) {
        model.onPortEvent(GetPositionModel::kPortReceived, line + "\r\n");
        reportNewError(model, errors, io);
        model.onClockTick();
        if (model.result() != GetPositionModel::Result::Open)
            break;
    }
    if (next == NmeaInput::Next::Failed)
        io.err << "zavcli: reading " << *request.file << " failed: " << in.Error() << "\n";
    if (model.result() == GetPositionModel::Result::Open)
        model.okPressed();
    return finish(model, io);
}

int fromDevice(const Request& request, CliIo& io) {
    QtSerialPort port;
    SilentBeeper beeper;
    GetPositionModel model(request.settings, port, beeper, false);
    model.open();
    std::size_t errors = 0;
    reportNewError(model, errors, io);
    if (!port.PortOpen()) {
        model.okPressed();
        return finish(model, io);
    }
    if (!QCoreApplication::instance()) {
        io.err << "zavcli gps: no event loop to read a device with\n";
        return kExitFailed;
    }

    QEventLoop loop;
    QTimer timer1;
    QObject::connect(&timer1, &QTimer::timeout, [&] {
        reportNewError(model, errors, io);
        if (io.errIsTerminal)
            io.err << "\r" << model.fixText << "  HDOP " << model.HDOP << "  fixCount "
                   << model.fixCount << "  acc " << model.acc << "   " << std::flush;
        model.onClockTick();
        if (model.result() != GetPositionModel::Result::Open || !port.PortOpen())
            loop.quit();
    });
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, [&] { loop.quit(); });
    timer1.start(1000);
    deadline.start(static_cast<int>(std::min(request.timeoutSeconds, 2e6) * 1000));
    loop.exec();
    if (io.errIsTerminal)
        io.err << '\n';
    reportNewError(model, errors, io);
    if (model.result() == GetPositionModel::Result::Open)
        model.okPressed(); // time is up, or the port went away: the averages as they stand
    return finish(model, io);
}

} // namespace

int GpsCommand(const std::vector<std::string>& args, CliIo& io) {
    const std::optional<Request> request = parseArgs(args, io.err);
    if (!request) {
        return UsageError(io, "gps", "");
    }
    return request->file ? fromFile(*request, io) : fromDevice(*request, io);
}

} // namespace zav
