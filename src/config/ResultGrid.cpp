#include "config/ResultGrid.h"

#include <stdexcept>

namespace zav {

ResultGrid::ResultGrid(int rows, int columns)
    : m_rows(rows), m_columns(columns), m_text(static_cast<std::size_t>(rows * columns)),
      m_colour(static_cast<std::size_t>(rows * columns), CellColour::WindowText),
      m_note(static_cast<std::size_t>(rows * columns)) {}

std::string ResultGrid::CopyText(int firstRow, int firstColumn, int lastRow, int lastColumn) const {
    std::string text;
    for (int row : {0, firstRow}) {
        for (int r = row; r <= (row == 0 ? 0 : lastRow); ++r) {
            text += Text(r, 0);
            for (int c = firstColumn; c <= lastColumn; ++c)
                text += "\t" + Text(r, c);
            text += "\r\n";
        }
    }
    return text;
}

std::string ShownHeading(const std::string& heading) {
    const std::string ascii = "dBuV/m", micro = "dB\u00b5V/m";
    std::string shown = heading;
    if (const auto at = shown.find(ascii); at != std::string::npos) {
        shown.replace(at, ascii.size(), micro);
        if (shown.rfind("Normalised", 0) == 0)
            shown.insert(at + micro.size(), " in 1 Hz");
    }
    return shown;
}

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
