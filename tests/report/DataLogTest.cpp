#include "report/DataLog.h"
#include "ReportFixture.h"
#include "report/MonitorSummary.h"
#include "report/ObservationOutputs.h"
#include "report/TextReport.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/FileSizeLimit.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace zav;
namespace fs = std::filesystem;

namespace {

struct Outputs {
    test::TempDir dir;
    test::ReportFixture f;
    CommandStates commands;
    test::FakeDialogs dialogs;
    test::FakeClipboard clipboard;
    test::FakeMailer mailer;
    ObservationOutputs outputs{
        [this] { return f.source(); }, commands, {dialogs, clipboard, mailer}};
    bool logEnabled() const { return commands.recordTsvEnabled && commands.recordTsvButtonEnabled; }
    std::string lastSaid() const { return dialogs.messages.empty() ? "" : dialogs.texts().back(); }
    void enableLog() { commands.recordTsvEnabled = commands.recordTsvButtonEnabled = true; }
};

} // namespace

TEST(DataLog, NewFileByteForByteThenRowsWithoutASecondHeader) {
    test::TempDir dir;
    test::ReportFixture f;
    const std::string expected = test::ExpectedFile("datalog-one-row.tab"),
                      row = DataLogRow(f.source());
    // A new or empty file gets the header; any other file, or a second row, only the row.
    std::ofstream(dir.path / "empty.tab", std::ios::binary).close();
    std::ofstream(dir.path / "other.tab", std::ios::binary) << "anything\r\n";
    using P = std::pair<const char*, std::string>;
    for (const auto& [name, content] :
         {P{"new.tab", expected}, P{"empty.tab", expected}, P{"other.tab", "anything\r\n" + row}}) {
        ASSERT_TRUE(AppendDataLog((dir.path / name).string(), f.source()));
        EXPECT_EQ(test::ReadFile(dir.path / name), content) << name;
    }
    ASSERT_TRUE(AppendDataLog((dir.path / "new.tab").string(), f.source()));
    EXPECT_EQ(test::ReadFile(dir.path / "new.tab"), expected + row);
}

TEST(DataLog, AFailedAppendLeavesTheFileAsItWasSaysWhyAndLeavesTheCommandsEnabled) {
    Outputs o;
    const fs::path log = o.dir.path / "log.tab";
    o.outputs.TsvFileName = log.string();
    o.enableLog();
    o.outputs.recordTsv();
    EXPECT_FALSE(o.commands.recordTsvEnabled || o.commands.recordTsvButtonEnabled); // one row
    EXPECT_EQ(o.outputs.focus, FocusTarget::Step3);
    o.enableLog(); // the next calculation
    o.outputs.focus = FocusTarget::Unchanged;
    const std::string earlier = test::ReadFile(log);
    // A missing folder, a folder, a disk full a few bytes into the row: the file stays whole.
    using P = std::pair<fs::path, std::string>;
    for (const auto& [path, reason] :
         {P{o.dir.path / "missing" / "log.tab", "No such file or directory"}, P{o.dir.path, ""},
          P{log, "File too large"}}) {
        o.outputs.TsvFileName = path.string();
        test::FileSizeLimit full(earlier.size() + 10);
        o.outputs.recordTsv();
        EXPECT_TRUE(o.logEnabled()) << path;
        EXPECT_NE(o.lastSaid().find(path.string() + ": " + reason), std::string::npos)
            << o.lastSaid();
    }
    EXPECT_EQ(o.outputs.focus, FocusTarget::Unchanged);
    EXPECT_EQ(test::ReadFile(log), earlier);
    o.outputs.TsvFileName = log.string();
    o.outputs.recordTsv();
    EXPECT_EQ(test::ReadFile(log), earlier + DataLogRow(o.f.source()));
    const fs::path report = o.dir.path / "report.txt";
    std::ofstream(report) << "old";
    o.dialogs.files = {report.string(), report.string()};
    {
        test::FileSizeLimit full(100);
        o.outputs.saveText();
    }
    EXPECT_EQ(test::ReadFile(report) + "|" + o.lastSaid(),
              "old|Error: the report could not be saved: cannot write " + report.string() +
                  ": File too large");
    o.outputs.saveText();
    EXPECT_EQ(test::ReadFile(report), SavedTextResults(o.f.source()));
}

TEST(DataLog, NoOutputLeavesWithoutResultsWhateverTheCommandsSay) {
    Outputs o;
    o.f.gridCalc = ResultGrid::MakeCalcGrid(); // the results a reset cleared
    o.commands.enableOutputCommands(true);
    o.commands.recordTsvButtonEnabled = true; // a view that missed the reset
    o.outputs.TsvFileName = (o.dir.path / "log.tab").string();
    o.outputs.recordTsv(), o.outputs.saveText(), o.outputs.copyText(), o.outputs.sendText();
    EXPECT_TRUE(!fs::exists(o.dir.path / "log.tab") && o.dialogs.fileRequests.empty() &&
                o.clipboard.texts.empty() && o.mailer.sent.empty());
    o.f.gridCalc.SetText(2, 2, "12.3"); // one result is enough to log
    o.outputs.recordTsv();
    EXPECT_TRUE(fs::exists(o.dir.path / "log.tab"));
}

TEST(TextReport, MatchesTheExpectedFileAndFormatsPositionBandwidthAndInterval) {
    test::ReportFixture f;
    const std::string report = TextResults(f.source());
    EXPECT_EQ(report, test::ExpectedFile("report-no-position.txt"));
    EXPECT_EQ(SavedTextResults(f.source()), report + "\r\n");
    EXPECT_EQ(EmailTextResults(f.source()), report + "--\r\n");
    EXPECT_EQ(EmailSubject(f.observation), "### ZAV report ### 20261121093015");

    f.observation.ObsLat = "-33.852057", f.observation.ObsLon = "151.250000";
    f.setup.Bandwidth = "10000", f.observation.durationSeconds = 65536.0 / 44100.0;
    const std::string r = TextResults(f.source());
    for (const char* line : {"\r\nLatitude\t-33.852057\r\nLongitude\t151.250000\r\n",
                             "\r\nMBW (dB)\t40.00\r\n", "\r\nMeasurement Interval (s)\t1.486\r\n"})
        EXPECT_NE(r.find(line), std::string::npos) << line;

    // Before any calculation: empty cells, no bandwidth figure, the window's separator.
    const ResultGrid meas = ResultGrid::MakeMeasGrid(), calc = ResultGrid::MakeCalcGrid();
    const std::string empty = TextResults(ReportSource{{}, {}, meas, calc, 0, 0, ','});
    for (const char* line : {"\r\nRMS Rx power (dBm)\t\r\n", "\r\nMBW (dB)\t\r\n",
                             "\r\nAntenna Factor (dB/m)\t0,00\r\n"})
        EXPECT_NE(empty.find(line), std::string::npos) << line;
    EXPECT_EQ(empty.substr(empty.size() - 14), "\r\n\r\nNotes:\r\n\r\n");
}

// The whole output, byte for byte, from a real log: tests/cli/outputs.sh.
TEST(MonitorSummary, CountsMinMedianMaxPerFrequencyAndHourAndRefusesOtherFiles) {
    // A decimal comma, another day in the same hour, rows without a reading or a time.
    const std::string header = "Program\tObsTime\tFrequency\tFsRms\tRxRms\tNotes\t\r\n";
    std::string text = header;
    for (const char* row : {"20261124130500\t7.100\t3\t-100", "20261124131500\t7.100\t1\t-101",
                            "20261125132500\t7,100\t2\t-102", "20261124140500\t7.100\t10\t-99",
                            "20261124141500\t7.100\t1\t-99", "20261124142500\t7.100\t2\t-99",
                            "20261124143500\t7.100\t3\t-99", "20261124090500\t3.500\t-4,5\t-98",
                            "20261124091500\t3.500\t\t-98", "not-a-time\t3.500\t1\t-98"})
        text += std::string("ZAV\t") + row + "\t\r\n";
    std::string error;
    const auto s = SummariseDataLog(text, kDefaultSummaryColumn, &error);
    ASSERT_TRUE(s) << error;
    EXPECT_EQ(s->column + std::to_string(s->skippedRows), "FsRms2");
    ASSERT_EQ(s->frequencies.size(), 2u);
    std::vector<double> seen;
    for (const auto& frequency : s->frequencies)
        for (const auto& h : frequency.hours)
            seen.insert(seen.end(), {frequency.frequencyMHz, double(h.hour), double(h.n), h.min,
                                     h.median, h.max});
    EXPECT_EQ(seen, std::vector<double>({3.5, 9, 1, -4.5, -4.5, -4.5, 7.1, 13, 3, 1, 2, 3, 7.1, 14,
                                         4, 1, 2.5, 10}));
    const auto rx = SummariseDataLog(text, "RxRms", &error);
    ASSERT_TRUE(rx);
    EXPECT_DOUBLE_EQ(rx->frequencies[1].hours[1].median, -99);

    EXPECT_FALSE(SummariseDataLog(header, "NoSuchKey", &error));
    EXPECT_NE(error.find("NoSuchKey"), std::string::npos);
    EXPECT_FALSE(SummariseDataLog("", "FsRms", &error));
    EXPECT_FALSE(SummariseDataLog(std::string("\x89PNG\r\n\x1a\n\0\0", 10), "FsRms", &error));
    const auto cut = SummariseDataLog(header + "ZAV\t20261124\r\n", "FsRms", &error);
    ASSERT_TRUE(cut);
    EXPECT_TRUE(cut->frequencies.empty() && cut->skippedRows == 1);
}
