#include "ui/boost_prog_main.h"

#include "app/startup.h"
#include "core/app_path.h"
#include "core/identity.h"
#include "core/proc_guard.h"
#include "core/recent_files.h"
#include "core/window_size.h"
#include "tables/cell_entry.h"
#include "tables/undo_list.h"
#include "ui/autoguide_dialog.h"
#include "ui/card_panel.h"
#include "ui/frm_splash.h"
#include "ui/link_panel.h"
#include "ui/map_tabs.h"
#include "ui/qx_3dmap.h"
#include "ui/qx_autosetup_frm.h"
#include "ui/qx_debug.h"
#include "ui/qx_fuel_correction.h"
#include "ui/qx_prefs.h"
#include "ui/qx_rpm.h"
#include "ui/qx_settings.h"
#include "ui/qx_verify_frm.h"
#include "ui/rw_panel.h"
#include "ui/translation.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QSplitter>
#include <QTabWidget>
#include <QThread>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include <filesystem>

#ifndef QUORLEN_VERSION
#define QUORLEN_VERSION "0.0.0"
#endif

namespace quorlen::ui {

namespace {

const char* const Comment_Text = "Settings, maps and logs for the RZ400 and RZ800M3 engine management boxes";

// The unload orders of the two shutdown routes. Forms of later windows are named already;
// unloading one that was never made does nothing.
const char* const Exit_Menu_Order[] = {
    "QX_3Dmap",    "QX_3D_MAP",    "QX_AutoSetup_frm", "QX_Debug", "QX_Fuel_Correction", "QX_Log",
    "QX_Log_HS",   "QX_Log_Setup", "QX_prefs",         "QX_RPM",   "QX_Sensor_Editor",   "QX_Setting_Summary",
    "QX_settings", "frm_TodosII",  "BoostProgMain",    "Display"};
const char* const Unload_Order[] = {"Autoguide_startup_Dialog",
                                    "QX_3D_MAP",
                                    "QX_3Dmap",
                                    "QX_AutoSetup_frm",
                                    "QX_CrankView",
                                    "QX_Debug",
                                    "QX_Fuel_Correction",
                                    "QX_Log",
                                    "QX_Log_HS",
                                    "QX_Log_Setup",
                                    "QX_prefs",
                                    "QX_RPM",
                                    "QX_Sensor_Editor",
                                    "QX_Setting_Summary",
                                    "QX_settings",
                                    "QX_Verify_frm",
                                    "frm_TodosII",
                                    "Display",
                                    "QX_Transform_3D",
                                    "GForce_frm",
                                    "frmSplash"};

QString Crlf_To_Lf(const std::string& text) {
    QString shown = From_8bit(text);
    shown.replace("\r\n", "\n");
    return shown;
}

QPlainTextEdit* Text_Box(QWidget* parent, const char* name, bool read_only) {
    auto* box = new QPlainTextEdit(parent);
    box->setObjectName(name);
    box->setReadOnly(read_only);
    box->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    return box;
}

QTabWidget* Tabs(QWidget* parent, const char* name, std::initializer_list<const char*> captions) {
    auto* tabs = new QTabWidget(parent);
    tabs->setObjectName(name);
    int index = 0;
    for (const char* caption : captions) {
        auto* page = new QWidget(tabs);
        page->setObjectName(QStringLiteral("%1_page%2").arg(name).arg(index++));
        tabs->addTab(page, caption);
    }
    return tabs;
}

} // namespace

BoostProgMain::BoostProgMain(Start_Options options) : options_(std::move(options)) {
    setObjectName("BoostProgMain");
    app_.program.App_Path = options_.app_path;
    // Beside the ini file, so a portable copy keeps it and a test's folder is its own.
    memory_ = std::make_unique<QSettings>(QString::fromStdString(app_.program.App_Path) + "quorlen.conf",
                                          QSettings::IniFormat);
    dialogs_ = std::make_unique<Qt_User_Dialogs>(this, "Quorlen");
    dialogs_->Set_Unattended(options_.unattended);
    dialogs_->Remember_Folders_In(memory_.get());
    active_dialogs_ = dialogs_.get();
    open_url_ = [](const QUrl& url) { return QDesktopServices::openUrl(url); };
    Build_Window();
}

BoostProgMain::~BoostProgMain() {
    // The child windows read the program's state to their last moment (a running log is ended
    // on the way out): they go while it is still there, not after it with the widget tree.
    for (auto& [name, form] : forms_)
        delete form.data();
}

// --- window structure -------------------------------------------------------------------

void BoostProgMain::Build_Menus() {
    auto action = [this](QMenu* menu, const char* name, const QString& caption, auto slot,
                         QKeySequence keys = {}) {
        QAction* a = menu->addAction(caption);
        a->setObjectName(name);
        if (!keys.isEmpty()) a->setShortcut(keys);
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    QMenu* file = menuBar()->addMenu("&File");
    file->setObjectName("File_menu");
    action(file, "File_open", "&Open...", &BoostProgMain::File_open_Click, QKeySequence::Open);
    action(file, "File_save", "&Save", &BoostProgMain::File_save_Click, QKeySequence::Save);
    action(file, "File_save_as", "Save &As...", &BoostProgMain::File_save_as_Click, QKeySequence::SaveAs);
    file->addSeparator();
    for (std::size_t i = 0; i < Recent_Files_Kept; ++i) {
        QAction* recent = file->addAction(QString());
        recent->setObjectName(QStringLiteral("File_recent(%1)").arg(i));
        recent->setVisible(false);
        connect(recent, &QAction::triggered, this, [this, i] { File_recent_Click(static_cast<int>(i)); });
        recent_actions_.push_back(recent);
    }
    recent_separator_ = file->addSeparator();
    Show_Recent_Files();
    action(file, "File_exit", "E&xit", &BoostProgMain::File_exit_Click, QKeySequence::Quit);

    QMenu* edit = menuBar()->addMenu("&Edit");
    edit->setObjectName("Edit_menu");
    edit_undo_ = action(edit, "edit_undo", "&Undo", &BoostProgMain::edit_undo_Click, QKeySequence::Undo);
    edit_redo_ = action(edit, "edit_redo", "&Redo", &BoostProgMain::edit_redo_Click, QKeySequence::Redo);
    // Also when the menu opens: an edit elsewhere may have changed what they can do.
    connect(edit, &QMenu::aboutToShow, this, &BoostProgMain::Undo_Menu_Follows);

    QMenu* settings = menuBar()->addMenu("&Settings");
    settings->setObjectName("Settings_menu");
    action(settings, "mnu_Settings", "&Engine settings...", [this] { Show_Settings(); });
    action(settings, "mnu_AutoSetup", "&Auto Setup...", [this] { Show_AutoSetup(); });
    action(settings, "mnu_Prefs", "&PC settings...", &BoostProgMain::Show_Prefs);
    settings->addSeparator();
    action(settings, "mnu_Sensor_Editor", "&Sensor viewer...", &BoostProgMain::mnu_Sensor_Editor_Click);
    action(settings, "mnu_Transform_3D", "&Map size conversion...", &BoostProgMain::mnu_Transform_3D_Click);

    QMenu* view = menuBar()->addMenu("&View");
    view->setObjectName("View_menu");
    action(view, "View_write_debug", "&Communication report", &BoostProgMain::View_write_debug_Click);
    action(view, "Debug_View", "&Debug view...", &BoostProgMain::Debug_View_Click);
    action(view, "Setting_Summary", "&Setting summary...", [this] { Setting_Summary_Click(false); });
    action(view, "View_Log", "&Log window...", &BoostProgMain::View_Log_Click);
    view->addSeparator();
    action(view, "mnu_HS_Log", "&High speed logging...", &BoostProgMain::mnu_HS_Log_Click);
    action(view, "mnu_CrankView", "&Crank wheel...", &BoostProgMain::mnu_CrankView_Click);

    // Connection state and engine state are shown as menu captions, as tuners know them.
    Online_mnu_ = menuBar()->addAction("Offline");
    Online_mnu_->setObjectName("Online_mnu");
    Online_mnu_->setEnabled(false);
    Engine_OnOff_mnu_ = menuBar()->addAction("Engine off");
    Engine_OnOff_mnu_->setObjectName("Engine_OnOff_mnu");
    Engine_OnOff_mnu_->setEnabled(false);

    QMenu* help = menuBar()->addMenu("&Help");
    help->setObjectName("Help_menu");
    action(help, "Help_Quorlen", "&Manual", &BoostProgMain::Help_Quorlen_Click, QKeySequence::HelpContents);
    Help_wwwlink_ = action(help, "Help_wwwlink", "Goto", &BoostProgMain::Help_wwwlink_Click);
    action(help, "Help_About", "&About", &BoostProgMain::Help_About_Click);
}

QWidget* BoostProgMain::Build_Communication_Tab() {
    auto* page = new QWidget;
    page->setObjectName("sstab_Main_page0");
    auto* layout = new QVBoxLayout(page);

    SSTab_Communication_ = new QTabWidget(page);
    SSTab_Communication_->setObjectName("SSTab_Communication");
    auto* box = new QWidget(SSTab_Communication_);
    box->setObjectName("Box_Communication");
    auto* mapchip = new QWidget(SSTab_Communication_);
    mapchip->setObjectName("Mapchip_Communication");
    SSTab_Communication_->addTab(box, "RZ-box");
    SSTab_Communication_->addTab(mapchip, "Mapchip");
    connect(SSTab_Communication_, &QTabWidget::tabBarClicked, this, [this](int index) {
        if (QWidget* tab = SSTab_Communication_->widget(index))
            app_.ini.Write_Ini("Default_Com_interface", tab->objectName().toStdString());
    });

    auto* box_layout = new QGridLayout(box);
    auto button = [&](const char* name, const char* caption, int row, int col) {
        auto* b = new QPushButton(caption, box);
        b->setObjectName(name);
        b->setMinimumWidth(120);
        box_layout->addWidget(b, row, col);
        return b;
    };
    Connect_Info_ = button("Connect_Info", "Connect info", 0, 0);
    Read_Settings_ = button("Read_Settings", "Read", 0, 1);
    Verify_Settings_ = button("Verify_Settings", "Verify", 0, 2);
    Write_Settings_ = button("Write_Settings", "Write", 0, 3);
    Com_Open_ = button("Com_Open", "Open port", 1, 0);
    Com_Close_ = button("Com_Close", "Close port", 1, 1);
    Stop_Logging_cmd_ = button("Stop_Logging_cmd", "START LOGGING", 1, 3);
    // How long the engine has run, as a binary log tells it.
    Engine_On_label_ = new QLabel(box);
    Engine_On_label_->setObjectName("Engine_On_label");
    box_layout->addWidget(Engine_On_label_, 1, 4);
    box_layout->setColumnStretch(5, 1);
    // The box commands stay disabled until the load has finished.
    Set_Command_Buttons_Enabled(false);
    Stop_Logging_cmd_->setEnabled(false);

    rs232_text_ = new QLineEdit(page);
    rs232_text_->setObjectName("rs232_text");
    rs232_text_->setReadOnly(true);

    ErrCode_label_ = new QLabel("Box error codes", page);
    ErrCode_label_->setObjectName("ErrCode_label");
    ErrCode_label_->setVisible(false);
    Error_Codes_txt_ = Text_Box(page, "Error_Codes_txt", true);
    Error_Codes_txt_->setVisible(false);
    Debug_txt_ = Text_Box(page, "Debug_txt", true);

    auto* comment_box = new QGroupBox("Settings free text comment", page);
    comment_box->setObjectName("File_Description_frame");
    auto* comment_layout = new QVBoxLayout(comment_box);
    txt_File_Description_ = new QPlainTextEdit(comment_box);
    txt_File_Description_->setObjectName("txt_File_Description");
    txt_File_Description_->setMaximumHeight(90);
    comment_layout->addWidget(txt_File_Description_);

    layout->addWidget(SSTab_Communication_);
    layout->addWidget(rs232_text_);
    layout->addWidget(ErrCode_label_);
    layout->addWidget(Error_Codes_txt_, 1);
    layout->addWidget(Debug_txt_, 3);
    layout->addWidget(comment_box);
    return page;
}

void BoostProgMain::Build_Window() {
    Build_Menus();
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);

    auto* header = new QHBoxLayout;
    CompLogo_ = new QLabel("VELMORA", central);
    CompLogo_->setObjectName("CompLogo");
    QFont logo = CompLogo_->font();
    logo.setBold(true);
    logo.setPointSize(logo.pointSize() + 6);
    CompLogo_->setFont(logo);
    auto* second_logo = new QLabel(central);
    second_logo->setObjectName("CompLogo2");
    second_logo->setVisible(false);
    Label_Comments_ = new QLabel(central);
    Label_Comments_->setObjectName("Label_Comments");
    Version_label_ = new QLabel(central);
    Version_label_->setObjectName("Version_label");
    header->addWidget(CompLogo_);
    header->addSpacing(16);
    header->addWidget(Label_Comments_, 1);
    // Semi-sequential fuel is called out where the tuner looks first.
    Fuel_Mode_label_ = new QLabel(central);
    Fuel_Mode_label_->setObjectName("Fuel_Mode_label");
    Fuel_Mode_label_->setAlignment(Qt::AlignCenter);
    header->addWidget(Fuel_Mode_label_);
    header->addSpacing(16);
    header->addWidget(Version_label_);
    layout->addLayout(header);

    Label_Notification_ = new QLabel(central);
    Label_Notification_->setObjectName("Label_Notification");
    Label_Notification_->setVisible(false);
    layout->addWidget(Label_Notification_);

    sstab_Main_ = new QTabWidget(central);
    sstab_Main_->setObjectName("sstab_Main");
    sstab_Main_->addTab(Build_Communication_Tab(), "Communication");
    SSTab_Ignition_ =
        Tabs(sstab_Main_, "SSTab_Ignition",
             {"Ignition main 3D map", "1st Ignition compensation", "2nd Ignition compensation"});
    SSTab_Fuel_ = Tabs(sstab_Main_, "SSTab_Fuel",
                       {"Fuel main 3D map", "2nd Fuel MAP", "2nd Fuel RPM", "3rd Fuel", "AFR Control",
                        "Cylinder trim", "Auto fuel"});
    SSTab_PWM_ = Tabs(sstab_Main_, "SSTab_PWM", {"PWM 1", "PWM1 comp.", "PWM 2", "PWM 3", "PWM 4"});
    Build_Map_Tabs();
    Build_Auto_Fuel_Tab();
    sstab_Main_->addTab(SSTab_Ignition_, "Ignition");
    sstab_Main_->addTab(SSTab_Fuel_, "Fuel");
    sstab_Main_->addTab(SSTab_PWM_, "PWM");
    layout->addWidget(sstab_Main_, 1);
    setCentralWidget(central);

    Check_connection_timer_ = new QTimer(this);
    Check_connection_timer_->setObjectName("Check_connection_timer");
    Check_connection_timer_->setInterval(1500);
    Build_Link_Panel();
    Build_Rw_Panel();
    Build_Card_Panel();

    connect(sstab_Main_, &QTabWidget::currentChanged, this, &BoostProgMain::Show_Right_Tabs);
    resize(1100, 760);
}

void BoostProgMain::Set_Command_Buttons_Enabled(bool enabled) {
    for (QPushButton* b : {Verify_Settings_, Connect_Info_, Read_Settings_, Write_Settings_})
        b->setEnabled(enabled);
}

// --- start-up ---------------------------------------------------------------------------

void BoostProgMain::Dummy_Wait(int milliseconds) {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < milliseconds) {
        QApplication::processEvents(QEventLoop::AllEvents, milliseconds);
        QThread::msleep(2);
    }
}

void BoostProgMain::Form_Load() {
    App_Context& app = app_;
    Proc_Guard guard(app.log, "BostProgMain Form Load");
    const QString version = QStringLiteral(QUORLEN_VERSION);

    guard.Step([&] { Init_Debug_File(app.log, app.program.App_Path); });
    guard.Step([&] { app.program.ComSpeed = 115200; });
    guard.Step([&] {
        splash_ = std::make_unique<frmSplash>("RZ400/RZ800M3 Interface Software", "Version " + version,
                                              Comment_Text);
        splash_->show();
        app.program.Starting_Up = true;
        Dummy_Wait(50);
    });
    guard.Step([&] {
        app.link.Connection_Check_Busy = false;
        app.link.Connect_Info_Busy = false;
    });
    guard.Step([&] { Load_Port_List(); });
    guard.Step([&] {
        show();
        Label_Comments_->setText(Comment_Text);
        Version_label_->setText(QString::fromStdString(Version_Label_Text(version.toStdString())));
    });
    guard.Step([&] {
        app.program.Brand_Variant = 0;
        app.program.Product_Variant = 2;
        Set_Program_Identity(app.program, app.program.Brand_Variant);
        SSTab_Communication_->setTabText(0, QString::fromStdString(app.program.Comm_Tab0_Caption));
        SSTab_Communication_->setTabText(1, QString::fromStdString(app.program.Comm_Tab1_Caption));
        Help_wwwlink_->setText(QString::fromStdString(app.program.Help_wwwlink_Caption));
        CompLogo_->setVisible(true);
        app.Use_App_Path(app.program.App_Path);
    });
    guard.Step(
        [&] { interface_option_Click(app, Interface_Option_For(app.ini.Read_Ini("Default_interface"))); });
    guard.Step([&] {
        Read_Language_And_Autoguide(app);
        Use_Language(app.program.Language);
    });
    guard.Step([&] { app.program.Program_Version = version.toStdString(); });
    guard.Step([&] { app.Use_App_Path(With_One_Trailing_Slash(app.program.App_Path)); });
    guard.Step([&] {
        Com_Open_->setEnabled(true);
        Com_Close_->setEnabled(false);
    });
    guard.Step([&] { Init_ini_file(app); });
    // User presets are read by Init_ini_file; their page joins with the settings pages.
    guard.Step([&] { Init_Cardbyte(app.image, app.log); });
    guard.Step([&] { Init_Analog_from_CardByte(app); });
    guard.Step([&] {
        Init_Tabs();
        Update_All();
    });
    guard.Step([&] {
        for (QTabWidget* tabs : {sstab_Main_, SSTab_Fuel_, SSTab_Ignition_, SSTab_PWM_, SSTab_Communication_})
            tabs->setCurrentIndex(0);
    });
    guard.Step([&] { Show_Right_Tabs(); });
    guard.Step([&] {
        app.files.OpenDefaultNow = true;
        File_open_Click();
        app.files.OpenDefaultNow = false;
        // The tuner's work starts from the image the program came up with.
        Clear_Undo_List(app.undo);
    });
    guard.Step([&] {
        app.program.Settings_File_Name = "New1.qxs";
        app.texts.Title = app.program.Program_Title + app.program.Settings_File_Name;
        Show_Texts();
        Update_All();
    });
    guard.Step([&] { Build_Log_Window(); });
    guard.Step([&] { static_cast<QX_prefs*>(Form("QX_prefs"))->Init_From_State(); });
    guard.Step([&] { Read_Link_And_Autostart(app); });
    guard.Step([&] { Get_Default_Window_Size(); });
    guard.Step([&] {
        splash_->hide();
        splash_.reset();
        app.program.Starting_Up = false;
    });
    guard.Step([&] {
        Set_Command_Buttons_Enabled(true);
        Stop_Logging_cmd_->setEnabled(true);
    });
    guard.Step([&] { Start_Check_connection_timer(); });
    guard.Finish();
    ready_ = true;
}

void BoostProgMain::Form_Activate() {
    // An activation that arrives after a shutdown began must not bring up a window that
    // would then keep the program alive.
    if (app_.program.Autoguide != 1 || app_.program.Closing) return;
    QWidget* dialog = Form("Autoguide_startup_Dialog");
    dialog->show();
    dialog->raise();
    app_.program.Autoguide = 0;
}

bool BoostProgMain::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate && ready_) Form_Activate();
    return QMainWindow::event(event);
}

void BoostProgMain::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
}

// --- child forms ------------------------------------------------------------------------

bool BoostProgMain::Form_Exists(const std::string& name) const {
    auto it = forms_.find(name);
    return it != forms_.end() && !it->second.isNull();
}

QWidget* BoostProgMain::Form(const std::string& name) {
    if (Form_Exists(name)) return forms_[name];
    QWidget* form = nullptr;
    if (name == "QX_prefs") {
        form = new QX_prefs(
            app_, this, [this] { Update_All(); }, [this](bool found) { Prefs_Port_Chosen(found); });
    } else if (name == "QX_Debug") {
        form = new QX_Debug(app_, this);
    } else if (name == "QX_3Dmap" || name == "QX_Verify_frm") {
        auto dialogs = [this]() -> User_Dialogs& { return *active_dialogs_; };
        if (name == "QX_3Dmap")
            form = new QX_3Dmap(app_, dialogs, this);
        else
            form = new QX_Verify_frm(app_, dialogs, this);
    } else if (name == "QX_settings") {
        QX_settings_Hooks hooks;
        hooks.Dialogs = [this]() -> User_Dialogs& { return *active_dialogs_; };
        hooks.Update_All = [this] { Update_All(); };
        hooks.Update_Tabs = [this] { Update_Tabs(); };
        hooks.Show_Right_Tabs = [this] { Show_Right_Tabs(); };
        hooks.Clear_Err_Counters = [this] { Clear_Err_Counters_cmd_Click(); };
        hooks.Show_Transform_3D = [this](int head) { Show_Transform_3D(head); };
        form = new QX_settings(app_, std::move(hooks), this);
    } else if (name == "QX_Log") {
        form = Make_Log_Window();
    } else if (name == "QX_Log_HS") {
        form = Make_HS_Log_Window();
    } else if (name == "QX_CrankView") {
        form = Make_Crank_View();
    } else if (name == "QX_Setting_Summary") {
        form = Make_Setting_Summary_Window();
    } else if (name == "QX_Fuel_Correction") {
        Fuel_Correction_Hooks hooks;
        hooks.Dialogs = [this]() -> User_Dialogs& { return *active_dialogs_; };
        hooks.Update_All = [this] { Update_All(); };
        form = new QX_Fuel_Correction(app_, std::move(hooks), this);
    } else if (name == "QX_RPM") {
        form = new QX_RPM(
            app_, [this]() -> User_Dialogs& { return *active_dialogs_; }, this);
    } else if (name == "frm_TodosII") {
        form = Make_Todos_Form();
    } else if (name == "QX_Sensor_Editor") {
        form = Make_Sensor_Editor();
    } else if (name == "QX_Transform_3D") {
        form = Make_Transform_3D();
    } else if (name == "QX_AutoSetup_frm") {
        form = Make_AutoSetup_Form();
    } else if (name == "Autoguide_startup_Dialog") {
        form = new Autoguide_startup_Dialog(
            app_, this, [this] { Show_AutoSetup(); },
            [this](int index) {
                Autoguide_Click(app_, index);
                if (Form_Exists("QX_prefs"))
                    static_cast<QX_prefs*>(forms_["QX_prefs"].data())->Init_From_State();
            });
    }
    if (form != nullptr) forms_[name] = form;
    return form;
}

void BoostProgMain::Unload(const std::string& name) {
    if (name == "BoostProgMain") {
        close();
        return;
    }
    if (name == "frmSplash") {
        splash_.reset();
        return;
    }
    if (!Form_Exists(name)) return;
    // Both shutdown routes unload the log window before the main form: its size is kept
    // while it still has one.
    if (name == "QX_Log") Save_Log_Window_Size();
    QPointer<QWidget> form = forms_[name];
    form->close();
    delete form.data();
    forms_.erase(name);
}

// --- shutdown ---------------------------------------------------------------------------

void BoostProgMain::File_exit_Click() {
    app_.program.Closing = true;
    for (const char* name : Exit_Menu_Order)
        Unload(name);
}

void BoostProgMain::closeEvent(QCloseEvent* event) {
    Form_Unload();
    event->accept();
}

void BoostProgMain::Form_Unload() {
    if (unloaded_) return;
    unloaded_ = true;
    Save_Display_Window_Size();
    app_.program.Closing = true;
    Label_Notification_->setText("Remove Mapchip from reader to close the program");
    Label_Notification_->setVisible(true);
    Check_connection_timer_->stop();
    for (const char* name : Unload_Order)
        Unload(name);
    // The card goes back to the reader reset, its PIN no longer presented.
    Release_Card_Reader();
    app_.log.Close();
}

namespace {

// The ini keeps the window's inner place and size, and the window is put back by exactly
// those: the frame is the window manager's, unknown before the window is shown, and a place
// that counted it would move the window by the frame's size at every start.
void Apply_Window_Size(QWidget* window, const std::string& saved_value) {
    auto saved = Parse_Window_Size(saved_value);
    if (!saved || window == nullptr) return;
    QPoint corner(saved->left / Twips_Per_Pixel, saved->top / Twips_Per_Pixel);
    // A window saved on a screen that is gone (the laptop left its desk) comes up on this one.
    if (QGuiApplication::screenAt(corner + QPoint(20, 20)) == nullptr) {
        if (const QScreen* screen = QGuiApplication::primaryScreen())
            corner = screen->availableGeometry().topLeft() + QPoint(40, 40);
    }
    QSize size = window->size();
    if (saved->width > 0 && saved->height > 0)
        size = QSize(saved->width / Twips_Per_Pixel, saved->height / Twips_Per_Pixel);
    window->setGeometry(QRect(corner, size));
    if (saved->state == 2) window->setWindowState(window->windowState() | Qt::WindowMaximized);
}

Window_Size Current_Window_Size(const QWidget& window) {
    Window_Size current;
    current.state = window.isMinimized() ? 1 : window.isMaximized() ? 2 : 0;
    const QRect g = window.normalGeometry().isValid() ? window.normalGeometry() : window.geometry();
    current.width = g.width() * Twips_Per_Pixel;
    current.height = g.height() * Twips_Per_Pixel;
    current.left = g.x() * Twips_Per_Pixel;
    current.top = g.y() * Twips_Per_Pixel;
    return current;
}

} // namespace

void BoostProgMain::Get_Default_Window_Size() {
    Apply_Window_Size(this, app_.ini.Read_Ini("Main_Window_Size"));
    // The live display joins here with its own key when it lands.
    if (Form_Exists("QX_Log")) Apply_Window_Size(Form("QX_Log"), app_.ini.Read_Ini("Log_Window_Size"));
}

void BoostProgMain::Save_Window_Size(const QWidget& window, const char* key, const char* procedure) {
    Proc_Guard guard(app_.log, procedure);
    guard.Step([&] {
        auto value = Window_Size_To_Save(Current_Window_Size(window), app_.ini.Read_Ini(key));
        if (value) app_.ini.Write_Ini(key, *value);
    });
}

void BoostProgMain::Save_Display_Window_Size() {
    Save_Window_Size(*this, "Main_Window_Size", "Save display window size");
}

void BoostProgMain::Save_Log_Window_Size() {
    if (Form_Exists("QX_Log")) Save_Window_Size(*Form("QX_Log"), "Log_Window_Size", "Save log window size");
}

// --- views ------------------------------------------------------------------------------

// Update_All, Update_Tabs, Init_Tabs and Show_Right_Tabs: boost_prog_main_tables.cpp.

void BoostProgMain::Show_Texts() {
    setWindowTitle(From_8bit(app_.texts.Title));
    rs232_text_->setText(From_8bit(app_.texts.rs232_text));
    Debug_txt_->setPlainText(Crlf_To_Lf(app_.texts.Debug_txt));
    Error_Codes_txt_->setPlainText(Crlf_To_Lf(app_.texts.Error_Codes_txt));
    txt_File_Description_->setPlainText(Crlf_To_Lf(app_.texts.txt_File_Description));
}

void BoostProgMain::Take_Comment_From_Window() {
    QString text = txt_File_Description_->toPlainText();
    text.replace("\n", "\r\n");
    app_.texts.txt_File_Description = To_8bit(text);
}

// --- menu commands ----------------------------------------------------------------------

Settings_File_Context BoostProgMain::File_Context() {
    Settings_File_Hooks hooks;
    hooks.Update_All = [this] { Update_All(); };
    hooks.Update_Tabs = [this] { Update_Tabs(); };
    hooks.AN_Combo_Click = [this] { Analog_Follows_Image(); };
    hooks.Open_Log_File = [this](const std::string& name) { Open_Log_File(name); };
    hooks.Remember_File = [this](const std::string& name) { Remember_File(name); };
    return Settings_File_Context{app_.program, app_.texts, app_.files,       app_.image,      app_.undo,
                                 app_.ini,     app_.log,   *active_dialogs_, std::move(hooks)};
}

void BoostProgMain::File_open_Click() {
    Take_Comment_From_Window();
    Settings_File_Context ctx = File_Context();
    quorlen::File_open_Click(ctx);
    Show_Texts();
}

void BoostProgMain::File_save_Click() {
    Take_Comment_From_Window();
    Settings_File_Context ctx = File_Context();
    quorlen::File_save_Click(ctx);
    Show_Texts();
}

void BoostProgMain::File_save_as_Click() {
    Take_Comment_From_Window();
    Settings_File_Context ctx = File_Context();
    quorlen::File_save_as_Click(ctx);
    Show_Texts();
}

std::vector<std::string> BoostProgMain::Recent_Files() const {
    std::vector<std::string> files;
    for (const QString& file : memory_->value("Recent/files").toStringList())
        files.push_back(file.toStdString());
    return files;
}

void BoostProgMain::Keep_Recent_Files(const std::vector<std::string>& files) {
    QStringList kept;
    for (const std::string& file : files)
        kept << QString::fromStdString(file);
    memory_->setValue("Recent/files", kept);
    Show_Recent_Files();
}

void BoostProgMain::Remember_File(const std::string& full_name) {
    const std::string path = QFileInfo(QString::fromStdString(full_name)).absoluteFilePath().toStdString();
    Keep_Recent_Files(Push_Recent(Recent_Files(), path));
}

void BoostProgMain::Show_Recent_Files() {
    const std::vector<std::string> files = Recent_Files();
    for (std::size_t i = 0; i < recent_actions_.size(); ++i) {
        QAction* action = recent_actions_[i];
        action->setVisible(i < files.size());
        if (i >= files.size()) continue;
        action->setText(QString::fromStdString(Recent_Menu_Text(i, files[i])));
        action->setToolTip(QString::fromStdString(files[i]));
        action->setStatusTip(QString::fromStdString(files[i]));
    }
    if (recent_separator_ != nullptr) recent_separator_->setVisible(!files.empty());
}

void BoostProgMain::File_recent_Click(int index) {
    std::vector<std::string> files = Recent_Files();
    if (index < 0 || static_cast<std::size_t>(index) >= files.size()) return;
    const std::string path = files[static_cast<std::size_t>(index)];
    if (!QFileInfo(QString::fromStdString(path)).isFile()) {
        // A file moved or deleted since: say so and take it off the list.
        active_dialogs_->Inform(path + " is not there any more");
        files.erase(files.begin() + index);
        Keep_Recent_Files(files);
        return;
    }
    Take_Comment_From_Window();
    Settings_File_Context ctx = File_Context();
    quorlen::File_open_Named(ctx, path);
    Show_Texts();
}

// After a step back or forth the next digit starts a new number, as after a move of the
// cursor: it must not go on with a number the image no longer shows. The step may bring back
// another sensor on an input or another load on a map, so the inputs and the tabs follow the
// image before the maps are drawn through them.
void BoostProgMain::edit_undo_Click() {
    quorlen::edit_undo_Click(app_.undo, app_.image, [this] { Analog_Follows_Image(); });
    Grid_RowColChange(app_.tables);
    Undo_Menu_Follows();
}

void BoostProgMain::edit_redo_Click() {
    quorlen::edit_redo_Click(app_.undo, app_.image, [this] { Analog_Follows_Image(); });
    Grid_RowColChange(app_.tables);
    Undo_Menu_Follows();
}

void BoostProgMain::Undo_Menu_Follows() {
    if (edit_undo_ != nullptr) edit_undo_->setEnabled(Can_Undo(app_.undo, app_.image));
    if (edit_redo_ != nullptr) edit_redo_->setEnabled(Can_Redo(app_.undo, app_.image));
}

void BoostProgMain::View_write_debug_Click() {
    bool show = !Debug_txt_->isVisible();
    Debug_txt_->setVisible(show);
}

void BoostProgMain::Debug_View_Click() {
    QWidget* form = Form("QX_Debug");
    form->show();
    form->raise();
}

void BoostProgMain::Show_Prefs() {
    QWidget* form = Form("QX_prefs");
    form->show();
    form->raise();
}

void BoostProgMain::Show_Settings(int index) {
    static_cast<QX_settings*>(Form("QX_settings"))->Show_Tab(index);
}

void BoostProgMain::Help_Quorlen_Click() {
    Open_Manual();
}

void BoostProgMain::Open_Manual() {
    const std::string path = app_.program.App_Path + app_.program.Manual_Link;
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) {
        active_dialogs_->Inform("The manual is not where the program looks for it:\n" + path);
        return;
    }
    if (!open_url_(QUrl::fromLocalFile(QString::fromStdString(path))))
        active_dialogs_->Inform("The desktop has no viewer for the manual:\n" + path);
}

void BoostProgMain::Help_wwwlink_Click() {
    open_url_(QUrl(QString::fromStdString(app_.program.Web_Link)));
}

void BoostProgMain::Help_About_Click() {
    QMessageBox::about(this, "About",
                       QString::fromStdString(app_.program.Product_Title) + "\nVersion " +
                           QString::fromStdString(app_.program.Program_Version) + "\n\nby " +
                           QString::fromStdString(app_.program.Company_Line));
}

} // namespace quorlen::ui
