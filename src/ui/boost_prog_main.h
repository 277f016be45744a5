#pragma once
// The main window and the one controller of the program: it owns the program-wide state,
// runs the load order and the two shutdown routes, and hosts the child forms.

#include "app/app_context.h"
#include "cards/card_context.h"
#include "files/settings_files.h"
#include "link/command_link.h"
#include "link/settings_context.h"
#include "ui/qt_dialogs.h"

#include <QMainWindow>
#include <QPointer>
#include <QUrl>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class QAction;
class QLabel;
class QSettings;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;
class QTimer;

namespace quorlen::ui {

class frmSplash;
class Map_Tabs;
struct Card_Panel;
struct Link_Panel;
struct Rw_Panel;

struct Start_Options {
    std::string app_path;    // resolved before the window is built
    bool unattended = false; // answer questions with their default, show no file dialog
    std::string port;        // a device path that stands in for comport1 in this run
};

class BoostProgMain final : public QMainWindow {
public:
    explicit BoostProgMain(Start_Options options);
    ~BoostProgMain() override;

    App_Context& App() { return app_; }
    User_Dialogs& Dialogs() { return *dialogs_; }
    // Tests put their scripted answers here.
    void Use_Dialogs(User_Dialogs* dialogs) { active_dialogs_ = dialogs; }
    // How a file or a web address is handed to the desktop; tests catch it here.
    void Use_Url_Opener(std::function<bool(const QUrl&)> open) { open_url_ = std::move(open); }

    void Form_Load();
    void Form_Activate();
    void File_exit_Click();
    void File_open_Click();
    void File_save_Click();
    void File_save_as_Click();
    // The list of recent files in the File menu; entry `index` opens its file as File, Open.
    void File_recent_Click(int index);
    std::vector<std::string> Recent_Files() const;
    void edit_undo_Click();
    void edit_redo_Click();
    // Undo and Redo are greyed when they have nothing to do.
    void Undo_Menu_Follows();
    void View_write_debug_Click();
    void Debug_View_Click();
    void Help_Quorlen_Click();
    void Help_wwwlink_Click();
    void Help_About_Click();
    // The manual (Manual_Link beside the program) in the desktop's viewer, or a word on why not.
    void Open_Manual();
    void Show_Prefs();
    // The settings form, on its last tab or on tab `index`.
    void Show_Settings(int index = -1);
    // The sensor viewer and the map size conversion (boost_prog_main_sensors.cpp).
    void mnu_Sensor_Editor_Click();
    void mnu_Transform_3D_Click();
    void Show_Transform_3D(int head); // 0 the fuel map's page, 1 the ignition map's
    // The auto setup guide where it stands, or at `step`.
    void Show_AutoSetup(int step = 0);
    // sstab_Main on `tab`, and the Ignition or Fuel tabs under it on `sub_tab`.
    void Show_Main_Tab(int tab, int sub_tab);

    // Refreshes every view from the image (boost_prog_main_tables.cpp).
    void Update_All();
    // The main window's word on sequential or semi-sequential fuel, from the layout.
    void Show_Fuel_Mode();
    void Update_Tabs();
    void Show_Right_Tabs();
    void Init_Tabs();
    // The analogue inputs take the sensors the image names, and the tables follow.
    void Init_Analog_from_CardByte(App_Context& app);
    void Analog_Follows_Image();
    // The settings form's sliders that depend on a sensor follow a change of sensor.
    void Update_scroll_change();

    // A child form by name, created on first use.
    QWidget* Form(const std::string& name);
    bool Form_Exists(const std::string& name) const;
    // Really closes a form (Closing must be set); one never created is left alone.
    void Unload(const std::string& name);

    // Pushes the texts of the state into the window, and the comment box back.
    void Show_Texts();
    void Take_Comment_From_Window();

    bool Ready() const { return ready_; }

    // The box link (boost_prog_main_link.cpp).
    void Connect_Info_Click();
    void Com_Open_Click();
    void Com_Close_Click();
    void Command2_Click();
    void Check_connection_timer_Timer();
    // Shows the name of the running system.
    void EnumerateList();
    Link_Context Link();

    // Reading, verifying and writing settings, and the box's error codes (boost_prog_main_rw.cpp).
    void Read_Settings_Click();
    void Verify_Settings_Click();
    void Write_Settings_Click();
    void Read_bin_command_cmd_Click();
    void Verify_bR_Settings_Click();
    void Write_bin_command_cmd_Click();
    void Clear_Err_Counters_cmd_Click();

    // The high-speed log window and the crank viewer (boost_prog_main_hslog.cpp).
    void mnu_HS_Log_Click();
    void mnu_CrankView_Click();
    // The viewer follows the layout, setting 18 and the capture on show.
    void Refresh_Crank_View();

    // The Mapchip tab: the card in the box and the card readers (boost_prog_main_cards.cpp).
    void Check_Card_Present_cmd_Click();
    void Read_Card_Inbox_cmd_Click();
    void Write_Card_Inbox_cmd_Click();
    void Chipdrive_Connect_Click();
    void Read_Chipdrive_cmd_Click();
    void Write_Chipdrive_cmd_Click();
    void cmd_FindTodos_Click();
    void cmdReadTodos_Click();
    void cmd_WriteTodos_Click();
    void cmd_DisConnectTodos_Click();
    void SSTab_Communication_Click(int index);
    Card_Context Cards();

    // The log window (boost_prog_main_log.cpp).
    void Open_Log_File(const std::string& path);
    void Stop_Logging_cmd_Click();
    void Log_Autostart(int index);
    double Logged_RPM();
    // The setting summary viewer on the image, or on the settings of the log window's log.
    void Setting_Summary_Click(bool log_settings = false);
    void View_Log_Click();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;

private:
    void Build_Window();
    void Build_Menus();
    void Build_Map_Tabs();
    QWidget* Build_Communication_Tab();
    void Form_Unload();
    void Get_Default_Window_Size();
    void Save_Display_Window_Size();
    void Save_Log_Window_Size();
    void Save_Window_Size(const QWidget& window, const char* key, const char* procedure);
    void Set_Command_Buttons_Enabled(bool enabled);
    Settings_File_Context File_Context();
    void Remember_File(const std::string& full_name);
    void Keep_Recent_Files(const std::vector<std::string>& files);
    void Show_Recent_Files();
    void Dummy_Wait(int milliseconds);
    void Build_Link_Panel();
    void Load_Port_List();
    void Start_Check_connection_timer();
    void Show_Link_State();
    void Prefs_Port_Chosen(bool selected);
    void Start_Logg_cmd_Click(int index);
    void Build_Rw_Panel();
    Settings_Hooks Rw_Hooks();
    void Build_Card_Panel();
    void Show_Card_State();
    void Run_Card_Inbox(void (*procedure)(Settings_Context&, Card_Context&));
    void Todos_Form_Follows();
    QWidget* Make_Todos_Form();
    void Show_Com_Tab();
    void Release_Card_Reader();
    void Run_Settings(void (*procedure)(Settings_Context&));
    void Show_Rw_State();
    QWidget* Make_Log_Window();
    QWidget* Make_HS_Log_Window();
    QWidget* Make_Crank_View();
    QWidget* Make_Sensor_Editor();
    QWidget* Make_Transform_3D();
    // The open sensor viewer and size conversion follow the image.
    void Refresh_Sensor_Forms();
    QWidget* Make_Setting_Summary_Window();
    QWidget* Make_AutoSetup_Form();
    void Build_Auto_Fuel_Tab();
    void Build_Log_Window();
    // The settings form if it has been made, else null.
    class QX_settings* Settings_Form_If_Made();

    App_Context app_;
    Start_Options options_;
    // What a desktop program remembers beyond the ini file (recent files, dialog folders).
    std::unique_ptr<QSettings> memory_;
    std::unique_ptr<Qt_User_Dialogs> dialogs_;
    User_Dialogs* active_dialogs_ = nullptr;
    std::vector<QAction*> recent_actions_;
    QAction* recent_separator_ = nullptr;
    std::function<bool(const QUrl&)> open_url_;
    std::map<std::string, QPointer<QWidget>> forms_;
    std::unique_ptr<frmSplash> splash_;
    bool UpdateBusy_ = false;
    bool ready_ = false;
    bool unloaded_ = false;

    QTabWidget* sstab_Main_ = nullptr;
    QTabWidget* SSTab_Communication_ = nullptr;
    QTabWidget* SSTab_Ignition_ = nullptr;
    QTabWidget* SSTab_Fuel_ = nullptr;
    QTabWidget* SSTab_PWM_ = nullptr;
    Map_Tabs* map_tabs_ = nullptr;
    QLineEdit* rs232_text_ = nullptr;
    QPlainTextEdit* Debug_txt_ = nullptr;
    QPlainTextEdit* Error_Codes_txt_ = nullptr;
    QLabel* ErrCode_label_ = nullptr;
    QPlainTextEdit* txt_File_Description_ = nullptr;
    QLabel* Version_label_ = nullptr;
    QLabel* Label_Comments_ = nullptr;
    QLabel* Label_Notification_ = nullptr;
    QLabel* Fuel_Mode_label_ = nullptr;
    QLabel* CompLogo_ = nullptr;
    QPushButton* Connect_Info_ = nullptr;
    QPushButton* Read_Settings_ = nullptr;
    QPushButton* Verify_Settings_ = nullptr;
    QPushButton* Write_Settings_ = nullptr;
    QPushButton* Com_Open_ = nullptr;
    QPushButton* Com_Close_ = nullptr;
    QPushButton* Stop_Logging_cmd_ = nullptr;
    QLabel* Engine_On_label_ = nullptr;
    QAction* edit_undo_ = nullptr;
    QAction* edit_redo_ = nullptr;
    QAction* Help_wwwlink_ = nullptr;
    QAction* Online_mnu_ = nullptr;
    QAction* Engine_OnOff_mnu_ = nullptr;
    QTimer* Check_connection_timer_ = nullptr;
    std::unique_ptr<Link_Panel> link_;
    std::unique_ptr<Rw_Panel> rw_;
    std::unique_ptr<Card_Panel> cards_;
};

} // namespace quorlen::ui
