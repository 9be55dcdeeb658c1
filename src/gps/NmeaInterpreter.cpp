#include "gps/NmeaInterpreter.h"

#include "gps/NumberConversion.h"
#include "gps/RuntimeError.h"

#include <algorithm>
#include <cstdio>

namespace zav {
namespace {

// Characters from 1-based position `start`, at most `length` of them; nothing past the end.
std::string mid(const std::string& s, std::size_t start, std::size_t length = std::string::npos) {
    if (start > s.size())
        return {};
    return s.substr(start - 1, length);
}

const char* const kDegree = "\xC2\xB0"; // the degree sign, UTF-8

// GPS, any combination, GLONASS, Galileo, BeiDou (two spellings), QZSS (two spellings).
constexpr std::string_view kTalkers[] = {"GP", "GN", "GL", "GA", "GB", "BD", "GQ", "QZ"};
constexpr std::string_view kTypes[] = {"GGA", "GLL", "GSA", "GSV", "RMC"};
constexpr std::size_t kChannels = 12;

} // namespace

NmeaInterpreter::NmeaInterpreter(NmeaEvents& events) : m_events(events) {}

std::string_view NmeaInterpreter::SentenceType(std::string_view sentence) {
    if (sentence.size() < 6 || sentence[0] != '$')
        return {};
    const std::string_view talker = sentence.substr(1, 2);
    if (std::find(std::begin(kTalkers), std::end(kTalkers), talker) == std::end(kTalkers))
        return {};
    const auto type = std::find(std::begin(kTypes), std::end(kTypes), sentence.substr(3, 3));
    return type == std::end(kTypes) ? std::string_view() : *type;
}

bool NmeaInterpreter::parseSentence(const std::string& sentence) {
    if (!IsValid(sentence))
        return false;
    m_words = GetWords(sentence);
    const std::string& name = m_words[0];
    const std::string_view type = SentenceType(name);
    if (name.size() != 6 || type.empty())
        return false;
    m_talker = name.substr(1, 2);
    const bool afterGsa = m_previousType == "GSA";
    m_previousType = type;
    if (type == "GGA")
        return ParseGGA();
    if (type == "GLL")
        return ParseGLL();
    if (type == "GSA")
        return ParseGSA(afterGsa);
    if (type == "GSV")
        return ParseGSV();
    return ParseRMC();
}

std::string NmeaInterpreter::GetChecksum(std::string_view sentence) {
    // XOR of every character up to the first "*"; a "$" anywhere is left out.
    unsigned checksum = 0;
    for (char c : sentence) {
        if (c == '$')
            continue;
        if (c == '*')
            break;
        checksum ^= static_cast<unsigned char>(c);
    }
    char hex[8];
    std::snprintf(hex, sizeof hex, "00%X", checksum);
    std::string text(hex);
    return text.substr(text.size() - 2);
}

bool NmeaInterpreter::IsValid(std::string_view sentence) {
    // Case-sensitive: a checksum sent in lower-case hexadecimal does not match.
    std::string_view lastTwo =
        sentence.size() > 2 ? sentence.substr(sentence.size() - 2) : sentence;
    return GetChecksum(sentence) == lastTwo;
}

std::vector<std::string> NmeaInterpreter::GetWords(std::string_view sentence) {
    if (sentence.size() > 3)
        sentence.remove_suffix(3); // the "*hh", whatever it holds
    std::vector<std::string> words;
    std::size_t start = 0;
    for (;;) {
        const std::size_t comma = sentence.find(',', start);
        words.emplace_back(sentence.substr(start, comma - start));
        if (comma == std::string_view::npos)
            break;
        start = comma + 1;
    }
    return words;
}

const std::string& NmeaInterpreter::Field(std::size_t index) const {
    if (index >= m_words.size())
        throw RuntimeError::SubscriptOutOfRange();
    return m_words[index];
}

double NmeaInterpreter::Double(std::size_t index) const {
    return ToDouble(Field(index), '.');
}

std::int16_t NmeaInterpreter::Int(std::size_t index) const {
    return ToInt16(Field(index), '.');
}

bool NmeaInterpreter::ParseGGA() {
    if (Present(6))
        ParseFixQuality(Field(6));
    if (Present(1))
        ParseTime(Field(1));
    if (Present(8))
        m_events.HDOPReceived(Double(8));
    // Every one of the four fields is read (and must exist) before the test.
    const bool lat = Present(2), latHemisphere = Present(3), lon = Present(4),
               lonHemisphere = Present(5);
    if (lat && latHemisphere && lon && lonHemisphere)
        ParsePosition(Field(2), Field(3), Field(4), Field(5));
    if (Present(7))
        m_events.SatellitesUsedReceived(Int(7));
    if (Present(9))
        m_events.AltitudeReceived(Double(9));
    if (Present(10))
        m_events.AltitudeUnitsReceived(Field(10));
    if (Present(11))
        m_events.GeoidSeparationReceived(Double(11));
    if (Present(12))
        m_events.GeoidSeparationUnitsReceived(Field(12));
    if (Present(13))
        m_events.DGPSageReceived(Int(13));
    if (Present(14))
        m_events.DGPSstationIDReceived(Field(14));
    return true;
}

bool NmeaInterpreter::ParseGLL() {
    const bool lat = Present(1), latHemisphere = Present(2), lon = Present(3),
               lonHemisphere = Present(4);
    if (lat && latHemisphere && lon && lonHemisphere)
        ParsePosition(Field(1), Field(2), Field(3), Field(4));
    if (Present(5))
        ParseTime(Field(5));
    if (Present(6))
        ParseFixStatus(Field(6));
    return true;
}

bool NmeaInterpreter::ParseGSA(bool afterGsa) {
    if (Present(1))
        ParseAutoManMode(Field(1));
    if (Present(2))
        ParseMode3D(Field(2));
    // A receiver of several systems sends one GSA per system, back to back. The combined talker
    // "GN" names the system by the id that follows the DOPs (NMEA 4.10).
    std::string system = m_talker;
    if (m_talker == "GN" && m_words.size() > 18)
        system += m_words[18];
    const bool sameEpoch =
        afterGsa && std::none_of(m_channels.begin(), m_channels.end(),
                                 [&](const UsedSatellite& s) { return s.system == system; });
    if (!sameEpoch) {
        // The first system of an epoch keeps the channels as the sentence numbers them.
        m_channels.assign(kChannels, UsedSatellite{system, 0});
        for (std::size_t channel = 1; channel <= kChannels; ++channel) {
            const std::size_t index = channel + 2;
            const std::int16_t number = Present(index) ? Int(index) : std::int16_t{0};
            m_channels[channel - 1].number = number;
            RaiseChannel(static_cast<int>(channel), number);
        }
    } else {
        // Later systems fill the channels after the last one in use, as far as they reach.
        std::size_t next = kChannels;
        while (next > 0 && m_channels[next - 1].number == 0)
            --next;
        for (std::size_t index = 3; index <= 14; ++index) {
            const std::int16_t number = Present(index) ? Int(index) : std::int16_t{0};
            if (number != 0 && next < kChannels)
                m_channels[next++] = {system, number};
        }
        for (std::size_t channel = 1; channel <= kChannels; ++channel)
            RaiseChannel(static_cast<int>(channel), m_channels[channel - 1].number);
    }
    if (Present(15))
        m_events.PDOPReceived(Double(15));
    if (Present(16))
        m_events.HDOPReceived(Double(16));
    if (Present(17))
        m_events.VDOPReceived(Double(17));
    return true;
}

void NmeaInterpreter::RaiseChannel(int channel, std::int16_t satellite) {
    switch (channel) {
    case 1:
        m_events.Ch1SatReceived(satellite);
        break;
    case 2:
        m_events.Ch2SatReceived(satellite);
        break;
    case 3:
        m_events.Ch3SatReceived(satellite);
        break;
    case 4:
        m_events.Ch4SatReceived(satellite);
        break;
    case 5:
        m_events.Ch5SatReceived(satellite);
        break;
    case 6:
        m_events.Ch6SatReceived(satellite);
        break;
    case 7:
        m_events.Ch7SatReceived(satellite);
        break;
    case 8:
        m_events.Ch8SatReceived(satellite);
        break;
    case 9:
        m_events.Ch9SatReceived(satellite);
        break;
    case 10:
        m_events.Ch10SatReceived(satellite);
        break;
    case 11:
        m_events.Ch11SatReceived(satellite);
        break;
    case 12:
        m_events.Ch12SatReceived(satellite);
        break;
    default:
        break;
    }
}

bool NmeaInterpreter::ParseGSV() {
    if (Present(1))
        m_totalMessages = Int(1);
    if (Present(2))
        m_messageNumber = Int(2);
    // Each system reports its own satellites in view; the first message of a system already
    // reported begins the next epoch.
    auto system = std::find_if(m_inView.begin(), m_inView.end(),
                               [&](const SystemInView& s) { return s.talker == m_talker; });
    if (m_messageNumber == 1 && system != m_inView.end()) {
        m_inView.clear();
        system = m_inView.end();
    }
    if (system == m_inView.end()) {
        m_inView.push_back({m_talker, 0});
        system = m_inView.end() - 1;
    }
    // The satellites of one epoch are numbered on across the systems, so none shares a number.
    double offset = 0;
    for (auto s = m_inView.begin(); s != system; ++s)
        offset += s->count;
    if (Present(3)) {
        system->count = Int(3);
        double total = 0;
        for (const SystemInView& s : m_inView)
            total += s.count;
        m_satellitesInView = RoundToInt16(total);
        m_events.SatellitesInViewReceived(m_satellitesInView);
    }
    for (int i = 1; i <= 4; ++i) {
        // Message number 0 leaves the running number where the previous report put it.
        if (m_messageNumber != 0)
            m_satelliteNumber = RoundToInt16(offset + (m_messageNumber - 1) * 4.0 + i);
        const std::size_t first = 4 * static_cast<std::size_t>(i);
        if (m_words.size() - 1 < first + 3)
            continue; // a short last message has fewer than four satellites
        const bool prn = Present(first), elevation = Present(first + 1),
                   azimuth = Present(first + 2), snr = Present(first + 3);
        if (!(prn && elevation && azimuth && snr))
            continue;
        m_currentSatellite.talker = m_talker;
        m_currentSatellite.pseudoRandomCode = Int(first);
        m_currentSatellite.elevation = Int(first + 1);
        m_currentSatellite.azimuth = Int(first + 2);
        m_currentSatellite.signalToNoiseRatio = -99;
        try {
            m_currentSatellite.signalToNoiseRatio = Int(first + 3);
        } catch (const RuntimeError&) {
            // an unreadable signal-to-noise figure stays -99
        }
        // Azimuth before elevation, against the sentence's order.
        m_events.SatelliteReceived(m_satelliteNumber, m_currentSatellite.pseudoRandomCode,
                                   m_currentSatellite.azimuth, m_currentSatellite.elevation,
                                   m_currentSatellite.signalToNoiseRatio);
    }
    return true;
}

bool NmeaInterpreter::ParseRMC() {
    if (Present(1))
        ParseTime(Field(1));
    if (Present(2))
        ParseFixStatus(Field(2));
    const bool lat = Present(3), latHemisphere = Present(4), lon = Present(5),
               lonHemisphere = Present(6);
    if (lat && latHemisphere && lon && lonHemisphere)
        ParsePosition(Field(3), Field(4), Field(5), Field(6));
    if (Present(7))
        m_events.SpeedReceived(Double(7)); // knots
    if (Present(8))
        m_events.BearingReceived(Double(8)); // degrees
    if (Present(9))
        ParseDate(Field(9));
    return true;
}

void NmeaInterpreter::ParseTime(const std::string& t) {
    m_timeText = mid(t, 1, 2) + ":" + mid(t, 3, 2) + ":" + mid(t, 5, 2);
    if (t.size() > 7)
        m_timeText += mid(t, 7); // the "." and the fraction
    m_timeText += " GMT";
    m_events.TimeChanged(m_timeText);
}

void NmeaInterpreter::ParseDate(const std::string& d) {
    m_dateText = mid(d, 1, 2) + "/" + mid(d, 3, 2) + "/" + mid(d, 5, 2);
    m_events.DateChanged(m_dateText);
}

void NmeaInterpreter::ParsePosition(const std::string& lat, const std::string& latHemisphere,
                                    const std::string& lon, const std::string& lonHemisphere) {
    // Fixed layout: hemisphere, blank, degrees, degree sign, blank, minutes, "'".
    m_latitude = latHemisphere + " " + mid(lat, 1, 2) + kDegree + " " + mid(lat, 3) + "'";
    m_longitude = lonHemisphere + " " + mid(lon, 1, 3) + kDegree + " " + mid(lon, 4) + "'";
    m_events.PositionReceived(m_latitude, m_longitude);
}

void NmeaInterpreter::ParseFixQuality(const std::string& q) {
    if (q == "3")
        m_fixQualityText = "Valid PPS";
    else if (q == "2")
        m_fixQualityText = "Valid DGPS";
    else if (q == "1")
        m_fixQualityText = "Valid SPS";
    else
        m_fixQualityText = "Invalid";
    m_events.PositionFixReceived(m_fixQualityText);
}

void NmeaInterpreter::ParseFixStatus(const std::string& s) {
    // No state: every sentence with a status letter raises its event again.
    if (s == "A")
        m_events.FixObtained();
    else if (s == "V")
        m_events.FixLost();
}

void NmeaInterpreter::ParseAutoManMode(const std::string& m) {
    if (!m.empty()) {
        if (m == "A")
            m_autoManModeText = "Auto 2D/3D";
        else if (m == "M")
            m_autoManModeText = "Forced 2D/3D";
        else
            m_autoManModeText = "Unknown";
    }
    m_events.AutoManModeReceived(m_autoManModeText);
}

void NmeaInterpreter::ParseMode3D(const std::string& m) {
    if (!m.empty()) {
        if (m == "2")
            m_mode3DText = "2D";
        else if (m == "3")
            m_mode3DText = "3D";
        else
            m_mode3DText = "No Fix";
    }
    m_events.Mode3DReceived(m_mode3DText);
}

} // namespace zav
