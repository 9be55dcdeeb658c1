#include "report/MonitorSummary.h"

#include <gtest/gtest.h>

using namespace zav;

// The whole output, byte for byte, from a real log: tests/cli/outputs.sh.
TEST(MonitorSummary, CountsMinMedianMaxPerFrequencyAndHourAndRefusesOtherFiles) {
    // A log as the program writes it (header ending in a tab, CR LF); rows with a decimal
    // comma mixed in, another day in the same hour, and rows without a reading or a time.
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
    const auto& low = s->frequencies[0];
    ASSERT_EQ(low.hours.size(), 1u);
    EXPECT_EQ(
        std::vector<double>({low.frequencyMHz, double(low.hours[0].hour), low.hours[0].median}),
        std::vector<double>({3.5, 9, -4.5}));
    const auto& hours = s->frequencies[1].hours;
    ASSERT_EQ(hours.size(), 2u);
    EXPECT_EQ(
        std::vector<double>({double(hours[0].hour), double(hours[0].n), hours[0].min,
                             hours[0].median, hours[0].max, double(hours[1].hour),
                             double(hours[1].n), hours[1].min, hours[1].median, hours[1].max}),
        std::vector<double>({13, 3, 1, 2, 3, 14, 4, 1, 2.5, 10}));
    const auto rx = SummariseDataLog(text, "RxRms", &error);
    ASSERT_TRUE(rx);
    EXPECT_DOUBLE_EQ(rx->frequencies[1].hours[1].median, -99);

    // Not a data log, or no such column: refused, with the column named.
    EXPECT_FALSE(SummariseDataLog(header, "NoSuchKey", &error));
    EXPECT_NE(error.find("NoSuchKey"), std::string::npos);
    EXPECT_FALSE(SummariseDataLog("", "FsRms", &error));
    EXPECT_FALSE(SummariseDataLog(std::string("\x89PNG\r\n\x1a\n\0\0", 10), "FsRms", &error));
    const auto cut = SummariseDataLog(header + "ZAV\t20261124\r\n", "FsRms", &error);
    ASSERT_TRUE(cut);
    EXPECT_TRUE(cut->frequencies.empty() && cut->skippedRows == 1);
}
