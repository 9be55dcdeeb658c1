#pragma once

#include "gps/NmeaEvents.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zav {

// Reads one NMEA 0183 sentence at a time ("$GPGGA", "$GPGLL", "$GPGSA", "$GPGSV", "$GPRMC"),
// checks its checksum and announces what it found through `events`. It keeps no input buffer:
// the host hands it whole sentences. Conversion and field-count errors are thrown out of
// FParse as RuntimeError; events raised before the failing field stay raised.
class NmeaInterpreter {
public:
    // `decimalSeparator` is the one the number conversion expects (NMEA itself writes ".").
    explicit NmeaInterpreter(NmeaEvents& events, char decimalSeparator = '.');

    // `sentence` runs from "$" to the two checksum digits, without the line end. True when
    // it was valid, of a known type and handled; false for a bad checksum or unknown type.
    bool FParse(const std::string& sentence);

    struct Satellite {
        std::int16_t pseudoRandomCode = 0;
        std::int16_t azimuth = 0;
        std::int16_t elevation = 0;
        std::int16_t signalToNoiseRatio = 0;
    };

    // State kept between sentences, readable for hosts and tests.
    const std::vector<std::string>& Words() const { return m_words; }
    const std::string& Latitude() const { return m_latitude; }
    const std::string& Longitude() const { return m_longitude; }
    const std::string& TimeText() const { return m_timeText; }
    const std::string& DateText() const { return m_dateText; }
    const std::string& FixQualityText() const { return m_fixQualityText; }
    const std::string& AutoManModeText() const { return m_autoManModeText; }
    const std::string& Mode3DText() const { return m_mode3DText; }
    std::int16_t SatelliteNumber() const { return m_satelliteNumber; }
    const Satellite& CurrentSatellite() const { return m_currentSatellite; }
    std::int16_t TotalMessages() const { return m_totalMessages; }
    std::int16_t MessageNumber() const { return m_messageNumber; }
    std::int16_t SatellitesInView() const { return m_satellitesInView; }

private:
    static bool IsValid(std::string_view sentence);
    static std::string GetChecksum(std::string_view sentence);
    static std::vector<std::string> GetWords(std::string_view sentence);

    bool ParseGPGGA();
    bool ParseGPGLL();
    bool ParseGPGSA();
    bool ParseGPGSV();
    bool ParseGPRMC();

protected:
    // The field routines, open to a host that builds on the interpreter.
    void ParseTime(const std::string& t);
    void ParseDate(const std::string& d);
    void ParsePosition(const std::string& lat, const std::string& latHemisphere,
                       const std::string& lon, const std::string& lonHemisphere);
    void ParseFixQuality(const std::string& q);
    void ParseFixStatus(const std::string& s);
    void ParseAutoManMode(const std::string& m);
    void ParseMode3D(const std::string& m);

private:
    // Field `index` of Words; past the end throws "Subscript out of range".
    const std::string& Field(std::size_t index) const;
    bool Present(std::size_t index) const { return !Field(index).empty(); }
    double Double(std::size_t index) const;
    std::int16_t Int(std::size_t index) const;
    void RaiseChannel(int channel, std::int16_t satellite);

    NmeaEvents& m_events;
    char m_decimalSeparator;

    std::vector<std::string> m_words;
    std::string m_latitude;
    std::string m_longitude;
    std::string m_timeText;
    std::string m_dateText;
    std::string m_fixQualityText;
    std::string m_autoManModeText;
    std::string m_mode3DText;
    std::int16_t m_satelliteNumber = 0;
    Satellite m_currentSatellite;
    std::int16_t m_totalMessages = 0;
    std::int16_t m_messageNumber = 0;
    std::int16_t m_satellitesInView = 0;
};

} // namespace zav
