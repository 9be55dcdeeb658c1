#pragma once

#include <QChartView>
#include <QHash>
#include <QPoint>

class QValueAxis;

namespace zav {

// A chart view that the mouse zooms and pans: drag with the left button to zoom into a
// rectangle, turn the wheel to zoom the time (x) axis about the pointer, drag with the right
// or middle button to pan, double-click or press Home to return to the whole recording.
// "+" / "-" zoom and the arrow keys pan from the keyboard.
class ZoomableChartView : public QChartView {
public:
    explicit ZoomableChartView(QChart* chart, QWidget* parent = nullptr);

    // The ranges that "home" returns to.
    void setHomeRanges(qreal xMin, qreal xMax, qreal yMin, qreal yMax);
    void home();

    // Keeps about `count` ticks on `axis` at round values (1, 2, 2.5 or 5 times a power of
    // ten) whatever its range.
    void setNiceTicks(QValueAxis* axis, int count);

protected:
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    // Zooms the x axis by `factor` (below 1 zooms in) keeping the value under `pixelX` put.
    void zoomX(qreal factor, qreal pixelX);
    // Sets a range without the axis ever laying out the ticks of one range at the spacing of
    // another: a thousandfold zoom out would otherwise draw a million tick labels first.
    void setAxisRange(QValueAxis* axis, qreal min, qreal max);
    void applyNiceTicks(QValueAxis* axis, qreal min, qreal max);

    bool m_panning = false;
    QPoint m_lastPan;
    qreal m_home[4] = {0, 1, 0, 1};
    QHash<QValueAxis*, int> m_tickCounts;
};

} // namespace zav
