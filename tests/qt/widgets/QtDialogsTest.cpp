#include "qt/widgets/QtDialogs.h"

#include <gtest/gtest.h>

using namespace zav;

TEST(QtDialogs, FilterListsBecomeQtFilters) {
    EXPECT_EQ(QtFilterFromList("ZAV files (*.zav)|*.zav").toStdString(), "ZAV files (*.zav)");
    EXPECT_EQ(QtFilterFromList("All Files (*.*)|*.*|Text files (*.txt;*.tab)|*.txt;*.tab")
                  .toStdString(),
              "All Files (*.*);;Text files (*.txt *.tab)");
    EXPECT_EQ(QtFilterFromList("Gnuplot|*.plt").toStdString(), "Gnuplot (*.plt)");
    EXPECT_EQ(QtFilterFromList("").toStdString(), "");
}
