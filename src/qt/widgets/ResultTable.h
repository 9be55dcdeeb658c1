#pragma once

#include "config/ResultGrid.h"

#include <QTableWidget>

#include <functional>
#include <string>

namespace zav {

class Clipboard;

// One result grid: its texts, colours and their meaning in words, headings with their units
// as a reader expects them, and Ctrl+C copying the selected cells as tab-separated text
// exactly as the grid holds them.
class ResultTable : public QTableWidget {
public:
    ResultTable(const ResultGrid& layout, const QString& name, Clipboard& clipboard,
                QWidget* parent = nullptr);

    void showGrid(const ResultGrid& grid);
    // Told what Ctrl+C put on the clipboard, for the status bar.
    std::function<void(const std::string&)> copied;
    // The selected cells as the clipboard gets them.
    std::string selectionText() const;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    Clipboard& m_clipboard;
    ResultGrid m_grid;
};

} // namespace zav
