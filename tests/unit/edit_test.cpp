// Editing the maps without a window: typing, the buttons, the clipboard, the colouring and
// the verify view, on a fresh stand-alone image.

#include "cli/commands.h"
#include "files/settings_files.h"
#include "support/cli_run.h"
#include "support/fresh_tables.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"
#include "tables/cell_entry.h"
#include "tables/map_colours.h"
#include "tables/selection_ops.h"
#include "tables/surface_data.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace quorlen {
namespace {

class Edit : public test::Fresh_Tables {
protected:
    void SetUp() override {
        Fresh_Tables::SetUp();
        Update_All(ctx);
        image.ChangedByte.fill(0);
    }
    // The fuel map is 19 x 18 on a fresh image; the ignition map 18 x 11.
    int Fuel(int r, int c) { return Fuel_Block(ctx).Cell(r, c); }
    int Ign(int r, int c) { return Ign_Block(ctx).Cell(r, c); }
    std::uint8_t& Byte(int address) { return image.CardByte[static_cast<std::size_t>(address)]; }
    bool Changed(int address) { return image.ChangedByte[static_cast<std::size_t>(address)] == Changed_Mark; }
    void On(Table_Id id) {
        Show_Table(tables, id);
        hooks_run = 0;
    }
    Key_Outcome Type_Fuel(Grid_Selection& sel, int key) { return Fuel_3D_Grid_KeyDown(ctx, sel, key, hooks); }

    int hooks_run = 0;
    Edit_Hooks hooks{[this] {
                         ++hooks_run;
                         Update_All(ctx);
                     },
                     {},
                     {}};
};

TEST_F(Edit, TypingIntoTheFuelMapFollowsEveryKeyAndCutsAtTheLimit) {
    On(Table_Id::Fuel_3D);
    Grid_Selection sel{2, 3, 1, 4}; // four cells, anchor at the bottom right
    const int cells[] = {Fuel(1, 3), Fuel(1, 4), Fuel(2, 3), Fuel(2, 4)};
    for (int a : cells)
        Byte(a) = 77;

    EXPECT_TRUE(Type_Fuel(sel, '1').shows_key_text);
    EXPECT_EQ(tables.edit.KeyText, "1");
    for (int a : cells)
        EXPECT_EQ(Byte(a), 1); // on the way to 1,5 the injector stays open
    Type_Fuel(sel, Key::Comma);
    EXPECT_EQ(tables.edit.KeyText, "1,");
    Type_Fuel(sel, Key::Pad_0 + 5);
    EXPECT_EQ(tables.edit.KeyText, "1,5");
    for (int a : cells) {
        EXPECT_EQ(Byte(a), 8);
        EXPECT_TRUE(Changed(a));
    }
    Type_Fuel(sel, Key::Point); // a second mark is ignored
    EXPECT_EQ(tables.edit.KeyText, "1,5");

    // A new selection starts a new number; at the 0 of 30 the text is cut to 25.5.
    Grid_RowColChange(tables);
    Grid_Selection one{5, 5, 5, 5};
    Type_Fuel(one, '3');
    EXPECT_EQ(Byte(Fuel(5, 5)), 30);
    Type_Fuel(one, '0');
    EXPECT_EQ(tables.edit.KeyText, "25.5");
    EXPECT_EQ(Byte(Fuel(5, 5)), 255);

    // Keys a main map doesn't take leave at once.
    EXPECT_FALSE(Type_Fuel(one, Key::Minus).handled);
    EXPECT_FALSE(Type_Fuel(one, Key::Back).handled);
    EXPECT_EQ(tables.edit.KeyText, "25.5");

    // The ignition map cuts at 51 degrees, one byte per 0.2.
    On(Table_Id::Ignition_3D);
    Grid_RowColChange(tables);
    Grid_Selection ign{1, 1, 1, 1};
    Ignition_3D_Grid_KeyDown(ctx, ign, '6', hooks);
    Ignition_3D_Grid_KeyDown(ctx, ign, '0', hooks);
    EXPECT_EQ(tables.edit.KeyText, "51");
    EXPECT_EQ(Byte(Ign(1, 1)), 255);
}

TEST(Cell_Entry, KeyEditAndTheNumberRules) {
    std::string text;
    bool fresh = true;
    EXPECT_TRUE(KeyEdit(Key::Back, text, fresh)); // Back on an empty text: nothing
    EXPECT_EQ(text, "");
    EXPECT_TRUE(fresh);
    KeyEdit(Key::Minus, text, fresh);
    KeyEdit('4', text, fresh);
    EXPECT_EQ(text, "-4");
    KeyEdit(Key::Delete, text, fresh);
    EXPECT_EQ(text, "");
    EXPECT_FALSE(KeyEdit('Q', text, fresh));

    std::string typed = "1,5";
    EXPECT_DOUBLE_EQ(val_chk(typed), 1.5);
    EXPECT_EQ(typed, "1.5"); // the caller's text changes with it
    std::string empty, junk = "abc";
    EXPECT_EQ(val_chk(empty), 0);
    EXPECT_EQ(val_chk(junk), 0);

    EXPECT_EQ(Fuel_ms_to_byte(0), 0);
    EXPECT_EQ(Fuel_ms_to_byte(0.53), 0);
    EXPECT_EQ(Fuel_ms_to_byte(0.54), 1);
    EXPECT_EQ(Fuel_ms_to_byte(0.7), 1);
    // No typed time above 0.53 ms shuts the injector.
    for (double v : {1.0, 1.03, 1.059, 1.06})
        EXPECT_EQ(Fuel_ms_to_byte(v), 1) << v;
    EXPECT_EQ(Fuel_ms_to_byte(1.12), 2);
    EXPECT_EQ(Fuel_ms_to_byte(1.48), 8); // the shown text of byte 8 gives byte 8
    EXPECT_EQ(Fuel_ms_to_byte(2.49), 24);
    EXPECT_EQ(Fuel_ms_to_byte(2.5), 25);
    EXPECT_EQ(Fuel_ms_to_byte(25.5), 255);
    EXPECT_EQ(Fuel_ms_to_byte(-3), 0);
    for (int b = 0; b <= 255; ++b) // every shown fuel value goes back to its byte
        EXPECT_EQ(Fuel_ms_to_byte(Text_To_Double(Fuel_Cell_Text(static_cast<std::uint8_t>(b)))), b) << b;
}

TEST_F(Edit, PandOHalveAndDoubleTheRpmStepsOfTheSelectedColumns) {
    On(Table_Id::Fuel_3D);
    const int base = image.FuelBlockBase;
    Byte(base + 1) = 1;
    Byte(base + 2) = 1;
    Byte(base + 3) = 0;
    Byte(base + 4) = 64;
    Byte(base + 5) = 128;
    Grid_Selection sel{1, 1, 3, 2};
    Type_Fuel(sel, Key::P);
    EXPECT_EQ(Byte(base + 1), 0); // the first column may start at zero
    EXPECT_EQ(Byte(base + 2), 1);
    EXPECT_TRUE(Changed(base + 1));
    EXPECT_FALSE(Changed(base + 2));

    Grid_Selection right{1, 3, 1, 5};
    Type_Fuel(right, Key::O);
    EXPECT_EQ(Byte(base + 3), 1);
    EXPECT_EQ(Byte(base + 4), 128);
    EXPECT_EQ(Byte(base + 5), 128);
    Type_Fuel(right, Key::P);
    EXPECT_EQ(Byte(base + 3), 1);
    EXPECT_EQ(Byte(base + 4), 64);
    EXPECT_EQ(hooks_run, 3); // each redraws

    // The ignition map's keys act on its own axis.
    On(Table_Id::Ignition_3D);
    Byte(image.IgnBlockBase + 1) = 4;
    Grid_Selection ign{1, 1, 1, 1};
    Ignition_3D_Grid_KeyDown(ctx, ign, Key::P, hooks);
    EXPECT_EQ(Byte(image.IgnBlockBase + 1), 2);
}

TEST_F(Edit, MainMapRampsCountInBytesFromTheirZeroEdgeAndFollowTheTabs) {
    On(Table_Id::Fuel_3D);
    for (int c = 1; c <= 6; ++c)
        Byte(Fuel(2, c)) = 100;
    Grid_Selection back = flat_RPM_3D_Click(ctx, {2, 5, 2, 2}, hooks);
    EXPECT_EQ(back, (Grid_Selection{2, 2, 2, 5})); // anchored at the top left
    EXPECT_EQ(Byte(Fuel(2, 1)), 100);
    EXPECT_EQ(Byte(Fuel(2, 2)), 100);
    EXPECT_EQ(Byte(Fuel(2, 3)), 99);
    EXPECT_EQ(Byte(Fuel(2, 5)), 97);
    EXPECT_EQ(Byte(Fuel(2, 6)), 100);
    flat_RPM_3D_L_Click(ctx, {2, 2, 2, 5}, hooks);
    EXPECT_EQ(Byte(Fuel(2, 2)), 97);
    EXPECT_EQ(Byte(Fuel(2, 5)), 97);

    // Down the rows, with the clamp at 255 and 0.
    Byte(Fuel(3, 1)) = 254;
    Byte(Fuel(8, 1)) = 254;
    steep_Load_3D_Click(ctx, {3, 1, 8, 1}, hooks);
    EXPECT_EQ(Byte(Fuel(3, 1)), 254);
    EXPECT_EQ(Byte(Fuel(8, 1)), 255); // 254 + 5, not wrapped
    Byte(Fuel(3, 1)) = 2;
    flat_Load_3D_B_Click(ctx, {3, 1, 8, 1}, hooks);
    EXPECT_EQ(Byte(Fuel(3, 1)), 0);
    EXPECT_EQ(Byte(Fuel(8, 1)), 255);

    // A single cell gets 0 from every ramp.
    const std::uint8_t before = Byte(Fuel(4, 4));
    for (auto op : {steep_Load_3D_Click, steep_Load_3D_B_Click, steep_RPM_3D_Click, steep_RPM_3D_L_Click})
        op(ctx, {4, 4, 4, 4}, hooks);
    EXPECT_EQ(Byte(Fuel(4, 4)), before);
    EXPECT_FALSE(Changed(Fuel(4, 5)));

    // On another tab, or on the ignition tab, the fuel map is left alone.
    On(Table_Id::Fuel2_Map);
    plus_3d_Click(ctx, {1, 1, 1, 1}, hooks);
    On(Table_Id::Ignition_3D);
    Byte(Ign(1, 1)) = 10;
    plus_3d_Click(ctx, {1, 1, 1, 1}, hooks);
    EXPECT_EQ(Byte(Fuel(1, 1)), 0);
    EXPECT_EQ(Byte(Ign(1, 1)), 11);
    EXPECT_EQ(hooks_run, 1);
}

TEST_F(Edit, SetAndScaleOverTheMainMaps) {
    On(Table_Id::Ignition_3D);
    tables.edit.set_table_text_3D = "60";
    set_table_3D_Click(ctx, {1, 1, 2, 2}, hooks);
    EXPECT_EQ(tables.edit.set_table_text_3D, "51");
    EXPECT_EQ(Byte(Ign(2, 2)), 255);
    tables.edit.scale_table_text_3D = "50";
    scale_table_3D_Click(ctx, {1, 1, 1, 1}, hooks);
    EXPECT_EQ(Byte(Ign(1, 1)), 127); // 25.5 degrees

    On(Table_Id::Fuel_3D);
    tables.edit.set_table_text_3D = "0";
    set_table_3D_Click(ctx, {1, 1, 1, 1}, hooks);
    EXPECT_EQ(Byte(Fuel(1, 1)), 0);
    tables.edit.set_table_text_3D = "0,7";
    set_table_3D_Click(ctx, {1, 1, 1, 1}, hooks);
    EXPECT_EQ(Byte(Fuel(1, 1)), 1);

    // The percentage acts on the time behind the injector's dead time (byte 0 of 79 is
    // 0.816 ms): 200 % of 10 ms is 19.184 ms.
    EXPECT_DOUBLE_EQ(Injector_Dead_Time(image), 0.816);
    Byte(Fuel(1, 2)) = 100;
    Byte(Fuel(1, 3)) = 0;
    Byte(Fuel(1, 4)) = 20; // 2.2 ms
    tables.edit.scale_table_text_3D = "200";
    scale_table_3D_Click(ctx, {1, 2, 1, 2}, hooks);
    EXPECT_EQ(Byte(Fuel(1, 2)), 191);
    tables.edit.scale_table_text_3D = "100";
    scale_table_3D_Click(ctx, {1, 3, 1, 4}, hooks);
    EXPECT_EQ(Byte(Fuel(1, 3)), 0);
    EXPECT_EQ(Byte(Fuel(1, 4)), 20);
}

TEST_F(Edit, EvenColumnsAndRowsDrawStraightLinesWithTiesToEven) {
    On(Table_Id::Fuel_3D);
    Byte(Fuel(1, 1)) = 0;
    Byte(Fuel(1, 2)) = 99;
    Byte(Fuel(1, 3)) = 99;
    Byte(Fuel(1, 5)) = 6; // k = 1.5: 1.5 and 4.5 round to 2 and 4
    Byte(Fuel(2, 1)) = 1;
    Byte(Fuel(2, 5)) = 7;
    Even_Cols_cmd_Click(ctx, {2, 5, 1, 1}, hooks);
    EXPECT_EQ(Byte(Fuel(1, 2)), 2);
    EXPECT_EQ(Byte(Fuel(1, 3)), 3);
    EXPECT_EQ(Byte(Fuel(1, 4)), 4);
    EXPECT_EQ(Byte(Fuel(1, 5)), 6);
    EXPECT_EQ(Byte(Fuel(2, 2)), 2); // 2.5 goes to 2
    EXPECT_EQ(Byte(Fuel(2, 4)), 6); // 5.5 goes to 6

    // Two rows have nothing between them.
    Byte(Fuel(5, 1)) = 10;
    Byte(Fuel(6, 1)) = 30;
    Even_Rows_cmd_Click(ctx, {5, 1, 6, 1}, hooks);
    EXPECT_EQ(Byte(Fuel(5, 1)), 10);
    EXPECT_EQ(Byte(Fuel(6, 1)), 30);
    Byte(Fuel(7, 1)) = 50;
    Even_Rows_cmd_Click(ctx, {5, 1, 7, 1}, hooks);
    EXPECT_EQ(Byte(Fuel(6, 1)), 30);
    EXPECT_TRUE(Changed(Fuel(6, 1)));
    EXPECT_FALSE(Changed(Fuel(5, 1)));
}

TEST_F(Edit, OneDimensionalButtonsAndTheFirstCompensationThroughItsText) {
    On(Table_Id::Pwm2);
    const int base = One_D_Base(Table_Id::Pwm2);
    for (int i = 0; i < 21; ++i)
        Byte(base + i) = 100;
    steep_Click(ctx, {7, 2, 3, 2}, hooks);
    EXPECT_EQ(Byte(base + 1), 100);
    EXPECT_EQ(Byte(base + 2), 100); // point 3 gets 0 ...
    EXPECT_EQ(Byte(base + 6), 104); // ... point 7 gets 4
    steep_L_Click(ctx, {3, 2, 7, 2}, hooks);
    EXPECT_EQ(Byte(base + 2), 104);
    EXPECT_EQ(Byte(base + 6), 104);

    Byte(base) = 255;
    Byte(base + 1) = 0;
    plus_Click(ctx, {1, 2, 2, 2}, hooks);
    EXPECT_EQ(Byte(base), 255);
    EXPECT_EQ(Byte(base + 1), 1);
    image.ChangedByte.fill(0);
    Byte(base + 1) = 0;
    minus_Click(ctx, {2, 2, 2, 2}, hooks);
    EXPECT_FALSE(Changed(base + 1)); // at its end: passed over

    // Percent on the shown value: 52 % of 50.0 % is 26.0 %, byte 52.
    tables.edit.scale_table_text = "52";
    scale_table_Click(ctx, {10, 2, 10, 2}, hooks);
    EXPECT_EQ(Byte(base + 9), 52);
    tables.edit.set_table_text = "150";
    set_table_Click(ctx, {11, 2, 11, 2}, hooks);
    EXPECT_EQ(tables.edit.set_table_text, "100");
    EXPECT_EQ(Byte(base + 10), 200);

    // The 1st Ignition compensation over an input: a ramp through the shown degrees, the
    // limits of its table, and a typed minus.
    Byte(68) = 3;
    Update_Tabs(ctx);
    On(Table_Id::Ign_Comp1);
    Byte(191) = 128;
    Byte(192) = 0;
    steep_Click(ctx, {1, 2, 2, 2}, hooks);
    EXPECT_EQ(Byte(191), 128);
    EXPECT_EQ(Byte(192), 1);
    EXPECT_EQ(tables.edit.TableGain, 5);
    tables.edit.set_table_text = "-30";
    set_table_Click(ctx, {3, 2, 3, 2}, hooks);
    EXPECT_EQ(tables.edit.set_table_text, "-25.6");
    EXPECT_EQ(Byte(193), 0);
    Grid_RowColChange(tables);
    One_D_Grid_KeyDown(ctx, Table_Id::Ign_Comp1, {4, 2, 5, 2}, Key::Pad_Minus, hooks);
    One_D_Grid_KeyDown(ctx, Table_Id::Ign_Comp1, {4, 2, 5, 2}, '5', hooks);
    EXPECT_EQ(tables.edit.set_table_text, "-5");
    EXPECT_EQ(Byte(194), 103);
    EXPECT_EQ(Byte(195), 103);

    // The 2nd fuel tables by their function: subtracted time is value * -10.
    image.CardByte[175] = static_cast<std::uint8_t>((image.CardByte[175] & ~56) | 2 << 3);
    Update_Tabs(ctx);
    On(Table_Id::Fuel2_Rpm);
    tables.edit.set_table_text = "-1,5";
    set_table_Click(ctx, {1, 2, 1, 2}, hooks);
    EXPECT_EQ(Byte(133), 15);
    EXPECT_EQ(tables.edit.minText, "-25.4");
}

TEST_F(Edit, TablesOverEngineSpeedTakeTheLimitsOfTheirCoding) {
    auto set = [&](Table_Id id, int point, const char* text) {
        On(id);
        tables.edit.set_table_text = text;
        set_table_Click(ctx, {point, 2, point, 2}, hooks);
        return tables.edit.set_table_text;
    };
    // The 1st Ignition compensation over speed on the stand-alone box: 0.2 degrees a step,
    // +-12.7 degrees, or +-25.4 with bit 4 of byte 44.
    Byte(68) = 0;
    Byte(44) = 5;
    Update_Tabs(ctx);
    EXPECT_EQ(set(Table_Id::Ign_Comp1, 1, "20"), "12.7");
    EXPECT_EQ(Byte(191), 191);
    Byte(44) = 5 | 16;
    EXPECT_EQ(set(Table_Id::Ign_Comp1, 1, "20"), "20");
    EXPECT_EQ(Byte(191), 228);
    // Over an input it keeps the wide range whatever byte 44 says.
    Byte(68) = 3;
    Byte(44) = 5;
    Update_Tabs(ctx);
    EXPECT_EQ(set(Table_Id::Ign_Comp1, 1, "20"), "20");
    EXPECT_EQ(tables.edit.minText, "-25.6");

    // On the boost controller's datasets the table over speed reads in percent: +-200 % with
    // bit 4, and the cell shows what was typed.
    image.DatasetID = 150;
    Byte(68) = 0;
    Byte(44) = 16;
    Update_Tabs(ctx);
    EXPECT_EQ(set(Table_Id::Ign_Comp1, 2, "100"), "100");
    EXPECT_EQ(Byte(192), 192);
    EXPECT_EQ(Grid_Text(ctx, Table_Id::Ign_Comp1, 2, 2), "100.0");
    EXPECT_EQ(Table_Unit(ctx, Table_Id::Ign_Comp1), "%");
    EXPECT_EQ(set(Table_Id::Ign_Comp1, 2, "-250"), "-200");
    EXPECT_EQ(Byte(192), 0);
    Byte(44) = 32; // bit 5: degrees again
    EXPECT_EQ(set(Table_Id::Ign_Comp1, 2, "5"), "5");
    EXPECT_EQ(Byte(192), 153);
    EXPECT_EQ(Table_Unit(ctx, Table_Id::Ign_Comp1), "deg");

    // A 2nd fuel table over speed there is 0 to 199 %, 100 % at byte 128, whatever the function.
    Byte(73) = 0;
    Update_Tabs(ctx);
    EXPECT_EQ(set(Table_Id::Fuel2_Rpm, 1, "250"), "199");
    EXPECT_EQ(tables.edit.maxText, "199");
    EXPECT_EQ(Byte(133), 254);
    EXPECT_EQ(set(Table_Id::Fuel2_Rpm, 2, "100"), "100");
    EXPECT_EQ(Byte(134), 128);
    EXPECT_EQ(Grid_Text(ctx, Table_Id::Fuel2_Rpm, 2, 2), "100.0");
}

TEST_F(Edit, PwmExtraFuelValuesTakeTypedAndPastedNumbersButNotItsAxis) {
    const int axis_step = Byte(49);
    Grid_RowColChange(tables);
    One_D_Grid_KeyDown(ctx, Table_Id::Pwm2_Fuel, {3, 1, 2, 1}, '5', hooks);
    EXPECT_EQ(Byte(55), 153);
    EXPECT_EQ(Byte(56), 153);
    EXPECT_TRUE(Changed(56));
    EXPECT_EQ(tables.edit.maxText, "25.4");
    // The axis column selected too: still only the values of the selected rows.
    Grid_RowColChange(tables);
    One_D_Grid_KeyDown(ctx, Table_Id::Pwm2_Fuel, {1, 0, 1, 1}, Key::Minus, hooks);
    One_D_Grid_KeyDown(ctx, Table_Id::Pwm2_Fuel, {1, 0, 1, 1}, '9', hooks);
    One_D_Grid_KeyDown(ctx, Table_Id::Pwm2_Fuel, {1, 0, 1, 1}, '9', hooks);
    EXPECT_EQ(Byte(54), 0);
    EXPECT_EQ(Byte(49), axis_step);

    const int after_block = Byte(59);
    Grid_Selection at{4, 1, 4, 1};
    std::string clip = "0,4\n99\n7\n";
    EXPECT_TRUE(One_D_Grid_KeyPress(ctx, Table_Id::Pwm2_Fuel, at, Ctrl_V, clip, hooks));
    EXPECT_EQ(Byte(57), 130);
    EXPECT_EQ(Byte(58), 255); // cut to 25.4 %, and the third line has no point left
    EXPECT_EQ(Byte(59), after_block);
    EXPECT_EQ(at.RowSel, 5);
    EXPECT_EQ(at.Col, 1);
}

TEST_F(Edit, CopyGivesSpreadsheetTextAndPasteTurnsTextIntoBytes) {
    On(Table_Id::Fuel_3D);
    Byte(Fuel(1, 1)) = 8;
    Byte(Fuel(1, 2)) = 25;
    Byte(Fuel(2, 1)) = 0;
    Byte(Fuel(2, 2)) = 255;
    Grid_Selection sel{2, 2, 1, 1};
    std::string clip;
    EXPECT_TRUE(Fuel_3D_Grid_KeyPress(ctx, sel, Ctrl_C, clip, hooks));
    EXPECT_EQ(clip, "1.48\t2.5\r\n0.0\t25.5\r\n");

    // Back from a spreadsheet with comma decimals, one value too big, one not a number.
    clip = "3,0\t30\r\nabc\t1,06\r\n";
    Grid_Selection at{5, 5, 6, 6};
    Fuel_3D_Grid_KeyPress(ctx, at, Ctrl_V, clip, hooks);
    EXPECT_EQ(Byte(Fuel(5, 5)), 30);
    EXPECT_EQ(Byte(Fuel(5, 6)), 255);
    EXPECT_EQ(Byte(Fuel(6, 5)), 0);
    EXPECT_EQ(Byte(Fuel(6, 6)), 1);

    // One selected cell takes the whole block; the map's edge cuts it.
    Grid_Selection corner{18, 18, 18, 18};
    Fuel_3D_Grid_KeyPress(ctx, corner, Ctrl_V, std::string("2.5\t2.5\t2.5\n5\t5\t5\n") += "9", hooks);
    EXPECT_EQ(corner, (Grid_Selection{18, 18, 18, 19}));
    EXPECT_EQ(Byte(Fuel(18, 19)), 25);

    EXPECT_EQ(Split_Clipboard("a\tb\r\nc\n\nd"),
              (std::vector<std::vector<std::string>>{{"a", "b"}, {"c"}, {""}, {"d"}}));
    EXPECT_TRUE(Split_Clipboard("").empty());
}

TEST(Colours, MidDutyGreyAndTheLegend) {
    EXPECT_EQ(Mid_Colour(100, 100), (Rgb{255, 245, 245}));
    EXPECT_EQ(Mid_Colour(99, 100), (Rgb{249, 249, 255}));
    EXPECT_EQ(Mid_Colour(255, 100), (Rgb{255, 90, 90}));
    EXPECT_EQ(Mid_Colour(0, 100), (Rgb{150, 150, 255}));
    EXPECT_EQ(Mid_Colour(10, 0), (Rgb{255, 235, 235})); // far above M the levels stop at 0
    EXPECT_EQ(Mid_Colour(255, 0), (Rgb{255, 0, 0}));
    EXPECT_EQ(Mid_Limit(""), 0);
    EXPECT_DOUBLE_EQ(Mid_Limit("10,5"), 105);
    EXPECT_EQ(Color_Low_frame(100), (Rgb{150, 150, 255}));
    EXPECT_EQ(Color_High_frame(100), (Rgb{255, 90, 90}));

    EXPECT_EQ(Duty_Colour(100, 6000), (Rgb{255, 254, 254}));
    EXPECT_EQ(Duty_Colour(99, 6000), (Rgb{252, 252, 255})); // duty 49
    EXPECT_EQ(Duty_Colour(255, 8000), (Rgb{255, 0, 0}));    // 170 %
    EXPECT_EQ(Grey_Colour(101), (Rgb{50, 50, 50}));         // 50.5 to the even 50
    EXPECT_EQ(Grey_Colour(103), (Rgb{52, 52, 52}));
}

TEST_F(Edit, MapColoursFollowTheModeAndDutyStaysOnTheFuelMap) {
    Byte(Fuel(1, 1)) = 100;
    tables.colours.Mid_3D_limit_txt = "10";
    Map_Colours fuel = Update_3D_Colors(ctx);
    EXPECT_EQ(fuel.rows, 18);
    EXPECT_EQ(fuel.cols, 19);
    EXPECT_EQ(fuel.At(1, 1), (Rgb{255, 245, 245}));
    EXPECT_EQ(fuel.low, (Rgb{150, 150, 255}));

    tables.colours.Color_3D_Check = Colour_Mode::Duty;
    double rpm = image.CardValue[static_cast<std::size_t>(Fuel_Block(ctx).Rpm_Step(1))];
    EXPECT_EQ(Update_3D_Colors(ctx).At(1, 1), Duty_Colour(100, rpm));
    EXPECT_EQ(Update_3D_Ign_Colors(ctx).At(1, 1), White);
    tables.colours.Color_3D_Check = Colour_Mode::None;
    EXPECT_EQ(Update_3D_Colors(ctx).At(1, 1), White);
}

TEST_F(Edit, VerifyShowsBoxMinusProgramWithTheFourColours) {
    Byte(Fuel(1, 1)) = 100; // 10.0 ms in the program
    Byte(Fuel(1, 2)) = 100;
    Byte(Fuel(1, 3)) = 0;
    Byte(Fuel(1, 4)) = 100;
    image.TempByte = image.CardByte;
    image.TempByte[static_cast<std::size_t>(Fuel(1, 1))] = 95; // 5 % leaner in the box
    image.TempByte[static_cast<std::size_t>(Fuel(1, 2))] = 120;
    image.TempByte[static_cast<std::size_t>(Fuel(1, 3))] = 30;
    image.TempByte[static_cast<std::size_t>(Fuel(1, 4))] = 99;
    for (int c = 1; c <= 4; ++c)
        image.ChangedByte[static_cast<std::size_t>(Fuel(1, c))] = Changed_Mark;
    tables.colours.Mid_3D_limit_txt = "10";

    Verify_View view = Verify_Check_Pass(ctx, Table_Id::Fuel_3D);
    EXPECT_EQ(view.higher_caption, "Leaner in box");
    EXPECT_EQ(view.At(1, 1).text, "-0.5");
    EXPECT_DOUBLE_EQ(view.At(1, 1).pct, 5);
    EXPECT_EQ(view.At(1, 1).colour, (Rgb{160, 255, 255}));
    EXPECT_EQ(view.At(1, 2).text, "2.0");
    EXPECT_EQ(view.At(1, 2).colour, (Rgb{255, 224, 0})); // -20 %
    EXPECT_DOUBLE_EQ(view.At(1, 3).pct, -999);           // nothing in the program
    EXPECT_EQ(view.At(1, 4).colour, (Rgb{160, 255, 255}));
    EXPECT_EQ(view.At(1, 5).text, "0.0"); // unchanged
    EXPECT_FALSE(view.At(1, 5).compared);
    EXPECT_EQ(Verify_Colour(10, 10), (Rgb{5, 208, 255}));
    EXPECT_EQ(Verify_Colour(-9.9, 10), (Rgb{255, 255, 128}));

    image.CardByte[900] = 40;
    image.ChangedByte[900] = Changed_Mark;
    auto lines = Show_VerifyData(ctx);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].name, "PWM 1 point 5");
    EXPECT_EQ(lines[0].program_text, "20.00");

    image.TempByte.fill(0); // no read at hand
    EXPECT_FALSE(Verify_Check_Pass(ctx, Table_Id::Fuel_3D).At(1, 1).compared);
    EXPECT_TRUE(Show_VerifyData(ctx).empty());
}

TEST_F(Edit, TheButtonsServeTheTableOnShowAndTheSurfaceHasItsWords) {
    auto enabled = [&](const char* name) {
        for (const Button_State& b : Handle_button_enable(tables))
            if (b.name == name) return b.enabled;
        ADD_FAILURE() << name;
        return false;
    };
    On(Table_Id::Fuel_3D);
    EXPECT_TRUE(enabled("Even_Cols_cmd"));
    EXPECT_TRUE(enabled("Color_3D_Check(3)"));
    EXPECT_FALSE(enabled("steep"));
    On(Table_Id::Ignition_3D);
    EXPECT_FALSE(enabled("Color_3D_Check(3)"));
    On(Table_Id::Pwm1);
    EXPECT_TRUE(enabled("set_table"));
    EXPECT_FALSE(enabled("plus_3d"));
    image.CardByte[175] = static_cast<std::uint8_t>(image.CardByte[175] | 7 << 3); // function 7
    Update_Tabs(ctx);
    On(Table_Id::Fuel2_Map);
    EXPECT_FALSE(enabled("plus"));

    Show_Right_Tabs(ctx);
    Byte(Fuel(2, 3)) = 24;
    Surface_Data surface = Calculate_Fuel3dmap(ctx);
    EXPECT_EQ(surface.series, "Fuel map");
    EXPECT_EQ(surface.z_title, "Load [bar]");
    EXPECT_DOUBLE_EQ(surface.y[1][2], 2.44);
    std::string csv = Surface_Csv(surface);
    EXPECT_EQ(csv.substr(0, csv.find(',')), "Load [bar] / RPM");
    EXPECT_NE(csv.find("\r\n"), std::string::npos);
    EXPECT_EQ(Export_Name("/maps/Track day.QXS"), "Track day_qxs");
}

TEST_F(Edit, PwmOneAndTheAccelerationFuelAsSurfaces) {
    // PWM 1 over speed, scaled by its compensation: 50 % at the lowest load, 100 % from the
    // high point on.
    const int base = One_D_Base(Table_Id::Pwm1);
    Byte(base) = 200;
    Byte(base + 20) = 101;
    Byte(92) = 0;
    Byte(93) = 100;
    Byte(94) = 255;
    Byte(95) = 200;
    Surface_Data pwm = Calculate_PWM3dmap(ctx);
    EXPECT_EQ(pwm.series, "PWM map");
    EXPECT_EQ(pwm.y_title, "PWM [%]");
    EXPECT_EQ(pwm.x_title, "RPM");
    EXPECT_EQ(pwm.z_title.rfind("Load [", 0), 0u);
    ASSERT_EQ(pwm.x.size(), 21u);
    ASSERT_EQ(pwm.z.size(), 21u);
    EXPECT_DOUBLE_EQ(pwm.x[20], 10000);
    EXPECT_DOUBLE_EQ(pwm.y[0][0], 50.0);
    EXPECT_DOUBLE_EQ(pwm.y[20][0], 100.0);
    EXPECT_DOUBLE_EQ(pwm.y[0][20], 25.0); // byte 101 at 50 % is byte 50
    EXPECT_DOUBLE_EQ(pwm.y[10][0], 75.0); // halfway up the curve
    Byte(186) = static_cast<std::uint8_t>((Byte(186) & 0xF0) | Pwm_Boost_Selection);
    Update_Tabs(ctx);
    pwm = Calculate_PWM3dmap(ctx);
    EXPECT_EQ(pwm.series, "Boost map");
    EXPECT_EQ(pwm.y_title, "Boost [bar]");

    // Enrichment over 0.51 V a sample, 1 ms a volt, held three cycles.
    Byte(4) = static_cast<std::uint8_t>((Byte(4) & ~3) | 1);
    Byte(86) = 26;
    Byte(87) = 51;
    Byte(88) = 3;
    Surface_Data acc = Calculate_Acc3dmap(ctx);
    EXPECT_EQ(acc.series, "Acceleration fuel");
    EXPECT_EQ(acc.x_title, "Load change");
    EXPECT_EQ(acc.y_title, "Acc fuel [ms]");
    ASSERT_EQ(acc.z.size(), 4u);
    EXPECT_DOUBLE_EQ(acc.y[0][2], 0.0); // 0.5 V: under the threshold
    EXPECT_DOUBLE_EQ(acc.y[0][3], 0.75);
    EXPECT_DOUBLE_EQ(acc.y[2][20], 5.0);
    EXPECT_DOUBLE_EQ(acc.y[3][20], 0.0); // the cycle after the sustain
    Byte(4) = static_cast<std::uint8_t>(Byte(4) & ~3);
    acc = Calculate_Acc3dmap(ctx);
    EXPECT_DOUBLE_EQ(acc.y[0][20], 0.0);
    EXPECT_NE(Surface_Csv(acc).find("Engine cycles / Load change"), std::string::npos);
}

// --- the command line ---------------------------------------------------------------------

int Cli(const std::vector<std::string>& args, std::string* out_text = nullptr) {
    test::Cli_Result r = test::Run_Cli(args);
    if (out_text != nullptr) *out_text += r.out;
    return r.code;
}

TEST(Edit_Command, RunsEachOperationAsItsButtonAndSavesTheResult) {
    test::Temp_Dir dir;
    const std::string in = std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3_Default_Settings.qxs";
    const std::string ini = std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini";
    const std::string out = dir.File("out.qxs");
    auto original = Load_Qxs_File(in);
    ASSERT_TRUE(original);
    // 19 x 18 fuel map at 256, 18 x 11 ignition map at 653.
    const int fuel_1_1 = 256 + 19 + 18 + 2;
    const int ign_1_1 = 653 + 18 + 11 + 2;

    std::string printed;
    EXPECT_EQ(Cli({"edit",    in,          "-o",   out,        "--ini", ini,      "--op", "fuel",
                   "2,1:1,3", "steep-rpm", "--op", "ignition", "1,1",   "set=60", "--op", "fuel",
                   "5,5",     "type=1,5",  "--op", "pwm2",     "3:7",   "steep-l"},
                  &printed),
              0);
    auto edited = Load_Qxs_File(out);
    ASSERT_TRUE(edited);
    EXPECT_EQ(edited->bytes[fuel_1_1 + 2], original->bytes[fuel_1_1 + 2] + 2);
    EXPECT_EQ(edited->bytes[fuel_1_1 + 19], original->bytes[fuel_1_1 + 19]); // row 2, column 1
    EXPECT_EQ(edited->bytes[ign_1_1], 255);
    EXPECT_EQ(edited->bytes[fuel_1_1 + 4 * 19 + 4], 8);
    EXPECT_EQ(edited->bytes[917 + 2], original->bytes[917 + 2] + 4);
    EXPECT_EQ(edited->comment, original->comment);
    EXPECT_NE(printed.find("set text became \"51\""), std::string::npos);
    EXPECT_NE(printed.find("fuel 2,1:1,3 steep-rpm: 4 bytes changed"), std::string::npos);

    // A mistyped operation, or a selection off the map, changes and writes nothing.
    const std::string none = dir.File("none.qxs");
    EXPECT_EQ(Cli({"edit", in, "-o", none, "--op", "fuel", "1,1", "plus", "--op", "fuel", "1,1", "steep"}),
              2);
    EXPECT_EQ(Cli({"edit", in, "-o", none, "--op", "fuel", "19,1", "plus"}), 2);
    EXPECT_EQ(Cli({"edit", in, "-o", none, "--op", "pwm2-fuel", "1", "plus"}), 2);
    EXPECT_FALSE(std::filesystem::exists(none));
    EXPECT_EQ(Cli({"edit", dir.File("missing.qxs"), "-o", none, "--op", "fuel", "1,1", "plus"}), 1);

    std::string help;
    Cli({"--help"}, &help);
    EXPECT_NE(help.find("edit FILE -o OUT"), std::string::npos);
}

TEST(Edit_Command, SavesByTheProgramsRulesAndStepsBackAndForth) {
    test::Temp_Dir dir;
    auto original = Load_Qxs_File(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3_Default_Settings.qxs");
    ASSERT_TRUE(original);
    Image_Bytes bytes = original->bytes;
    bytes[250] = 7;
    bytes[251] = 8;
    bytes[255] = 68;
    const std::string in = dir.File("in.qxs");
    test::Write_File(in, Format_Qxs(bytes, "mine"));
    const std::string ini = std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini";
    const int fuel_1_1 = 256 + 19 + 18 + 2;

    test::Cli_Result r =
        test::Run_Cli({"edit", in, "-o", dir.File("out.qxs"), "--ini", ini, "--op", "fuel", "1,1", "plus",
                       "--op", "pwm1", "2", "set=37", "--undo", "--undo", "--redo"});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.out.find("undo: 1 bytes changed\n"), std::string::npos) << r.out;
    EXPECT_NE(r.err.find("dataset ID 68 is saved as 200"), std::string::npos) << r.err;
    auto out = Load_Qxs_File(dir.File("out.qxs"));
    ASSERT_TRUE(out);
    EXPECT_EQ(out->bytes[fuel_1_1], bytes[fuel_1_1] + 1); // redone
    EXPECT_EQ(out->bytes[897], bytes[897]);               // undone
    EXPECT_EQ(out->bytes[250], 0);
    EXPECT_EQ(out->bytes[251], 0);
    EXPECT_EQ(out->bytes[255], 200);
    EXPECT_EQ(out->comment, "mine\r\n");
}

} // namespace
} // namespace quorlen
