#include "ui/display.h"

#include "app/app_context.h"
#include "link/live_changes.h"
#include "ui/qt_dialogs.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>

namespace quorlen::ui {

namespace {

// Where each gauge stands: speed, load and power across the top, then fuel and ignition, the
// mixture with its trim, and the temperatures and voltages; a slave's beside its master's.
constexpr std::array<std::pair<int, int>, Gauge_Count> Places = {{
    {0, 0}, // RPM
    {0, 1}, // MAP
    {0, 2}, // TP
    {2, 0}, // O2 M
    {2, 1}, // O2 S
    {3, 0}, // IAT M
    {3, 1}, // IAT S
    {3, 2}, // BAT M
    {3, 3}, // BAT S
    {1, 3}, // Cool
    {1, 0}, // IGN
    {1, 1}, // Fuel M
    {1, 2}, // Fuel S
    {2, 2}, // Ftrim M
    {2, 3}, // FTrim S
    {0, 3}, // POWER
}};

QColor Bar_Colour(int gauge) {
    switch (gauge) {
    case 0:
    case 15:
        return QColor(255, 176, 32); // speed and power
    case 3:
    case 4:
    case 13:
    case 14:
        return QColor(64, 200, 255); // mixture
    case 5:
    case 6:
    case 9:
        return QColor(255, 120, 60); // temperatures
    case 7:
    case 8:
        return QColor(200, 220, 80); // voltages
    default:
        return QColor(90, 220, 120); // load, throttle, fuel, ignition
    }
}

} // namespace

// One instrument: caption, large value with its unit, and a bar along the gauge's range.
class Gauge final : public QWidget {
public:
    Gauge(int index, QWidget* parent) : QWidget(parent), colour_(Bar_Colour(index)) {
        setObjectName(QStringLiteral("Gauge(%1)").arg(index));
        setMinimumSize(170, 92);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        reading_.caption = Gauge_Captions[static_cast<std::size_t>(index)];
    }

    void Set(const Gauge_Reading& r) {
        const bool changed = r.text != reading_.text || r.unit != reading_.unit ||
                             r.present != reading_.present || r.value != reading_.value ||
                             r.high != reading_.high;
        reading_ = r;
        if (changed) update();
    }
    const Gauge_Reading& Reading() const { return reading_; }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        p.setRenderHint(QPainter::Antialiasing);
        const QRectF box = QRectF(rect()).adjusted(2, 2, -2, -2);
        p.setPen(QColor(43, 49, 56));
        p.setBrush(QColor(21, 25, 30));
        p.drawRoundedRect(box, 8, 8);

        const bool on = reading_.present;
        const QColor dim(89, 97, 106), label(154, 164, 174), value_colour(242, 245, 247);
        QFont caption_font = font();
        caption_font.setBold(true);
        caption_font.setPointSizeF(std::max(9.0, height() * 0.10));
        p.setFont(caption_font);
        p.setPen(on ? label : dim);
        const double margin = 12;
        p.drawText(QRectF(box.left() + margin, box.top() + 6, box.width() - 2 * margin, height() * 0.2),
                   Qt::AlignLeft | Qt::AlignTop, QString::fromStdString(reading_.caption));

        // The number takes most of the height; the unit stands small after it.
        const QString unit = From_8bit(reading_.unit).trimmed();
        QFont unit_font = font();
        unit_font.setPointSizeF(std::max(9.0, height() * 0.11));
        const double unit_width = QFontMetricsF(unit_font).horizontalAdvance(unit);
        const double baseline = box.top() + box.height() * 0.70;
        QFont value_font = font();
        value_font.setBold(true);
        value_font.setPixelSize(std::max(14, static_cast<int>(height() * 0.40)));
        p.setFont(value_font);
        p.setPen(on && !reading_.text.empty() ? value_colour : dim);
        const QString shown = on && !reading_.text.empty() ? QString::fromStdString(reading_.text) : "\u2014";
        const double value_right = box.right() - margin - unit_width - (unit.isEmpty() ? 0 : 6);
        const double value_width = QFontMetricsF(value_font).horizontalAdvance(shown);
        p.drawText(QPointF(value_right - value_width, baseline), shown);
        p.setFont(unit_font);
        p.setPen(on ? label : dim);
        p.drawText(QPointF(box.right() - margin - unit_width, baseline), unit);

        const QRectF track(box.left() + margin, box.bottom() - 16, box.width() - 2 * margin, 7);
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(43, 49, 56));
        p.drawRoundedRect(track, 3, 3);
        if (on && !reading_.text.empty()) {
            const double share =
                std::clamp((reading_.value - reading_.low) / (reading_.high - reading_.low), 0.0, 1.0);
            p.setBrush(colour_);
            p.drawRoundedRect(QRectF(track.left(), track.top(), track.width() * share, track.height()), 3, 3);
        }
    }

private:
    QColor colour_;
    Gauge_Reading reading_;
};

Display::Display(App_Context& app, Display_Hooks hooks, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), hooks_(std::move(hooks)) {
    setObjectName("Display");
    setWindowTitle(QString::fromStdString(app.program.Program_Title) + "Live data");
    setStyleSheet("QDialog#Display { background: #0c0f12; }");
    auto* layout = new QVBoxLayout(this);
    auto* grid = new QGridLayout;
    grid->setSpacing(6);
    for (int g = 0; g < Gauge_Count; ++g) {
        gauges_[static_cast<std::size_t>(g)] = new Gauge(g, this);
        const auto [row, col] = Places[static_cast<std::size_t>(g)];
        grid->addWidget(gauges_[static_cast<std::size_t>(g)], row, col);
    }
    layout->addLayout(grid, 1);
    status_ = new QLabel(this);
    status_->setObjectName("Live_Status");
    status_->setStyleSheet("color: #f2f5f7; font-weight: bold;");
    auto* keys =
        new QLabel(QString::fromUtf8("Keys: + / \u2212 the fuel cell the engine runs in, > / < its ignition "
                                     "(the box picks the cell and tells what it wrote)"),
                   this);
    keys->setObjectName("Display_Keys");
    keys->setStyleSheet("color: #9aa4ae;");
    layout->addWidget(status_);
    layout->addWidget(keys);
    resize(820, 460);
    Clear();
}

void Display::Show_Readings(const Gauge_Readings& readings) {
    for (int g = 0; g < Gauge_Count; ++g)
        gauges_[static_cast<std::size_t>(g)]->Set(readings[static_cast<std::size_t>(g)]);
}

void Display::Clear() {
    Gauge_Readings empty;
    for (int g = 0; g < Gauge_Count; ++g) {
        empty[static_cast<std::size_t>(g)].caption = Gauge_Captions[static_cast<std::size_t>(g)];
        empty[static_cast<std::size_t>(g)].present = true;
    }
    Show_Readings(empty);
}

void Display::Show_Status(const std::string& text) {
    status_->setText(From_8bit(text));
}

void Display::keyPressEvent(QKeyEvent* event) {
    std::string command;
    switch (event->key()) {
    case Qt::Key_Plus:
        command = Adjust_Fuel_Up;
        break;
    case Qt::Key_Minus:
        command = Adjust_Fuel_Down;
        break;
    case Qt::Key_Greater:
        command = Adjust_Ign_Up;
        break;
    case Qt::Key_Less:
        command = Adjust_Ign_Down;
        break;
    default:
        Child_Form::keyPressEvent(event);
        return;
    }
    if (hooks_.Cell_Adjust) hooks_.Cell_Adjust(command);
}

} // namespace quorlen::ui
