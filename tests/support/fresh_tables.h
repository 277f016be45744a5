#pragma once
// A fresh stand-alone image with the table state as the program has it after start: a wide
// band AFR sensor on input 1 and a MAP sensor on the other inputs.

#include "core/proc_guard.h"
#include "support/scripted_dialogs.h"
#include "tables/map_tables.h"

#include <gtest/gtest.h>

namespace quorlen::test {

class Fresh_Tables : public ::testing::Test {
protected:
    void SetUp() override {
        Reset_Sensor_Table(sensors.table);
        Proc_Guard guard(log, "Init ini file");
        Add_Sensor_Definition(sensors.table, "AFR\tLinear\t0.0392157\t10\t0\t255\tAFR\t1\tbin\t", guard);
        Add_Sensor_Definition(sensors.table, "MAP\tLinear\t0.01\t0\t0\t255\tbar\t2\tbin\t", guard);
        for (int i = 1; i <= 12; ++i)
            sensors.inputs.An_Sel[static_cast<std::size_t>(i)] = i == 1 ? 1 : 2;
        Init_Cardbyte(image, log);
        Update_Tabs(ctx);
    }

    Debug_Log log;
    Settings_Image image;
    Sensor_State sensors;
    Tables_State tables;
    Scripted_Dialogs dialogs;
    Undo_List undo;
    Tables_Context ctx{image, sensors, tables, log, dialogs, undo};
};

} // namespace quorlen::test
