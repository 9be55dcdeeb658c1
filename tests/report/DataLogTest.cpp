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

TEST(DataLog, AFailedAppendLeavesTheFileAsItWasSaysWhyAndLeavesTheCommandsEnabled) {
    test::TempDir dir;
    test::ReportFixture f;
    CommandStates commands;
    test::FakeDialogs dialogs;
    test::FakeClipboard clipboard;
    test::FakeMailer mailer;
    ObservationOutputs outputs([&f] { return f.source(); }, commands, {dialogs, clipboard, mailer});
    const auto enable = [&commands] {
        commands.recordTsvEnabled = commands.recordTsvButtonEnabled = true;
    };
    const auto enabled = [&commands] {
        return commands.recordTsvEnabled && commands.recordTsvButtonEnabled;
    };
    const fs::path log = dir.path / "log.tab";
    outputs.TsvFileName = log.string();
    enable();
    outputs.recordTsv();
    EXPECT_FALSE(commands.recordTsvEnabled ||
                 commands.recordTsvButtonEnabled); // one observation, one row
    EXPECT_EQ(outputs.focus, FocusTarget::Step3);
    enable(); // the next calculation
    outputs.focus = FocusTarget::Unchanged;
    const std::string earlier = test::ReadFile(log);
    const std::string row = DataLogRow(f.source());

    for (const fs::path& unopenable : {dir.path / "missing" / "log.tab", dir.path}) {
        outputs.TsvFileName = unopenable.string();
        outputs.recordTsv();
        EXPECT_TRUE(enabled()) << unopenable;
        ASSERT_FALSE(dialogs.messages.empty());
        EXPECT_NE(dialogs.messages.back().text.find(unopenable.string()), std::string::npos);
    }
    EXPECT_NE(dialogs.messages[0].text.find("No such file or directory"), std::string::npos);
    EXPECT_EQ(outputs.focus, FocusTarget::Unchanged);

#ifdef __linux__
    // The disk fills up a few bytes into the row: the file is exactly as long as before, so
    // the next row, once there is room, starts a line of its own instead of finishing this one.
    outputs.TsvFileName = log.string();
    {
        test::FileSizeLimit full(earlier.size() + 10);
        outputs.recordTsv();
    }
    EXPECT_TRUE(enabled());
    EXPECT_EQ(outputs.focus, FocusTarget::Unchanged);
    EXPECT_EQ(test::ReadFile(log), earlier);
    EXPECT_NE(dialogs.messages.back().text.find("File too large"), std::string::npos)
        << dialogs.messages.back().text;

    outputs.recordTsv();
    EXPECT_FALSE(enabled());
    EXPECT_EQ(test::ReadFile(log), earlier + row);
    EXPECT_EQ(dialogs.messages.size(), 3u);
#endif
}

TEST(ObservationOutputs, ASavedReportIsWholeOrTheFailureSaysWhy) {
    test::TempDir dir;
    test::ReportFixture f;
    CommandStates commands;
    test::FakeDialogs dialogs;
    test::FakeClipboard clipboard;
    test::FakeMailer mailer;
    ObservationOutputs outputs([&f] { return f.source(); }, commands, {dialogs, clipboard, mailer});
    const fs::path report = dir.path / "report.txt";
    dialogs.files = {report.string(), report.string()};
    outputs.saveText();
    const std::string saved = test::ReadFile(report);
    EXPECT_FALSE(saved.empty());
    EXPECT_TRUE(dialogs.messages.empty());
#ifdef __linux__
    std::ofstream(report) << "old";
    {
        test::FileSizeLimit full(saved.size() / 2);
        outputs.saveText();
    }
    EXPECT_EQ(test::ReadFile(report), "old");
    EXPECT_EQ(dialogs.texts(), std::vector<std::string>{"Error: the report could not be saved: "
                                                        "cannot write " +
                                                        report.string() + ": File too large"});
#endif
}

TEST(DataLog, NoOutputLeavesWithoutResultsWhateverTheCommandsSay) {
    test::TempDir dir;
    test::ReportFixture f;
    f.gridCalc = ResultGrid::MakeCalcGrid(); // the results a reset cleared
    CommandStates commands;
    commands.enableOutputCommands(true);
    commands.recordTsvButtonEnabled = true; // a view that missed the reset
    test::FakeDialogs dialogs;
    test::FakeClipboard clipboard;
    test::FakeMailer mailer;
    ObservationOutputs outputs([&f] { return f.source(); }, commands, {dialogs, clipboard, mailer});
    outputs.TsvFileName = (dir.path / "log.tab").string();
    outputs.recordTsv();
    outputs.saveText();
    outputs.copyText();
    outputs.sendText();
    EXPECT_FALSE(fs::exists(dir.path / "log.tab"));
    EXPECT_TRUE(dialogs.fileRequests.empty() && clipboard.texts.empty() && mailer.sent.empty());

    f.gridCalc.SetText(2, 2, "12.3"); // one result is enough to log
    outputs.recordTsv();
    EXPECT_TRUE(fs::exists(dir.path / "log.tab"));
}
