#include "analysis/fuel_correction.h"

#include "support/hand_log.h"
#include "tables/cell_entry.h"
#include "tables/selection_ops.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

// Raw readings of the fresh tables' wide band sensor (10 AFR + 0.0392157 a count).
double Afr_Raw(double afr) {
    return std::round((afr - 10) / 0.0392157);
}
double Afr_Of(double raw) {
    return 10 + 0.0392157 * raw;
}

class Cell_Hits_Test : public test::Hand_Log {};

TEST_F(Cell_Hits_Test, A_Row_On_A_Point_Counts_There_Alone_And_One_Between_Four_Splits) {
    Add_Row(3000, 24);   // column 6, row 3 exactly
    Add_Row(3250, 28);   // the middle of columns 6, 7 and rows 3, 4
    Add_Row(0, 24);      // engine stopped: not counted
    Add_Row(20000, 250); // beyond both axes: the far corner takes it
    const Hit_Grid hits = Cell_Hits(Make_Map_Locator(image, sensors, *log, Table_Id::Fuel_3D), *log);
    EXPECT_EQ(hits.rows_counted, 3);
    EXPECT_NEAR(hits.At(3, 6), 0.05 + 0.0125, 1e-12);
    EXPECT_NEAR(hits.At(3, 7), 0.0125, 1e-12);
    EXPECT_NEAR(hits.At(4, 6), 0.0125, 1e-12);
    EXPECT_NEAR(hits.At(4, 7), 0.0125, 1e-12);
    EXPECT_DOUBLE_EQ(hits.At(18, 19), 0.05);
    EXPECT_NEAR(hits.Total(), 0.15, 1e-12);

    // The ignition map has its own shape and is counted on its own axes.
    const Hit_Grid ign = Cell_Hits(Make_Map_Locator(image, sensors, *log, Table_Id::Ignition_3D), *log);
    EXPECT_EQ(ign.cols, 18);
    EXPECT_DOUBLE_EQ(ign.At(11, 18), 0.05);
}

TEST_F(Cell_Hits_Test, Colours_Run_From_White_For_None_To_Red_For_The_Busiest_Cell) {
    Add_Rows(40, 3000, 24);
    Add_Rows(10, 1000, 8);
    const Hit_Grid hits = Cell_Hits(Make_Map_Locator(image, sensors, *log, Table_Id::Fuel_3D), *log);
    const Map_Colours colours = Log_Hit_Colours(hits);
    EXPECT_EQ(colours.At(5, 5), White);
    EXPECT_EQ(colours.At(3, 6), colours.high);
    EXPECT_NE(colours.At(1, 2), White);
    EXPECT_NE(colours.At(1, 2), colours.high);
    EXPECT_EQ(colours.low, White);
    EXPECT_EQ(Hit_Text(hits.At(3, 6)), "2.00 s in the log");
    EXPECT_EQ(Hit_Legend(hits), "Log hits: 0 s to 2.0 s, 50 rows");
    // An empty log leaves the whole map white.
    EXPECT_EQ(Log_Hit_Colours(Hit_Grid(Table_Id::Fuel_3D, 2, 2)).cells, std::vector<Rgb>(4, White));
    EXPECT_EQ(Hit_Legend(Hit_Grid(Table_Id::Fuel_3D, 2, 2)), "Log hits: no log rows in this map");
}

class Fuel_Correction_Test : public test::Hand_Log {
protected:
    void SetUp() override {
        Hand_Log::SetUp();
        image.CardByte[215] = 2; // AFR control off, wide band sensor: the fixed target holds
        image.CardByte[4] = 0;   // no acceleration enrichment
    }
    Fuel_Proposal Propose(const Correction_Options& options = {}) {
        return Propose_Fuel_Correction(image, sensors, *log, options);
    }
};

TEST_F(Fuel_Correction_Test, Scales_The_Time_Behind_The_Dead_Time_By_Measured_Over_Target_Lambda) {
    const double lean = Afr_Raw(14.7 * 1.10);
    Add_Rows(40, 3000, 24, lean); // two seconds, 10 % lean
    Add_Rows(40, 2000, 24);       // two seconds on target
    const Fuel_Proposal p = Propose();
    ASSERT_EQ(p.problem, "");
    EXPECT_EQ(p.target_text, "fixed 14.7 AFR");
    EXPECT_EQ(p.verdicts[static_cast<int>(Row_Verdict::Steady)], 80);

    const Cell_Correction& c = p.At(3, 6);
    const double dead = Injector_Dead_Time(image);
    const double ratio = Afr_Of(lean) / 14.7;
    EXPECT_NEAR(c.ratio, ratio, 1e-9);
    EXPECT_DOUBLE_EQ(c.seconds, 2.0);
    EXPECT_TRUE(c.changed);
    EXPECT_FALSE(c.limited);
    const double wanted = dead + (4.0 - dead) * ratio;
    EXPECT_LE(std::fabs(c.new_ms - wanted), 0.05 + 1e-9); // the nearest code of the 0.1 ms scale
    EXPECT_EQ(c.new_byte, Fuel_ms_to_byte(c.new_ms));
    EXPECT_NEAR(c.percent, (c.new_ms - 4.0) / 4.0 * 100, 1e-9);

    // On target: the cell stays.
    EXPECT_FALSE(p.At(3, 4).changed);
    EXPECT_TRUE(p.At(3, 4).enough);
    EXPECT_EQ(p.Changed_Count(), 1);
}

TEST_F(Fuel_Correction_Test, Leaves_Cells_With_Too_Few_Hits_And_Holds_The_Per_Pass_Limit) {
    Add_Rows(19, 3000, 24, Afr_Raw(16.5)); // 0.95 s: short of a second
    Add_Rows(40, 4000, 40, Afr_Raw(21));   // far lean (the sensor's range ends at 20)
    Add_Rows(40, 5000, 40, Afr_Raw(19.5)); // 33 % lean
    Add_Rows(40, 6000, 40, Afr_Raw(11.0)); // 25 % rich
    Fuel_Proposal p = Propose();
    EXPECT_FALSE(p.At(3, 6).enough);
    EXPECT_FALSE(p.At(3, 6).changed);
    EXPECT_NEAR(p.At(3, 6).seconds, 0.95, 1e-9);

    const Cell_Correction& lean = p.At(5, 10);
    EXPECT_TRUE(lean.limited);
    EXPECT_LE(lean.percent, 15 + 1e-9);
    EXPECT_GE(lean.percent, 12.5); // the 0.1 ms codes stand 2.5 % apart at 4 ms
    const Cell_Correction& rich = p.At(5, 12);
    EXPECT_TRUE(rich.limited);
    EXPECT_GE(rich.percent, -15 - 1e-9);
    EXPECT_LE(rich.percent, -12.5);

    Correction_Options options;
    options.min_seconds = 0.5;
    options.max_change_pct = 5;
    p = Propose(options);
    EXPECT_TRUE(p.At(3, 6).changed);
    EXPECT_NEAR(p.At(5, 10).percent, 5, 1e-9);
}

TEST_F(Fuel_Correction_Test, Rows_That_Fail_The_Steady_Filters_Do_Not_Count) {
    const double lean = Afr_Raw(16.5);
    const Log_Columns& col = log->columns;
    auto rows = [&](int count, auto&& change) {
        for (int i = 0; i < count; ++i)
            change(Add_Row(3000, 24, lean));
    };
    rows(20, [&](int r) { log->Log_Data(r, col.Col_AN4) = 40; });         // cold
    rows(20, [&](int r) { log->Log_Data(r, col.Col_Fuel) = 0; });         // fuel cut
    rows(20, [&](int r) { log->Log_Data(r, col.Col_RPM) = 300; });        // cranking
    rows(20, [&](int r) { log->Log_Data(r, col.Col_AD1_Bin) = 255; });    // sensor on its rail
    rows(20, [&](int r) { log->Log_Data(r, col.Col_AN2) = 20 + 2 * r; }); // throttle opening 40 %/s
    rows(5, [](int) {});                                                  // settling after it
    const std::vector<Row_Verdict> v = Steady_Rows(image, sensors, *log, Steady_Filter{});
    ASSERT_EQ(v.size(), 106u);
    EXPECT_EQ(v[1], Row_Verdict::Cold);
    EXPECT_EQ(v[21], Row_Verdict::Not_Running);
    EXPECT_EQ(v[41], Row_Verdict::Not_Running);
    EXPECT_EQ(v[61], Row_Verdict::Lambda_Out_Of_Range);
    EXPECT_EQ(v[82], Row_Verdict::Throttle_Moving);
    // The first row of the ramp has no row before it at another opening; after the ramp,
    // half a second passes before rows count again.
    EXPECT_EQ(v[101], Row_Verdict::Throttle_Moving);
    EXPECT_EQ(v[105], Row_Verdict::Throttle_Moving);

    const Fuel_Proposal p = Propose();
    EXPECT_LT(p.At(3, 6).seconds, 0.1);
    EXPECT_FALSE(p.At(3, 6).changed);

    // With the thresholds moved the same rows count.
    Correction_Options loose;
    loose.steady = {.min_rpm = 200, .min_coolant = 30, .max_throttle_rate = 100, .settle_seconds = 0};
    const Fuel_Proposal q = Propose(loose);
    // Only the fuel cut, the rail and the two jumps of the throttle stay out; the cranking
    // rows count below the first RPM point.
    EXPECT_EQ(q.verdicts[static_cast<int>(Row_Verdict::Steady)], 63);
    EXPECT_NEAR(q.At(3, 6).seconds, 43 * 0.05, 1e-9);
    EXPECT_NEAR(q.At(3, 1).seconds, 20 * 0.05, 1e-9);
}

TEST_F(Fuel_Correction_Test, The_Box_Enrichment_Holds_Rows_Out_For_Its_Sustain) {
    image.CardByte[4] = 2;   // enrichment follows MAP
    image.CardByte[86] = 10; // 0.2 V a sample
    image.CardByte[88] = 50; // 50 engine cycles: a second at 6000 rpm
    Add_Rows(10, 6000, 24);
    Add_Rows(60, 6000, 40); // MAP jumps by 16 counts, 0.31 V
    const std::vector<Row_Verdict> v = Steady_Rows(image, sensors, *log, Steady_Filter{});
    EXPECT_EQ(v[10], Row_Verdict::Steady);
    EXPECT_EQ(v[11], Row_Verdict::Enrichment);
    EXPECT_EQ(v[40], Row_Verdict::Enrichment); // 20 rows of sustain, 10 of settling
    EXPECT_EQ(v[42], Row_Verdict::Steady);
}

TEST_F(Fuel_Correction_Test, With_Afr_Control_On_The_Target_Comes_From_The_Afr_Table) {
    image.CardByte[215] = 3;
    // The table over MAP: 14.7 AFR in the first half of the input's range, 12.5 in the second.
    for (int i = 0; i < 17; ++i)
        image.CardByte[static_cast<std::size_t>(154 + i)] = static_cast<std::uint8_t>(i < 8 ? 120 : 64);
    Add_Rows(40, 3000, 24, 120);               // 14.7 where 14.7 is wanted
    Add_Rows(40, 3000, 144, 120);              // 14.7 where 12.5 is wanted: lean
    Add_Rows(40, 4000, 8 * 15, Afr_Raw(13.6)); // halfway between the two: 13.6 wanted
    const Fuel_Proposal p = Propose();
    EXPECT_EQ(p.target_text, "AFR target table");
    EXPECT_NEAR(p.At(3, 6).ratio, 1, 1e-12);
    EXPECT_NEAR(p.At(18, 6).ratio, Afr_Of(120) / Afr_Of(64), 1e-9);
    EXPECT_NEAR(p.At(15, 8).ratio, 1, 0.005);
}

TEST_F(Fuel_Correction_Test, A_Narrow_Band_Sensor_Or_A_Missing_Lambda_Reading_Proposes_Nothing) {
    Add_Rows(40, 3000, 24, Afr_Raw(16.5));
    image.CardByte[215] = 1; // AFR control on a narrow band sensor
    Fuel_Proposal p = Propose();
    EXPECT_EQ(p.problem, "The lambda sensor is a narrow band one: it tells rich or lean, not how far.");
    EXPECT_EQ(p.Changed_Count(), 0);

    image.CardByte[215] = 2;
    log->Log_Signal_Tab[static_cast<std::size_t>(log->columns.Col_AN1 - 1)].sensor = -1;
    p = Propose();
    EXPECT_EQ(p.problem, "The log holds no reading of the lambda input (input 1).");
}

TEST_F(Fuel_Correction_Test, Applying_Is_One_Edit_That_Undo_Takes_Back) {
    Add_Rows(40, 3000, 24, Afr_Raw(16.2));
    Add_Rows(40, 4000, 24, Afr_Raw(16.2));
    const Fuel_Proposal p = Propose();
    ASSERT_EQ(p.Changed_Count(), 2);
    const Cell_Correction a = p.At(3, 6), b = p.At(3, 8);
    image.ChangedByte.fill(0);

    // Only the chosen cell is written, and marked for the next write to the box.
    const std::pair<int, int> chosen[] = {{3, 6}, {3, 6}, {40, 40}};
    EXPECT_EQ(Apply_Fuel_Correction(image, undo, p, chosen), 1);
    EXPECT_EQ(image.CardByte[static_cast<std::size_t>(a.address)], a.new_byte);
    EXPECT_EQ(image.ChangedByte[static_cast<std::size_t>(a.address)], Changed_Mark);
    EXPECT_EQ(image.CardByte[static_cast<std::size_t>(b.address)], b.old_byte);

    // Undo brings the map back as the proposal found it, and marks the byte again.
    EXPECT_TRUE(Can_Undo(undo, image));
    image.ChangedByte.fill(0);
    edit_undo_Click(undo, image, [] {});
    EXPECT_EQ(image.CardByte[static_cast<std::size_t>(a.address)], a.old_byte);
    EXPECT_EQ(image.ChangedByte[static_cast<std::size_t>(a.address)], Changed_Mark);
    edit_redo_Click(undo, image, [] {});
    EXPECT_EQ(image.CardByte[static_cast<std::size_t>(a.address)], a.new_byte);

    // All the rest; the cell already written is not written twice, and a cell the tuner
    // edited since the proposal keeps the tuner's byte.
    image.CardByte[static_cast<std::size_t>(b.address)] = 99;
    EXPECT_EQ(Apply_Fuel_Correction(image, undo, p), 0);
    EXPECT_EQ(image.CardByte[static_cast<std::size_t>(b.address)], 99);
}

} // namespace
} // namespace quorlen
