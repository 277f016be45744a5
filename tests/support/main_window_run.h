#pragma once
// The main window started on a test's own program folder, the way the program starts it.

#include "core/user_dialogs.h"
#include "support/temp_dir.h"
#include "ui/boost_prog_main.h"

#include <initializer_list>
#include <memory>
#include <string>

namespace quorlen::test {

inline constexpr std::initializer_list<const char*> Shipped_Settings = {"RZ400_800M3.ini",
                                                                        "RZ400_800M3_Default_Settings.qxs"};

#ifdef QUORLEN_DATA_DIR
// Copies shipped data files into the program folder of a test.
inline void Copy_Shipped_Data(const Temp_Dir& dir,
                              std::initializer_list<const char*> names = Shipped_Settings) {
    for (const char* name : names)
        Write_File(dir.File(name), Read_File(std::string(QUORLEN_DATA_DIR) + "/" + name));
}
#endif

inline ui::Start_Options Unattended() {
    ui::Start_Options options;
    options.unattended = true;
    return options;
}

inline ui::Start_Options On_Port(const std::string& port) {
    ui::Start_Options options;
    options.port = port;
    return options;
}

// Builds the main window on `dir`, answers its questions from `dialogs`, and runs the load.
inline std::unique_ptr<ui::BoostProgMain> Start_Main_Window(const Temp_Dir& dir, User_Dialogs& dialogs,
                                                            ui::Start_Options options = {}) {
    options.app_path = dir.Slash();
    auto window = std::make_unique<ui::BoostProgMain>(options);
    window->Use_Dialogs(&dialogs);
    window->Form_Load();
    return window;
}

} // namespace quorlen::test
