// The NMEA interpreter on any sentence, and the position capture's input assembly on any
// chunking: only the interpreter's own errors may come out.
#include "gps/GetPositionModel.h"
#include "gps/NmeaInterpreter.h"
#include "gps/RuntimeError.h"
#include "platform/Beeper.h"
#include "platform/SerialPort.h"

#include <string>

namespace {

struct NoPort : zav::SerialPort {
    int SetSettings(const std::string&) override { return 0; }
    int SetCommPort(int) override { return 0; }
    int SetDevice(const std::string&) override { return 0; }
    int SetPortOpen(bool open) override {
        m_open = open;
        return 0;
    }
    bool PortOpen() const override { return m_open; }
    void SetReceiveHandler(ReceiveHandler h) override { receive = std::move(h); }
    void SetErrorHandler(ErrorHandler) override {}
    std::vector<std::string> ListPorts() const override { return {}; }
    ReceiveHandler receive;
    bool m_open = false;
};

struct NoBeep : zav::Beeper {
    void Beep(int, int) override {}
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    zav::NmeaEvents events;
    zav::NmeaInterpreter interpreter(events);
    try {
        interpreter.parseSentence(text);
    } catch (const zav::RuntimeError&) {
    }
    // The first byte chooses how the rest is cut into received chunks.
    NoPort port;
    NoBeep beep;
    zav::GpsSettings settings;
    zav::GetPositionModel capture(settings, port, beep, false);
    capture.open();
    const std::size_t step = size ? 1 + data[0] % 23 : 1;
    for (std::size_t at = size ? 1 : 0; at < size; at += step) {
        if (port.receive)
            port.receive(text.substr(at, step));
        capture.onClockTick();
    }
    return 0;
}
