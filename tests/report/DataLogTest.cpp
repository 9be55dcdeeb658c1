#include "report/DataLog.h"
#include "ReportFixture.h"
#include "platform/UrlCoding.h"
#include "report/ObservationOutputs.h"
#include "report/TextReport.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/FileSizeLimit.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

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
    // One line of 32 fields whatever the notes hold, and they decode back.
    f.setup.Bandwidth = "3000";
    f.observation.durationSeconds = 2;
    std::istringstream fields(DataLogRow(f.source()));
    std::vector<std::string> v;
    for (std::string field; std::getline(fields, field, '\t');)
        v.push_back(field);
    ASSERT_EQ(v.size(), 32u);
    EXPECT_EQ(v[31].find('\n'), v[31].size() - 1);
    EXPECT_EQ(UrlDecode(v[31].substr(0, v[31].size() - 2)), f.setup.Notes);
    EXPECT_EQ(v[11] + " " + v[12], "34.77 2.000");
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
    // A missing folder, a folder, and a disk that fills up a few bytes into the row: the file
    // stays as long as before, so the next row starts a line of its own.
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
    // A saved report is whole or the old file stays.
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
    o.outputs.recordTsv();
    o.outputs.saveText();
    o.outputs.copyText();
    o.outputs.sendText();
    EXPECT_TRUE(!fs::exists(o.dir.path / "log.tab") && o.dialogs.fileRequests.empty() &&
                o.clipboard.texts.empty() && o.mailer.sent.empty());
    o.f.gridCalc.SetText(2, 2, "12.3"); // one result is enough to log
    o.outputs.recordTsv();
    EXPECT_TRUE(fs::exists(o.dir.path / "log.tab"));
}
