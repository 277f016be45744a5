#include "ui/qx_crankview.h"

#include "app/app_context.h"
#include "core/proc_guard.h"
#include "ui/qt_dialogs.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>

namespace quorlen::ui {

namespace {

constexpr double Pi = 3.14159265358979323846;

// A point at `radius` from the centre, `clockwise` degrees from the top.
QPointF At(QPointF centre, double radius, double clockwise) {
    const double r = clockwise * Pi / 180;
    return {centre.x() + radius * std::sin(r), centre.y() - radius * std::cos(r)};
}

} // namespace

Crank_Wheel_Widget::Crank_Wheel_Widget(QWidget* parent) : QWidget(parent) {
    setMinimumSize(420, 420);
}

void Crank_Wheel_Widget::Show(const Wheel_Layout& wheel, const std::optional<double>& cam_angle) {
    wheel_ = wheel;
    cam_angle_ = cam_angle;
    update();
}

void Crank_Wheel_Widget::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.fillRect(rect(), Qt::white);
    const QPointF c(width() / 2.0, height() / 2.0 + 12);
    const double radius = std::min(width(), height()) / 2.0 - 62;
    if (!wheel_.known || radius < 40) {
        p.drawText(rect(), Qt::AlignCenter, "No wheel to draw for this layout");
        return;
    }
    const double tooth = wheel_.tooth_degrees;
    // Crank angle to the screen: the mark is under the sensor at the top, later angles wait
    // anticlockwise of it because the wheel turns clockwise.
    const auto screen = [&](double crank) { return wheel_.mark_angle - crank; };

    p.setPen(QPen(QColor(90, 90, 90), 1.5));
    p.setBrush(QColor(235, 235, 235));
    p.drawEllipse(c, radius, radius);
    p.setBrush(QColor(250, 250, 250));
    p.drawEllipse(c, radius * 0.25, radius * 0.25);

    const double height_px = std::clamp(radius * 0.09, 8.0, 18.0);
    QFont small = font();
    small.setPointSizeF(std::max(6.5, small.pointSizeF() - 1.5));
    p.setFont(small);
    for (int k = 0; k < wheel_.positions; ++k) {
        const double from = screen(k * tooth);
        const double to = screen(k * tooth + tooth / 2);
        QPainterPath path;
        path.moveTo(At(c, radius, from));
        path.lineTo(At(c, radius + height_px, from));
        path.lineTo(At(c, radius + height_px, to));
        path.lineTo(At(c, radius, to));
        const bool present = wheel_.present[static_cast<std::size_t>(k)];
        if (present) {
            p.setPen(QPen(Qt::black, 1));
            p.setBrush(k == wheel_.mark_teeth % wheel_.positions ? QColor(240, 140, 0) : QColor(60, 60, 60));
        } else {
            p.setPen(QPen(QColor(170, 170, 170), 1, Qt::DashLine));
            p.setBrush(Qt::NoBrush);
        }
        p.drawPath(path);
        if (present && k % 5 == 0) {
            p.setPen(QColor(60, 60, 60));
            const QPointF at = At(c, radius - height_px - 4, screen(k * tooth + tooth / 4));
            p.drawText(QRectF(at.x() - 14, at.y() - 8, 28, 16), Qt::AlignCenter, QString::number(k));
        }
    }
    // The gap is named where it ends, at the last missing place.
    for (int k = 0; k < wheel_.positions; ++k) {
        if (wheel_.present[static_cast<std::size_t>(k)] ||
            wheel_.present[static_cast<std::size_t>((k + 1) % wheel_.positions)] == false)
            continue;
        p.setPen(QColor(120, 120, 120));
        const QPointF at = At(c, radius + height_px + 14, screen(k * tooth + tooth / 2));
        p.drawText(QRectF(at.x() - 30, at.y() - 8, 60, 16), Qt::AlignCenter, "missing");
    }

    // Top dead centre of cylinder 1 on the wheel, 51 degrees before the sensor reaches it.
    const double tdc = screen(wheel_.tdc_angle);
    p.setPen(QPen(QColor(200, 0, 0), 2));
    p.drawLine(At(c, radius * 0.3, tdc), At(c, radius + height_px + 4, tdc));
    p.setFont(font());
    const QPointF tdc_label = At(c, radius * 0.62, tdc - 8);
    p.drawText(QRectF(tdc_label.x() - 34, tdc_label.y() - 9, 68, 18), Qt::AlignCenter, "TDC 1");

    if (cam_angle_) {
        const double cam = screen(*cam_angle_);
        p.setPen(QPen(QColor(0, 110, 200), 2));
        p.setBrush(QColor(0, 110, 200));
        QPolygonF mark;
        mark << At(c, radius * 0.3, cam) << At(c, radius * 0.42, cam - 4) << At(c, radius * 0.42, cam + 4);
        p.drawPolygon(mark);
        p.drawLine(At(c, radius * 0.42, cam), At(c, radius * 0.85, cam));
        const QPointF label = At(c, radius * 0.6, cam + 9);
        p.drawText(QRectF(label.x() - 30, label.y() - 9, 60, 18), Qt::AlignCenter, "Cam");
    }

    // The sensor over the mark, and which way the wheel turns.
    const QPointF tip = At(c, radius + height_px + 4, 0);
    p.setPen(QPen(Qt::black, 1.5));
    p.setBrush(QColor(250, 220, 120));
    p.drawRect(QRectF(tip.x() - 9, tip.y() - 34, 18, 30));
    p.drawText(QRectF(tip.x() + 14, tip.y() - 38, 200, 18), Qt::AlignLeft | Qt::AlignVCenter, "Crank sensor");
    p.setPen(QColor(240, 140, 0).darker(130));
    p.drawText(QRectF(tip.x() + 14, tip.y() - 20, 260, 18), Qt::AlignLeft | Qt::AlignVCenter,
               QStringLiteral("51° BTDC: tooth %1").arg(wheel_.mark_teeth));
    p.setPen(QPen(QColor(90, 90, 90), 1.5));
    p.setBrush(Qt::NoBrush);
    const double arc = radius + height_px + 26;
    QPainterPath turn;
    // Qt counts arcs anticlockwise from three o'clock: -30 is 120 degrees clockwise of the top.
    turn.arcMoveTo(QRectF(c.x() - arc, c.y() - arc, 2 * arc, 2 * arc), -30);
    turn.arcTo(QRectF(c.x() - arc, c.y() - arc, 2 * arc, 2 * arc), -30, -40);
    p.drawPath(turn);
    const QPointF head = At(c, arc, 160);
    p.drawLine(head, At(c, arc + 6, 153));
    p.drawLine(head, At(c, arc - 6, 153));
}

QX_CrankView::QX_CrankView(App_Context& app, Crank_View_Hooks hooks, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), hooks_(std::move(hooks)) {
    setObjectName("QX_CrankView");
    setWindowTitle(QString::fromStdString(app_.program.Program_Title) + "Crank wheel");
    auto* layout = new QHBoxLayout(this);
    Crank_Wheel_ = new Crank_Wheel_Widget(this);
    Crank_Wheel_->setObjectName("Crank_Wheel");
    layout->addWidget(Crank_Wheel_, 1);

    auto* side = new QVBoxLayout;
    txt_Crank_Info_ = new QPlainTextEdit(this);
    txt_Crank_Info_->setObjectName("txt_Crank_Info");
    txt_Crank_Info_->setReadOnly(true);
    txt_Crank_Info_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    side->addWidget(txt_Crank_Info_, 1);
    lbl_Crank_Warnings_ = new QLabel(this);
    lbl_Crank_Warnings_->setObjectName("lbl_Crank_Warnings");
    lbl_Crank_Warnings_->setWordWrap(true);
    lbl_Crank_Warnings_->setStyleSheet("color: #b00000; font-weight: bold;");
    side->addWidget(lbl_Crank_Warnings_);
    auto* buttons = new QHBoxLayout;
    auto* hs = new QPushButton("High speed logging...", this);
    hs->setObjectName("cmd_HS_Log");
    connect(hs, &QPushButton::clicked, this, [this] {
        if (hooks_.Show_HS_Log) hooks_.Show_HS_Log();
    });
    buttons->addWidget(hs);
    auto* again = new QPushButton("Measure again", this);
    again->setObjectName("cmd_Refresh");
    connect(again, &QPushButton::clicked, this, &QX_CrankView::Refresh);
    buttons->addWidget(again);
    buttons->addStretch();
    side->addLayout(buttons);
    auto* side_widget = new QWidget(this);
    side_widget->setLayout(side);
    side_widget->setMinimumWidth(380);
    layout->addWidget(side_widget);
    resize(1000, 560);
}

void QX_CrankView::Refresh() {
    Proc_Guard guard(app_.log, "Crank view refresh");
    guard.Step([&] {
        const Engine_Config_Table& layouts = hooks_.Layouts();
        const Wheel_Layout wheel = Wheel_Layout_For(layouts, app_.image.CardByte[Engine_Layout_Address],
                                                    app_.image.CardByte[Mark_Teeth_Address]);
        const Osc_Trace* trace = hooks_.Trace ? hooks_.Trace() : nullptr;
        std::optional<Crank_Measure> measure;
        if (trace != nullptr)
            measure = Measure_Crank(*trace, std::max<int>(1, static_cast<int>(wheel.gaps.size())));
        report_ = Crank_View_Report(wheel, measure ? &*measure : nullptr,
                                    hooks_.Trace_Name ? hooks_.Trace_Name() : "");
        QString info;
        for (const std::string& line : report_.lines)
            info += From_8bit(line) + "\n";
        txt_Crank_Info_->setPlainText(info.trimmed());
        QString warnings;
        for (const std::string& w : report_.warnings)
            warnings += (warnings.isEmpty() ? "" : "\n") + QString("Warning: ") + From_8bit(w);
        lbl_Crank_Warnings_->setText(warnings);
        lbl_Crank_Warnings_->setVisible(!warnings.isEmpty());
        Crank_Wheel_->Show(wheel, measure ? measure->cam_angle : std::nullopt);
    });
}

} // namespace quorlen::ui
