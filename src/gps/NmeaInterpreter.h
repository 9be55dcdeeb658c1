#pragma once

#include "gps/NmeaEvents.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zav {

// Reads one NMEA 0183 sentence at a time (GGA, GLL, GSA, GSV and RMC from any satellite
// system's talker: "$GPGGA", "$GNRMC", "$BDGSV" ...), checks its checksum and announces what it
// found through `events`. It keeps no input buffer: the host hands it whole sentences.
// Conversion and field-count errors are thrown out of parseSentence as RuntimeError; events raised
// before the failing field stay raised. NMEA writes its numbers with "." whatever the locale
// of the machine reading them.
class NmeaInterpreter {
public:
    explicit NmeaInterpreter(NmeaEvents& events);

    // The sentence type ("GGA", "RMC" ...) of a sentence from a known talker, else empty.
    static std::string_view SentenceType(std::string_view sentence);

    // `sentence` runs from "$" to the two checksum digits, without the line end. True when
    // it was valid, of a known type and handled; false for a bad checksum or unknown type.
    bool parseSentence(const std::string& sentence);

    struct Satellite {
        std::string talker; // "GP", "GL", "BD" ...: numbers overlap between systems
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
    // The sum over the satellite systems reported in the current epoch.
    std::int16_t SatellitesInView() const { return m_satellitesInView; }
    // The talker of the last sentence handled.
    const std::string& Talker() const { return m_talker; }

private:
    static bool IsValid(std::string_view sentence);
    static std::string GetChecksum(std::string_view sentence);
    static std::vector<std::string> GetWords(std::string_view sentence);

    bool ParseGGA();
    bool ParseGLL();
    bool ParseGSA(bool afterGsa);
    bool ParseGSV();
    bool ParseRMC();

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

    // A satellite used for the fix, and the system it belongs to.
    struct UsedSatellite {
        std::string system;
        std::int16_t number = 0;
    };
    // Satellites in view of one system in the current epoch.
    struct SystemInView {
        std::string talker;
        std::int16_t count = 0;
    };

    NmeaEvents& m_events;
    std::string m_talker;
    std::string m_previousType; // of the sentence handled before this one

    // The used satellites of the GSA sentences of this epoch, one sentence per system, merged
    // into the twelve channels.
    std::vector<UsedSatellite> m_channels;
    std::vector<SystemInView> m_inView;

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
