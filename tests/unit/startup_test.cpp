#include "app/startup.h"
#include "support/file_opens.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

namespace quorlen {
namespace {

using test::Read_File;
using test::Temp_Dir;
using test::Write_File;

class Startup : public ::testing::Test {
protected:
    Startup() {
        app.program.Ini_File_Name = "RZ400_800M3.ini";
        app.Use_App_Path(dir.Slash());
    }
    void Ini(const std::string& text) { Write_File(dir.File("RZ400_800M3.ini"), text); }
    std::string Ini_Text() { return Read_File(dir.File("RZ400_800M3.ini")); }

    Temp_Dir dir;
    App_Context app;
};

TEST_F(Startup, NoIniFileGivesDefaults) {
    app.program.Starting_Up = true;
    Read_Language_And_Autoguide(app);
    Read_Link_And_Autostart(app);
    Init_ini_file(app);
    EXPECT_EQ(app.program.Language, "");
    EXPECT_EQ(app.program.Autoguide, 0);
    EXPECT_EQ(app.program.ComSpeed, 115200);
    EXPECT_FALSE(app.prefs.Auto_Start_option[0] || app.prefs.Auto_Start_option[1]);
    EXPECT_FALSE(app.program.Autostart_Pending);
    EXPECT_EQ(app.program.Com_Port, 1);
    ASSERT_EQ(app.PresetList.size(), 1u);
    EXPECT_EQ(app.PresetList[0].name, "<No preset in ini file>");
    EXPECT_EQ(app.User_Preset, 1);
    // Each start records where the program keeps its data.
    EXPECT_EQ(app.ini.Read_Ini("start_dir"), dir.Slash());
}

TEST_F(Startup, BothAutostartsInTheFileLeaveOnlyLiveAndRewriteThePair) {
    Ini("Autostart_Log=1\r\nAutostart_Live=1\r\n");
    app.program.Starting_Up = true;
    Read_Link_And_Autostart(app);
    EXPECT_FALSE(app.prefs.Auto_Start_option[0]);
    EXPECT_TRUE(app.prefs.Auto_Start_option[1]);
    EXPECT_TRUE(app.program.Autostart_Pending);
    EXPECT_EQ(Ini_Text(), "Autostart_Log=0\r\nAutostart_Live=1\r\n");
}

TEST_F(Startup, AutostartOptionsMayBothBeOff) {
    Auto_Start_option_Click(app, 0, true);
    Auto_Start_option_Click(app, 0, false);
    EXPECT_FALSE(app.prefs.Auto_Start_option[0] || app.prefs.Auto_Start_option[1]);
    EXPECT_EQ(app.ini.Read_Ini("Autostart_Log"), "0");
}

TEST_F(Startup, AutoguideOptionFollowsTheLanguageTextButTheQuestionFollowsTheKey) {
    Ini("Language=SWE\r\nAutoguide=0\r\n");
    app.program.Starting_Up = true;
    Read_Language_And_Autoguide(app);
    EXPECT_EQ(app.prefs.Language, 1);
    EXPECT_EQ(app.prefs.Autoguide, 1); // "SWE" is no number: the fall-through selects it
    EXPECT_EQ(app.program.Autoguide, 0);
    EXPECT_EQ(Ini_Text(), "Language=SWE\r\nAutoguide=0\r\n"); // the load writes nothing here

    Ini("Language=0\r\nAutoguide=0\r\n");
    app.prefs = {};
    Read_Language_And_Autoguide(app);
    EXPECT_EQ(app.prefs.Autoguide, 0);
}

TEST_F(Startup, InterfaceKeysAndOptions) {
    EXPECT_EQ(Interface_Option_For("SC_Reader"), 0);
    EXPECT_EQ(Interface_Option_For("Serial"), 0);
    EXPECT_EQ(Interface_Option_For("QX_Mapchip"), 2);
    EXPECT_EQ(Interface_Option_For("TodosII_Reader"), 3);
    EXPECT_EQ(Interface_Option_For(""), -1);
    app.prefs.interface_option = 2;
    Prefs_Apply(app, 7);
    EXPECT_EQ(app.ini.Read_Ini("comport1"), "7");
    EXPECT_EQ(app.ini.Read_Ini("default_interface"), "QX_Mapchip");
}

TEST_F(Startup, OptionHandlersWriteTheirKeysOnlyAfterStartUp) {
    app.program.Starting_Up = true;
    ComSpeed_option_Click(app, 1);
    Language_Click(app, 1);
    EXPECT_EQ(app.program.ComSpeed, 625000);
    EXPECT_FALSE(std::filesystem::exists(dir.File("RZ400_800M3.ini")));
    app.program.Starting_Up = false;
    ComSpeed_option_Click(app, 1);
    Language_Click(app, 1);
    Autoguide_Click(app, 0);
    ManualUSBDetect_Check_Click(app, true);
    EXPECT_EQ(Ini_Text(), "ComSpeed=1\r\nLanguage=SWE\r\nAutoguide=0\r\nManualUSBDetect=1\r\n");
}

TEST_F(Startup, PresetsAndTheSelectedOne) {
    Ini("preset_list=200<Street>@23,s4$$\xC2\xA3\r\npreset_list=200<Track>@23,r0$$\xC2\xA3\r\nUser_Preset="
        "1\r\n");
    Init_ini_file(app);
    ASSERT_EQ(app.PresetList.size(), 2u);
    EXPECT_EQ(app.PresetList[1].name, "Track");
    EXPECT_EQ(app.User_Preset, 1);
    Ini("preset_list=200<Street>$$\xC2\xA3\r\nUser_Preset=9\r\n");
    Init_ini_file(app);
    EXPECT_EQ(app.User_Preset, 1); // beyond the rows: the count
}

TEST_F(Startup, TheLoadReadsTheFileOnceHoweverLongItsLists) {
    std::string text = "comport1=3\r\n";
    for (int i = 1; i <= 300; ++i)
        text += "Sens_Def=S" + std::to_string(i) + "\tLinear\t0.1\t0\t0\t255\tV\t1\tbin\r\n";
    for (int i = 1; i <= 100; ++i)
        text += "preset_list=200<P" + std::to_string(i) + ">$$\xC2\xA3\r\n";
    Ini(text + "User_Preset=5\r\n");
    // The load may read the file, and rewrite it for start_dir.
    const int opens = test::Opens_Of(dir.File("RZ400_800M3.ini"), [&] { Init_ini_file(app); });
    EXPECT_GE(opens, 1);
    EXPECT_LE(opens, 2);
    EXPECT_EQ(app.sensors.table.Sens_Count, 301);
    EXPECT_EQ(app.sensors.table.Name(300), "S300");
    EXPECT_EQ(app.PresetList.size(), 100u);
    EXPECT_EQ(app.User_Preset, 5);
    EXPECT_EQ(app.program.Com_Port, 3);
}

TEST_F(Startup, NumbersTooBigForTheirOptionsCountAsAbsent) {
    Ini("Autoguide=99999999999999999999\r\nManualUSBDetect=-99999999999\r\ncomport1=4294967297\r\n");
    app.program.Starting_Up = true;
    Read_Language_And_Autoguide(app);
    Read_Link_And_Autostart(app);
    Init_ini_file(app);
    EXPECT_EQ(app.program.Autoguide, 0);
    EXPECT_EQ(app.program.ManualUSBDetect, 0);
    EXPECT_FALSE(app.prefs.ManualUSBDetect_Check);
    EXPECT_EQ(app.program.Com_Port, 0);
}

} // namespace
} // namespace quorlen
