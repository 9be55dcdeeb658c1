#include "qt/widgets/ZoomableChartView.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QValueAxis>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace zav {
namespace {

QValueAxis* axis(QChart* chart, Qt::Orientation orientation) {
    const auto axes = chart->axes(orientation);
    return axes.isEmpty() ? nullptr : qobject_cast<QValueAxis*>(axes.first());
}

// A round tick spacing giving about `count` ticks over `span`.
qreal niceStep(qreal span, int count) {
    const qreal raw = span / count;
    const qreal power = std::pow(10.0, std::floor(std::log10(raw)));
    for (qreal m : {1.0, 2.0, 2.5, 5.0})
        if (raw <= m * power * 1.2)
            return m * power;
    return 10 * power;
}

} // namespace

ZoomableChartView::ZoomableChartView(QChart* chart, QWidget* parent) : QChartView(chart, parent) {
    setRubberBand(QChartView::RectangleRubberBand);
    setRenderHint(QPainter::Antialiasing);
    setFocusPolicy(Qt::StrongFocus);
}

void ZoomableChartView::setHomeRanges(qreal xMin, qreal xMax, qreal yMin, qreal yMax) {
    m_home[0] = xMin;
    m_home[1] = xMax;
    m_home[2] = yMin;
    m_home[3] = yMax;
    home();
}

void ZoomableChartView::home() {
    if (auto* x = axis(chart(), Qt::Horizontal))
        setAxisRange(x, m_home[0], m_home[1]);
    if (auto* y = axis(chart(), Qt::Vertical))
        setAxisRange(y, m_home[2], m_home[3]);
}

void ZoomableChartView::setNiceTicks(QValueAxis* axis, int count) {
    m_tickCounts[axis] = count;
    applyNiceTicks(axis, axis->min(), axis->max());
    // Ranges changed elsewhere (rubber band, panning) only shrink or keep their span, so the
    // old spacing is never too fine for them in the meantime.
    QObject::connect(axis, &QValueAxis::rangeChanged, this,
                     [this, axis](qreal min, qreal max) { applyNiceTicks(axis, min, max); });
}

void ZoomableChartView::applyNiceTicks(QValueAxis* axis, qreal min, qreal max) {
    const auto found = m_tickCounts.constFind(axis);
    const qreal span = max - min;
    if (found == m_tickCounts.constEnd() || !(span > 0) || !std::isfinite(span))
        return;
    const qreal step = niceStep(span, *found);
    axis->setTickType(QValueAxis::TicksDynamic);
    axis->setTickAnchor(0);
    axis->setTickInterval(step);
    // As many decimals as the spacing needs, and no more.
    int decimals = 0;
    for (qreal scaled = step;
         decimals < 12 && std::abs(scaled - std::round(scaled)) > 1e-6 * scaled; scaled *= 10)
        ++decimals;
    axis->setLabelFormat(QStringLiteral("%.%1f").arg(decimals));
}

void ZoomableChartView::setAxisRange(QValueAxis* axis, qreal min, qreal max) {
    // Growing: the coarser spacing first; shrinking: the range first.
    if (max - min > axis->max() - axis->min())
        applyNiceTicks(axis, min, max);
    axis->setRange(min, max);
}

void ZoomableChartView::zoomX(qreal factor, qreal pixelX) {
    auto* x = axis(chart(), Qt::Horizontal);
    const QRectF area = chart()->plotArea();
    if (!x || area.width() <= 0)
        return;
    const qreal fraction = std::clamp((pixelX - area.left()) / area.width(), 0.0, 1.0);
    const qreal span = x->max() - x->min();
    const qreal anchor = x->min() + fraction * span;
    const qreal newSpan = span * factor;
    setAxisRange(x, anchor - fraction * newSpan, anchor + (1 - fraction) * newSpan);
}

void ZoomableChartView::wheelEvent(QWheelEvent* event) {
    const int steps = event->angleDelta().y() / 120;
    if (steps == 0) {
        event->ignore();
        return;
    }
    zoomX(std::pow(0.8, steps), event->position().x());
    event->accept();
}

void ZoomableChartView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton || event->button() == Qt::MiddleButton) {
        m_panning = true;
        m_lastPan = event->position().toPoint();
        setCursor(Qt::ClosedHandCursor);
        event->accept();
        return;
    }
    QChartView::mousePressEvent(event);
}

void ZoomableChartView::mouseMoveEvent(QMouseEvent* event) {
    if (m_panning) {
        const QPoint now = event->position().toPoint();
        const QPoint delta = now - m_lastPan;
        m_lastPan = now;
        chart()->scroll(-delta.x(), delta.y());
        event->accept();
        return;
    }
    QChartView::mouseMoveEvent(event);
}

void ZoomableChartView::mouseReleaseEvent(QMouseEvent* event) {
    if (m_panning && (event->button() == Qt::RightButton || event->button() == Qt::MiddleButton)) {
        m_panning = false;
        unsetCursor();
        event->accept();
        return;
    }
    // The base class zooms out on a right click; panning owns that button here.
    QChartView::mouseReleaseEvent(event);
}

void ZoomableChartView::mouseDoubleClickEvent(QMouseEvent* event) {
    home();
    event->accept();
}

void ZoomableChartView::keyPressEvent(QKeyEvent* event) {
    const qreal centre = chart()->plotArea().center().x();
    const qreal step = chart()->plotArea().width() / 10;
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        zoomX(0.5, centre);
        break;
    case Qt::Key_Minus:
        zoomX(2.0, centre);
        break;
    case Qt::Key_Left:
        chart()->scroll(-step, 0);
        break;
    case Qt::Key_Right:
        chart()->scroll(step, 0);
        break;
    case Qt::Key_Home:
        home();
        break;
    default:
        QChartView::keyPressEvent(event);
        return;
    }
    event->accept();
}

} // namespace zav
