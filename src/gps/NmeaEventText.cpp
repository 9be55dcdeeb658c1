#include "gps/NmeaEventText.h"

#include <charconv>
#include <string_view>

namespace zav {

void NmeaEventText::put(const std::string& text) {
    m_out << '\t' << text;
}

void NmeaEventText::put(std::int16_t value) {
    m_out << '\t' << value;
}

void NmeaEventText::put(double value) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    m_out << '\t' << std::string_view(buffer, static_cast<std::size_t>(result.ptr - buffer));
}

void NmeaEventText::PositionReceived(const std::string& latitude, const std::string& longitude) {
    line("PositionReceived", latitude, longitude);
}
void NmeaEventText::TimeChanged(const std::string& Time) {
    line("TimeChanged", Time);
}
void NmeaEventText::DateChanged(const std::string& satDate) {
    line("DateChanged", satDate);
}
void NmeaEventText::BearingReceived(double bearing) {
    line("BearingReceived", bearing);
}
void NmeaEventText::SpeedReceived(double speed) {
    line("SpeedReceived", speed);
}
void NmeaEventText::FixObtained() {
    line("FixObtained");
}
void NmeaEventText::FixLost() {
    line("FixLost");
}
void NmeaEventText::SatelliteReceived(std::int16_t satelliteNumber, std::int16_t pseudoRandomCode,
                                      std::int16_t azimuth, std::int16_t elevation,
                                      std::int16_t signalToNoiseRatio) {
    line("SatelliteReceived", satelliteNumber, pseudoRandomCode, azimuth, elevation,
         signalToNoiseRatio);
}
void NmeaEventText::HDOPReceived(double value) {
    line("HDOPReceived", value);
}
void NmeaEventText::VDOPReceived(double value) {
    line("VDOPReceived", value);
}
void NmeaEventText::PDOPReceived(double value) {
    line("PDOPReceived", value);
}
void NmeaEventText::PositionFixReceived(const std::string& positionFix) {
    line("PositionFixReceived", positionFix);
}
void NmeaEventText::SatellitesUsedReceived(std::int16_t satellitesUsed) {
    line("SatellitesUsedReceived", satellitesUsed);
}
void NmeaEventText::AltitudeReceived(double altitude) {
    line("AltitudeReceived", altitude);
}
void NmeaEventText::AltitudeUnitsReceived(const std::string& altitudeUnits) {
    line("AltitudeUnitsReceived", altitudeUnits);
}
void NmeaEventText::GeoidSeparationReceived(double geoidSeparation) {
    line("GeoidSeparationReceived", geoidSeparation);
}
void NmeaEventText::GeoidSeparationUnitsReceived(const std::string& geoidSeparationUnits) {
    line("GeoidSeparationUnitsReceived", geoidSeparationUnits);
}
void NmeaEventText::DGPSageReceived(std::int16_t dGPSage) {
    line("DGPSageReceived", dGPSage);
}
void NmeaEventText::DGPSstationIDReceived(const std::string& dGPSstationID) {
    line("DGPSstationIDReceived", dGPSstationID);
}
void NmeaEventText::AutoManModeReceived(const std::string& autoManMode) {
    line("AutoManModeReceived", autoManMode);
}
void NmeaEventText::Mode3DReceived(const std::string& mode3D) {
    line("Mode3DReceived", mode3D);
}
void NmeaEventText::Ch1SatReceived(std::int16_t ch1Sat) {
    line("Ch1SatReceived", ch1Sat);
}
void NmeaEventText::Ch2SatReceived(std::int16_t ch2Sat) {
    line("Ch2SatReceived", ch2Sat);
}
void NmeaEventText::Ch3SatReceived(std::int16_t ch3Sat) {
    line("Ch3SatReceived", ch3Sat);
}
void NmeaEventText::Ch4SatReceived(std::int16_t ch4Sat) {
    line("Ch4SatReceived", ch4Sat);
}
void NmeaEventText::Ch5SatReceived(std::int16_t ch5Sat) {
    line("Ch5SatReceived", ch5Sat);
}
void NmeaEventText::Ch6SatReceived(std::int16_t ch6Sat) {
    line("Ch6SatReceived", ch6Sat);
}
void NmeaEventText::Ch7SatReceived(std::int16_t ch7Sat) {
    line("Ch7SatReceived", ch7Sat);
}
void NmeaEventText::Ch8SatReceived(std::int16_t ch8Sat) {
    line("Ch8SatReceived", ch8Sat);
}
void NmeaEventText::Ch9SatReceived(std::int16_t ch9Sat) {
    line("Ch9SatReceived", ch9Sat);
}
void NmeaEventText::Ch10SatReceived(std::int16_t ch10Sat) {
    line("Ch10SatReceived", ch10Sat);
}
void NmeaEventText::Ch11SatReceived(std::int16_t ch11Sat) {
    line("Ch11SatReceived", ch11Sat);
}
void NmeaEventText::Ch12SatReceived(std::int16_t ch12Sat) {
    line("Ch12SatReceived", ch12Sat);
}
void NmeaEventText::SatellitesInViewReceived(std::int16_t satellitesInView) {
    line("SatellitesInViewReceived", satellitesInView);
}

} // namespace zav
