#include "ui/qx_log_hs.h"

#include "app/app_context.h"
#include "core/proc_guard.h"
#include "image/scaling.h"
#include "link/qt/qt_serial_line.h"
#include "ui/form_helpers.h"
#include "ui/qt_dialogs.h"

#include <QButtonGroup>
#include <QCategoryAxis>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLineSeries>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTime>
#include <QTimer>
#include <QVBoxLayout>
#include <QValueAxis>

#include <cmath>

namespace quorlen::ui {

namespace {

constexpr const char* Osc_Filter = "Quorlen high speed log files *.qxo|*.qxo|All files *.*|*.*";

// Colours that tell the eight lines apart on a white chart.
const QColor Line_Colours[Osc_Lines] = {QColor(0, 0, 0),     QColor(200, 0, 0),   QColor(220, 110, 0),
                                        QColor(120, 0, 160), QColor(0, 120, 200), QColor(0, 140, 0),
                                        QColor(140, 90, 40), QColor(0, 90, 90)};

// A capture still running when the program closes ends without asking anything.
class Quiet_Dialogs final : public User_Dialogs {
public:
    void Inform(const std::string&) override {}
    Answer Ask_Ok_Cancel(const std::string&) override { return Answer::Ok; }
    Answer Ask_Yes_No(const std::string&) override { return Answer::Yes; }
    std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup&) override { return std::nullopt; }
    std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup&) override { return std::nullopt; }
};

} // namespace

// The chart's view: a click names the sample under the mouse, the arrow keys move and zoom.
class Osc_Chart_View final : public QChartView {
public:
    Osc_Chart_View(QChart* chart, QWidget* parent) : QChartView(chart, parent) {
        setFocusPolicy(Qt::StrongFocus);
    }
    std::function<void(double ms)> Clicked;
    std::function<void(int key)> Key;

protected:
    void mousePressEvent(QMouseEvent* event) override {
        if (Clicked && chart() != nullptr) Clicked(chart()->mapToValue(event->position()).x());
        QChartView::mousePressEvent(event);
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (Key) Key(event->key());
        QChartView::keyPressEvent(event);
    }
};

QX_Log_HS::QX_Log_HS(App_Context& app, HS_Window_Hooks hooks, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), hooks_(std::move(hooks)),
      line_(std::make_unique<Qt_Serial_Line>()) {
    setObjectName("QX_Log_HS");
    Build();
}

QX_Log_HS::~QX_Log_HS() {
    if (!hs_.capture.Running) return;
    Quiet_Dialogs quiet;
    HS_Context c{hs_, app_.program, app_.link, app_.log, quiet, line_.get(), line_->Port(), "", {}};
    quorlen::Stop_HSLogg_Click(c);
}

HS_Context QX_Log_HS::Ctx() {
    HS_Hooks h;
    h.Date_Text = [] { return QDate::currentDate().toString("yyyy-MM-dd").toStdString(); };
    h.Time_Text = [] { return QTime::currentTime().toString("HH:mm:ss").toStdString(); };
    h.Dummy_Wait = [] { Serve_Events(50); };
    h.Main_Port_Busy = hooks_.Main_Port_Busy;
    h.Open_File = [this](const std::string& path) { Open_File(path); };
    return HS_Context{hs_,
                      app_.program,
                      app_.link,
                      app_.log,
                      hooks_.Dialogs(),
                      line_.get(),
                      hooks_.Port_Path ? hooks_.Port_Path() : std::string(),
                      hooks_.Log_Dir ? hooks_.Log_Dir() : std::string(),
                      std::move(h)};
}

// --- building -----------------------------------------------------------------------------

void QX_Log_HS::Build() {
    setWindowTitle(QString::fromStdString(app_.program.Program_Title) + "High speed logging");
    auto* layout = new QVBoxLayout(this);
    const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);

    auto* top = new QHBoxLayout;
    auto button = [this](QBoxLayout* into, const char* name, const QString& caption, auto slot) {
        auto* b = new QPushButton(caption, this);
        b->setObjectName(name);
        connect(b, &QPushButton::clicked, this, slot);
        into->addWidget(b);
        return b;
    };
    Start_HSLogg_ = button(top, "Start_HSLogg", "START", &QX_Log_HS::Start_HSLogg_Click);
    Stop_HSLogg_ = button(top, "Stop_HSLogg", "STOP", &QX_Log_HS::Stop_HSLogg_Click);
    button(top, "cmd_Open", "Open...", &QX_Log_HS::cmd_Open_Click);
    top->addSpacing(12);
    top->addWidget(new QLabel("Started", this));
    txt_Log_time_ = Named_Field(this, "txt_Log_time", 90);
    txt_Log_time_->setReadOnly(true);
    top->addWidget(txt_Log_time_);
    top->addWidget(new QLabel("Length", this));
    txt_Log_Length_ = Named_Field(this, "txt_Log_Length", 90);
    txt_Log_Length_->setReadOnly(true);
    top->addWidget(txt_Log_Length_);
    top->addStretch();
    auto* crank = new QPushButton("Crank view...", this);
    crank->setObjectName("cmd_CrankView");
    connect(crank, &QPushButton::clicked, this, [this] {
        if (hooks_.Show_Crank_View) hooks_.Show_Crank_View();
    });
    top->addWidget(crank);
    layout->addLayout(top);

    auto* middle = new QHBoxLayout;
    auto* chart = new QChart;
    chart->legend()->hide();
    chart->setMargins(QMargins(4, 4, 4, 4));
    time_axis_ = new QValueAxis;
    time_axis_->setTitleText("ms");
    time_axis_->setLabelFormat("%.1f");
    auto* lines_axis = new QCategoryAxis;
    lines_axis->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
    for (int c = Osc_Lines - 1; c >= 0; --c)
        lines_axis->append(Osc_Line_Names[static_cast<std::size_t>(c)],
                           (Level_Value(c, false) + Level_Value(c, true)) / 2);
    lines_axis->setRange(0.4, 8.5);
    lines_axis->setGridLineVisible(false);
    chart->addAxis(time_axis_, Qt::AlignBottom);
    chart->addAxis(lines_axis, Qt::AlignLeft);
    for (int c = 0; c < Osc_Lines; ++c) {
        series_[c] = new QLineSeries;
        series_[c]->setName(Osc_Line_Names[static_cast<std::size_t>(c)]);
        series_[c]->setPen(QPen(Line_Colours[c], 1));
        chart->addSeries(series_[c]);
        series_[c]->attachAxis(time_axis_);
        series_[c]->attachAxis(lines_axis);
    }
    Osc_Chart_ = new Osc_Chart_View(chart, this);
    Osc_Chart_->setObjectName("Osc_Chart");
    Osc_Chart_->setMinimumSize(560, 380);
    Osc_Chart_->Clicked = [this](double ms) { Show_Point(ms); };
    Osc_Chart_->Key = [this](int key) {
        Proc_Guard guard(app_.log, "Osc_Chart Keydown");
        guard.Step([&] {
            if (key == Qt::Key_Left) cmd_Scroll_Left();
            if (key == Qt::Key_Right) cmd_Scroll_Right();
            if (key == Qt::Key_Up || key == Qt::Key_Plus) cmd_ZoomIn();
            if (key == Qt::Key_Down || key == Qt::Key_Minus) cmd_ZoomOut();
            if (key == Qt::Key_Home) cmd_ZoomAll();
        });
    };
    auto* chart_column = new QVBoxLayout;
    chart_column->addWidget(Osc_Chart_, 1);
    Point_Value_ = new QLabel("Click the chart for the lines of a sample", this);
    Point_Value_->setObjectName("Point_Value");
    Point_Value_->setFont(fixed);
    chart_column->addWidget(Point_Value_);
    middle->addLayout(chart_column, 1);

    auto* side = new QVBoxLayout;
    auto* stretch = new QGroupBox("Samples on show", this);
    auto* sg = new QGridLayout(stretch);
    txt_start_ = Named_Field(stretch, "txt_start", 110);
    txt_stop_ = Named_Field(stretch, "txt_stop", 110);
    sg->addWidget(new QLabel("From", stretch), 0, 0);
    sg->addWidget(txt_start_, 0, 1, 1, 2);
    sg->addWidget(new QLabel("To", stretch), 1, 0);
    sg->addWidget(txt_stop_, 1, 1, 1, 2);
    for (QLineEdit* e : {txt_start_, txt_stop_})
        connect(e, &QLineEdit::returnPressed, this, &QX_Log_HS::Update_HSlog_chart);
    auto* zoom = new QHBoxLayout;
    button(zoom, "cmd_Scroll_Left", "<", &QX_Log_HS::cmd_Scroll_Left);
    button(zoom, "cmd_ZoomIn", "Zoom +", &QX_Log_HS::cmd_ZoomIn);
    button(zoom, "cmd_ZoomOut", "Zoom -", &QX_Log_HS::cmd_ZoomOut);
    button(zoom, "cmd_ZoomAll", "All", &QX_Log_HS::cmd_ZoomAll);
    button(zoom, "cmd_Scroll_Right", ">", &QX_Log_HS::cmd_Scroll_Right);
    sg->addLayout(zoom, 2, 0, 1, 3);
    PeakDetect_ = new QCheckBox("Peak detect", stretch);
    PeakDetect_->setToolTip("Show pulses shorter than a row of the chart as a notch");
    PeakDetect_->setObjectName("PeakDetect");
    connect(PeakDetect_, &QCheckBox::toggled, this, &QX_Log_HS::Update_HSlog_chart);
    sg->addWidget(PeakDetect_, 3, 0, 1, 3);
    side->addWidget(stretch);

    auto* analysis = new QGroupBox("Pulse analysis", this);
    auto* ag = new QGridLayout(analysis);
    Analyze_option_ = new QButtonGroup(this);
    int index = 0;
    for (const char* caption : {"RPM", "Crank pulses/rev"}) {
        auto* option = new QRadioButton(caption, analysis);
        option->setObjectName(QStringLiteral("Analyze_option(%1)").arg(index));
        Analyze_option_->addButton(option, index);
        ag->addWidget(option, 0, index++);
    }
    Analyze_option_->button(1)->setChecked(true);
    txt_RPM_ = Named_Field(analysis, "txt_RPM", 110);
    ag->addWidget(txt_RPM_, 1, 0);
    auto* rpm = new QPushButton("Get RPM", analysis);
    rpm->setObjectName("cmd_GetRPM");
    rpm->setToolTip("The speed at which the samples on show are one revolution");
    connect(rpm, &QPushButton::clicked, this, &QX_Log_HS::cmd_GetRPM_Click);
    ag->addWidget(rpm, 1, 1);
    auto* analyze = new QPushButton("Analyze", analysis);
    analyze->setObjectName("cmd_Analyze");
    connect(analyze, &QPushButton::clicked, this, &QX_Log_HS::cmd_Analyze_Click);
    ag->addWidget(analyze, 2, 0, 1, 2);
    txt_Analyze_ = new QPlainTextEdit(analysis);
    txt_Analyze_->setObjectName("txt_Analyze");
    txt_Analyze_->setReadOnly(true);
    txt_Analyze_->setFont(fixed);
    txt_Analyze_->setMinimumHeight(250);
    ag->addWidget(txt_Analyze_, 3, 0, 1, 2);
    side->addWidget(analysis, 1);
    auto* side_widget = new QWidget(this);
    side_widget->setLayout(side);
    side_widget->setFixedWidth(330);
    middle->addWidget(side_widget);
    layout->addLayout(middle, 1);

    auto* bottom = new QHBoxLayout;
    txt_Err_ = new QPlainTextEdit(this);
    txt_Err_->setObjectName("txt_Err");
    txt_Err_->setReadOnly(true);
    txt_Err_->setMaximumHeight(56);
    txt_Err_->setPlaceholderText("Port events");
    bottom->addWidget(txt_Err_, 2);
    Text3_ = new QLineEdit(this);
    Text3_->setObjectName("Text3");
    Text3_->setReadOnly(true);
    Text3_->setPlaceholderText("Late receive events");
    bottom->addWidget(Text3_, 1);
    layout->addLayout(bottom);
    txt_LineData_ = new QLineEdit(this);
    txt_LineData_->setObjectName("txt_LineData");
    txt_LineData_->setReadOnly(true);
    layout->addWidget(txt_LineData_);

    Timer1_ = new QTimer(this);
    Timer1_->setObjectName("Timer1");
    Timer1_->setInterval(HS_Timer1_Period);
    connect(Timer1_, &QTimer::timeout, this, &QX_Log_HS::Timer1_Tick);
    Receive_Timer_ = new QTimer(this);
    Receive_Timer_->setObjectName("MSComm_HS_OnComm");
    Receive_Timer_->setTimerType(Qt::PreciseTimer);
    Receive_Timer_->setInterval(HS_Receive_Poll);
    connect(Receive_Timer_, &QTimer::timeout, this, &QX_Log_HS::Receive_Poll);
    resize(1180, 720);
    Sync();
}

// --- state to screen ----------------------------------------------------------------------

void QX_Log_HS::Sync() {
    const HS_Form& f = hs_.form;
    Start_HSLogg_->setEnabled(f.Start_HSLogg_Enabled);
    Stop_HSLogg_->setEnabled(f.Stop_HSLogg_Enabled);
    Osc_Chart_->setVisible(f.Osc_Chart_Visible);
    txt_Log_time_->setText(From_8bit(f.txt_Log_time));
    txt_Log_Length_->setText(From_8bit(f.txt_Log_Length));
    const QString err = Shown_Text(f.txt_Err);
    if (txt_Err_->toPlainText() != err) txt_Err_->setPlainText(err);
    Text3_->setText(QString::fromStdString(f.Text3));
    if (f.Timer1_Enabled != Timer1_->isActive()) f.Timer1_Enabled ? Timer1_->start() : Timer1_->stop();
    if (hs_.capture.Running != Receive_Timer_->isActive())
        hs_.capture.Running ? Receive_Timer_->start() : Receive_Timer_->stop();
}

const Osc_Trace& QX_Log_HS::Shown_Trace() const {
    static const Osc_Trace none;
    return trace_ ? *trace_ : none;
}

Osc_Stretch QX_Log_HS::Current_Stretch() const {
    return Clamp_Stretch(To_8bit(txt_start_->text()), To_8bit(txt_stop_->text()), Shown_Trace().Count());
}

void QX_Log_HS::Set_Stretch(const Osc_Stretch& stretch) {
    txt_start_->setText(QString::fromStdString(stretch.start_text));
    txt_stop_->setText(QString::fromStdString(stretch.stop_text));
    Update_HSlog_chart();
}

// --- capture ------------------------------------------------------------------------------

void QX_Log_HS::Start_HSLogg_Click() {
    HS_Context c = Ctx();
    quorlen::Start_HSLogg_Click(c);
    Sync();
}

void QX_Log_HS::Stop_HSLogg_Click() {
    HS_Context c = Ctx();
    quorlen::Stop_HSLogg_Click(c);
    Sync();
}

bool QX_Log_HS::Capturing() const {
    return hs_.capture.Running;
}

void QX_Log_HS::Receive_Poll() {
    HS_Context c = Ctx();
    HS_Poll(c);
    // Only what the event changed is shown: the poll runs a hundred times a second.
    if (!hs_.capture.Running || !hs_.form.txt_Err.empty() || !hs_.form.Text3.empty()) Sync();
}

void QX_Log_HS::Timer1_Tick() {
    HS_Context c = Ctx();
    HS_Timer1_Timer(c);
    Sync();
}

// --- the file and the chart ---------------------------------------------------------------

bool QX_Log_HS::Open_File(const std::string& path) {
    Proc_Guard guard(app_.log, "Open file HS");
    std::string error;
    auto trace = Read_Osc_File(path, error, Sample_Rate_Of(app_.program.ComSpeed));
    if (!trace) {
        hooks_.Dialogs().Inform(error);
        guard.Fail(error);
        return false;
    }
    trace_ = std::move(*trace);
    trace_path_ = path;
    hs_.form.txt_Log_Length =
        Format_Number(static_cast<double>(trace_->Count()) / trace_->sample_rate, "0.0") + " sek";
    const auto slash = path.rfind('/');
    setWindowTitle(QString::fromStdString(app_.program.Program_Title) +
                   From_8bit(slash == std::string::npos ? path : path.substr(slash + 1)));
    Sync();
    Set_Stretch(Zoom_All(trace_->Count()));
    if (const std::string notes = Osc_Trace_Notes(*trace_); !notes.empty()) hooks_.Dialogs().Inform(notes);
    if (hooks_.Trace_Changed) hooks_.Trace_Changed();
    return true;
}

void QX_Log_HS::cmd_Open_Click() {
    File_Dialog_Setup setup;
    setup.initial_dir = hooks_.Log_Dir ? hooks_.Log_Dir() : std::string();
    setup.filter = Osc_Filter;
    setup.must_exist = true;
    if (auto picked = hooks_.Dialogs().Pick_Open_File(setup)) Open_File(picked->full_name);
}

void QX_Log_HS::Update_HSlog_chart() {
    QElapsedTimer took;
    took.start();
    const QString started = QTime::currentTime().toString("HH:mm:ss.zzz");
    const Osc_Stretch stretch = Current_Stretch();
    txt_start_->setText(QString::fromStdString(stretch.start_text));
    txt_stop_->setText(QString::fromStdString(stretch.stop_text));
    const Osc_Trace& trace = Shown_Trace();
    chart_ = Build_Osc_Chart(trace, stretch, PeakDetect_->isChecked());

    // Steps: a point where each row's level is reached, and the corner before it, but only
    // where the level changes, so a quiet line costs two points however many rows it has.
    const int rate = trace.sample_rate;
    const std::size_t rows = chart_.rows.size();
    for (int c = 0; c < Osc_Lines; ++c) {
        QList<QPointF> points;
        if (rows > 0) {
            bool level = Get_Data_ByteVal_bit(chart_.rows[0], c);
            points.append(QPointF(Sample_Time_ms(chart_.Row_Sample(0), rate), Level_Value(c, level)));
            for (std::size_t k = 1; k < rows; ++k) {
                const bool now = Get_Data_ByteVal_bit(chart_.rows[k], c);
                if (now == level) continue;
                const double x = Sample_Time_ms(chart_.Row_Sample(k), rate);
                points.append(QPointF(x, Level_Value(c, level)));
                points.append(QPointF(x, Level_Value(c, now)));
                level = now;
            }
            points.append(QPointF(Sample_Time_ms(chart_.Row_Sample(rows - 1), rate), Level_Value(c, level)));
        }
        series_[c]->replace(points);
    }
    const double from = Sample_Time_ms(stretch.first, rate);
    const double to = Sample_Time_ms(std::max(stretch.last, stretch.first), rate);
    time_axis_->setRange(from, to > from ? to : from + 1);
    txt_LineData_->setText("Update started: " + started +
                           "   Stop: " + QTime::currentTime().toString("HH:mm:ss.zzz") +
                           "   Update total: " + QString::number(took.elapsed()) +
                           " ms   Numbers: " + QString::number(stretch.Numbers()));
}

void QX_Log_HS::Show_Point(double ms) {
    Proc_Guard guard(app_.log, "Osc_Chart pointselected");
    if (!trace_ || trace_->Count() == 0) return;
    const long sample = std::clamp(std::lround(ms * trace_->sample_rate / 1000.0) + 1, 1L, trace_->Count());
    const std::uint8_t byte = Get_Data_Byte(*trace_, sample - 1);
    QString high;
    for (int c = 0; c < Osc_Lines; ++c)
        if (Get_Data_ByteVal_bit(byte, c))
            high += (high.isEmpty() ? "" : ", ") + QString(Osc_Line_Names[static_cast<std::size_t>(c)]);
    Point_Value_->setText(
        QStringLiteral("Sample %1 at %2 ms: %3%4")
            .arg(sample)
            .arg(QString::fromStdString(Format_Number(Sample_Time_ms(sample, trace_->sample_rate), "0.00")))
            .arg(QString::fromStdString(Byte_2_BitString(byte)))
            .arg(high.isEmpty() ? QString() : "   high: " + high));
}

// --- analysis -----------------------------------------------------------------------------

void QX_Log_HS::cmd_Analyze_Click() {
    const Osc_Trace& trace = Shown_Trace();
    const Osc_Stretch stretch = Current_Stretch();
    const auto reference =
        Analyze_option_->checkedId() == 0 ? Analyze_Reference::RPM : Analyze_Reference::Crank_Pulses_Per_Rev;
    const Analyze_Result result = Analyze_Stretch(trace, stretch, reference, To_8bit(txt_RPM_->text()));
    txt_Analyze_->setPlainText(Shown_Text(result.text));
    if (!result.fault.empty()) {
        Proc_Guard guard(app_.log, "cmd Analyze click");
        guard.Fail(result.fault);
    }
}

void QX_Log_HS::cmd_GetRPM_Click() {
    const auto rpm = Stretch_RPM(Current_Stretch(), Shown_Trace().sample_rate);
    if (!rpm) {
        Proc_Guard guard(app_.log, "cmd GetRPM click");
        guard.Fail("Division by zero");
        return;
    }
    txt_RPM_->setText(QString::fromStdString(Format_Number(*rpm, "0.0")));
}

void QX_Log_HS::cmd_ZoomAll() {
    Set_Stretch(Zoom_All(Shown_Trace().Count()));
}

void QX_Log_HS::cmd_ZoomIn() {
    Set_Stretch(Zoom_In(Current_Stretch(), Shown_Trace().Count()));
}

void QX_Log_HS::cmd_ZoomOut() {
    Set_Stretch(Zoom_Out(Current_Stretch(), Shown_Trace().Count()));
}

void QX_Log_HS::cmd_Scroll_Left() {
    Set_Stretch(Scroll_Left(Current_Stretch(), Shown_Trace().Count()));
}

void QX_Log_HS::cmd_Scroll_Right() {
    Set_Stretch(Scroll_Right(Current_Stretch(), Shown_Trace().Count()));
}

} // namespace quorlen::ui
