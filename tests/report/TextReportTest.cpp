#include "report/TextReport.h"
#include "ReportFixture.h"

#include <gtest/gtest.h>

using namespace zav;

TEST(TextReport, MatchesTheExpectedFileAndFormatsPositionBandwidthAndInterval) {
    test::ReportFixture f;
    const std::string report = TextResults(f.source());
    EXPECT_EQ(report, test::ExpectedFile("report-no-position.txt"));
    EXPECT_EQ(SavedTextResults(f.source()), report + "\r\n");
    EXPECT_EQ(EmailTextResults(f.source()), report + "--\r\n");
    EXPECT_EQ(EmailSubject(f.observation), "### ZAV report ### 20261121093015");

    f.observation.ObsLat = "-33.852057";
    f.observation.ObsLon = "151.250000";
    f.setup.Bandwidth = "10000";
    f.observation.durationSeconds = 65536.0 / 44100.0;
    const std::string r = TextResults(f.source());
    for (const char* line : {"\r\nLatitude\t-33.852057\r\nLongitude\t151.250000\r\n",
                             "\r\nMBW (dB)\t40.00\r\n", "\r\nMeasurement Interval (s)\t1.486\r\n"})
        EXPECT_NE(r.find(line), std::string::npos) << line;

    // Before any calculation: empty cells, no bandwidth figure, the window's separator.
    const SetupRecord setup;
    const Observation obs;
    const ResultGrid meas = ResultGrid::MakeMeasGrid(), calc = ResultGrid::MakeCalcGrid();
    const std::string empty = TextResults(ReportSource{setup, obs, meas, calc, 0, 0, ','});
    for (const char* line : {"\r\nRMS Rx power (dBm)\t\r\n", "\r\nMBW (dB)\t\r\n",
                             "\r\nAntenna Factor (dB/m)\t0,00\r\n"})
        EXPECT_NE(empty.find(line), std::string::npos) << line;
    EXPECT_EQ(empty.substr(empty.size() - 14), "\r\n\r\nNotes:\r\n\r\n");
}
