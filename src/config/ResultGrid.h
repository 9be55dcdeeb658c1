#pragma once

#include <string>
#include <vector>

namespace zav {

// A cell's text colour: the verdicts of the steps and the red of results without limits.
enum class CellColour { WindowText, Red, Orange };

// A read-only grid of texts and colours, addressed by the single index row × 4 + column
// (both grids have four columns), which the report, the data log and the transfer use.
class ResultGrid {
public:
    ResultGrid(int rows, int columns);

    int Rows() const { return m_rows; }
    int Columns() const { return m_columns; }

    const std::string& Text(int index) const { return m_text.at(check(index)); }
    const std::string& Text(int row, int column) const { return Text(row * m_columns + column); }
    CellColour Colour(int index) const { return m_colour.at(check(index)); }
    CellColour Colour(int row, int column) const { return Colour(row * m_columns + column); }

    void SetText(int index, std::string text) { m_text.at(check(index)) = std::move(text); }
    void SetText(int row, int column, std::string text) {
        SetText(row * m_columns + column, std::move(text));
    }
    void SetColour(int index, CellColour colour) { m_colour.at(check(index)) = colour; }
    void SetColour(int row, int column, CellColour colour) {
        SetColour(row * m_columns + column, colour);
    }
    // What a cell's colour means, in words (its tooltip in the window); empty for none.
    const std::string& Note(int row, int column) const {
        return m_note.at(check(row * m_columns + column));
    }
    void SetNote(int row, int column, std::string note) {
        m_note.at(check(row * m_columns + column)) = std::move(note);
    }
    // The selected block (rows and columns inclusive, 1-based cells) as tab-separated lines
    // ending CR LF, the column headings first and each row's heading before its cells.
    std::string CopyText(int firstRow, int firstColumn, int lastRow, int lastColumn) const;

    // gridMeas: rows "Avg (V)" .. "Pk/RMS (dB)" (1..6), columns Sound card, Receiver,
    // External (1..3).
    static ResultGrid MakeMeasGrid();
    // gridCalc: rows Avg, RMS, QP, Pk (1..4), columns "Rx (dBm)", "FS (dBuV/m)",
    // "Normalised FS (dBuV/m)" (1..3).
    static ResultGrid MakeCalcGrid();

private:
    int check(int index) const;

    int m_rows;
    int m_columns;
    std::vector<std::string> m_text;
    std::vector<CellColour> m_colour;
    std::vector<std::string> m_note;
};

// A heading as the window shows it: "dBµV/m" for the machine-readable "dBuV/m", and the
// normalised field strength said to be per 1 Hz of bandwidth.
std::string ShownHeading(const std::string& heading);

} // namespace zav
