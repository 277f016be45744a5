#pragma once
// A log window without a window: the state, a context around it, a scripted person, a fake
// clock and a serial line the test feeds by hand.

#include "logging/log_context.h"
#include "logging/log_file.h"
#include "logging/log_signals.h"
#include "support/fake_line.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"

#include <memory>
#include <string>
#include <vector>

namespace quorlen::test {

class Log_Fixture {
public:
    Log_Fixture() : state(std::make_unique<Log_State>()) {
        program.App_Path = dir.Slash();
        program.Program_Title = "VELMORA RZ400/RZ800M3 Interface Software - ";
        image.DatasetID = 200;
        debug.Open(dir.File("Debug_file.log"));
        hooks.Now = [this] { return clock; };
        hooks.Date_Text = [] { return std::string("2024-05-31"); };
        hooks.Time_Text = [] { return std::string("14:03:59"); };
        hooks.Dummy_Wait = [this] { clock += 0.05; };
    }

    Log_Context Ctx() {
        Log_Context c{*state, image, program, texts, flags, debug, dialogs, &line, "/dev/ttyFAKE", hooks};
        return c;
    }

    // The program's defaults, then the shipped default log settings when `shipped`.
    void Load_Defaults(bool shipped = true) {
        if (shipped) Write_File(dir.File(Default_Log_Settings_File_Name), Read_File(Shipped_Default_File()));
        auto c = Ctx();
        Load_Log_Defaults(c);
    }

    static std::string Shipped_Default_File() {
        return std::string(QUORLEN_DATA_DIR) + "/" + Default_Log_Settings_File_Name;
    }

    std::string Debug_Text() {
        debug.Close();
        std::string text = Read_File(dir.File("Debug_file.log"));
        debug.Open(dir.File("Debug_file.log"));
        return text;
    }

    Temp_Dir dir;
    std::unique_ptr<Log_State> state; // big: the two arrays of 7001 rows
    Settings_Image image;
    Program_State program;
    Form_Texts texts;
    Link_Flags flags;
    Debug_Log debug;
    Scripted_Dialogs dialogs;
    Fake_Line line;
    Log_Hooks hooks;
    double clock = 1000.0;
};

} // namespace quorlen::test
