#include "ui/log_chart_view.h"

#include <QChart>
#include <QLegend>
#include <QLineSeries>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <QRubberBand>
#include <QScatterSeries>
#include <QValueAxis>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace quorlen::ui {

namespace {

// Colours far enough apart to tell a dozen curves from each other on a laptop in the sun.
QColor Colour_Of(int signal) {
    static const std::array<QColor, 14> colours = {
        QColor(31, 119, 180),  QColor(214, 39, 40),   QColor(44, 160, 44),   QColor(255, 127, 14),
        QColor(148, 103, 189), QColor(140, 86, 75),   QColor(227, 119, 194), QColor(23, 190, 207),
        QColor(188, 189, 34),  QColor(127, 127, 127), QColor(57, 59, 121),   QColor(99, 121, 57),
        QColor(140, 109, 49),  QColor(123, 65, 115)};
    return colours[static_cast<std::size_t>(signal) % colours.size()];
}

void Dress(QXYSeries* series, int signal, bool compare, bool scatter) {
    const QColor colour = Colour_Of(signal);
    if (scatter) {
        auto* s = static_cast<QScatterSeries*>(series);
        s->setMarkerShape(compare ? QScatterSeries::MarkerShapeRectangle : QScatterSeries::MarkerShapeCircle);
        s->setMarkerSize(compare ? 5 : 6);
        s->setColor(compare ? colour.lighter(140) : colour);
        s->setBorderColor(compare ? colour.lighter(140) : colour);
        return;
    }
    // The compared file is the same colour, dashed, so each pair reads as one signal.
    QPen pen(colour);
    pen.setWidthF(compare ? 1.2 : 1.6);
    if (compare) pen.setStyle(Qt::DashLine);
    series->setPen(pen);
}

QList<QPointF> Points_Of(const std::vector<Chart_Point>& points) {
    QList<QPointF> list;
    list.reserve(static_cast<qsizetype>(points.size()));
    for (const Chart_Point& p : points)
        list.append(QPointF(p.x, p.y));
    return list;
}

// Every change of an axis makes Qt Charts lay out each series on it again, so an axis is only
// touched where it changes.
void Set_Format(QValueAxis* axis, const QString& format) {
    if (axis->labelFormat() != format) axis->setLabelFormat(format);
}

void Set_Ticks(QValueAxis* axis, int ticks) {
    if (axis->tickCount() != ticks) axis->setTickCount(ticks);
}

void Set_Range(QValueAxis* axis, double low, double high) {
    if (axis->min() != low || axis->max() != high) axis->setRange(low, high);
}

// A value axis left to the data gets round steps; a fixed one is divided in eight.
void Scale_Axis(QValueAxis* axis, const Axis_Scale& scale) {
    const Axis_Scale nice = Nice_Scale(scale);
    Set_Format(axis, "%g");
    Set_Ticks(axis, nice.ticks);
    Set_Range(axis, nice.min, nice.max);
}

} // namespace

Chart_Look Look_Of(const Log_Setup& setup) {
    Chart_Look look;
    look.markers = View_On(setup, Dots_View);
    look.legend_right = View_On(setup, Legend_View);
    look.dark = View_On(setup, Dark_View);
    return look;
}

Log_Chart_View::Log_Chart_View(QWidget* parent) : QChartView(new QChart, parent) {
    setRenderHint(QPainter::Antialiasing);
    QChart* c = chart();
    c->setAnimationOptions(QChart::NoAnimation);
    c->legend()->setAlignment(Qt::AlignBottom);
    x_ = new QValueAxis;
    y1_ = new QValueAxis;
    y2_ = new QValueAxis;
    c->addAxis(x_, Qt::AlignBottom);
    c->addAxis(y1_, Qt::AlignLeft);
    c->addAxis(y2_, Qt::AlignRight);
    y2_->setVisible(false);
    Apply_Look(Chart_Look{});
}

int Log_Chart_View::Buckets() const {
    // One run of rows every two pixel columns of the plot (the view's width before the chart
    // has laid the plot out): its lowest and highest value stand within a pixel of where they
    // were, and Qt Charts lays out half the points it would for one a column.
    const double plot = chart()->plotArea().width();
    return std::max(100, (plot > 50 ? static_cast<int>(plot) : width()) / 2);
}

void Log_Chart_View::Apply_Look(const Chart_Look& look) {
    if (look_set_ && look.dark == look_.dark && look.legend_right == look_.legend_right &&
        look.markers == look_.markers)
        return;
    const bool theme_changed = !look_set_ || look.dark != look_.dark;
    look_ = look;
    look_set_ = true;
    QChart* c = chart();
    if (theme_changed) {
        c->setTheme(look.dark ? QChart::ChartThemeDark : QChart::ChartThemeLight);
        // A theme paints every series afresh: give them back their own colours.
        for (auto& [key, entry] : series_)
            Dress(entry.series, key.first, key.second, scatter_);
    }
    c->legend()->setAlignment(look.legend_right ? Qt::AlignRight : Qt::AlignBottom);
}

QXYSeries* Log_Chart_View::Series_For(const Chart_Series& s, bool scatter) {
    const Key key{s.signal, s.compare};
    auto it = series_.find(key);
    if (it != series_.end()) return it->second.series;
    QXYSeries* series = scatter ? static_cast<QXYSeries*>(new QScatterSeries) : new QLineSeries;
    series->setObjectName(QString::fromLatin1(s.label.c_str()));
    chart()->addSeries(series);
    Dress(series, s.signal, s.compare, scatter);
    series->attachAxis(x_);
    series->attachAxis(s.secondary ? y2_ : y1_);
    series_[key] = Entry{series, 0, s.secondary};
    return series;
}

void Log_Chart_View::Attach(Entry& e, bool secondary) {
    if (e.secondary == secondary) return;
    e.series->detachAxis(e.secondary ? y2_ : y1_);
    e.series->attachAxis(secondary ? y2_ : y1_);
    e.secondary = secondary;
}

void Log_Chart_View::Drop_Unused(const std::map<Key, bool>& used) {
    for (auto it = series_.begin(); it != series_.end();) {
        if (used.count(it->first) != 0) {
            ++it;
            continue;
        }
        chart()->removeSeries(it->second.series);
        delete it->second.series;
        it = series_.erase(it);
    }
    if (placeholder_ != nullptr && (!used.empty() || scatter_)) {
        chart()->removeSeries(placeholder_);
        delete placeholder_;
        placeholder_ = nullptr;
    }
}

void Log_Chart_View::Set_Axes(double x_low, double x_high, const Axis_Scale& primary,
                              const Axis_Scale& secondary, bool uses_secondary) {
    if (x_high <= x_low) x_high = x_low + 1;
    Set_Range(x_, x_low, x_high);
    Scale_Axis(y1_, primary);
    y2_->setVisible(uses_secondary);
    if (uses_secondary) Scale_Axis(y2_, secondary);
}

void Log_Chart_View::Show(const Chart_Content& content, const Chart_Look& look) {
    if (scatter_) {
        Drop_Unused({});
        scatter_ = false;
    }
    Apply_Look(look);
    shown_width_ = width();
    if (content.no_signal) {
        Drop_Unused({});
        if (placeholder_ == nullptr) {
            placeholder_ = new QLineSeries;
            placeholder_->setName(No_Signal_Text);
            placeholder_->append({QPointF(1, 0), QPointF(2, 0)});
            chart()->addSeries(placeholder_);
            placeholder_->attachAxis(x_);
            placeholder_->attachAxis(y1_);
        }
        Set_Format(x_, "%.0f");
        Set_Ticks(x_, 2);
        Set_Range(x_, 1, 2);
        x_->setTitleText("");
        Set_Ticks(y1_, 3);
        Set_Range(y1_, -1, 1);
        y2_->setVisible(false);
        return;
    }

    std::map<Key, bool> used;
    for (const Chart_Series& s : content.series)
        used[{s.signal, s.compare}] = true;
    Drop_Unused(used);
    // About one dot a row is all that helps; more would hide the line.
    const bool markers = look.markers && content.rows > 0 && content.rows * 4 <= Buckets();
    // Series that take new points are emptied first, so the axes move over nothing and each
    // new point is laid out once.
    std::vector<std::pair<QXYSeries*, const Chart_Series*>> changed;
    for (const Chart_Series& s : content.series) {
        QXYSeries* series = Series_For(s, false);
        Entry& e = series_[{s.signal, s.compare}];
        const QString name = QString::fromLatin1(s.label.c_str());
        if (series->name() != name) series->setName(name);
        if (e.version != s.version) {
            if (series->count() > 0) series->clear();
            changed.emplace_back(series, &s);
            e.version = s.version;
        }
        Attach(e, s.secondary);
        if (series->pointsVisible() != markers) series->setPointsVisible(markers);
    }
    Set_Format(x_, content.x_in_rows ? "%.0f" : "%.2f");
    const QString x_title = content.x_in_rows ? "row" : "s";
    if (x_->titleText() != x_title) x_->setTitleText(x_title);
    Set_Ticks(x_, 9);
    Set_Axes(content.x_first, content.x_last, content.primary, content.secondary, content.uses_secondary);
    for (const auto& [series, s] : changed)
        series->replace(Points_Of(s->points));
}

void Log_Chart_View::Show_Xy(const Xy_Content& content, const Chart_Look& look) {
    if (!scatter_) {
        scatter_ = true;
        Drop_Unused({});
    }
    Apply_Look(look);
    shown_width_ = width();
    std::map<Key, bool> used;
    for (const Chart_Series& s : content.series)
        used[{s.signal, s.compare}] = true;
    Drop_Unused(used);
    for (const Chart_Series& s : content.series) {
        QXYSeries* series = Series_For(s, true);
        Entry& e = series_[{s.signal, s.compare}];
        series->setName(QString::fromLatin1(s.label.c_str()));
        Attach(e, s.secondary);
        series->replace(Points_Of(s.points));
    }
    x_->setTitleText(QString::fromLatin1(content.x_title.c_str()));
    Axis_Scale x_scale{true, content.x_low, content.x_high};
    Scale_Axis(x_, x_scale);
    Scale_Axis(y1_, content.primary);
    y2_->setVisible(content.uses_secondary);
    if (content.uses_secondary) Scale_Axis(y2_, content.secondary);
    chart()->setTitle(content.no_signal ? No_Signal_Text : "");
}

void Log_Chart_View::Set_Cursor(std::optional<double> x) {
    cursor_ = x;
    viewport()->update();
}

std::optional<double> Log_Chart_View::X_At(QPoint pos) const {
    const QPointF at = chart()->mapFromScene(mapToScene(pos));
    const QRectF plot = chart()->plotArea();
    if (plot.width() <= 0) return std::nullopt;
    const double f = std::clamp((at.x() - plot.left()) / plot.width(), 0.0, 1.0);
    return x_->min() + f * (x_->max() - x_->min());
}

void Log_Chart_View::mousePressEvent(QMouseEvent* event) {
    const QPointF at = chart()->mapFromScene(mapToScene(event->pos()));
    const bool on_plot = chart()->plotArea().contains(at);
    if (event->button() == Qt::LeftButton && on_plot) {
        if (auto x = X_At(event->pos()); x && Point_Clicked) Point_Clicked(*x);
        event->accept();
        return;
    }
    if (event->button() == Qt::RightButton && on_plot) {
        press_x_ = X_At(event->pos());
        band_origin_ = event->pos();
        if (band_ == nullptr) band_ = new QRubberBand(QRubberBand::Rectangle, this);
        band_->setGeometry(QRect(band_origin_, QSize(1, 1)));
        band_->show();
        event->accept();
        return;
    }
    QChartView::mousePressEvent(event);
}

void Log_Chart_View::mouseMoveEvent(QMouseEvent* event) {
    if (band_ != nullptr && band_->isVisible()) {
        // The band spans the plot's height: only the rows count.
        const QRectF plot = chart()->plotArea();
        const QPoint top = mapFromScene(chart()->mapToScene(plot.topLeft()));
        const QPoint bottom = mapFromScene(chart()->mapToScene(plot.bottomLeft()));
        band_->setGeometry(
            QRect(QPoint(band_origin_.x(), top.y()), QPoint(event->pos().x(), bottom.y())).normalized());
        event->accept();
        return;
    }
    QChartView::mouseMoveEvent(event);
}

void Log_Chart_View::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton && press_x_) {
        if (band_ != nullptr) band_->hide();
        const double from = *press_x_;
        press_x_.reset();
        // A few pixels of wobble is a click, not a drag.
        const bool click = std::abs(event->pos().x() - band_origin_.x()) < 4;
        const std::optional<double> to = click ? std::optional<double>(from) : X_At(event->pos());
        if (to && Zoom_Gesture) Zoom_Gesture(from, *to);
        event->accept();
        return;
    }
    QChartView::mouseReleaseEvent(event);
}

void Log_Chart_View::resizeEvent(QResizeEvent* event) {
    QChartView::resizeEvent(event);
    if (shown_width_ != 0 && width() != shown_width_ && Width_Changed) Width_Changed();
}

void Log_Chart_View::drawForeground(QPainter* painter, const QRectF& rect) {
    QChartView::drawForeground(painter, rect);
    if (!cursor_ || x_->max() <= x_->min() || *cursor_ < x_->min() || *cursor_ > x_->max()) return;
    const QRectF plot = chart()->plotArea();
    const double cx = plot.left() + (*cursor_ - x_->min()) / (x_->max() - x_->min()) * plot.width();
    painter->save();
    painter->setPen(QPen(look_.dark ? Qt::white : Qt::darkGray, 1, Qt::DashLine));
    painter->drawLine(chart()->mapToScene(QPointF(cx, plot.top())),
                      chart()->mapToScene(QPointF(cx, plot.bottom())));
    painter->restore();
}

bool Save_Chart_Picture(QChartView& view, const std::string& path) {
    const QString name = QString::fromStdString(path);
    const char* format = name.endsWith(".png", Qt::CaseInsensitive) ? "PNG" : "BMP";
    return view.grab().toImage().convertToFormat(QImage::Format_RGB32).save(name, format);
}

} // namespace quorlen::ui
