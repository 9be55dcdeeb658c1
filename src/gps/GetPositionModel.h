#pragma once

#include "config/GpsSettings.h"
#include "config/ResultGrid.h"
#include "gps/NmeaEvents.h"
#include "gps/NmeaInterpreter.h"
#include "gps/NmeaLineAssembler.h"

#include <cstdint>
#include <string>

namespace zav {

class Beeper;
class SerialPort;
struct SetupRecord;

// The "Get Position" dialog without its window: reads the receiver's sentences from the serial
// port, averages the positions of the GGA fixes whose HDOP meets the wanted accuracy, and
// closes itself once the accuracy estimate is reached over at least two fixes.
class GetPositionModel : private NmeaEvents {
public:
    enum class Result { Open, Ok, Cancel };

    // The notification the serial control raises when characters have arrived.
    static constexpr int kPortReceived = 2;

    // `beepOption` is the main window's Beep option; `decimalSeparator` the one the dialog's
    // numbers are shown with (the receiver's own always use ".").
    GetPositionModel(const GpsSettings& settings, SerialPort& port, Beeper& beeper, bool beepOption,
                     char decimalSeparator = '.');
    ~GetPositionModel() override;
    GetPositionModel(const GetPositionModel&) = delete;
    GetPositionModel& operator=(const GetPositionModel&) = delete;

    // Resets the averages and opens the port; a port error shows in `record`.
    void open();
    // The serial control's notification: only the receive event is acted on. An error out of
    // the interpreter shows in `record` and the capture goes on.
    void onPortEvent(int portEvent, const std::string& chunk);
    // One chunk of received characters, however the port split the stream: assembles lines
    // and parses the GGA sentences of any satellite system among them. An error out of the
    // interpreter shows in `record` and the lines after it are still read.
    void handleInput(const std::string& chunk);
    // The port failed while open (for example the device vanished).
    void onPortError(int errorNumber);
    // The once-a-second check that ends the capture by itself, and says so when an open port
    // has brought nothing for kSilentSeconds.
    void onClockTick();
    static constexpr int kSilentSeconds = 5;
    void okPressed();
    void cancelPressed();
    // Closing the dialog closes the port.
    void close();

    Result result() const { return m_result; }
    // How many errors `record` has shown so far, so a host can tell a new one from an old.
    std::size_t ErrorsShown() const { return m_errorsShown; }
    // After OK, copies `lat` and `lon` unchanged into the set-up's position fields.
    void ApplyTo(SetupRecord& setup) const;

    // "Current GPS data"
    std::string HDOP;
    CellColour HDOPColour = CellColour::WindowText;
    std::string record; // the last raw line, or "Error: " and a message
    std::string currentLat;
    std::string currentLon;
    std::string fixText;
    // "Average"
    std::string acc; // accuracy estimate, m
    std::string fixCount;
    std::string lat;
    std::string lon;

    double SumLat = 0;
    double SumLon = 0;
    std::int16_t Count = 0;
    double SumHdop2 = 0;
    double MaxHdop = 0;
    bool FixValid = false;

private:
    void HDOPReceived(double value) override;
    void PositionReceived(const std::string& latitude, const std::string& longitude) override;
    void PositionFixReceived(const std::string& positionFix) override;

    GpsSettings m_settings;
    SerialPort& m_port;
    Beeper& m_beeper;
    bool m_beepOption;
    char m_separator;
    NmeaInterpreter m_interpreter;
    NmeaLineAssembler m_lines;
    Result m_result = Result::Open;
    std::size_t m_errorsShown = 0;

    void showError(const std::string& message);
    void showPortError(int errorNumber);
    std::string portName() const;

    bool m_dataSinceTick = false;
    int m_silentSeconds = 0;
};

} // namespace zav
