#pragma once

#include "gps/NmeaEvents.h"

#include <ostream>

namespace zav {

// Writes every interpreter event as one line: its name, then its arguments, tab-separated;
// doubles in the shortest form that reads back the same (0.9, 545.4), 16-bit values as
// integers.
class NmeaEventText : public NmeaEvents {
public:
    explicit NmeaEventText(std::ostream& out) : m_out(out) {}

    void PositionReceived(const std::string& latitude, const std::string& longitude) override;
    void TimeChanged(const std::string& Time) override;
    void DateChanged(const std::string& satDate) override;
    void BearingReceived(double bearing) override;
    void SpeedReceived(double speed) override;
    void FixObtained() override;
    void FixLost() override;
    void SatelliteReceived(std::int16_t satelliteNumber, std::int16_t pseudoRandomCode,
                           std::int16_t azimuth, std::int16_t elevation,
                           std::int16_t signalToNoiseRatio) override;
    void HDOPReceived(double value) override;
    void VDOPReceived(double value) override;
    void PDOPReceived(double value) override;
    void PositionFixReceived(const std::string& positionFix) override;
    void SatellitesUsedReceived(std::int16_t satellitesUsed) override;
    void AltitudeReceived(double altitude) override;
    void AltitudeUnitsReceived(const std::string& altitudeUnits) override;
    void GeoidSeparationReceived(double geoidSeparation) override;
    void GeoidSeparationUnitsReceived(const std::string& geoidSeparationUnits) override;
    void DGPSageReceived(std::int16_t dGPSage) override;
    void DGPSstationIDReceived(const std::string& dGPSstationID) override;
    void AutoManModeReceived(const std::string& autoManMode) override;
    void Mode3DReceived(const std::string& mode3D) override;
    void Ch1SatReceived(std::int16_t ch1Sat) override;
    void Ch2SatReceived(std::int16_t ch2Sat) override;
    void Ch3SatReceived(std::int16_t ch3Sat) override;
    void Ch4SatReceived(std::int16_t ch4Sat) override;
    void Ch5SatReceived(std::int16_t ch5Sat) override;
    void Ch6SatReceived(std::int16_t ch6Sat) override;
    void Ch7SatReceived(std::int16_t ch7Sat) override;
    void Ch8SatReceived(std::int16_t ch8Sat) override;
    void Ch9SatReceived(std::int16_t ch9Sat) override;
    void Ch10SatReceived(std::int16_t ch10Sat) override;
    void Ch11SatReceived(std::int16_t ch11Sat) override;
    void Ch12SatReceived(std::int16_t ch12Sat) override;
    void SatellitesInViewReceived(std::int16_t satellitesInView) override;

private:
    void put(const std::string& text);
    void put(std::int16_t value);
    void put(double value);
    template <typename... Args> void line(const char* name, const Args&... args) {
        m_out << name;
        (put(args), ...);
        m_out << '\n';
    }

    std::ostream& m_out;
};

} // namespace zav
