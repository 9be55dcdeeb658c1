#include "gps/GetPositionModel.h"

#include "config/SetupRecord.h"
#include "gps/NumberConversion.h"
#include "gps/RuntimeError.h"
#include "gps/SerialErrorMessage.h"
#include "platform/Beeper.h"
#include "platform/Format.h"
#include "platform/Number.h"
#include "platform/SerialPort.h"

#include <cmath>

namespace zav {
namespace {

std::string trimBlanks(const std::string& s) {
    const std::size_t first = s.find_first_not_of(' ');
    if (first == std::string::npos)
        return {};
    return s.substr(first, s.find_last_not_of(' ') - first + 1);
}

// Characters from 1-based position `start` of a UTF-8 text (the degree sign is one
// character), at most `length` of them.
std::string midChars(const std::string& s, std::size_t start,
                     std::size_t length = std::string::npos) {
    auto isLead = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    std::size_t position = 0; // characters seen so far
    std::size_t from = s.size();
    std::size_t to = s.size();
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (!isLead(s[i]))
            continue;
        ++position;
        if (position == start)
            from = i;
        if (length != std::string::npos && position == start + length) {
            to = i;
            break;
        }
    }
    return from < to ? s.substr(from, to - from) : std::string();
}

// "S dd° mm.mmmm'" or "W ddd° mm.mmmm'" as signed decimal degrees: `degreeDigits` digits
// from the third character, the minutes after the degree sign and a blank, negative for the
// hemisphere letter `negative`.
double signedDegrees(const std::string& text, std::size_t degreeDigits, const char* negative) {
    const double degrees = LeadingNumber(midChars(text, 3, degreeDigits)) +
                           LeadingNumber(midChars(text, 5 + degreeDigits)) / 60;
    return midChars(text, 1, 1) == negative ? -degrees : degrees;
}

} // namespace

GetPositionModel::GetPositionModel(const GpsSettings& settings, SerialPort& port, Beeper& beeper,
                                   bool beepOption, char decimalSeparator)
    : m_settings(settings), m_port(port), m_beeper(beeper), m_beepOption(beepOption),
      m_separator(decimalSeparator), m_interpreter(*this) {}

GetPositionModel::~GetPositionModel() {
    m_port.SetReceiveHandler(nullptr);
    m_port.SetErrorHandler(nullptr);
}

void GetPositionModel::open() {
    SumLat = SumLon = SumHdop2 = 0;
    Count = 0;
    MaxHdop = m_settings.Acc > 0 ? m_settings.Acc / 3.0 : 0.0;
    FixValid = false;
    fixText = "Fix lost";
    HDOP.clear();
    HDOPColour = CellColour::WindowText;
    record.clear();
    currentLat.clear();
    currentLon.clear();
    acc.clear();
    fixCount.clear();
    lat.clear();
    lon.clear();
    m_result = Result::Open;
    m_lines.Clear();
    m_dataSinceTick = false;
    m_silentSeconds = 0;

    m_port.SetReceiveHandler(
        [this](const std::string& chunk) { onPortEvent(kPortReceived, chunk); });
    m_port.SetErrorHandler([this](int number) { onPortError(number); });

    const std::string settings = std::to_string(m_settings.Speed) + "," + m_settings.Parity + "," +
                                 std::to_string(m_settings.Dbits) + "," +
                                 std::to_string(m_settings.Sbits);
    int error = m_port.SetSettings(settings);
    if (error == 0)
        error = m_settings.Device.empty() ? m_port.SetCommPort(m_settings.Port)
                                          : m_port.SetDevice(m_settings.Device);
    if (error == 0)
        error = m_port.SetPortOpen(true);
    if (error != 0)
        showPortError(error);
}

std::string GetPositionModel::portName() const {
    const std::string device = m_port.DeviceName();
    if (!device.empty())
        return device;
    return m_settings.Device.empty() ? "port " + std::to_string(m_settings.Port)
                                     : m_settings.Device;
}

void GetPositionModel::showPortError(int errorNumber) {
    if (errorNumber != kSerialPermissionDenied)
        return showError(SerialErrorMessage(errorNumber));
    // Serial devices belong to the group "dialout"; a new member must log in again.
    showError(SerialErrorMessage(errorNumber) + " on " + portName() +
              ": add your user to the dialout group (sudo usermod -aG dialout $USER), then log "
              "out and in again");
}

void GetPositionModel::onPortEvent(int portEvent, const std::string& chunk) {
    if (portEvent != kPortReceived || m_result != Result::Open)
        return;
    try {
        handleInput(chunk);
    } catch (const RuntimeError& e) {
        showError(e.what());
    }
}

void GetPositionModel::handleInput(const std::string& chunk) {
    if (!chunk.empty())
        m_dataSinceTick = true;
    for (const std::string& received : m_lines.Add(chunk)) {
        const std::string line = trimBlanks(received);
        if (!line.empty())
            record = line;
        if (NmeaInterpreter::SentenceType(line) != "GGA")
            continue;
        try {
            m_interpreter.parseSentence(line);
        } catch (const RuntimeError& e) {
            showError(e.what());
        }
    }
}

void GetPositionModel::onPortError(int errorNumber) {
    showPortError(errorNumber);
}

void GetPositionModel::showError(const std::string& message) {
    record = "Error: " + message;
    ++m_errorsShown;
}

void GetPositionModel::HDOPReceived(double value) {
    HDOP = Format(value, "0.0", m_separator);
    const double acc = m_settings.Acc;
    const double red = acc > 0 ? acc / 3.0 : 5.0;
    const double normal = acc > 0 ? acc / 4.0 : 2.0;
    if (value > red)
        HDOPColour = CellColour::Red;
    else if (value <= normal)
        HDOPColour = CellColour::WindowText;
    else
        HDOPColour = CellColour::Orange;
}

void GetPositionModel::PositionFixReceived(const std::string& positionFix) {
    if (positionFix != "Invalid") {
        fixText = "Fix obtained";
        FixValid = true;
    } else {
        fixText = "Fix lost";
        FixValid = false;
        HDOP.clear();
    }
}

void GetPositionModel::PositionReceived(const std::string& latitude, const std::string& longitude) {
    // The HDOP as shown, so a fix is judged on the rounded figure the operator sees.
    const double h = Number(HDOP, m_separator);
    if (!(h <= MaxHdop && FixValid))
        return;
    if (Count == INT16_MAX)
        throw RuntimeError::Overflow();
    ++Count;
    fixCount = std::to_string(Count);

    // Accuracy estimate, m: four times the RMS HDOP of the accepted fixes.
    SumHdop2 += h * h;
    acc = Format(4 * std::sqrt(SumHdop2 / Count), "0.00", m_separator);

    const double latitudeDeg = signedDegrees(latitude, 2, "S");
    currentLat = Format(latitudeDeg, "00.000000", m_separator);
    SumLat += latitudeDeg;
    lat = Format(SumLat / Count, "00.000000", m_separator);

    const double longitudeDeg = signedDegrees(longitude, 3, "W");
    currentLon = Format(longitudeDeg, "000.000000", m_separator);
    SumLon += longitudeDeg;
    lon = Format(SumLon / Count, "000.000000", m_separator);
}

void GetPositionModel::onClockTick() {
    if (m_result != Result::Open)
        return;
    // A receiver on another port, at another speed or switched off sends nothing at all.
    m_silentSeconds = m_dataSinceTick || !m_port.PortOpen() ? 0 : m_silentSeconds + 1;
    m_dataSinceTick = false;
    if (m_silentSeconds == kSilentSeconds)
        showError("No data from " + portName() + " for " + std::to_string(kSilentSeconds) +
                  " s: check that the receiver is on, on this port, at " +
                  std::to_string(m_settings.Speed) + " baud");
    if (Number(acc, m_separator) <= m_settings.Acc && Count > 1 && m_settings.Acc > 0) {
        if (m_beepOption)
            m_beeper.Beep(2000, 100);
        okPressed();
    }
}

void GetPositionModel::okPressed() {
    m_result = Result::Ok;
    close();
}

void GetPositionModel::cancelPressed() {
    m_result = Result::Cancel;
    close();
}

void GetPositionModel::close() {
    if (m_port.PortOpen())
        m_port.SetPortOpen(false);
}

void GetPositionModel::ApplyTo(SetupRecord& setup) const {
    if (m_result != Result::Ok)
        return;
    setup.lat = lat;
    setup.lon = lon;
}

} // namespace zav
