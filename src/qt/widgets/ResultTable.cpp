#include "qt/widgets/ResultTable.h"

#include "config/ToolTips.h"
#include "platform/Clipboard.h"

#include <QHeaderView>
#include <QKeyEvent>

#include <algorithm>

namespace zav {
namespace {

QString qs(const std::string& s) {
    return QString::fromStdString(s);
}

} // namespace

ResultTable::ResultTable(const ResultGrid& layout, const QString& name, Clipboard& clipboard,
                         QWidget* parent)
    : QTableWidget(layout.Rows() - 1, layout.Columns() - 1, parent), m_clipboard(clipboard),
      m_grid(layout) {
    setObjectName(name);
    setAccessibleName(name);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::ContiguousSelection);
    setFocusPolicy(Qt::StrongFocus);
    setTabKeyNavigation(false); // Tab leaves the grid; the arrows move within it
    horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    horizontalHeader()->setMinimumSectionSize(60);
    setWordWrap(false);
    for (int r = 0; r < rowCount(); ++r)
        for (int c = 0; c < columnCount(); ++c) {
            auto* item = new QTableWidgetItem;
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            setItem(r, c, item);
        }
    showGrid(layout);
    // Tall enough for every row without a scroll bar.
    const int height =
        horizontalHeader()->sizeHint().height() + verticalHeader()->length() + 2 * frameWidth() + 2;
    setFixedHeight(height);
}

void ResultTable::showGrid(const ResultGrid& grid) {
    m_grid = grid;
    for (int c = 1; c < grid.Columns(); ++c) {
        auto* heading = horizontalHeaderItem(c - 1);
        if (!heading)
            setHorizontalHeaderItem(c - 1, heading = new QTableWidgetItem);
        heading->setText(qs(ShownHeading(grid.Text(0, c))));
        heading->setToolTip(qs(GridHeadingTip(grid.Text(0, c))));
    }
    for (int r = 1; r < grid.Rows(); ++r) {
        auto* heading = verticalHeaderItem(r - 1);
        if (!heading)
            setVerticalHeaderItem(r - 1, heading = new QTableWidgetItem);
        heading->setText(qs(grid.Text(r, 0)));
        heading->setToolTip(qs(GridHeadingTip(grid.Text(r, 0))));
    }
    const QColor normal = palette().color(QPalette::Text);
    for (int r = 1; r < grid.Rows(); ++r) {
        for (int c = 1; c < grid.Columns(); ++c) {
            QTableWidgetItem* cell = item(r - 1, c - 1);
            cell->setText(qs(grid.Text(r, c)));
            const std::string& note = grid.Note(r, c);
            cell->setToolTip(qs(note.empty() ? GridHeadingTip(grid.Text(r, 0)) : note));
            switch (grid.Colour(r, c)) {
            case CellColour::Red:
                cell->setForeground(QColor(255, 0, 0));
                break;
            case CellColour::Orange:
                cell->setForeground(QColor(255, 128, 0));
                break;
            case CellColour::WindowText:
                cell->setForeground(normal);
                break;
            }
        }
    }
}

std::string ResultTable::selectionText() const {
    const QList<QTableWidgetSelectionRange> ranges = selectedRanges();
    if (ranges.isEmpty())
        return {};
    const QTableWidgetSelectionRange& r = ranges.front();
    return m_grid.CopyText(r.topRow() + 1, r.leftColumn() + 1, r.bottomRow() + 1,
                           r.rightColumn() + 1);
}

void ResultTable::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy)) {
        const std::string text = selectionText();
        if (!text.empty()) {
            m_clipboard.SetText(text);
            if (copied)
                copied(text);
        }
        event->accept();
        return;
    }
    QTableWidget::keyPressEvent(event);
}

} // namespace zav
