// The [log_sens_def] section of a log: the sensors read, given to the signals in turn, used
// on a short log of either row layout, shown in the sensor viewer, and written back.

#include "fuzz_support.h"
#include "logging/log_file.h"
#include "logging/log_signals.h"
#include "sensors/sensor_editor.h"
#include "support/log_fixture.h"

#include <vector>

namespace {

std::string Rows(int columns) {
    std::string rows = "[log_data]\r\nLa\r\n";
    for (int r = 0; r < 12; ++r) {
        std::string row = "$0" + std::to_string(2000 + 50 * r) + " ";
        for (int c = 2; c <= columns; ++c)
            row += c + 3 > columns ? "h" + std::to_string(10 + r) + " "
                                   : std::to_string(100 + (r * c) % 156) + " ";
        rows += row + "\r\n";
    }
    return rows + "[end log_data]\r\n";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    static const std::string rows[2] = {Rows(42), Rows(40)};
    for (int layout = 0; layout < 2; ++layout) {
        test::Log_Fixture f;
        f.image.DatasetID = layout == 0 ? 200 : 100;
        f.Load_Defaults(false);
        Log_State& log = *f.state;
        auto c = f.Ctx();
        log.Log_Sens_Def_Text =
            "[log_sens_def]\r\n" + std::string(fuzz::Text(data, size)) + "\r\n[end log_sens_def]";
        Read_Log_Sens_Def(log);
        const int count = log.Log_Sens_Count;
        for (int i = 0; i < Log_Signal_Count; ++i)
            log.Log_Signal_Tab[static_cast<std::size_t>(i)].sensor = count > 0 ? i % count : -1;
        Update_Log_Sens_Tab(log);
        log.plan_ready = false;
        log.Log_Data_Text = rows[layout];
        QX_Log_Data_Read(c);

        std::vector<int> channel_rows(Log_Signal_Count + 1);
        for (int i = 0; i < Log_Signal_Count; ++i)
            channel_rows[static_cast<std::size_t>(i)] =
                log.Log_Signal_Tab[static_cast<std::size_t>(i)].sensor;
        for (int channel = 1; channel <= Log_Signal_Count; channel += 7)
            for (int raw : {0, 7, 8, 128, 255, 256, -1})
                Forward_Log_Sensor_Calc(log.Log_Sens_Tab, channel_rows, channel, raw);

        if (layout == 0)
            for (int row = 0; row < count; ++row) {
                Sensor_Editor viewer;
                View_Log_Sensor(viewer, log.Log_Sens_Tab[static_cast<std::size_t>(row)]);
                Grid_In_Text(viewer, Sensor_Points);
                Log_Sensor_Line(viewer);
            }

        Update_Log_Sens_Def(log);
        Read_Log_Sens_Def(log);
    }
    return 0;
}
