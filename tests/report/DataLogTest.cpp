#include "report/DataLog.h"
#include "ReportFixture.h"
#include "platform/UrlCoding.h"
#include "report/ObservationOutputs.h"
#include "report/TextReport.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#ifdef __linux__
#include "testsupport/FileSizeLimit.h"
#endif

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
    bool logEnabled() const { return commands.MenuSaveTsv && commands.RTSVB; }
};

} // namespace

TEST(DataLog, NewFileByteForByteThenRowsWithoutASecondHeader) {
    test::TempDir dir;
    test::ReportFixture f;
    const std::string expected = test::ExpectedFile("datalog-one-row.tab");
    const fs::path log = dir.path / "ZavData.tab", empty = dir.path / "empty.tab",
                   other = dir.path / "other.tab";
    ASSERT_TRUE(AppendDataLog(log.string(), f.source()));
    EXPECT_EQ(test::ReadFile(log), expected);
    ASSERT_TRUE(AppendDataLog(log.string(), f.source()));
    EXPECT_EQ(test::ReadFile(log), expected + DataLogRow(f.source()));
    // An existing empty file gets the header too; any other file only the row.
    std::ofstream(empty, std::ios::binary).close();
    std::ofstream(other, std::ios::binary) << "anything\r\n";
    ASSERT_TRUE(AppendDataLog(empty.string(), f.source()));
    ASSERT_TRUE(AppendDataLog(other.string(), f.source()));
    EXPECT_EQ(test::ReadFile(empty), expected);
    EXPECT_EQ(test::ReadFile(other), "anything\r\n" + DataLogRow(f.source()));

    // One line of 32 fields whatever the notes hold, and they decode back.
    f.setup.Bandwidth = "3000";
    f.observation.durationSeconds = 2;
    const std::string row = DataLogRow(f.source());
    EXPECT_EQ(row.find('\n'), row.size() - 1);
    std::istringstream fields(row);
    std::vector<std::string> v;
    for (std::string field; std::getline(fields, field, '\t');)
        v.push_back(field);
    ASSERT_EQ(v.size(), 32u);
    EXPECT_EQ(UrlDecode(v[31].substr(0, v[31].size() - 2)), f.setup.Notes);
    EXPECT_EQ(v[11] + " " + v[12], "34.77 2.000");
}

TEST(DataLog, AFailedAppendLeavesTheFileAsItWasSaysWhyAndLeavesTheCommandsEnabled) {
    Outputs o;
    const fs::path log = o.dir.path / "log.tab";
    o.outputs.TsvFileName = log.string();
    o.commands.MenuSaveTsv = o.commands.RTSVB = true;
    o.outputs.MenuSaveTsv_Click();
    EXPECT_FALSE(o.commands.MenuSaveTsv || o.commands.RTSVB); // one observation, one row
    EXPECT_EQ(o.outputs.focus, FocusTarget::Step3);
    o.commands.MenuSaveTsv = o.commands.RTSVB = true; // the next calculation
    o.outputs.focus = FocusTarget::Unchanged;
    const std::string earlier = test::ReadFile(log);

    for (const fs::path& unopenable : {o.dir.path / "missing" / "log.tab", o.dir.path}) {
        o.outputs.TsvFileName = unopenable.string();
        o.outputs.MenuSaveTsv_Click();
        EXPECT_TRUE(o.logEnabled()) << unopenable;
        ASSERT_FALSE(o.dialogs.messages.empty());
        EXPECT_NE(o.dialogs.messages.back().text.find(unopenable.string()), std::string::npos);
    }
    EXPECT_NE(o.dialogs.messages[0].text.find("No such file or directory"), std::string::npos);
    EXPECT_EQ(o.outputs.focus, FocusTarget::Unchanged);
#ifdef __linux__
    // The disk fills up a few bytes into the row: the file stays as long as before, so the
    // next row starts a line of its own instead of finishing this one.
    o.outputs.TsvFileName = log.string();
    {
        test::FileSizeLimit full(earlier.size() + 10);
        o.outputs.MenuSaveTsv_Click();
    }
    EXPECT_TRUE(o.logEnabled());
    EXPECT_EQ(test::ReadFile(log), earlier);
    EXPECT_NE(o.dialogs.messages.back().text.find("File too large"), std::string::npos);
    o.outputs.MenuSaveTsv_Click();
    EXPECT_FALSE(o.logEnabled());
    EXPECT_EQ(test::ReadFile(log), earlier + DataLogRow(o.f.source()));

    // A saved report is whole or the old file stays.
    const fs::path report = o.dir.path / "report.txt";
    std::ofstream(report) << "old";
    o.dialogs.messages.clear();
    o.dialogs.files = {report.string()};
    {
        test::FileSizeLimit full(100);
        o.outputs.MenuSaveText_Click();
    }
    EXPECT_EQ(test::ReadFile(report), "old");
    EXPECT_EQ(o.dialogs.texts(), std::vector<std::string>{"Error: the report could not be saved: "
                                                          "cannot write " +
                                                          report.string() + ": File too large"});
    o.dialogs.files = {report.string()};
    o.outputs.MenuSaveText_Click();
    EXPECT_EQ(test::ReadFile(report), SavedTextResults(o.f.source()));
#endif
}

TEST(DataLog, NoOutputLeavesWithoutResultsWhateverTheCommandsSay) {
    Outputs o;
    o.f.gridCalc = ResultGrid::MakeCalcGrid(); // the results a reset cleared
    o.commands.SetOutputCommands(true);
    o.commands.RTSVB = true; // a view that missed the reset
    o.outputs.TsvFileName = (o.dir.path / "log.tab").string();
    o.outputs.MenuSaveTsv_Click();
    o.outputs.MenuSaveText_Click();
    o.outputs.MenuCopyTextClip_Click();
    o.outputs.MenuSendText_Click();
    EXPECT_FALSE(fs::exists(o.dir.path / "log.tab"));
    EXPECT_TRUE(o.dialogs.fileRequests.empty() && o.clipboard.texts.empty() &&
                o.mailer.sent.empty());

    o.f.gridCalc.SetText(2, 2, "12.3"); // one result is enough to log
    o.outputs.MenuSaveTsv_Click();
    EXPECT_TRUE(fs::exists(o.dir.path / "log.tab"));
}
