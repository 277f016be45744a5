// The main window's side of reading, verifying and writing settings: the buttons, the
// progress, the error counters beside the report. The work itself is in link/.

#include "core/window_size.h"
#include "link/error_codes.h"
#include "link/read_verify.h"
#include "link/write_settings.h"
#include "ui/boost_prog_main.h"
#include "ui/link_panel.h"
#include "ui/map_tabs.h"
#include "ui/rw_panel.h"

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>

namespace quorlen::ui {

void BoostProgMain::Build_Rw_Panel() {
    rw_ = std::make_unique<Rw_Panel>();
    auto* box = findChild<QWidget*>("Box_Communication");
    auto* grid = box != nullptr ? qobject_cast<QGridLayout*>(box->layout()) : nullptr;
    if (grid == nullptr) return;
    auto button = [&](const char* name, const char* caption, const char* tip, int col) {
        auto* b = new QPushButton(caption, box);
        b->setObjectName(name);
        b->setToolTip(tip);
        grid->addWidget(b, 4, col);
        return b;
    };
    rw_->Read_bin_command_cmd =
        button("Read_bin_command_cmd", "Read binary", "Read the settings as one frame", 0);
    rw_->Verify_bR_Settings =
        button("Verify_bR_Settings", "Verify binary", "Compare with the box, reading one frame", 1);
    rw_->Write_bin_command_cmd =
        button("Write_bin_command_cmd", "Write binary", "Write the changed span as one frame", 2);
    rw_->Clear_Err_Counters_cmd =
        button("Clear_Err_Counters_cmd", "Clear error codes", "Set the box's error counters to zero", 3);

    rw_->Progress = new QProgressBar(box);
    rw_->Progress->setObjectName("rw_Progress");
    rw_->Progress->setRange(0, 1);
    rw_->Progress->setValue(0);
    // Empty until a transfer gives it a total: "0 of 1 bytes" would mean nothing to a tuner.
    rw_->Progress->setFormat("");
    grid->addWidget(rw_->Progress, 5, 0, 1, 3);
    rw_->Timer_label = new QLabel(box);
    rw_->Timer_label->setObjectName("Timer_label");
    rw_->Timer_label->setToolTip("Time of the last binary frame");
    grid->addWidget(rw_->Timer_label, 5, 3);
    rw_->Write_bin_checksum_labell = new QLabel(box);
    rw_->Write_bin_checksum_labell->setObjectName("Write_bin_checksum_labell");
    rw_->Write_bin_checksum_labell->setToolTip("Checksum of the last binary frame");
    grid->addWidget(rw_->Write_bin_checksum_labell, 5, 4);

    connect(Read_Settings_, &QPushButton::clicked, this, &BoostProgMain::Read_Settings_Click);
    connect(Verify_Settings_, &QPushButton::clicked, this, &BoostProgMain::Verify_Settings_Click);
    connect(Write_Settings_, &QPushButton::clicked, this, &BoostProgMain::Write_Settings_Click);
    connect(rw_->Read_bin_command_cmd, &QPushButton::clicked, this,
            &BoostProgMain::Read_bin_command_cmd_Click);
    connect(rw_->Verify_bR_Settings, &QPushButton::clicked, this, &BoostProgMain::Verify_bR_Settings_Click);
    connect(rw_->Write_bin_command_cmd, &QPushButton::clicked, this,
            &BoostProgMain::Write_bin_command_cmd_Click);
    connect(rw_->Clear_Err_Counters_cmd, &QPushButton::clicked, this,
            &BoostProgMain::Clear_Err_Counters_cmd_Click);
}

void BoostProgMain::Run_Settings(void (*procedure)(Settings_Context&)) {
    if (rw_ == nullptr || rw_->Running) return;
    rw_->Running = true;
    Take_Comment_From_Window();
    Link_Context c = Link();
    c.hooks.Command_Buttons = [this](bool enabled) {
        Set_Command_Buttons_Enabled(enabled);
        for (QPushButton* b : {rw_->Read_bin_command_cmd, rw_->Verify_bR_Settings, rw_->Write_bin_command_cmd,
                               rw_->Clear_Err_Counters_cmd})
            if (b != nullptr) b->setEnabled(enabled);
    };
    Settings_Hooks hooks = Rw_Hooks();
    Settings_Context s{c, app_.image, app_.rw, app_.files, *active_dialogs_, std::move(hooks)};
    procedure(s);
    Show_Texts();
    Show_Link_State();
    Show_Rw_State();
    rw_->Running = false;
}

Settings_Hooks BoostProgMain::Rw_Hooks() {
    Settings_Hooks hooks;
    hooks.Update_All = [this] { Update_All(); };
    hooks.Update_Tabs = [this] { Update_Tabs(); };
    hooks.save_to_undolist = [this] { save_to_undolist(app_.undo, app_.image); };
    hooks.Service_Events = [this] {
        Show_Link_State();
        Show_Rw_State();
        QApplication::processEvents();
    };
    hooks.Progress = [this](int done, int total) {
        if (rw_->Progress == nullptr) return;
        rw_->Progress->setRange(0, total > 0 ? total : 1);
        rw_->Progress->setFormat(total > 0 ? "%v of %m bytes" : "");
        rw_->Progress->setValue(done);
        // Painted now: a read holds the event loop while it waits for the box.
        rw_->Progress->repaint();
    };
    hooks.Show_QX_prefs = [this] { Show_Prefs(); };
    hooks.Show_Debug_txt = [this] { Debug_txt_->setVisible(true); };
    hooks.Debug_txt_Shown = [this] { return Debug_txt_->isVisible(); };
    hooks.Verify_View = [this] {
        if (map_tabs_ != nullptr) map_tabs_->Verify_View();
    };
    return hooks;
}

void BoostProgMain::Show_Rw_State() {
    const Rw_State& rw = app_.rw;
    ErrCode_label_->setVisible(rw.Error_Codes_Shown);
    Error_Codes_txt_->setVisible(rw.Error_Codes_Shown);
    Error_Codes_txt_->setMaximumHeight(rw.Error_Codes_Height / Twips_Per_Pixel);
    QString codes = From_8bit(app_.texts.Error_Codes_txt);
    codes.replace("\r\n", "\n");
    if (Error_Codes_txt_->toPlainText() != codes) Error_Codes_txt_->setPlainText(codes);
    if (rw_->Timer_label != nullptr) rw_->Timer_label->setText(QString::fromStdString(rw.Timer_label));
    if (rw_->Write_bin_checksum_labell != nullptr)
        rw_->Write_bin_checksum_labell->setText(QString::fromStdString(rw.Write_bin_checksum_labell));
}

void BoostProgMain::Read_Settings_Click() {
    Run_Settings(quorlen::Read_Settings_Click);
}

void BoostProgMain::Verify_Settings_Click() {
    Run_Settings(quorlen::Verify_Settings_Click);
}

void BoostProgMain::Write_Settings_Click() {
    Run_Settings(quorlen::Write_Settings_Click);
}

void BoostProgMain::Read_bin_command_cmd_Click() {
    Run_Settings(quorlen::Read_bin_command_cmd_Click);
}

void BoostProgMain::Verify_bR_Settings_Click() {
    Run_Settings(quorlen::Verify_bR_Settings_Click);
}

void BoostProgMain::Write_bin_command_cmd_Click() {
    Run_Settings(quorlen::Write_bin_command_cmd_Click);
}

void BoostProgMain::Clear_Err_Counters_cmd_Click() {
    Run_Settings(quorlen::Clear_Err_Counters_cmd_Click);
}

} // namespace quorlen::ui
