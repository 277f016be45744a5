#include "ui/qx_rpm.h"

#include "app/app_context.h"
#include "core/atomic_file.h"
#include "core/proc_guard.h"
#include "core/text.h"
#include "ui/log_chart_view.h"
#include "ui/qt_dialogs.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QRadioButton>
#include <QVBoxLayout>

namespace quorlen::ui {

namespace {

constexpr const char* Export_Filter =
    "As text file (*.csv)|*.csv|Logg file image (*.bmp)|*.bmp|Logg file image (*.png)|*.png";

} // namespace

QX_RPM::QX_RPM(App_Context& app, std::function<User_Dialogs&()> dialogs, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), dialogs_(std::move(dialogs)) {
    setObjectName("QX_RPM");
    setWindowTitle("RPM Graph");
    auto* layout = new QVBoxLayout(this);
    auto* bar = new QMenuBar(this);
    layout->setMenuBar(bar);
    QAction* export_action = bar->addAction("&Export...");
    export_action->setObjectName("mnu_export");
    connect(export_action, &QAction::triggered, this, &QX_RPM::mnu_export_Click);

    auto* frame = new QGroupBox("Select reference signal", this);
    frame->setObjectName("Reference_Frame");
    auto* options = new QHBoxLayout(frame);
    RPM_Option_ = new QRadioButton("RPM", frame);
    RPM_Option_->setObjectName("RPM_Option");
    MAP_Option_ = new QRadioButton("MAP", frame);
    MAP_Option_->setObjectName("MAP_Option");
    RPM_Option_->setChecked(true);
    options->addWidget(RPM_Option_);
    options->addWidget(MAP_Option_);
    options->addStretch();
    connect(RPM_Option_, &QRadioButton::clicked, this, &QX_RPM::Show_RPM);
    connect(MAP_Option_, &QRadioButton::clicked, this, &QX_RPM::Show_MAP);
    layout->addWidget(frame);

    MSChart2_ = new Log_Chart_View(this);
    MSChart2_->setObjectName("MSChart2");
    MSChart2_->Width_Changed = [this] { Draw(); };
    layout->addWidget(MSChart2_, 1);
    resize(900, 650);
}

void QX_RPM::Show_RPM() {
    reference_ = Reference_Signal::RPM;
    RPM_Option_->setChecked(true);
    Draw();
}

void QX_RPM::Show_MAP() {
    reference_ = Reference_Signal::MAP;
    MAP_Option_->setChecked(true);
    Draw();
}

void QX_RPM::Update_Graph() {
    if (isVisible()) Draw();
}

void QX_RPM::showEvent(QShowEvent* event) {
    Child_Form::showEvent(event);
    Draw();
}

void QX_RPM::Draw() {
    Proc_Guard guard(app_.log, reference_ == Reference_Signal::MAP ? "Show MAP" : "Show RPM");
    guard.Step([&] {
        const Log_State& log = *app_.log_state;
        const int width = MSChart2_->Buckets();
        const int height = std::max(100, MSChart2_->height());
        MSChart2_->Show_Xy(Rpm_Graph(log, reference_, width, height), Look_Of(log.setup));
        setWindowTitle(From_8bit(Rpm_Graph_Caption(log)));
    });
}

void QX_RPM::mnu_export_Click() {
    Proc_Guard guard(app_.log, "RPM graph export");
    const Log_State& log = *app_.log_state;
    File_Dialog_Setup setup;
    setup.initial_dir = log.Log_Dir;
    setup.filter = Export_Filter;
    setup.default_ext = "csv";
    setup.confirm_overwrite = true;
    setup.initial_name = Export_Name(log, std::string("_") + Reference_Name(reference_));
    const auto picked = dialogs_().Pick_Save_File(setup);
    if (!picked || picked->full_name.empty()) return;
    const std::string& path = picked->full_name;
    bool written = false;
    guard.Step([&] {
        if (Ends_With_No_Case(path, ".csv")) {
            Replace_File_Atomically(path, Rpm_Graph_Csv(log, reference_));
            written = true;
        } else {
            written = Save_Chart_Picture(*MSChart2_, path);
        }
    });
    if (!written) dialogs_().Inform("Could not write " + path);
}

} // namespace quorlen::ui
