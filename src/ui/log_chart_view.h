#pragma once
// A log's chart on screen: what logging/log_chart.h works out, drawn with Qt Charts. The
// series stay between updates and take new points only when theirs changed, so a tick or a
// scroll costs what it changes. Left click reports the place, the right button drags out the
// rows to zoom to.

#include "logging/log_chart.h"

#include <QChartView>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

class QRubberBand;
class QValueAxis;
class QXYSeries;

namespace quorlen::ui {

// How the chart looks, by the view choices of the log settings.
struct Chart_Look {
    bool markers = false;      // a dot at each row once they stand apart
    bool legend_right = false; // the legend beside the plot instead of under it
    bool dark = false;
};
Chart_Look Look_Of(const Log_Setup& setup);

class Log_Chart_View final : public QChartView {
public:
    explicit Log_Chart_View(QWidget* parent = nullptr);

    void Show(const Chart_Content& content, const Chart_Look& look);
    void Show_Xy(const Xy_Content& content, const Chart_Look& look);
    // Runs of rows the series are thinned to, by the plot's width.
    int Buckets() const;
    // A dashed line at `x`, the clicked row; none when empty.
    void Set_Cursor(std::optional<double> x);

    // Left click on the plot: its x. Right button: the x where it went down and came up.
    std::function<void(double x)> Point_Clicked;
    std::function<void(double from_x, double to_x)> Zoom_Gesture;
    // The width changed: the series want thinning again.
    std::function<void()> Width_Changed;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void drawForeground(QPainter* painter, const QRectF& rect) override;

private:
    struct Entry {
        QXYSeries* series = nullptr;
        std::uint64_t version = 0;
        bool secondary = false;
    };
    using Key = std::pair<int, bool>; // signal, compared file

    void Apply_Look(const Chart_Look& look);
    QXYSeries* Series_For(const Chart_Series& s, bool scatter);
    void Attach(Entry& e, bool secondary);
    void Drop_Unused(const std::map<Key, bool>& used);
    void Set_Axes(double x_low, double x_high, const Axis_Scale& primary, const Axis_Scale& secondary,
                  bool uses_secondary);
    std::optional<double> X_At(QPoint pos) const;

    QValueAxis* x_ = nullptr;
    QValueAxis* y1_ = nullptr;
    QValueAxis* y2_ = nullptr;
    std::map<Key, Entry> series_;
    QXYSeries* placeholder_ = nullptr;
    bool scatter_ = false;
    Chart_Look look_;
    bool look_set_ = false;
    std::optional<double> cursor_;
    QRubberBand* band_ = nullptr;
    QPoint band_origin_;
    std::optional<double> press_x_;
    int shown_width_ = 0;
};

// Writes the chart's picture: PNG for a name ending ".png", otherwise BMP. False when it
// can't be written.
bool Save_Chart_Picture(QChartView& view, const std::string& path);

} // namespace quorlen::ui
