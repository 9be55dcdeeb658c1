#include "ReportFixture.h"
#include "platform/Version.h"
#include "report/DataLog.h"
#include "report/MonitorSummary.h"
#include "report/ObservationOutputs.h"
#include "report/PostVars.h"
#include "report/TextReport.h"
#include "report/TransferModel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/FileSizeLimit.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace zav;
namespace fs = std::filesystem;
using namespace zav::test;

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
    EXPECT_TRUE(AppendDataLog((dir.path / "new.tab").string(), f.source()) &&
                test::ReadFile(dir.path / "new.tab") == expected + row);
}

TEST(DataLog, AFailedAppendLeavesTheFileAsItWasSaysWhyAndLeavesTheCommandsEnabled) {
    Outputs o;
    const fs::path log = o.dir.path / "log.tab";
    o.outputs.TsvFileName = log.string();
    o.enableLog(), o.outputs.recordTsv();
    EXPECT_FALSE(o.commands.recordTsvEnabled || o.commands.recordTsvButtonEnabled); // one row
    EXPECT_EQ(o.outputs.focus, FocusTarget::Step3);
    o.enableLog(), o.outputs.focus = FocusTarget::Unchanged; // the next calculation
    const std::string earlier = test::ReadFile(log);
    // A missing folder, a folder, a disk full a few bytes into the row: the file stays whole.
    using P = std::pair<fs::path, std::string>;
    for (const auto& [path, reason] :
         {P{o.dir.path / "missing" / "log.tab", "No such file or directory"}, P{o.dir.path, ""},
          P{log, "File too large"}}) {
        o.outputs.TsvFileName = path.string();
        test::FileSizeLimit full(earlier.size() + 10);
        o.outputs.recordTsv();
        EXPECT_TRUE(o.commands.recordTsvEnabled && o.commands.recordTsvButtonEnabled) << path;
        EXPECT_NE(o.lastSaid().find(path.string() + ": " + reason), std::string::npos)
            << o.lastSaid();
    }
    EXPECT_TRUE(o.outputs.focus == FocusTarget::Unchanged && test::ReadFile(log) == earlier);
    o.outputs.TsvFileName = log.string(), o.outputs.recordTsv();
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
    o.f.gridCalc.SetText(2, 2, "12.3"), o.outputs.recordTsv(); // one result is enough to log
    EXPECT_TRUE(fs::exists(o.dir.path / "log.tab"));
}

TEST(TextReport, MatchesTheExpectedFileAndFormatsPositionBandwidthAndInterval) {
    test::ReportFixture f;
    const std::string report = TextResults(f.source());
    EXPECT_EQ(report, test::ExpectedFile("report-no-position.txt"));
    EXPECT_EQ(SavedTextResults(f.source()) + EmailTextResults(f.source()),
              report + "\r\n" + report + "--\r\n");
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

TEST(PostVars, FieldOrderWithFreeTextEncodedCellsAsDisplayedAndThePositionLast) {
    ReportFixture f;
    f.setup.Tester = "G4ABC/P", f.setup.Location = "Hill top = 3 & more";
    // By hand: free text and formatted numbers encoded, grid cells and the time as they stand.
    const std::string noPosition =
        "Program=ZAV&Version=" + VersionText() +
        "&ObsTime=20261121093015&Tester=G4ABC%2FP&Location=Hill+top+%3D+3+%26+more"
        "&Environment=Rural&Frequency=7%2E100&Receiver=IC%2D7300&Bandwidth=2400&MBW=33%2E80"
        "&MeasInt=0%2E500&RxNF=6%2E00&Antenna=Dipole&AntGain=%2D2%2E15&AntFact=12%2E00"
        "&Attenuator=20%2E0&AGC=20&Loss=1%2E5&RxAvg=-120.05&RxRms=-119.00&RxQp=-117.50"
        "&RxPk=-108.00&FsAvg=-1.1&FsRms=0.0&FsQp=1.5&FsPk=11.0&NormAvg=-34.9&NormRms=-33.8"
        "&NormQp=-32.3&NormPk=-22.8&QpRms=1.50&PkRms=11.00"
        "&Notes=first+line%0D%0Asecond%09line+%26+more";
    EXPECT_EQ(PostVars(f.source()), noPosition);
    f.observation.ObsLon = "-0.120000";
    EXPECT_EQ(PostVars(f.source()), noPosition);
    f.observation.ObsLat = "51.500000";
    EXPECT_EQ(PostVars(f.source()), noPosition + "&Latitude=51.500000&Longitude=-0.120000");
    using P = std::pair<const char*, const char*>;
    for (const auto& [typed, address] :
         {P{"collect.example.org/p", "http://collect.example.org/p"},
          P{"https://h/p", "https://h/p"}, P{"HTTP://h/p", "HTTP://h/p"},
          P{"httpx://h", "http://httpx://h"}})
        EXPECT_EQ(TransferAddress(typed), address);
}

// The web way, the copy and the write-back through the real dialog: PeerDialogsTest.cpp.
TEST(TransferModel, TheEmailWayNeedsTheCollectingAddress) {
    TransferRig rig;
    rig.settings.online = false;
    EXPECT_TRUE(rig.open().okVisible);
    rig.settings.AtfEmail.clear();
    TransferModel m = rig.open();
    EXPECT_TRUE(m.sendByEmail && !m.sendOnline && !m.okVisible);
    m.AtfEmail = "x@y", m.collectingAddressEdited();
    EXPECT_TRUE(m.okVisible);
}

// A starred user name sends the server's debug flag for the rest of the run, on either way.
TEST(TransferModel, PostsOrMailsAccountAndReportOnceOrSaysWhyItCouldNot) {
    TransferRig rig;
    rig.settings.username = "*alice";
    TransferModel posted = rig.open();
    posted.okPressed(), posted.close();
    ASSERT_EQ(rig.http.requests.size(), 1u);
    EXPECT_EQ(rig.http.requests[0].body,
              PostVars(rig.source) +
                  "&username=alice&password=p%26ss+word&Email=me%40example%2Eorg&client=1&debug=1");
    EXPECT_EQ(rig.http.requests[0].contentType + rig.settings.username,
              "application/x-www-form-urlencoded*alice"); // the box keeps what was typed

    rig.settings.online = false, rig.settings.username = "bob", rig.mailer.accepts = false;
    rig.fixture.observation.ObsTime = "20261121100000";
    TransferModel refused = rig.open();
    refused.okPressed();
    EXPECT_EQ(rig.dialogs.texts(),
              std::vector<std::string>{"Error: unable to perform MAPI login."});
    EXPECT_FALSE(refused.CloseRequested);
    rig.mailer.accepts = true, rig.mailer.sent.clear();
    TransferModel m = rig.open();
    m.okPressed();
    ASSERT_EQ(rig.mailer.sent.size(), 1u);
    const MailMessage& mail = rig.mailer.sent[0];
    EXPECT_EQ(mail.to + "|" + mail.subject, "obs@example.org|### ZAV report ### ");
    EXPECT_EQ(mail.body, "username\tbob\r\npassword\tp&ss word\r\nEmail\tme@example.org\r\n"
                         "debug\t1\r\n" +
                             TextResults(rig.source) + "--\r\n");
    EXPECT_TRUE(m.CloseRequested && rig.http.requests.size() == 1);
    TransferModel again = rig.open();
    again.okPressed();
    EXPECT_EQ(again.Message, "Error: observation already succesfully transfered, receipt by Email");
    EXPECT_EQ(rig.mailer.sent.size(), 1u);
}
