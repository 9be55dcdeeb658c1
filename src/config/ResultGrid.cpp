#include "config/ResultGrid.h"

#include <stdexcept>

namespace zav {

ResultGrid::ResultGrid(int rows, int columns)
    : m_rows(rows), m_columns(columns), m_text(static_cast<std::size_t>(rows * columns)),
      m_colour(static_cast<std::size_t>(rows * columns), CellColour::WindowText) {}

int ResultGrid::check(int index) const {
    if (index < 0 || index >= m_rows * m_columns)
        throw std::out_of_range("grid cell " + std::to_string(index));
    return index;
}

ResultGrid ResultGrid::MakeMeasGrid() {
    ResultGrid g(7, 4);
    const char* header[] = {"", "Sound card", "Receiver", "External"};
    const char* rows[] = {"Avg (V)", "RMS (V)", "QP (V)", "Pk (V)", "QP/RMS (dB)", "Pk/RMS (dB)"};
    for (int c = 0; c < 4; ++c)
        g.SetText(0, c, header[c]);
    for (int r = 1; r <= 6; ++r)
        g.SetText(r, 0, rows[r - 1]);
    return g;
}

ResultGrid ResultGrid::MakeCalcGrid() {
    ResultGrid g(5, 4);
    const char* header[] = {"Detector", "Rx (dBm)", "FS (dBuV/m)", "Normalised FS (dBuV/m)"};
    const char* rows[] = {"Avg", "RMS", "QP", "Pk"};
    for (int c = 0; c < 4; ++c)
        g.SetText(0, c, header[c]);
    for (int r = 1; r <= 4; ++r)
        g.SetText(r, 0, rows[r - 1]);
    return g;
}

} // namespace zav
