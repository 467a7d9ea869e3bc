#include "editor/decay_charts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace halvern {
namespace {

constexpr double kDbStep = 20.0;
constexpr double kDecayDb = -60.0;
constexpr double kOnsetDb = -20.0; // the direct sound: the first step within 20 dB of the peak
constexpr double kAxisWidth = 46.0;
constexpr double kAxisGap = 6.0;
constexpr double kTimeRowHeight = 16.0;
constexpr double kPlotTop = 8.0;
constexpr double kBarWidth = 18.0;
constexpr double kBarGap = 6.0;

// The smallest step of 1, 2 or 5 times a power of ten that cuts range into at most
// `divisions` parts.
double niceStep(double range, int divisions)
{
    const double rough = range / divisions;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (double factor : {1.0, 2.0, 5.0, 10.0})
        if (factor * power >= rough * (1.0 - 1e-9))
            return factor * power;
    return 10.0 * power;
}

std::string numberText(double value, const char* unit)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g%s", std::abs(value) < 1e-9 ? 0.0 : std::abs(value), unit);
    return (value < -1e-9 ? "\u2212" : "") + std::string(text);
}

std::string bandText(const ZBandAnalysis& band)
{
    if (band.centreHz == 0.0)
        return "Broadband";
    return band.centreHz >= 1000.0 ? numberText(band.centreHz / 1000.0, " kHz") : numberText(band.centreHz, " Hz");
}

// ---- level over time ------------------------------------------------------------------

double onsetSeconds(const ZLevelEnvelope& envelope)
{
    const auto& levels = envelope.levelsDb;
    const auto onset = std::find_if(levels.begin(), levels.end(), [](double level) { return level >= kOnsetDb; });
    return static_cast<double>(onset - levels.begin()) * envelope.stepSeconds;
}

// Where the series' broadband decay reaches -60 dB, in seconds from the response's start.
std::optional<double> decayEndSeconds(const ZDecayMeasurement& measurement)
{
    const ZDecayTime& decay = measurement.report.broadband.decay;
    if (decay.method == ZDecayMethod::NotMeasurable || measurement.envelope.levelsDb.empty())
        return std::nullopt;
    return onsetSeconds(measurement.envelope) + decay.seconds;
}

// The time until the level stays below the chart's floor, or the decay's end if later.
double audibleSeconds(const ZDecayMeasurement& measurement)
{
    const auto& levels = measurement.envelope.levelsDb;
    const auto last = std::find_if(levels.rbegin(), levels.rend(), [](double l) { return l > kDecayChartFloorDb; });
    const double audible = static_cast<double>(levels.rend() - last) * measurement.envelope.stepSeconds;
    return std::max(audible, decayEndSeconds(measurement).value_or(0.0));
}

struct TimeAxis {
    double seconds = 1.0;
    double step = 0.2;
};

TimeAxis timeAxisFor(std::span<const ZDecaySeries> series)
{
    double longest = series.empty() ? 1.0 : 0.2;
    for (const ZDecaySeries& s : series)
        longest = std::max(longest, audibleSeconds(*s.measurement));
    const double step = niceStep(longest, 8);
    return {std::ceil(longest / step - 1e-9) * step, step};
}

void paintLevelGrid(ZCanvas& canvas, const ZTheme& theme, const ZRect& plot, const TimeAxis& axis)
{
    const ZTextStyle label = theme.Label();
    for (double db = 0.0; db >= kDecayChartFloorDb; db -= kDbStep) {
        const double y = plot.y + plot.height * db / kDecayChartFloorDb;
        canvas.Line({plot.x, y}, {plot.right(), y}, db == kDecayDb ? theme.track : theme.panelBorder, theme.lineWidth);
        canvas.DrawTextInRect(numberText(db, " dB"), {plot.x - kAxisWidth - kAxisGap, y - 8, kAxisWidth, 16}, label,
                              ZTextAlign::Right);
    }
    const double labelWidth = 48.0;
    for (double t = 0.0; t <= axis.seconds + 1e-9; t += axis.step) {
        const double x = plot.x + plot.width * t / axis.seconds;
        canvas.Line({x, plot.y}, {x, plot.bottom()}, theme.panelBorder, theme.lineWidth);
        const double left = std::clamp(x - labelWidth / 2, plot.x, plot.right() - labelWidth);
        const ZTextAlign align = x - labelWidth / 2 < plot.x    ? ZTextAlign::Left
                                 : x + labelWidth / 2 > plot.right() ? ZTextAlign::Right
                                                                     : ZTextAlign::Center;
        canvas.DrawTextInRect(numberText(t, " s"), {left, plot.bottom() + 2, labelWidth, kTimeRowHeight}, label, align);
    }
}

// The loudest level in each column of device pixels, as a polyline from the start.
std::vector<ZPoint> levelCurve(const ZLevelEnvelope& envelope, const ZRect& plot, double seconds, double scale)
{
    const int columns = std::max(2, static_cast<int>(plot.width * scale));
    const auto& levels = envelope.levelsDb;
    const auto audible = std::find_if(levels.rbegin(), levels.rend(), [](double l) { return l > kDecayChartFloorDb; });
    const size_t end = std::min(levels.size(), static_cast<size_t>(levels.rend() - audible) + 1);
    std::vector<ZPoint> points;
    for (int column = 0; column < columns; ++column) {
        const double from = seconds * column / columns / envelope.stepSeconds;
        const double to = seconds * (column + 1) / columns / envelope.stepSeconds;
        const size_t first = static_cast<size_t>(from);
        if (first >= end)
            break;
        const size_t last = std::clamp(static_cast<size_t>(std::ceil(to)), first + 1, end);
        const double loudest = *std::max_element(levels.begin() + static_cast<std::ptrdiff_t>(first),
                                                 levels.begin() + static_cast<std::ptrdiff_t>(last));
        const double level = std::clamp(loudest, kDecayChartFloorDb, 0.0);
        points.push_back({plot.x + plot.width * (column + 0.5) / columns,
                          plot.y + plot.height * level / kDecayChartFloorDb});
    }
    return points;
}

void paintSeriesLevel(ZCanvas& canvas, const ZTheme& theme, const ZRect& plot, const TimeAxis& axis,
                      const ZDecaySeries& series, bool filled, int index)
{
    const std::vector<ZPoint> points = levelCurve(series.measurement->envelope, plot, axis.seconds, canvas.scale());
    if (points.size() < 2)
        return;
    if (filled) {
        std::vector<ZPoint> area = points;
        area.push_back({points.back().x, plot.bottom()});
        area.push_back({points.front().x, plot.bottom()});
        canvas.FillPolygon(area, series.color.withAlpha(0.12));
    }
    canvas.StrokePolyline(points, series.color, 1.5);
    if (const std::optional<double> end = decayEndSeconds(*series.measurement)) {
        // A line where the decay time has passed since the direct sound, named at the top;
        // the reference's name a line lower, so the two never meet.
        const double x = plot.x + plot.width * *end / axis.seconds;
        canvas.Line({x, plot.y}, {x, plot.bottom()}, series.color.withAlpha(0.6), theme.lineWidth);
        const ZDecayTime& decay = series.measurement->report.broadband.decay;
        const std::string text = std::string(DecayMethodName(decay.method, "\u2013")) + " " + DecayText(decay);
        const ZTextStyle style{theme.smallFontSize, ZFontWeight::SemiBold, series.color};
        const double width = canvas.TextWidth(text, style) + 4;
        const double left = x + 5 + width > plot.right() ? x - 5 - width : x + 5;
        canvas.DrawTextInRect(text, {left, plot.y + 2 + 16.0 * index, width, 16}, style);
    }
}

// ---- decay per band -------------------------------------------------------------------

std::vector<const ZBandAnalysis*> bandsOf(const ZDecayMeasurement& measurement)
{
    std::vector<const ZBandAnalysis*> bands;
    for (const ZBandAnalysis& band : measurement.report.bands)
        bands.push_back(&band);
    bands.push_back(&measurement.report.broadband);
    return bands;
}

bool measured(const ZBandAnalysis& band) { return band.available && band.decay.method != ZDecayMethod::NotMeasurable; }

void paintSecondsGrid(ZCanvas& canvas, const ZTheme& theme, const ZRect& plot, double top, double step)
{
    const ZTextStyle label = theme.Label();
    for (double s = 0.0; s <= top + 1e-9; s += step) {
        const double y = plot.bottom() - plot.height * s / top;
        canvas.Line({plot.x, y}, {plot.right(), y}, s == 0.0 ? theme.track : theme.panelBorder, theme.lineWidth);
        canvas.DrawTextInRect(numberText(s, " s"), {plot.x - kAxisWidth - kAxisGap, y - 8, kAxisWidth, 16}, label,
                              ZTextAlign::Right);
    }
}

void paintBar(ZCanvas& canvas, const ZTheme& theme, const ZRect& plot, double top, double x,
              const ZBandAnalysis& band, const ZColor& color)
{
    const ZTextStyle value{theme.smallFontSize, ZFontWeight::SemiBold, theme.text};
    const ZTextStyle method = theme.Label();
    const double labelWidth = kBarWidth + kBarGap;
    const ZRect methodRow{x - kBarGap / 2, plot.bottom() + kTimeRowHeight, labelWidth, kTimeRowHeight - 2};
    if (!measured(band)) {
        canvas.DrawTextInRect("\u2013", {x - kBarGap / 2, plot.bottom() - 18, labelWidth, 16}, method, ZTextAlign::Center);
        return;
    }
    const double height = std::max(1.0, plot.height * band.decay.seconds / top);
    const ZRect bar{x, plot.bottom() - height, kBarWidth, height};
    canvas.FillRoundedRect(bar, 2.0, color);
    char text[16];
    std::snprintf(text, sizeof text, band.decay.seconds < 10.0 ? "%.2f" : "%.1f", band.decay.seconds);
    canvas.DrawTextInRect(text, {x - kBarGap / 2 - 4, bar.y - 16, labelWidth + 8, 15}, value, ZTextAlign::Center);
    canvas.DrawTextInRect(DecayMethodName(band.decay.method, "\u2013"), methodRow, method, ZTextAlign::Center);
}

} // namespace

std::string DecayText(const ZDecayTime& decay)
{
    if (decay.method == ZDecayMethod::NotMeasurable)
        return "\u2013";
    char text[24];
    std::snprintf(text, sizeof text, decay.seconds < 10.0 ? "%.2f s" : "%.1f s", decay.seconds);
    return text;
}

void PaintLevelChart(ZCanvas& canvas, const ZTheme& theme, const ZRect& area, std::span<const ZDecaySeries> series)
{
    canvas.FillRoundedRect(area, theme.radius, theme.background);
    const ZRect plot{area.x + kAxisWidth + kAxisGap, area.y + kPlotTop, area.width - kAxisWidth - kAxisGap - 14,
                     area.height - kPlotTop - kTimeRowHeight - 6};
    const TimeAxis axis = timeAxisFor(series);
    paintLevelGrid(canvas, theme, plot, axis);
    canvas.Save();
    canvas.ClipTo(plot.inset(0, -2));
    // The reverb's own in front: the reference first.
    for (size_t i = series.size(); i-- > 0;)
        paintSeriesLevel(canvas, theme, plot, axis, series[i], i == 0, static_cast<int>(i));
    canvas.Restore();
}

void PaintDecayBars(ZCanvas& canvas, const ZTheme& theme, const ZRect& area, std::span<const ZDecaySeries> series)
{
    canvas.FillRoundedRect(area, theme.radius, theme.background);
    const ZRect plot{area.x + kAxisWidth + kAxisGap, area.y + kPlotTop + 14, area.width - kAxisWidth - kAxisGap - 8,
                     area.height - kPlotTop - 14 - 2 * kTimeRowHeight - 2};
    double longest = 0.0;
    for (const ZDecaySeries& s : series)
        for (const ZBandAnalysis* band : bandsOf(*s.measurement))
            if (measured(*band))
                longest = std::max(longest, band->decay.seconds);
    const double step = niceStep(std::max(longest, 0.5), 4);
    const double top = std::ceil(std::max(longest, 0.5) / step - 1e-9) * step;
    paintSecondsGrid(canvas, theme, plot, top, step);
    if (series.empty())
        return;

    const std::vector<const ZBandAnalysis*> labels = bandsOf(*series.front().measurement);
    const double groupWidth = plot.width / static_cast<double>(labels.size());
    const double barsWidth = static_cast<double>(series.size()) * (kBarWidth + kBarGap) - kBarGap;
    const ZTextStyle bandStyle = theme.Label();
    for (size_t g = 0; g < labels.size(); ++g) {
        const double left = plot.x + groupWidth * static_cast<double>(g);
        if (g + 1 == labels.size()) // the whole band apart from the octaves
            canvas.Line({left, plot.y}, {left, plot.bottom()}, theme.track, theme.lineWidth);
        canvas.DrawTextInRect(bandText(*labels[g]), {left, plot.bottom() + 2, groupWidth, kTimeRowHeight}, bandStyle,
                              ZTextAlign::Center);
        double x = left + (groupWidth - barsWidth) / 2;
        for (const ZDecaySeries& s : series) {
            paintBar(canvas, theme, plot, top, x, *bandsOf(*s.measurement)[g], s.color);
            x += kBarWidth + kBarGap;
        }
    }
}

} // namespace halvern
