#include "qt/widgets/QtDialogs.h"

#include <gtest/gtest.h>

using namespace zav;

TEST(QtDialogs, DesignedFiltersBecomeQtFilters) {
    EXPECT_EQ(QtFilterFromDesigned("ZAV files (*.zav)|*.zav").toStdString(), "ZAV files (*.zav)");
    EXPECT_EQ(QtFilterFromDesigned("All Files (*.*)|*.*|Text files (*.txt;*.tab)|*.txt;*.tab")
                  .toStdString(),
              "All Files (*.*);;Text files (*.txt *.tab)");
    EXPECT_EQ(QtFilterFromDesigned("Gnuplot|*.plt").toStdString(), "Gnuplot (*.plt)");
    EXPECT_EQ(QtFilterFromDesigned("").toStdString(), "");
}
