#include "qt/widgets/P372Panel.h"

#include "config/ToolTips.h"
#include "measure/MeasurementSteps.h"
#include "platform/Format.h"

#include <QAreaSeries>
#include <QChart>
#include <QChartView>
#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineSeries>
#include <QLogValueAxis>
#include <QScatterSeries>
#include <QVBoxLayout>
#include <QValueAxis>

#include <algorithm>

namespace zav {
namespace {

constexpr double kChartMinMHz = 0.3, kChartMaxMHz = 30.0;
constexpr double kChartMinDb = 0.0, kChartMaxDb = 110.0;

QLabel* value(const char* name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QString db(double v, char separator) {
    return QString::fromStdString(Format(v, "0.0", separator));
}

const QColor kCurveColours[] = {QColor(200, 30, 30), QColor(230, 120, 0), QColor(40, 140, 40),
                                QColor(30, 90, 200), QColor(120, 120, 120)};

} // namespace

P372Panel::P372Panel(QWidget* parent) : QGroupBox(tr("Site against ITU-R P.372"), parent) {
    m_fa = value("lblFa", this);
    m_famCaption = new QLabel(tr("Median man-made noise"), this);
    m_fam = value("lblFam", this);
    m_delta = value("lblDelta", this);
    m_placement = value("lblPlacement", this);
    m_galactic = value("lblGalactic", this);
    m_note = value("lblNote", this);
    m_note->setWordWrap(true);

    auto* figures = new QFormLayout;
    const std::pair<QString, QLabel*> rows[] = {{tr("Fa (dB above kT0b)"), m_fa},
                                                {tr("Median man-made noise"), m_fam},
                                                {tr("Difference (dB)"), m_delta},
                                                {tr("Falls"), m_placement},
                                                {tr("Galactic median (dB)"), m_galactic}};
    for (const auto& [caption, field] : rows) {
        const QString tip = QString::fromStdString(P372FigureTip(caption.toStdString()));
        QLabel* label = field == m_fam ? m_famCaption : new QLabel(caption, this);
        label->setToolTip(tip);
        field->setToolTip(tip);
        field->setAccessibleName(caption);
        figures->addRow(label, field);
    }
    m_note->setAccessibleName(tr("Notes on the comparison"));
    figures->addRow(m_note);

    buildChart();
    // The panel folds away to its title on a small screen; the title's check box opens it.
    auto* content = new QWidget(this);
    auto* layout = new QHBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(figures, 2);
    layout->addWidget(m_view, 3);
    auto* outer = new QVBoxLayout(this);
    outer->addWidget(content);
    setCheckable(true);
    setChecked(true);
    setToolTip(tr("Untick to fold the comparison away"));
    QObject::connect(this, &QGroupBox::toggled, this, [this, content](bool open) {
        content->setVisible(open);
        updateGeometry();
    });
    clear();
}

void P372Panel::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange)
        followPalette();
    QGroupBox::changeEvent(event);
}

void P372Panel::followPalette() {
    // A dark desktop gets the dark chart; the observation's mark takes the text colour.
    const bool dark = palette().color(QPalette::Window).lightness() < 128;
    const auto theme = dark ? QChart::ChartThemeDark : QChart::ChartThemeLight;
    if (m_chart->theme() != theme) {
        std::array<QPen, 5> pens;
        for (std::size_t i = 0; i < m_curves.size(); ++i)
            pens[i] = m_curves[i]->pen();
        m_chart->setTheme(theme); // resets the series' pens
        for (std::size_t i = 0; i < m_curves.size(); ++i)
            m_curves[i]->setPen(pens[i]);
        m_band->setColor(QColor(230, 120, 0, 50));
        m_band->setBorderColor(Qt::transparent);
    }
    m_chart->setBackgroundBrush(palette().color(QPalette::Base));
    m_point->setColor(palette().color(QPalette::Text));
    m_point->setBorderColor(palette().color(QPalette::Text));
}

void P372Panel::buildChart() {
    m_chart = new QChart;
    m_chart->legend()->setAlignment(Qt::AlignRight);
    m_chart->setMargins(QMargins(2, 2, 2, 2));
    auto* x = new QLogValueAxis;
    x->setBase(10);
    x->setRange(kChartMinMHz, kChartMaxMHz);
    x->setLabelFormat(QStringLiteral("%g"));
    x->setMinorTickCount(8);
    x->setTitleText(tr("MHz"));
    m_yAxis = new QValueAxis;
    m_yAxis->setTitleText(tr("dB above kT0b"));
    m_yAxis->setLabelFormat(QStringLiteral("%.0f"));
    m_yAxis->setTickType(QValueAxis::TicksDynamic);
    m_yAxis->setTickAnchor(0);
    m_yAxis->setTickInterval(20);
    m_chart->addAxis(x, Qt::AlignBottom);
    m_chart->addAxis(m_yAxis, Qt::AlignLeft);

    // The chosen environment's decile band, under the curves.
    m_upper = new QLineSeries(this);
    m_lower = new QLineSeries(this);
    m_band = new QAreaSeries(m_upper, m_lower);
    m_band->setName(tr("Deciles"));
    m_band->setColor(QColor(230, 120, 0, 50));
    m_band->setBorderColor(Qt::transparent);
    m_chart->addSeries(m_band);
    m_band->attachAxis(x);
    m_band->attachAxis(m_yAxis);

    for (std::size_t i = 0; i < kP372Curves.size(); ++i) {
        const P372Curve curve = kP372Curves[i];
        auto* series = new QLineSeries;
        series->setName(QString::fromLatin1(P372Data(curve).name));
        // Straight lines on a logarithmic frequency axis: the two ends draw the curve.
        for (double f : {kChartMinMHz, kChartMaxMHz})
            series->append(f, P372Median(curve, f));
        series->setPen(QPen(kCurveColours[i], 1.5,
                            curve == P372Curve::Galactic ? Qt::DashLine : Qt::SolidLine));
        m_chart->addSeries(series);
        series->attachAxis(x);
        series->attachAxis(m_yAxis);
        m_curves[i] = series;
    }

    m_point = new QScatterSeries;
    m_point->setName(tr("This site"));
    m_point->setMarkerSize(10);

    m_chart->addSeries(m_point);
    m_point->attachAxis(x);
    m_point->attachAxis(m_yAxis);

    m_view = new QChartView(m_chart, this);
    m_view->setObjectName(QStringLiteral("chartP372"));
    m_view->setRenderHint(QPainter::Antialiasing);
    m_view->setMinimumSize(340, 200);
    m_view->setAccessibleName(tr("Chart of the ITU-R P.372 noise curves"));
    m_view->setToolTip(tr("Median noise against frequency for each environment (dB above kT0b, "
                          "0.3 to 30 MHz), the chosen one bold with its deciles shaded, and "
                          "this site's Fa as a dot"));
    followPalette();
}

void P372Panel::clear() {
    for (QLabel* label : {m_fa, m_fam, m_delta, m_placement, m_galactic, m_note})
        label->clear();
    m_famCaption->setText(tr("Median man-made noise"));
    m_point->clear();
    m_upper->clear();
    m_lower->clear();
    m_band->setVisible(false);
    for (QLineSeries* series : m_curves)
        series->setPen(QPen(series->pen().color(), 1.5, series->pen().style()));
    m_yAxis->setRange(kChartMinDb, kChartMaxDb);
}

void P372Panel::refresh(const MeasurementSteps& steps, const SetupRecord& setup) {
    showComparison(SiteAgainstP372(steps, setup, steps.decimalSeparator), steps.decimalSeparator);
}

void P372Panel::showComparison(const std::optional<P372Comparison>& comparison, char separator) {
    clear();
    if (!comparison)
        return;
    const P372Comparison& c = *comparison;
    m_fa->setText(db(c.FaDb, separator));
    m_galactic->setText(db(c.galacticDb, separator));

    QStringList notes;
    if (c.curve) {
        const P372CurveData& data = P372Data(*c.curve);
        m_famCaption->setText(tr("%1 median (dB)").arg(QString::fromLatin1(data.name)));
        m_fam->setText(db(*c.FamDb, separator));
        m_delta->setText(db(*c.deltaDb, separator));
        m_placement->setText(tr("%1 (%2 to %3 dB)")
                                 .arg(QString::fromLatin1(PlacementText(*c.placement)),
                                      db(*c.lowerDb, separator), db(*c.upperDb, separator)));
        // The chosen environment stands out, with its spread behind it.
        QLineSeries* chosen = m_curves[static_cast<std::size_t>(*c.curve)];
        chosen->setPen(QPen(chosen->pen().color(), 3.0, chosen->pen().style()));
        for (double f : {kChartMinMHz, kChartMaxMHz}) {
            const double fam = P372Median(*c.curve, f);
            m_upper->append(f, fam + data.upperDecileDb);
            m_lower->append(f, fam - data.lowerDecileDb);
        }
        m_band->setVisible(true);
        if (!c.inRange)
            notes << tr("Man-made noise is modelled from 0.3 to 250 MHz only: this is an "
                        "extrapolation.");
    } else {
        notes << tr("No environment chosen in the set-up.");
    }
    if (!c.galacticInRange)
        notes << tr("Galactic noise is modelled up to about 100 MHz only.");
    if (c.frequencyMHz >= kChartMinMHz && c.frequencyMHz <= kChartMaxMHz) {
        m_point->append(c.frequencyMHz, c.FaDb);
        m_yAxis->setRange(std::min(kChartMinDb, c.FaDb - 5.0), std::max(kChartMaxDb, c.FaDb + 5.0));
    } else {
        notes << tr("The observation lies off the chart (0.3 to 30 MHz).");
    }
    m_note->setText(notes.join(QLatin1Char(' ')));
}

} // namespace zav
