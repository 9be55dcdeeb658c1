#pragma once

#include "measure/P372Comparison.h"

#include <QGroupBox>

#include <array>
#include <optional>

class QAreaSeries;
class QChart;
class QChartView;
class QLabel;
class QLineSeries;
class QScatterSeries;
class QValueAxis;

namespace zav {

class MeasurementSteps;

// "Site against ITU-R P.372": the observation's external noise factor beside the median
// man-made noise of the set-up's environment, where it falls within the spread of that
// median, and a chart of the curves from 0.3 to 30 MHz with the observation on it.
// Shows nothing while the results grid is empty.
class P372Panel : public QGroupBox {
public:
    explicit P372Panel(QWidget* parent = nullptr);

    // After every calculation or reset: reads the kept results and the set-up.
    void refresh(const MeasurementSteps& steps, const SetupRecord& setup);
    // Shows one comparison, or clears the panel.
    void showComparison(const std::optional<P372Comparison>& comparison,
                        char decimalSeparator = '.');

    QChart* chart() const { return m_chart; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void buildChart();
    void followPalette();
    void clear();

    QLabel* m_fa;
    QLabel* m_famCaption;
    QLabel* m_fam;
    QLabel* m_delta;
    QLabel* m_placement;
    QLabel* m_galactic;
    QLabel* m_note;
    QChartView* m_view;
    QChart* m_chart = nullptr;
    QValueAxis* m_yAxis = nullptr;
    std::array<QLineSeries*, 5> m_curves{};
    QLineSeries* m_upper = nullptr;
    QLineSeries* m_lower = nullptr;
    QAreaSeries* m_band = nullptr;
    QScatterSeries* m_point = nullptr;
};

} // namespace zav
