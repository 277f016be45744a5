// The configuration file as the program reads it at start: port, folders, sensors, presets,
// language, link speed, auto start, the analogue inputs, the engine layouts (and the wheels the
// crank viewer draws of them) and the window sizes; then the rewrites the preferences make.

#include "app/startup.h"
#include "app/tune_tools.h"
#include "core/atomic_file.h"
#include "core/window_size.h"
#include "fuzz_support.h"
#include "hslog/crank_view.h"

#include <cstdlib>

namespace {

// One folder for the process: the file is replaced whole for each input.
const std::string& Scratch() {
    static const std::string dir = quorlen::fuzz::Make_Scratch("ini");
    return dir;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    const std::string_view text = fuzz::Text(data, size);
    App_Context app;
    app.program.Starting_Up = true;
    app.Use_App_Path(Scratch());
    Replace_File_Atomically(app.ini.Path(), text);

    Init_ini_file(app);
    Read_Language_And_Autoguide(app);
    Read_Link_And_Autostart(app);
    Analog_Context analog = app.Analog();
    Init_Analog_from_Inifile(analog);
    Init_Analog_from_CardByte(analog);
    // The engine layouts, every row as the engine frame and the layout list show it.
    Init_Engine_Config(app);
    const Engine_Config_Table& layouts = app.engine.Engine_Config_Tab;
    Engine_Combo_Items(layouts);
    for (int row = 0; row < Engine_Config_Lines; ++row) {
        const Engine_Layout layout = Engine_Layout_Of(layouts, row);
        Crank_Wheel_Of(layout.crank_sensor);
        Forbidden_Tooth(layouts, row, 36);
        try {
            Recommended_Fuel_Teeth(layout.tooth_degrees, layout.sequential_fuel);
        } catch (const Run_Error&) {
            // Division by zero and overflow are for the caller's guard, as the program has them.
        }
        Take_Engine_Row(app.engine, row);
    }
    // The crank viewer draws the wheel of each layout, with the mark-teeth byte at both ends.
    for (int layout = 0; layout < Engine_Combo_Count; ++layout) {
        Wheel_Layout_For(layouts, layout, 0);
        Wheel_Layout_For(layouts, layout, 255);
    }
    for (const char* key : {"Main_Window_Size", "Display_Window_Size", "Log_Window_Size"}) {
        const std::string saved = app.ini.Read_Ini(key);
        Parse_Window_Size(saved);
        Window_Size_To_Save(Window_Size{2, 800, 600, 10, 10}, saved);
    }

    // The rewrites keep every other line as it stood.
    const std::string before = app.ini.Read_Ini("Sens_Def", 2);
    app.program.Starting_Up = false;
    Language_Click(app, 1);
    if (!before.empty() && before.find('\n') == std::string::npos &&
        app.ini.Read_Ini("Sens_Def", 2) != before)
        std::abort();
    return 0;
}
