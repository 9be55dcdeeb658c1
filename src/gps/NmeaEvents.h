#pragma once

#include <cstdint>
#include <string>

namespace zav {

// What an NmeaInterpreter reports, one call per event, raised synchronously inside parseSentence.
// The members are declared in the interpreter's event order, which hosts binding events by
// index rely on. Every event does nothing by default, so a host overrides only what it uses.
class NmeaEvents {
public:
    virtual ~NmeaEvents() = default;

    virtual void PositionReceived(const std::string& latitude, const std::string& longitude) {
        (void)latitude, (void)longitude;
    }
    virtual void TimeChanged(const std::string& Time) { (void)Time; }
    virtual void DateChanged(const std::string& satDate) { (void)satDate; }
    virtual void BearingReceived(double bearing) { (void)bearing; }
    virtual void SpeedReceived(double speed) { (void)speed; }
    virtual void FixObtained() {}
    virtual void FixLost() {}
    virtual void SatelliteReceived(std::int16_t satelliteNumber, std::int16_t pseudoRandomCode,
                                   std::int16_t azimuth, std::int16_t elevation,
                                   std::int16_t signalToNoiseRatio) {
        (void)satelliteNumber, (void)pseudoRandomCode, (void)azimuth, (void)elevation,
            (void)signalToNoiseRatio;
    }
    virtual void HDOPReceived(double value) { (void)value; }
    virtual void VDOPReceived(double value) { (void)value; }
    virtual void PDOPReceived(double value) { (void)value; }
    virtual void PositionFixReceived(const std::string& positionFix) { (void)positionFix; }
    virtual void SatellitesUsedReceived(std::int16_t satellitesUsed) { (void)satellitesUsed; }
    virtual void AltitudeReceived(double altitude) { (void)altitude; }
    virtual void AltitudeUnitsReceived(const std::string& altitudeUnits) { (void)altitudeUnits; }
    virtual void GeoidSeparationReceived(double geoidSeparation) { (void)geoidSeparation; }
    virtual void GeoidSeparationUnitsReceived(const std::string& geoidSeparationUnits) {
        (void)geoidSeparationUnits;
    }
    virtual void DGPSageReceived(std::int16_t dGPSage) { (void)dGPSage; }
    virtual void DGPSstationIDReceived(const std::string& dGPSstationID) { (void)dGPSstationID; }
    virtual void AutoManModeReceived(const std::string& autoManMode) { (void)autoManMode; }
    virtual void Mode3DReceived(const std::string& mode3D) { (void)mode3D; }
    virtual void Ch1SatReceived(std::int16_t ch1Sat) { (void)ch1Sat; }
    virtual void Ch2SatReceived(std::int16_t ch2Sat) { (void)ch2Sat; }
    virtual void Ch3SatReceived(std::int16_t ch3Sat) { (void)ch3Sat; }
    virtual void Ch4SatReceived(std::int16_t ch4Sat) { (void)ch4Sat; }
    virtual void Ch5SatReceived(std::int16_t ch5Sat) { (void)ch5Sat; }
    virtual void Ch6SatReceived(std::int16_t ch6Sat) { (void)ch6Sat; }
    virtual void Ch7SatReceived(std::int16_t ch7Sat) { (void)ch7Sat; }
    virtual void Ch8SatReceived(std::int16_t ch8Sat) { (void)ch8Sat; }
    virtual void Ch9SatReceived(std::int16_t ch9Sat) { (void)ch9Sat; }
    virtual void Ch10SatReceived(std::int16_t ch10Sat) { (void)ch10Sat; }
    virtual void Ch11SatReceived(std::int16_t ch11Sat) { (void)ch11Sat; }
    virtual void Ch12SatReceived(std::int16_t ch12Sat) { (void)ch12Sat; }
    virtual void SatellitesInViewReceived(std::int16_t satellitesInView) { (void)satellitesInView; }
};

} // namespace zav
