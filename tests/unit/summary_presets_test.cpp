#include "files/presets.h"
#include "files/rtf_text.h"
#include "files/settings_summary.h"

#include "core/atomic_file.h"
#include "core/ini_file.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorlen;
using quorlen::test::Temp_Dir;

namespace {

Preset_Row Preset(const std::string& lists) {
    return Parse_Preset_Line("200<Test>" + lists + "\xC2\xA3");
}

} // namespace

// --- presets ----------------------------------------------------------------------------

TEST(Presets, PositionAbove255IsTakenAs255) {
    Settings_Image image;
    Debug_Log log;
    EXPECT_EQ(Show_Preset_Changes(Preset("@300,s3$!"), image, log),
              "These presets will change:\r\n255: 0 -> 3\r\n");
    auto changes = Apply_Preset(Preset("@300,s3$!"), image, log);
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(image.CardByte[255], 3);
    EXPECT_EQ(image.ChangedByte[255], Changed_Mark);
}

TEST(Presets, ItemsThatChangeNothingGiveNoLineAndNoMark) {
    Settings_Image image;
    Debug_Log log;
    image.CardByte[215] = 3;
    image.CardByte[7] = 45;
    const Preset_Row row = Preset("@215,s3,r255$@7,r0,s90!");
    EXPECT_EQ(Show_Preset_Changes(row, image, log),
              "These presets will change:\r\n7: 45 -> 0\r\n7: 0 -> 90\r\n");
    // Showing leaves the image alone.
    EXPECT_EQ(image.CardByte[7], 45);
    Apply_Preset(row, image, log);
    EXPECT_EQ(image.CardByte[7], 90);
    EXPECT_EQ(image.ChangedByte[7], Changed_Mark);
    EXPECT_EQ(image.ChangedByte[215], 0);
}

TEST(Presets, PositionCarriesIntoTheNextListAndFaultsChangeNothing) {
    Temp_Dir dir;
    Settings_Image image;
    Debug_Log log;
    log.Open(dir.File("Debug_file.log"));
    // "s300" would put 300 in a byte; "@-1" names no byte; the items after them still run.
    Apply_Preset(Preset("@10,s300$s1!@-1,s2"), image, log);
    EXPECT_EQ(image.CardByte[10], 3);
    EXPECT_EQ(image.CardByte[0], 0);
    log.Close();
    EXPECT_NE(Read_Whole_File(dir.File("Debug_file.log")).find("Error in Apply user preset"),
              std::string::npos);
}

TEST(Presets, ShippedPresetsReadAndShow) {
    Ini_File ini(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini", "");
    Preset_Row idle = Parse_Preset_Line(ini.Read_Ini("preset_list", 6));
    EXPECT_EQ(idle.name, "Idle control on");
    Settings_Image image;
    Debug_Log log;
    EXPECT_EQ(Show_Preset_Changes(idle, image, log),
              "These presets will change:\r\n215: 0 -> 16\r\n7: 0 -> 90\r\n");
}

TEST(Presets, DatasetDescriptionShowsBitsOfTheImage) {
    Temp_Dir dir;
    Settings_Image image;
    image.CardByte[185] = 64;
    EXPECT_EQ(Dataset_Description(dir.Slash(), 200, image), ""); // no file: nothing
    Replace_File_Atomically(
        dir.File("DatasetID200.txt"),
        "185, Fuel mode bits: bit 6 sequential\r\n17, Rev limit in 100 rpm\r\nFree words\r\n");
    EXPECT_EQ(
        Dataset_Description(dir.Slash(), 200, image),
        "185: Fuel mode bits: bit 6 sequential  01000000\r\n17: Rev limit in 100 rpm\r\nFree words\r\n");
}

TEST(Presets, BasePercentage) {
    double percent = 0;
    EXPECT_FALSE(Pre_perc_Valid("", percent));
    EXPECT_FALSE(Pre_perc_Valid("  ", percent));
    EXPECT_FALSE(Pre_perc_Valid("abc", percent));
    EXPECT_FALSE(Pre_perc_Valid("0", percent));
    EXPECT_TRUE(Pre_perc_Valid("105,5", percent));
    EXPECT_DOUBLE_EQ(percent, 105.5);
}

// --- summary ----------------------------------------------------------------------------

TEST(SettingsSummary, LinesInOrderBetweenTheirOwnMarkerLines) {
    Summary_Facts f{"3.4.0", "Linux 6.1", "3.041", "200", "10234", true, true};
    EXPECT_EQ(Readable_Settings_Text(f), "[readable_settings]\r\n"
                                         "Quorlen version: \t\t3.4.0\r\n"
                                         "Operating system: \t\tLinux 6.1\r\n"
                                         "QX-box firmware: \t\t3.041\r\n"
                                         "RZ-box SC ID: \t\t200\r\n"
                                         "RZ-box Serial: \t\tRZ10234\r\n"
                                         "RZ mode: \t\tSlave & Slave present\r\n"
                                         "[end readable_settings]\r\n");
}

TEST(SettingsSummary, NoBoxLeavesTheValuesEmptyAndTheLabels) {
    Summary_Facts f;
    f.program_version = "3.4.0";
    const std::string text = Readable_Settings_Text(f);
    EXPECT_NE(text.find("QX-box firmware: \t\t\r\n"), std::string::npos);
    EXPECT_NE(text.find("RZ-box SC ID: \t\t\r\n"), std::string::npos);
    EXPECT_NE(text.find("RZ-box Serial: \t\t\r\n"), std::string::npos);
    EXPECT_NE(text.find("RZ mode: \t\tMaster\r\n"), std::string::npos);
}

TEST(SettingsSummary, ReadableSectionOfALog) {
    const std::string section = "[readable_settings]\r\nRZ mode: \t\tMaster\r\n[end readable_settings]\r\n";
    EXPECT_EQ(Readable_Section_Of("[log_settings]\r\n[end log_settings]\r\n" + section + "[log_data]"),
              section);
    EXPECT_EQ(Readable_Section_Of(""), "");
    EXPECT_EQ(Readable_Settings_Body(section), "RZ mode: \t\tMaster");
    EXPECT_EQ(Readable_Settings_Body("[readable_settings]\r\n[end readable_settings]"), "");
}

TEST(SettingsSummary, TableSections) {
    Summary_Tables t;
    t.ignition = {{"RPM", "500", "1000"}, {"0.20", "10.0", "12.5"}, {"1.00", "8.0", "9.0"}};
    t.fuel = {{"RPM", "500", "1000", "1500"}, {"0.15", "1.18", "1.30", "1.42"}};
    t.boost = {{"RPM", "", "%"}, {"000", "", "20.0"}, {"500", "", "25.5"}};
    t.boost_over_rpm = true;
    const std::string alt1 = Show_Tabels_Alt1(t);
    EXPECT_EQ(alt1.rfind("--------Tables--------\r\nIgnition load table:\r\n  RPM  500 1000\r\n", 0), 0u)
        << alt1;
    const std::vector<const char*> order{"Ignition load table:", "Ignition rpm table:", "Fuel load table:",
                                         "Fuel rpm table:", "Boost load table:"};
    std::size_t at = 0;
    for (const char* title : order) {
        at = alt1.find(title, at);
        ASSERT_NE(at, std::string::npos) << title;
    }
    EXPECT_NE(alt1.find("Fuel rpm table:\r\n  500 1000 1500\r\n"), std::string::npos) << alt1;

    const std::string alt2 = Show_Tabels_Alt2(t);
    EXPECT_NE(alt2.find("Ignition load table   Fuel load table   Boost load table   \r\n0.20"),
              std::string::npos)
        << alt2;
    EXPECT_NE(alt2.find("Fuel rpm table   Ignition rpm table   Boost rpm table   \r\n"), std::string::npos);
    EXPECT_NE(alt2.find("1500"), std::string::npos);
    EXPECT_NE(alt2.find("500  25.5"), std::string::npos); // the boost table runs over rpm
}

// --- rich text ----------------------------------------------------------------------------

TEST(RichText, SummaryTextSurvivesARoundTrip) {
    const std::string text = "[readable_settings]\r\nRZ mode: \t\tMaster\r\n{braces} and \\ back\r\n"
                             "caf\xE9 \xA3 5\r\n\r\nlast line without end";
    const std::string rtf = Text_To_Rtf(text);
    EXPECT_EQ(rtf.rfind("{\\rtf1", 0), 0u);
    EXPECT_NE(rtf.find("caf\\'e9"), std::string::npos);
    EXPECT_EQ(Rtf_To_Text(rtf), text);
    EXPECT_EQ(Rtf_To_Text(Text_To_Rtf("a\nb\n")), "a\r\nb\r\n");
}

TEST(RichText, ReaderKeepsTextOfForeignDocuments) {
    // As a word processor writes it: tables of fonts and colours, a starred group, Unicode
    // with a fallback character, paragraph marks.
    const std::string rtf =
        "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\froman Times;}}{\\colortbl;\\red0\\green0\\blue0;}"
        "{\\*\\generator Writer;}\\pard\\plain Line\\tab one\\par\r\n"
        "\\u233\\'e9t\\u8364 ?\\par}";
    EXPECT_EQ(Rtf_To_Text(rtf), "Line\tone\r\n\xE9t?\r\n");
    EXPECT_EQ(Rtf_To_Text("plain words\r\n"), "plain words\r\n");
}

TEST(RichText, AnyTextOfTheProgramRoundTripsAndNoInputBreaksTheReader) {
    std::mt19937 random(12);
    const std::string alphabet = std::string("ab Z09\\{}\t;*'") + "\xE9\xA3\x80\xFF";
    for (int n = 0; n < 500; ++n) {
        std::string text;
        const int length = static_cast<int>(random() % 60);
        for (int i = 0; i < length; ++i) {
            if (random() % 8 == 0)
                text += "\r\n";
            else
                text += alphabet[random() % alphabet.size()];
        }
        ASSERT_EQ(Rtf_To_Text(Text_To_Rtf(text)), text) << n;
        // Cut short or scrambled, a document still reads to some text.
        std::string rtf = Text_To_Rtf(text);
        rtf.resize(random() % (rtf.size() + 1));
        if (!rtf.empty()) rtf[random() % rtf.size()] = "\\{}'u-"[random() % 6];
        (void)Rtf_To_Text(rtf);
    }
}
