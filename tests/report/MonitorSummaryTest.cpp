#include "report/MonitorSummary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace zav;

namespace {

// A log as the program writes it (header ending in a tab, CR LF) with the columns that
// matter; rows with a decimal comma mixed in.
std::string dataLog(const std::vector<std::string>& rows) {
    std::string text = "Program\tObsTime\tFrequency\tFsRms\tRxRms\tNotes\t\r\n";
    for (const std::string& r : rows)
        text += r + "\r\n";
    return text;
}

} // namespace

TEST(MonitorSummary, CountsMinMedianMaxPerFrequencyAndHour) {
    const std::string text = dataLog({
        "ZAV\t20261124130500\t7.100\t3\t-100\t", "ZAV\t20261124131500\t7.100\t1\t-101\t",
        "ZAV\t20261125132500\t7,100\t2\t-102\t", // another day, same hour; decimal comma
        "ZAV\t20261124140500\t7.100\t10\t-99\t", "ZAV\t20261124141500\t7.100\t1\t-99\t",
        "ZAV\t20261124142500\t7.100\t2\t-99\t", "ZAV\t20261124143500\t7.100\t3\t-99\t",
        "ZAV\t20261124090500\t3.500\t-4,5\t-98\t",
        "ZAV\t20261124091500\t3.500\t\t-98\t", // no reading: left out
        "ZAV\tnot-a-time\t3.500\t1\t-98\t",    // no time: left out
    });
    std::string error;
    const auto s = SummariseDataLog(text, kDefaultSummaryColumn, &error);
    ASSERT_TRUE(s) << error;
    EXPECT_EQ(s->column, "FsRms");
    EXPECT_EQ(s->skippedRows, 2);
    ASSERT_EQ(s->frequencies.size(), 2u);
    EXPECT_DOUBLE_EQ(s->frequencies[0].frequencyMHz, 3.5);
    ASSERT_EQ(s->frequencies[0].hours.size(), 1u);
    EXPECT_EQ(s->frequencies[0].hours[0].hour, 9);
    EXPECT_DOUBLE_EQ(s->frequencies[0].hours[0].median, -4.5);
    const auto& hours = s->frequencies[1].hours;
    ASSERT_EQ(hours.size(), 2u);
    EXPECT_EQ(std::vector<double>({double(hours[0].hour), double(hours[0].n), hours[0].min,
                                   hours[0].median, hours[0].max, double(hours[1].n),
                                   hours[1].median, hours[1].max}),
              std::vector<double>({13, 3, 1, 2, 3, 4, 2.5, 10}));
    const auto rx = SummariseDataLog(text, "RxRms", &error);
    ASSERT_TRUE(rx);
    EXPECT_DOUBLE_EQ(rx->frequencies[1].hours[1].median, -99);

    // Not a data log, or no such column: refused, with the column named.
    EXPECT_FALSE(SummariseDataLog(dataLog({}), "NoSuchKey", &error));
    EXPECT_NE(error.find("NoSuchKey"), std::string::npos);
    EXPECT_FALSE(SummariseDataLog("", "FsRms", &error));
    EXPECT_FALSE(SummariseDataLog(std::string("\x89PNG\r\n\x1a\n\0\0", 10), "FsRms", &error));
    const auto cut = SummariseDataLog(dataLog({"ZAV\t20261124"}), "FsRms", &error);
    ASSERT_TRUE(cut);
    EXPECT_TRUE(cut->frequencies.empty());
    EXPECT_EQ(cut->skippedRows, 1);
}

TEST(MonitorSummary, MedianAgainstSorting) {
    std::vector<double> v;
    for (int i = 0; i < 101; ++i) {
        v.push_back(std::fmod(i * 37.0, 101.0));
        std::vector<double> sorted = v;
        std::sort(sorted.begin(), sorted.end());
        const std::size_t n = sorted.size();
        EXPECT_DOUBLE_EQ(Median(v),
                         n % 2 ? sorted[n / 2] : (sorted[n / 2 - 1] + sorted[n / 2]) / 2);
    }
}
