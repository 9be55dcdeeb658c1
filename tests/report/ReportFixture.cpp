#include "ReportFixture.h"

#include "platform/Version.h"
#include "testsupport/ScratchDir.h"

namespace zav::test {

ReportFixture::ReportFixture() {
    setup.Tester = "G4ABC", setup.Location = "Hill top", setup.Environment = "Rural";
    setup.lat = "51.5"; // typed, but the observation carries no position
    setup.Frequency = "7.100", setup.Receiver = "IC-7300", setup.Bandwidth = "2400";
    setup.RxNF = "6.00", setup.Antenna = "Dipole", setup.AntGain = "-2.15";
    setup.Feedline = "RG58 20 m", setup.Loss = "1.5", setup.Attenuator = "20.0", setup.AGC = "20";
    setup.Interval = "500", setup.Notes = "first line\r\nsecond\tline & more";
    observation.ObsTime = "20261121093015", observation.durationSeconds = 0.5;
    const char* calc[] = {"-120.05", "-1.1", "-34.9", "-119.00", "0.0",  "-33.8",
                          "-117.50", "1.5",  "-32.3", "-108.00", "11.0", "-22.8"};
    for (int i = 0; i < 12; ++i)
        gridCalc.SetText(i / 3 + 1, i % 3 + 1, calc[i]);
    gridMeas.SetText(23, "1.50"), gridMeas.SetText(27, "11.00");
    gridMeas.SetText(22, "9.99"); // receiver column: never copied
}

ReportSource ReportFixture::source() const {
    return ReportSource{setup, observation, gridMeas, gridCalc, -2.15, 12.0, '.'};
}

std::string ExpectedFile(const std::string& name) {
    std::string text = ReadFile(std::string(ZAV_SOURCE_DIR) + "/tests/data/report/" + name);
    const std::string marker = "@VERSION@";
    for (auto at = text.find(marker); at != std::string::npos; at = text.find(marker))
        text.replace(at, marker.size(), VersionText());
    return text;
}

} // namespace zav::test
