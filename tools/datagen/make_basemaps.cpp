// Writes the base maps the program ships in its Basemaps folder: settings for stated
// engines, each made from the default settings by the program's own routines (the layout
// list, the sliders of the settings pages) and the auto setup's fuel and ignition map
// generators. The same sources give the same files, byte for byte.
//
//     make_basemaps --data DIR --out DIR
//
// --data is the folder of the shipped ini file and default settings. Exit 1, with the
// reason, when an engine's recipe does not go through cleanly: a slider refusing a value, a
// message a tuner would see, a generator that fails, or a table the load would repair.

#include "app/app_context.h"
#include "app/tune_tools.h"
#include "core/proc_guard.h"
#include "engine/page_choices.h"
#include "files/qxs_format.h"
#include "files/settings_files.h"
#include "sensors/sensor_defs.h"

#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace quorlen {
namespace {

// Any message the program would show while a base map is made is a fault of its recipe.
class Refusing_Dialogs final : public User_Dialogs {
public:
    void Inform(const std::string& text) override { throw std::runtime_error("the program says: " + text); }
    Answer Ask_Ok_Cancel(const std::string& text) override {
        throw std::runtime_error("the program asks: " + text);
    }
    Answer Ask_Yes_No(const std::string& text) override {
        throw std::runtime_error("the program asks: " + text);
    }
    std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup&) override { return std::nullopt; }
    std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup&) override { return std::nullopt; }
};

struct Engine {
    const char* file;
    std::vector<const char*> comment; // no commas or quotes: the settings file reader splits at them
    int layout;                       // image value of the layout list
    bool sequential;                  // the box injects once per cylinder and cycle
    std::vector<std::pair<int, const char*>> sliders; // address, value as typed on the settings pages
    std::vector<int> fuel_rpm_steps, fuel_load_steps, ign_rpm_steps, ign_load_steps;
    std::vector<std::pair<const char*, const char*>> fuel, ignition; // the generators' boxes
};

// Axis steps in raw units: 62.5 rpm a step on speed, the MAP sensor's raw reading on load
// (the shipped images use the 2.5 bar Bosch sensor: raw 16 is 0.15 bar, 96 is 0.99, 208 is
// 2.18). Every step is a power of two, as the box requires.
std::vector<int> Steps(std::initializer_list<std::pair<int, int>> runs) {
    std::vector<int> steps;
    for (auto [step, count] : runs)
        steps.insert(steps.end(), static_cast<std::size_t>(count), step);
    return steps;
}

const std::vector<int> Rpm_500_To_8500 = Steps({{8, 1}, {4, 4}, {8, 14}});    // 19 columns
const std::vector<int> Rpm_500_To_8000 = Steps({{8, 1}, {4, 4}, {8, 13}});    // 18 columns
const std::vector<int> Rpm_500_To_6000 = Steps({{8, 1}, {4, 14}, {8, 4}});    // 19 columns
const std::vector<int> Rpm_500_To_5750 = Steps({{8, 1}, {4, 13}, {8, 4}});    // 18 columns
const std::vector<int> Load_To_1_03_Bar = Steps({{16, 1}, {8, 4}, {4, 13}});  // 18 rows
const std::vector<int> Load_To_0_99_Bar = Steps({{16, 1}, {8, 10}});          // 11 rows
const std::vector<int> Load_To_2_18_Bar = Steps({{16, 1}, {8, 10}, {16, 7}}); // 18 rows
const std::vector<int> Ign_Load_Turbo = Steps({{16, 9}, {32, 2}});            // 11 rows, to 2.18

const char* const Check_Line =
    "Start point only - check every value and the timing with a strobe before driving.";

std::vector<Engine> Engines() {
    return {
        {"1.6L_4cyl_NA.qxs",
         {"Quorlen base map: 1.6 litre 4 cylinder without boost (Ford Sigma type) - about 115 hp.",
          "36-1 wheel - wasted spark - semi sequential fuel - 4 x 250 cc/min injectors at 3 bar - 2.5 bar "
          "Bosch MAP - rev limit 7000 rpm.",
          Check_Line},
         1,
         false,
         {{7, "850"}, {17, "7000"}, {79, "1.1"}, {82, "1000"}, {18, "4"}, {20, "10"}},
         Rpm_500_To_8500,
         Load_To_1_03_Bar,
         Rpm_500_To_8000,
         Load_To_0_99_Bar,
         {{"FuelInjectorSize_txt", "250"},
          {"NumberOfInjectors_txt", "4"},
          {"Cylinder_volume_txt", "1600"},
          {"FuelP_txt", "3"},
          {"InjectorOffset_txt", "1.1"},
          {"max_MAP_txt", "1.0"},
          {"idle_MAP_txt", "0.2"},
          {"lambda_txt", "0.87"},
          {"MaxRPM_txt(0)", "850"},
          {"MaxRPM_txt(1)", "2500"},
          {"MaxRPM_txt(2)", "4300"},
          {"MaxRPM_txt(3)", "6300"},
          {"MaxRPM_txt(4)", "7000"},
          {"Volume_Efficiency_txt(0)", "50"},
          {"Volume_Efficiency_txt(1)", "78"},
          {"Volume_Efficiency_txt(2)", "90"},
          {"Volume_Efficiency_txt(3)", "80"},
          {"Volume_Efficiency_txt(4)", "74"}},
         {{"Ign_atm_maxrpm_txt", "32"},
          {"Ign_atm_idle_txt", "10"},
          {"Ign_retard_txt", "10"},
          {"Ign_advance_txt", "15"}}},

        {"2.0L_4cyl_Turbo.qxs",
         {"Quorlen base map: 2.0 litre 4 cylinder turbo (Opel C20LET type) at 1 bar boost - about 280 hp.",
          "60-2 wheel and cam sensor - wasted spark - sequential fuel - 4 x 550 cc/min injectors at 3 bar - "
          "2.5 bar Bosch MAP - fuel cut at 2.3 bar - rev limit 6500 rpm.",
          Check_Line},
         6,
         true,
         {{7, "900"}, {17, "6500"}, {23, "2.3"}, {79, "1.0"}, {82, "2200"}, {18, "12"}, {20, "77"}},
         Rpm_500_To_8500,
         Load_To_2_18_Bar,
         Rpm_500_To_8000,
         Ign_Load_Turbo,
         {{"FuelInjectorSize_txt", "550"},
          {"NumberOfInjectors_txt", "4"},
          {"Cylinder_volume_txt", "2000"},
          {"FuelP_txt", "3"},
          {"InjectorOffset_txt", "1.0"},
          {"max_MAP_txt", "2.0"},
          {"idle_MAP_txt", "0.15"},
          {"lambda_txt", "0.8"},
          {"MaxRPM_txt(0)", "900"},
          {"MaxRPM_txt(1)", "2500"},
          {"MaxRPM_txt(2)", "3500"},
          {"MaxRPM_txt(3)", "5800"},
          {"MaxRPM_txt(4)", "6500"},
          {"Volume_Efficiency_txt(0)", "50"},
          {"Volume_Efficiency_txt(1)", "75"},
          {"Volume_Efficiency_txt(2)", "92"},
          {"Volume_Efficiency_txt(3)", "85"},
          {"Volume_Efficiency_txt(4)", "78"}},
         {{"Ign_atm_maxrpm_txt", "28"},
          {"Ign_atm_idle_txt", "8"},
          {"Ign_retard_txt", "9"},
          {"Ign_advance_txt", "12"}}},

        {"3.0L_6cyl_NA.qxs",
         {"Quorlen base map: 3.0 litre in-line 6 cylinder without boost (BMW M30 type) - about 190 hp.",
          "60-2 wheel - distributor - semi sequential fuel - 6 x 240 cc/min injectors at 3 bar - 2.5 bar "
          "Bosch "
          "MAP - rev limit 6300 rpm.",
          Check_Line},
         24,
         false,
         {{7, "800"}, {17, "6300"}, {79, "1.1"}, {82, "1440"}, {18, "12"}, {20, "17"}},
         Rpm_500_To_8500,
         Load_To_1_03_Bar,
         Rpm_500_To_8000,
         Load_To_0_99_Bar,
         {{"FuelInjectorSize_txt", "240"},
          {"NumberOfInjectors_txt", "6"},
          {"Cylinder_volume_txt", "3000"},
          {"FuelP_txt", "3"},
          {"InjectorOffset_txt", "1.1"},
          {"max_MAP_txt", "1.0"},
          {"idle_MAP_txt", "0.2"},
          {"lambda_txt", "0.87"},
          {"MaxRPM_txt(0)", "800"},
          {"MaxRPM_txt(1)", "2500"},
          {"MaxRPM_txt(2)", "4000"},
          {"MaxRPM_txt(3)", "5800"},
          {"MaxRPM_txt(4)", "6300"},
          {"Volume_Efficiency_txt(0)", "55"},
          {"Volume_Efficiency_txt(1)", "80"},
          {"Volume_Efficiency_txt(2)", "90"},
          {"Volume_Efficiency_txt(3)", "78"},
          {"Volume_Efficiency_txt(4)", "72"}},
         {{"Ign_atm_maxrpm_txt", "32"},
          {"Ign_atm_idle_txt", "10"},
          {"Ign_retard_txt", "10"},
          {"Ign_advance_txt", "15"}}},

        {"5.0L_V8_NA.qxs",
         {"Quorlen base map: 5.0 litre V8 without boost (Ford 5.0 HO type) - about 225 hp.",
          "36-1 wheel - wasted spark - semi sequential fuel - 8 x 250 cc/min injectors at 3 bar - 2.5 bar "
          "Bosch "
          "MAP - rev limit 5800 rpm.",
          Check_Line},
         30,
         false,
         {{7, "700"}, {17, "5800"}, {79, "1.1"}, {82, "2000"}, {18, "4"}, {20, "10"}},
         Rpm_500_To_6000,
         Load_To_1_03_Bar,
         Rpm_500_To_5750,
         Load_To_0_99_Bar,
         {{"FuelInjectorSize_txt", "250"},
          {"NumberOfInjectors_txt", "8"},
          {"Cylinder_volume_txt", "5000"},
          {"FuelP_txt", "3"},
          {"InjectorOffset_txt", "1.1"},
          {"max_MAP_txt", "1.0"},
          {"idle_MAP_txt", "0.2"},
          {"lambda_txt", "0.87"},
          {"MaxRPM_txt(0)", "700"},
          {"MaxRPM_txt(1)", "2000"},
          {"MaxRPM_txt(2)", "3200"},
          {"MaxRPM_txt(3)", "4800"},
          {"MaxRPM_txt(4)", "5800"},
          {"Volume_Efficiency_txt(0)", "50"},
          {"Volume_Efficiency_txt(1)", "70"},
          {"Volume_Efficiency_txt(2)", "78"},
          {"Volume_Efficiency_txt(3)", "68"},
          {"Volume_Efficiency_txt(4)", "62"}},
         {{"Ign_atm_maxrpm_txt", "30"},
          {"Ign_atm_idle_txt", "12"},
          {"Ign_retard_txt", "10"},
          {"Ign_advance_txt", "14"}}},
    };
}

void Require(bool ok, const std::string& why) {
    if (!ok) throw std::runtime_error(why);
}

void Put_Axes(Settings_Image& image, int base, const std::vector<int>& rpm, const std::vector<int>& load) {
    auto& b = image.CardByte;
    const int cols = static_cast<int>(rpm.size());
    b[static_cast<std::size_t>(base)] = static_cast<std::uint8_t>(cols);
    for (int c = 0; c < cols; ++c)
        b[static_cast<std::size_t>(base + 1 + c)] =
            static_cast<std::uint8_t>(rpm[static_cast<std::size_t>(c)]);
    b[static_cast<std::size_t>(base + cols + 1)] = static_cast<std::uint8_t>(load.size());
    for (std::size_t r = 0; r < load.size(); ++r)
        b[static_cast<std::size_t>(base + cols + 2) + r] = static_cast<std::uint8_t>(load[r]);
}

class Maker {
public:
    explicit Maker(const std::string& data) : data_(data) {
        app_.ini = Ini_File(data + "/RZ400_800M3.ini", "");
        Proc_Guard guard(app_.log, "Init ini file");
        Load_Sensor_Definitions(app_.sensors, app_.ini, guard);
        Require(!guard.Failed(), "the sensors of " + data + "/RZ400_800M3.ini do not load");
    }

    void Make(const Engine& e, const std::string& out_dir) {
        auto content = Load_Qxs_File(data_ + "/RZ400_800M3_Default_Settings.qxs");
        Require(content.has_value(), "the default settings do not load");
        Init_Cardbyte(app_.image, app_.log);
        std::copy(content->bytes.begin(), content->bytes.end(), app_.image.CardByte.begin());
        Refresh();
        Init_Engine_Config(app_);

        Engine_Config_Frame frame;
        Engine_Config_Context engine = Engine_Context(app_, frame, [this] { Refresh(); });
        Fill_Engine_setup_combo(engine);
        Engine_setup_combo_Click(engine, e.layout);
        Require(app_.engine.Sequential_Fuel == e.sequential, "the layout's injection is not the recipe's");
        Set_CardByte_bit(app_.image, app_.log, Fuel_Mode_Byte, Sequential_Bit, e.sequential ? 1 : 0);

        app_.pages.lists = Load_Output_Lists(app_.ini);
        Pages_Context pages = app_.Pages();
        for (auto [address, text] : e.sliders) {
            auto position = Position_For_Text(pages, address, text);
            Require(position.has_value(),
                    std::string("address ") + std::to_string(address) + " takes no " + text);
            int v = *position;
            Scroll_Outcome outcome = Update_Scroll(pages, address, v);
            Require(outcome.messages.empty(), std::string("address ") + std::to_string(address) + " says " +
                                                  (outcome.messages.empty() ? "" : outcome.messages[0].text));
        }

        Put_Axes(app_.image, app_.image.FuelBlockBase, e.fuel_rpm_steps, e.fuel_load_steps);
        Put_Axes(app_.image, app_.image.IgnBlockBase, e.ign_rpm_steps, e.ign_load_steps);
        Refresh();

        app_.autosetup = Auto_Setup_State{};
        for (auto [key, value] : e.fuel)
            Require(Set_Fuel_Input(app_.autosetup.fuel.in, key, value), std::string("no fuel box ") + key);
        for (auto [key, value] : e.ignition)
            Require(Set_Ignition_Input(app_.autosetup.ignition.in, key, value),
                    std::string("no ignition box ") + key);
        Auto_Setup_Context setup = app_.Auto_Setup(dialogs_);
        Update_Setup_Figures(setup);
        for (const Generate_Outcome& made : {Generate_Autofuel_cmd(setup, [this] { Refresh(); }),
                                             Generate_Autoignition_cmd(setup, [this] { Refresh(); })})
            Require(made.made, made.message);
        // A base map's injectors must carry the engine it is for.
        const Auto_Fuel_Labels& l = app_.autosetup.fuel.labels;
        Require(l.Under_fuel_lable[0].empty(), l.Under_fuel_lable[0] + l.Under_fuel_lable[1] + " " +
                                                   l.Max_fuel_lable[2] + l.Max_fuel_lable[3]);

        std::string comment;
        for (const char* line : e.comment) {
            Require(std::string(line).find_first_of(",\"") == std::string::npos,
                    "a comma or quote in the comment");
            if (!comment.empty()) comment += "\r\n";
            comment += line;
        }
        app_.texts.txt_File_Description = comment;
        Settings_File_Context files{app_.program, app_.texts, app_.files, app_.image, app_.undo,
                                    app_.ini,     app_.log,   dialogs_,   {}};
        Save_Settings_File(files, out_dir + "/" + e.file);
    }

private:
    // What a load does after the bytes arrive: the inputs' sensors and the four table routines.
    void Refresh() {
        Analog_Context analog = app_.Analog();
        Init_Analog_from_CardByte(analog);
        Tables_Context tables = app_.Tables(dialogs_);
        Update_Tabs(tables);
        Show_Right_Tabs(tables);
        Update_All(tables);
    }

    static constexpr int Fuel_Mode_Byte = 185;
    static constexpr int Sequential_Bit = 6;

    std::string data_;
    App_Context app_;
    Refusing_Dialogs dialogs_;
};

int Run(int argc, char** argv) {
    std::string data, out;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        if (name == "--data")
            data = argv[i + 1];
        else if (name == "--out")
            out = argv[i + 1];
    }
    if (data.empty() || out.empty()) {
        std::fputs("usage: make_basemaps --data DIR --out DIR\n", stderr);
        return 2;
    }
    std::filesystem::create_directories(out);
    Maker maker(data);
    for (const Engine& e : Engines()) {
        try {
            maker.Make(e, out);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "make_basemaps: %s: %s\n", e.file, error.what());
            return 1;
        }
    }
    return 0;
}

} // namespace
} // namespace quorlen

int main(int argc, char** argv) {
    try {
        return quorlen::Run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_basemaps: %s\n", error.what());
        return 1;
    }
}
