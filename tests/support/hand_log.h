#pragma once
// A log made by hand over a fresh image: the stand-alone row layout with the built-in log
// sensors, and main maps whose axes are plain to read. The RPM axes step 500 rpm from 500;
// the load axes step 8 raw counts from 8, which the MAP sensor of the fresh tables reads as
// 0.08 bar a step. Every fuel cell holds 4.0 ms. Rows are written straight into Log_Data as the calculation
// would leave them, so each test says exactly what the engine did.

#include "logging/log_signals.h"
#include "support/fresh_tables.h"

#include <cmath>
#include <memory>

namespace quorlen::test {

class Hand_Log : public Fresh_Tables {
protected:
    void SetUp() override {
        Fresh_Tables::SetUp();
        image.CardByte[Size_Byte] = 0; // fuel 19 x 18, ignition 18 x 11
        image.CardByte[174] = 3;       // both maps on MAP, input 3
        Set_Axes(image.FuelBlockBase, 19, 18);
        Set_Axes(image.IgnBlockBase, 18, 11);
        const Map_Block fuel{image.FuelBlockBase, 19, 18};
        for (int a = fuel.Start(); a <= fuel.End(); ++a)
            image.CardByte[static_cast<std::size_t>(a)] = 40;
        Update_Tabs(ctx);
        Load_StandAlone_Default_Signal_Names(*log);
        Load_Default_Log_Sens_Def(*log);
    }

    void Set_Axes(int base, int cols, int rows) {
        image.CardByte[static_cast<std::size_t>(base)] = static_cast<std::uint8_t>(cols);
        for (int c = 1; c <= cols; ++c)
            image.CardByte[static_cast<std::size_t>(base + c)] = 8;
        image.CardByte[static_cast<std::size_t>(base + cols + 1)] = static_cast<std::uint8_t>(rows);
        for (int r = 1; r <= rows; ++r)
            image.CardByte[static_cast<std::size_t>(base + cols + 1 + r)] = 8;
    }

    // A row of a warm engine at `rpm` on a MAP reading of `map_raw`, with the throttle
    // still, 3 ms of fuel, and the wide band sensor on input 1 reading `afr_raw` (raw 120 is
    // 14.7 AFR through the fresh tables' sensor). Returns the row number.
    int Add_Row(double rpm, double map_raw, double afr_raw = 120) {
        const int r = ++log->Last_Row;
        const Log_Columns& c = log->columns;
        log->Log_Data(r, 0) = (r - 1) * 0.05;
        log->Log_Data(r, c.Col_RPM) = rpm;
        log->Log_Data(r, c.Col_Fuel) = 3.0;
        log->Log_Data(r, c.Col_AN1) = afr_raw * 0.01953125;
        log->Log_Data(r, c.Col_AD1_Bin) = afr_raw;
        log->Log_Data(r, c.Col_AN2) = 20;
        log->Log_Data(r, c.Col_AD2_Bin) = 51;
        log->Log_Data(r, c.Col_AN3) = std::round((map_raw * 0.0098039 + 0.09) * 1000) / 1000;
        log->Log_Data(r, c.Col_AD3_Bin) = map_raw;
        log->Log_Data(r, c.Col_AN4) = 85;
        return r;
    }

    // `count` rows of the same.
    void Add_Rows(int count, double rpm, double map_raw, double afr_raw = 120) {
        for (int i = 0; i < count; ++i)
            Add_Row(rpm, map_raw, afr_raw);
    }

    const double* Row(int r) const { return log->Log_Data.Row(r); }

    std::unique_ptr<Log_State> log = std::make_unique<Log_State>();
};

} // namespace quorlen::test
