// Sens_Def entries of the configuration file, one a line: the sensor table they make, the
// arithmetic over every raw value and back from every point, and each sensor as the sensor
// viewer shows it, tests it and would store it again.

#include "fuzz_support.h"
#include "sensors/sensor_defs.h"
#include "sensors/sensor_editor.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    Debug_Log debug;
    Proc_Guard guard(debug, "Init ini file");
    Sensor_Table table;
    Reset_Sensor_Table(table);
    std::string debug_txt;
    const std::string_view text = fuzz::Text(data, size);
    for (std::size_t start = 0; start < text.size() && table.Sens_Count < 64;) {
        const std::size_t lf = text.find('\n', start);
        const std::size_t end = lf == std::string_view::npos ? text.size() : lf;
        Add_Sensor_Definition(table, text.substr(start, end - start), guard, &debug_txt);
        start = end + 1;
    }
    for (int s = 0; s <= table.Sens_Count; ++s) {
        for (int raw = -1; raw <= 257; raw += 3) {
            double r = raw;
            Forward_Sensor_Calc(table, s, r);
        }
        if (!table.Has(s)) continue;
        Sensor_Editor viewer;
        View_Tuning_Sensor(viewer, table, s);
        for (int i = 1; i <= Sensor_Points; ++i) {
            Grid_In_Text(viewer, i);
            Grid_Out_Text(viewer, i);
        }
        Tuning_Sensor_Line(viewer);
        Log_Sensor_Line(viewer);
        cmd_Frw_Calc(viewer, table, s);
        try {
            cmd_Rev_Calc(viewer, table, s);
        } catch (const Run_Error&) {
            // As the reverse sum below: a zero gain is for the caller's guard.
        }
        for (int i = 1; i <= Sensor_Points; i += 4) {
            try {
                Reversed_Sensor_Value(
                    table, s, table.Sens_Point_Tab[static_cast<std::size_t>(s)][static_cast<std::size_t>(i)]);
            } catch (const Run_Error&) {
                // A zero gain is a division fault for the caller's guard, as the program has it.
            }
        }
    }
    return 0;
}
