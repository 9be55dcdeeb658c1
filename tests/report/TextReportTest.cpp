#include "report/TextReport.h"
#include "ReportFixture.h"

#include <gtest/gtest.h>

using namespace zav;

TEST(TextReport, MatchesTheExpectedFileByteForByte) {
    test::ReportFixture f;
    const std::string report = TextResults(f.source());
    EXPECT_EQ(report, test::ExpectedFile("report-no-position.txt"));
    EXPECT_EQ(SavedTextResults(f.source()), report + "\r\n");
    EXPECT_EQ(EmailTextResults(f.source()), report + "--\r\n");
    EXPECT_EQ(EmailSubject(f.observation), "### ZAV report ### 20261121093015");
}

TEST(TextReport, PositionBandwidthAndIntervalFormats) {
    test::ReportFixture f;
    f.observation.ObsLat = "-33.852057";
    f.observation.ObsLon = "151.250000";
    f.setup.Bandwidth = "10000";
    f.observation.durationSeconds = 65536.0 / 44100.0;
    const std::string r = TextResults(f.source());
    EXPECT_NE(r.find("\r\nLatitude\t-33.852057\r\nLongitude\t151.250000\r\n"), std::string::npos);
    EXPECT_NE(r.find("\r\nMBW (dB)\t40.00\r\n"), std::string::npos);
    EXPECT_NE(r.find("\r\nMeasurement Interval (s)\t1.486\r\n"), std::string::npos);
}

TEST(TextReport, BeforeAnyCalculationCopiesEmptyCells) {
    SetupRecord setup;
    Observation obs;
    const ResultGrid meas = ResultGrid::MakeMeasGrid(), calc = ResultGrid::MakeCalcGrid();
    const std::string r = TextResults(ReportSource{setup, obs, meas, calc, 0, 0, ','});
    EXPECT_NE(r.find("\r\nRMS Rx power (dBm)\t\r\n"), std::string::npos);
    EXPECT_NE(r.find("\r\nMBW (dB)\t\r\n"), std::string::npos); // no bandwidth, no figure
    EXPECT_NE(r.find("\r\nAntenna Factor (dB/m)\t0,00\r\n"), std::string::npos);
    EXPECT_EQ(r.substr(r.size() - 14), "\r\n\r\nNotes:\r\n\r\n");
}
