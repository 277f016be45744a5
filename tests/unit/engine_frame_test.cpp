#include "engine/engine_config_frame.h"

#include "core/atomic_file.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace quorlen;
using quorlen::test::Temp_Dir;

namespace {

class EngineFrame : public ::testing::Test {
protected:
    EngineFrame() {
        Ini_File ini(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini", "");
        Load_Engine_Config_Tab(engine.Engine_Config_Tab, ini);
        log.Open(dir.File("Debug_file.log"));
        Fill_Engine_setup_combo(ctx);
    }

    std::string Logged() {
        log.Close();
        return Read_Whole_File(dir.File("Debug_file.log"));
    }
    const Engine_List_Box& List(Engine_List l) const { return frame.List(l); }
    void Choose(Engine_List l, const std::string& item) {
        const auto& items = frame.List(l).items;
        auto it = std::find(items.begin(), items.end(), item);
        ASSERT_NE(it, items.end()) << item;
        Engine_List_Click(ctx, l, static_cast<int>(it - items.begin()));
    }

    Temp_Dir dir;
    Engine_Config_State engine;
    Engine_Config_Frame frame;
    Settings_Image image;
    Undo_List undo;
    Debug_Log log;
    int updates = 0;
    Engine_Config_Context ctx{engine, frame, image, undo, log, [this] { ++updates; }};
};

} // namespace

TEST_F(EngineFrame, ImageValueZeroShowsTheFirstRow) {
    image.CardByte[Engine_Layout_Address] = 0;
    Show_Engine_Config_Of_Image(ctx);
    ASSERT_EQ(frame.Engine_setup_combo.size(), 256u);
    EXPECT_EQ(frame.Engine_setup_combo_index, 0);
    EXPECT_EQ(frame.Engine_setup_combo[0].substr(0, 3), "1. ");
    EXPECT_EQ(List(Engine_List::Crank_sensor).Text(), "Crank 36-1");
    EXPECT_EQ(List(Engine_List::Car_Example).Text(), "EX: Generic 4 cyl base setting");
    EXPECT_EQ(frame.Caption, "Engine configuration.  Current selection:  Generic 4 cyl base setting");
    EXPECT_EQ(frame.FW_info_txt, ">2.702");
    EXPECT_EQ(frame.Crank_angle_example_label, "Example: 90deg");
    EXPECT_EQ(frame.Fuel_teeth_recomend, "Recomended: 10 teeth"); // 10 degrees, semi-sequential
    EXPECT_FALSE(engine.Sequential_Fuel);
    EXPECT_EQ(engine.Main_Fuel_label, "NOTICE!\r\nSemi sequential fuel");
    // Following the image is not an edit.
    EXPECT_EQ(image.ChangedByte[Engine_Layout_Address], 0);
    EXPECT_FALSE(frame.Engine_Config_OK_Enabled);
    EXPECT_EQ(updates, 0);
}

TEST_F(EngineFrame, ChoosingALayoutIsAnEditUndoCanTakeBack) {
    image.CardByte[Engine_Layout_Address] = 0;
    Show_Engine_Config_Of_Image(ctx);
    Engine_setup_combo_Click(ctx, 7); // row 8: 60-2 wheel with a cam sensor, sequential
    EXPECT_EQ(image.CardByte[Engine_Layout_Address], 7);
    EXPECT_EQ(image.ChangedByte[Engine_Layout_Address], Changed_Mark);
    EXPECT_EQ(frame.Fuel_teeth_recomend, "Recomended: 77 teeth"); // 6 degrees a tooth
    EXPECT_TRUE(engine.Sequential_Fuel);
    EXPECT_EQ(engine.Main_Fuel_label, "Sequential fuel");
    EXPECT_TRUE(frame.Engine_Config_OK_Enabled);
    EXPECT_EQ(updates, 1);
    edit_undo_Click(undo, image, {});
    EXPECT_EQ(image.CardByte[Engine_Layout_Address], 0);
    // The same layout again changes nothing and takes no snapshot.
    const int level = undo.UndoIndex;
    image.ChangedByte = {};
    Engine_setup_combo_Click(ctx, 0);
    EXPECT_EQ(undo.UndoIndex, level);
    EXPECT_EQ(image.ChangedByte[Engine_Layout_Address], 0);
}

TEST_F(EngineFrame, ByteOutsideTheCatalogueShowsEmptyFieldsAndLogsTheFault) {
    Engine_setup_combo_Click(ctx, 255);
    EXPECT_EQ(image.CardByte[Engine_Layout_Address], 255);
    EXPECT_EQ(frame.Engine_setup_combo[static_cast<std::size_t>(frame.Engine_setup_combo_index)],
              "256. Not supported ");
    for (const auto& list : frame.lists)
        EXPECT_TRUE(list.items.empty());
    EXPECT_EQ(frame.Caption, "Engine configuration.  Current selection: ");
    EXPECT_EQ(frame.Cylinder_info_txt, "");
    EXPECT_EQ(frame.FW_info_txt, "");
    EXPECT_EQ(frame.Crank_angle_example_label, "");
    EXPECT_EQ(frame.Fuel_teeth_recomend, "");
    EXPECT_EQ(updates, 1);
    const std::string logged = Logged();
    EXPECT_NE(logged.find("Error in Engine setup combo click"), std::string::npos) << logged;
}

TEST_F(EngineFrame, EditStartsTheGuideWithTheCylinderQuestion) {
    Show_Engine_Config_Of_Image(ctx);
    Init_Selection_guide_Click(ctx);
    EXPECT_EQ(frame.BackColor, Frame_Editing_Colour);
    EXPECT_EQ(frame.Caption, "EDITING - Engine configuration. Do not change when engine is running!");
    EXPECT_TRUE(frame.Engine_setup_combo_Locked);
    EXPECT_FALSE(frame.Engine_Config_OK_Enabled);
    // Rows 2 to 35 in row order, each answer once.
    EXPECT_EQ(List(Engine_List::Cylinder_info).items,
              (std::vector<std::string>{"4 cylinders", "5 cylinders", "6 cylinders", "8 cylinders"}));
}

TEST_F(EngineFrame, SeveralAnswersSelectThePromptAndStop) {
    Init_Selection_guide_Click(ctx);
    Choose(Engine_List::Cylinder_info, "8 cylinders");
    EXPECT_EQ(List(Engine_List::Ignition_type).items,
              (std::vector<std::string>{"Select ignition type", "Wasted spark"}));
    // One ignition type: answered at once. Two fuel systems: the question waits.
    EXPECT_EQ(List(Engine_List::Ignition_type).index, 1);
    EXPECT_EQ(List(Engine_List::Fuel_system).items,
              (std::vector<std::string>{"Select fuel system", "Semiseq", "Sequential"}));
    EXPECT_EQ(List(Engine_List::Fuel_system).index, 0);
    // The prompt chosen refills the next list with its prompt alone.
    EXPECT_EQ(List(Engine_List::Crank_sensor).items, std::vector<std::string>{"Select crank sensor"});
    EXPECT_TRUE(List(Engine_List::Cam_sensor).items.empty());
    EXPECT_TRUE(List(Engine_List::Car_Example).items.empty());
}

TEST_F(EngineFrame, OneCandidateLeftRunsToTheEndAndApplyTakesIt) {
    image.CardByte[Engine_Layout_Address] = 0;
    Show_Engine_Config_Of_Image(ctx);
    Init_Selection_guide_Click(ctx);
    Choose(Engine_List::Cylinder_info, "4 cylinders");
    Choose(Engine_List::Ignition_type, "Distributor");
    Choose(Engine_List::Fuel_system, "Sequential"); // only the Honda distributor is left
    EXPECT_EQ(List(Engine_List::Firing_order).Text(), "1-3-4-2");
    EXPECT_EQ(List(Engine_List::Car_Example).items,
              std::vector<std::string>{"18: EX: Honda B16/B18 distributor sensors"});
    EXPECT_EQ(frame.Caption, "Engine configuration.  New selection: EX: Honda B16/B18 distributor sensors");
    EXPECT_EQ(frame.Selected_Engine_config_row_txt, "18");
    EXPECT_EQ(engine.Engine_Config_New_Row, 18);
    // On arrival the firmware field shows the fuel firing order.
    EXPECT_EQ(frame.FW_info_txt, engine.Engine_Config_Tab.At(18, Eng_Fuel_Firing_Order));
    EXPECT_TRUE(frame.Engine_Config_OK_Enabled);
    EXPECT_EQ(image.CardByte[Engine_Layout_Address], 0); // nothing written yet

    Engine_Config_OK_Click(ctx);
    EXPECT_EQ(image.CardByte[Engine_Layout_Address], 17);
    EXPECT_EQ(image.ChangedByte[Engine_Layout_Address], Changed_Mark);
    EXPECT_EQ(frame.Engine_setup_combo_index, 17);
    EXPECT_EQ(frame.Caption,
              "Engine configuration.  Current selection: EX: Honda B16/B18 distributor sensors");
    EXPECT_EQ(frame.BackColor, Frame_Face_Colour);
    EXPECT_FALSE(frame.Engine_Config_OK_Enabled);
    EXPECT_FALSE(frame.Engine_setup_combo_Locked);
    EXPECT_EQ(frame.FW_info_txt, ">3.033");
    EXPECT_EQ(frame.Fuel_teeth_recomend, "Recomended: 15 teeth"); // 30 degrees, sequential
    EXPECT_TRUE(engine.Sequential_Fuel);
}

TEST_F(EngineFrame, CancelRefillsFromTheImageAndLeavesTheLock) {
    image.CardByte[Engine_Layout_Address] = 3;
    Show_Engine_Config_Of_Image(ctx);
    Init_Selection_guide_Click(ctx);
    Choose(Engine_List::Cylinder_info, "6 cylinders");
    Engine_Config_Cancle_Click(ctx);
    EXPECT_EQ(image.CardByte[Engine_Layout_Address], 3);
    EXPECT_EQ(image.ChangedByte[Engine_Layout_Address], 0);
    EXPECT_EQ(List(Engine_List::Car_Example).Text(), engine.Engine_Config_Tab.At(4, Eng_Car_Example));
    EXPECT_EQ(frame.Caption, "Engine configuration");
    EXPECT_EQ(frame.BackColor, Frame_Face_Colour);
    EXPECT_FALSE(frame.Engine_Config_OK_Enabled);
    EXPECT_TRUE(frame.Engine_setup_combo_Locked);
}

TEST_F(EngineFrame, ImageChangeDuringTheGuideLeavesTheGuidesLists) {
    Show_Engine_Config_Of_Image(ctx);
    Init_Selection_guide_Click(ctx);
    Choose(Engine_List::Cylinder_info, "5 cylinders");
    const auto fuel = List(Engine_List::Fuel_system).items;
    image.CardByte[Engine_Layout_Address] = 7; // a settings file loaded meanwhile
    Show_Engine_Config_Of_Image(ctx);
    EXPECT_EQ(frame.Engine_setup_combo_index, 7);
    EXPECT_EQ(List(Engine_List::Fuel_system).items, fuel);
    EXPECT_TRUE(engine.Sequential_Fuel); // but the program knows the new layout
}

TEST_F(EngineFrame, RowsSharingAllAnswersWaitForTheCar) {
    Engine_Config_Table tab;
    const std::string common = "\tCrank 36-1\tNo cam\tNo cam 2\tNo TDC\t1-3-4-2\tWasted spark\tSemiseq\t";
    Fill_Engine_Config_Row(tab, 2, "1" + common + "EX: A\t-\t4 cylinders");
    Fill_Engine_Config_Row(tab, 3, "2" + common + "EX: B\t-\t4 cylinders");
    engine.Engine_Config_Tab = tab;
    Init_Selection_guide_Click(ctx);
    Choose(Engine_List::Cylinder_info, "4 cylinders");
    EXPECT_EQ(List(Engine_List::Car_Example).items, (std::vector<std::string>{"EX: A", "EX: B"}));
    EXPECT_FALSE(frame.Engine_Config_OK_Enabled);
    Choose(Engine_List::Car_Example, "EX: A");
    EXPECT_EQ(engine.Engine_Config_New_Row, 2);
    EXPECT_EQ(frame.Caption, "Engine configuration.  New selection: EX: A");
    EXPECT_TRUE(frame.Engine_Config_OK_Enabled);
}
