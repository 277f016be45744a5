#include "ui/qx_setting_summary.h"

#include "app/app_context.h"
#include "core/atomic_file.h"
#include "core/proc_guard.h"
#include "files/qt/text_pages.h"
#include "files/rtf_text.h"
#include "link/qt/qt_port_platform.h"
#include "ui/qt_dialogs.h"

#include <QComboBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

#include <filesystem>

namespace quorlen::ui {

namespace {

const char* const Open_Filter = "Quorlen setting files (*.rtf)|*.rtf|All (*.*)|*.*";
const char* const Save_Filter = "Rich text format (*.rtf)|*.rtf|All (*.*)|*.*";

std::string Stem(const std::string& name) {
    return std::filesystem::path(name).stem().string();
}

} // namespace

QX_Setting_Summary::QX_Setting_Summary(App_Context& app, Summary_Window_Hooks hooks, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), hooks_(std::move(hooks)) {
    setObjectName("QX_Setting_Summary");
    setWindowTitle("Setting summary viewer");
    auto* layout = new QVBoxLayout(this);

    auto* menus = new QMenuBar(this);
    auto action = [&](QMenu* menu, const char* name, const char* caption,
                      void (QX_Setting_Summary::*slot)()) {
        QAction* a = menu->addAction(caption);
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, slot);
    };
    QMenu* file = menus->addMenu("&File");
    action(file, "Open", "&Open...", &QX_Setting_Summary::Open_Click);
    action(file, "SaveAs", "&Export to textfile...", &QX_Setting_Summary::SaveAs_Click);
    action(file, "Print", "&Print...", &QX_Setting_Summary::Print_Click);
    QMenu* view = menus->addMenu("&View");
    action(view, "View_box_settings", "View box file settings",
           &QX_Setting_Summary::cmd_View_Box_Settings_Click);
    action(view, "View_Log_file_settings", "View log file settings",
           &QX_Setting_Summary::cmd_View_Log_Settings_Click);
    layout->setMenuBar(menus);

    auto* buttons = new QHBoxLayout;
    auto button = [&](const char* name, const char* caption, void (QX_Setting_Summary::*slot)()) {
        auto* b = new QPushButton(caption, this);
        b->setObjectName(name);
        connect(b, &QPushButton::clicked, this, slot);
        buttons->addWidget(b);
    };
    button("cmd_View_Box_Settings", "View box file settings",
           &QX_Setting_Summary::cmd_View_Box_Settings_Click);
    button("cmd_View_Log_Settings", "View log file settings",
           &QX_Setting_Summary::cmd_View_Log_Settings_Click);
    buttons->addSpacing(16);
    buttons->addWidget(new QLabel("Maps:", this));
    Summary_Tables_combo_ = new QComboBox(this);
    Summary_Tables_combo_->setObjectName("Summary_Tables_combo");
    Summary_Tables_combo_->addItems({"No maps", "Maps one after the other", "Map axes side by side"});
    Summary_Tables_combo_->setCurrentIndex(1);
    connect(Summary_Tables_combo_, &QComboBox::activated, this, [this] {
        if (!showing_log_) Update_Readable_Setting_Window();
    });
    buttons->addWidget(Summary_Tables_combo_);
    buttons->addStretch();
    button("Print_cmd", "Print...", &QX_Setting_Summary::Print_Click);
    layout->addLayout(buttons);

    txt_SettingSummary_ = new QTextEdit(this);
    txt_SettingSummary_->setObjectName("txt_SettingSummary");
    txt_SettingSummary_->setAcceptRichText(false);
    txt_SettingSummary_->setLineWrapMode(QTextEdit::NoWrap);
    txt_SettingSummary_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    txt_SettingSummary_->setTabStopDistance(txt_SettingSummary_->fontMetrics().horizontalAdvance(' ') * 8);
    layout->addWidget(txt_SettingSummary_);
    resize(760, 620);
}

Summary_Tables_Layout QX_Setting_Summary::Tables_Layout() const {
    switch (Summary_Tables_combo_->currentIndex()) {
    case 1:
        return Summary_Tables_Layout::Alt1;
    case 2:
        return Summary_Tables_Layout::Alt2;
    default:
        return Summary_Tables_Layout::None;
    }
}

void QX_Setting_Summary::Show(const std::string& text) {
    QString shown = From_8bit(text);
    shown.replace("\r\n", "\n");
    txt_SettingSummary_->setPlainText(shown);
}

std::string QX_Setting_Summary::Shown_Text() const {
    QString text = txt_SettingSummary_->toPlainText();
    text.replace("\n", "\r\n");
    return To_8bit(text);
}

void QX_Setting_Summary::Update_Readable_Setting_Window() {
    Proc_Guard guard(app_.log, "Update readable setting window");
    showing_log_ = false;
    std::string text;
    guard.Step([&] { text = Readable_Settings_Text(Summary_Facts_Of(app_, Running_System_Name())); });
    guard.Step([&] { text += Summary_Table_Section(app_, hooks_.Dialogs(), Tables_Layout()); });
    Show(text);
}

void QX_Setting_Summary::cmd_View_Box_Settings_Click() {
    Update_Readable_Setting_Window();
}

void QX_Setting_Summary::cmd_View_Log_Settings_Click() {
    Proc_Guard guard(app_.log, "View Log file settings");
    showing_log_ = true;
    std::string section;
    guard.Step([&] {
        if (hooks_.Log_Readable_Settings) section = hooks_.Log_Readable_Settings();
    });
    // A log without readable settings, or no log at all, shows nothing.
    Show(Readable_Settings_Body(section).empty() ? std::string() : section);
}

void QX_Setting_Summary::Open_Click() {
    Proc_Guard guard(app_.log, "Open Click");
    File_Dialog_Setup setup;
    setup.title = "Open";
    setup.filter = Open_Filter;
    setup.default_ext = "rtf";
    setup.initial_dir = app_.files.CurrentDataDir;
    setup.must_exist = true;
    auto picked = hooks_.Dialogs().Pick_Open_File(setup);
    if (!picked) return;
    guard.Step([&] { Show(Rtf_To_Text(Read_Whole_File(picked->full_name))); });
}

void QX_Setting_Summary::SaveAs_Click() {
    File_Dialog_Setup setup;
    setup.title = "Export to textfile";
    setup.filter = Save_Filter;
    setup.default_ext = "rtf";
    setup.initial_dir = app_.files.CurrentDataDir;
    setup.confirm_overwrite = true;
    const std::string log_name = hooks_.Log_File_Name ? hooks_.Log_File_Name() : std::string();
    const std::string base =
        showing_log_ && !log_name.empty() ? Stem(log_name) : Stem(app_.program.Settings_File_Name);
    setup.initial_name = (base.empty() ? std::string("Settings") : base) + "_summary.rtf";
    auto picked = hooks_.Dialogs().Pick_Save_File(setup);
    if (!picked) return;
    Save_File(picked->full_name);
}

bool QX_Setting_Summary::Save_File(const std::string& path) {
    Proc_Guard guard(app_.log, "Save File");
    bool saved = false;
    guard.Step([&] {
        Replace_File_Atomically(path, Text_To_Rtf(Shown_Text()));
        saved = true;
    });
    return saved;
}

void QX_Setting_Summary::Print_Click() {
    QPrinter printer(QPrinter::HighResolution);
    QPrintDialog dialog(&printer, this);
    dialog.setObjectName("Print_dialog");
    if (dialog.exec() != QDialog::Accepted) return;
    Print_To(printer);
}

void QX_Setting_Summary::Print_To(QPagedPaintDevice& device) {
    Proc_Guard guard(app_.log, "Print Click");
    guard.Step([&] { Print_Text(device, Shown_Text()); });
}

} // namespace quorlen::ui
