#pragma once

#include "platform/Dialogs.h"
#include "report/WavePlot.h"

#include <QWidget>

#include <string>

class QChart;
class QLabel;
class QLineSeries;
class QTabWidget;
class QValueAxis;

namespace zav {

class ZoomableChartView;

// The recorded waveform and its spectrum, each in a tab with mouse zoom and pan. The waveform
// is drawn from the lowest and highest sample of every pixel column of the part in view, so a
// long recording draws at once and no spike is lost; zooming in recomputes it down to the
// single samples.
class PlotWindow : public QWidget {
public:
    PlotWindow(WavePlot plot, Dialogs& dialogs, QWidget* parent = nullptr);

    // Asks for a file name and writes the chart in view as PNG or SVG (by the name's ending).
    void saveImage();
    // Writes the chart in view to `path`: SVG when it ends in ".svg", else PNG. False (and
    // `error`) when the file could not be written.
    bool SaveImage(const std::string& path, std::string* error = nullptr);

    QTabWidget* tabs() const { return m_tabs; }
    ZoomableChartView* waveView() const { return m_waveView; }
    ZoomableChartView* spectrumView() const { return m_spectrumView; }
    QLineSeries* waveSeries() const { return m_waveSeries; }
    QLineSeries* spectrumSeries() const { return m_spectrumSeries; }
    const WavePlot& plot() const { return m_plot; }

private:
    void buildWaveChart();
    void buildSpectrumChart();
    // Draws the samples in the time axis's present range, one min/max pair per pixel column.
    void redrawWave();

    WavePlot m_plot;
    Dialogs& m_dialogs;
    QTabWidget* m_tabs = nullptr;
    ZoomableChartView* m_waveView = nullptr;
    ZoomableChartView* m_spectrumView = nullptr;
    QLineSeries* m_waveSeries = nullptr;
    QLineSeries* m_spectrumSeries = nullptr;
    QValueAxis* m_timeAxis = nullptr;
    QLabel* m_status = nullptr;
};

} // namespace zav
