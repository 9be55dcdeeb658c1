#include "report/DataLog.h"
#include "ReportFixture.h"
#include "platform/UrlCoding.h"
#include "report/ObservationOutputs.h"
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

std::vector<std::string> split(const std::string& line, char sep) {
    std::vector<std::string> out(1);
    for (char c : line) {
        if (c == sep)
            out.emplace_back();
        else
            out.back().push_back(c);
    }
    return out;
}

} // namespace

TEST(DataLog, NewFileGetsHeaderAndRowByteForByte) {
    test::TempDir dir;
    test::ReportFixture f;
    const fs::path log = dir.path / "ZavData.tab";
    ASSERT_TRUE(AppendDataLog(log.string(), f.source()));
    EXPECT_EQ(test::ReadFile(log), test::ExpectedFile("datalog-one-row.tab"));
}

TEST(DataLog, HeaderOnlyForAnEmptyFileAndRowsAppend) {
    test::TempDir dir;
    test::ReportFixture f;
    const fs::path log = dir.path / "log.tab";
    std::ofstream(log, std::ios::binary).close(); // an existing 0-byte file
    ASSERT_TRUE(AppendDataLog(log.string(), f.source()));
    ASSERT_TRUE(AppendDataLog(log.string(), f.source()));
    const std::string text = test::ReadFile(log);
    EXPECT_EQ(text, DataLogHeader() + DataLogRow(f.source()) + DataLogRow(f.source()));

    const fs::path other = dir.path / "other.tab";
    std::ofstream(other, std::ios::binary) << "anything\r\n";
    ASSERT_TRUE(AppendDataLog(other.string(), f.source()));
    EXPECT_EQ(test::ReadFile(other), "anything\r\n" + DataLogRow(f.source()));
}

TEST(DataLog, RowShapeAndNotesSurviveEncoding) {
    test::ReportFixture f;
    const std::string row = DataLogRow(f.source());
    const auto values = split(row.substr(0, row.size() - 2), '\t');
    ASSERT_EQ(values.size(), 32u);
    EXPECT_EQ(row.find('\n'), row.size() - 1); // one line, whatever the notes hold
    EXPECT_EQ(UrlDecode(values[31]), f.setup.Notes);
    f.setup.Bandwidth = "3000";
    f.observation.durationSeconds = 2;
    const auto v2 = split(DataLogRow(f.source()), '\t');
    EXPECT_EQ(v2[11], "34.77");
    EXPECT_EQ(v2[12], "2.000");
}

TEST(DataLog, FailedAppendKeepsEarlierRowsSaysNothingAndLeavesTheCommandsEnabled) {
    test::TempDir dir;
    test::ReportFixture f;
    CommandStates commands;
    test::FakeDialogs dialogs;
    test::FakeClipboard clipboard;
    test::FakeMailer mailer;
    ObservationOutputs outputs([&f] { return f.source(); }, commands, {dialogs, clipboard, mailer});
    const auto enable = [&commands] { commands.MenuSaveTsv = commands.RTSVB = true; };
    const auto enabled = [&commands] { return commands.MenuSaveTsv && commands.RTSVB; };
    const fs::path log = dir.path / "log.tab";
    outputs.TsvFileName = log.string();
    enable();
    outputs.MenuSaveTsv_Click();
    EXPECT_FALSE(commands.MenuSaveTsv || commands.RTSVB); // one observation, one row
    EXPECT_EQ(outputs.focus, FocusTarget::Step3);
    enable(); // the next calculation
    outputs.focus = FocusTarget::Unchanged;
    const std::string earlier = test::ReadFile(log);
    const std::string row = DataLogRow(f.source());

    for (const fs::path& unopenable : {dir.path / "missing" / "log.tab", dir.path}) {
        outputs.TsvFileName = unopenable.string();
        outputs.MenuSaveTsv_Click();
        EXPECT_TRUE(enabled()) << unopenable;
    }
    EXPECT_EQ(outputs.focus, FocusTarget::Unchanged);

#ifdef __linux__
    // The disk fills up a few bytes into the row: the earlier rows stay as they were and the
    // operator can try again once there is room. What did reach the disk is left as it is.
    outputs.TsvFileName = log.string();
    {
        test::FileSizeLimit full(earlier.size() + 10);
        outputs.MenuSaveTsv_Click();
    }
    EXPECT_TRUE(enabled());
    EXPECT_EQ(outputs.focus, FocusTarget::Unchanged);
    const std::string after = test::ReadFile(log);
    ASSERT_LE(after.size(), earlier.size() + 10);
    EXPECT_EQ(after.substr(0, earlier.size()), earlier);
    EXPECT_EQ(after.substr(earlier.size()), row.substr(0, after.size() - earlier.size()));

    outputs.MenuSaveTsv_Click();
    EXPECT_FALSE(enabled());
    EXPECT_EQ(test::ReadFile(log), after + row);
#endif
    EXPECT_TRUE(dialogs.messages.empty());
}

TEST(DataLog, NoOutputLeavesWithoutResultsWhateverTheCommandsSay) {
    test::TempDir dir;
    test::ReportFixture f;
    f.gridCalc = ResultGrid::MakeCalcGrid(); // the results a reset cleared
    CommandStates commands;
    commands.SetOutputCommands(true);
    commands.RTSVB = true; // a view that missed the reset
    test::FakeDialogs dialogs;
    test::FakeClipboard clipboard;
    test::FakeMailer mailer;
    ObservationOutputs outputs([&f] { return f.source(); }, commands, {dialogs, clipboard, mailer});
    outputs.TsvFileName = (dir.path / "log.tab").string();
    outputs.MenuSaveTsv_Click();
    outputs.MenuSaveText_Click();
    outputs.MenuCopyTextClip_Click();
    outputs.MenuSendText_Click();
    EXPECT_FALSE(fs::exists(dir.path / "log.tab"));
    EXPECT_TRUE(dialogs.fileRequests.empty() && clipboard.texts.empty() && mailer.sent.empty());

    f.gridCalc.SetText(2, 2, "12.3"); // one result is enough to log
    outputs.MenuSaveTsv_Click();
    EXPECT_TRUE(fs::exists(dir.path / "log.tab"));
}
