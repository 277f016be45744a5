#include "autosetup/setup_guide.h"

#include <array>
#include <initializer_list>
#include <vector>

namespace quorlen {

namespace {

using Lines = std::vector<const char*>;

struct Step_Data {
    Guide_Step step;
    Lines english;
    Lines swedish;
};

Guide_Step Settings_Tab(int tab) {
    Guide_Step s;
    s.form = Guide_Form::Settings;
    s.tab = tab;
    return s;
}

Guide_Step Main_Tab(int tab, int sub_tab) {
    Guide_Step s;
    s.form = Guide_Form::Main;
    s.tab = tab;
    s.sub_tab = sub_tab;
    return s;
}

const char* const Check_English =
    "Make sure the settings reflects your needs. By default it is a standard setting";
const char* const Check_Swedish =
    "Kontrollera att inställningarna motsvarar dina behov. Som standard är det en grundinställning";
const char* const No_Closed_Loop_English = "An alternative is to not use closed loop at full load";
const char* const No_Closed_Loop_Swedish =
    "Ett alternativ är att inte använda sluten reglering vid full last";

// A page of the settings form that holds a standard setting: its title and the check.
Step_Data Standard_Page(int tab, const char* english, const char* swedish) {
    return {Settings_Tab(tab), {english, Check_English}, {swedish, Check_Swedish}};
}

std::vector<Step_Data> Make_Steps() {
    std::vector<Step_Data> steps;
    steps.push_back(
        {Guide_Step{},
         {"This guide will help you through all necessary steps to get a start map and all settings right "
          "for "
          "your first start attempt.",
          "Remember that the easiest way to start is to open one of the base maps that is included in the "
          "folder "
          "/Basemaps",
          "You can anytime click back or forward or make other than suggested changes."},
         {"Den här guiden hjälper dig genom alla nödvändiga steg för att få en startkarta och alla "
          "inställningar "
          "rätt inför ditt första startförsök.",
          "Kom ihåg att det enklaste sättet att börja är att öppna en av grundkartorna som finns i mappen "
          "/Basemaps",
          "Du kan när som helst klicka bakåt eller framåt eller göra andra ändringar än de föreslagna."}});

    Guide_Step sensors;
    sensors.form = Guide_Form::Sensor_Editor;
    sensors.tab = Sensor_Tab_Select;
    steps.push_back(
        {sensors,
         {"Select the correct sensor definitions you plan to use for AFR, TPS, MAP, Coolant temp and "
          "IAT. If you miss your sensor you can create new ones, by change tab to sensor editor."},
         {"Välj rätt givardefinitioner för de givare du tänker använda för AFR, TPS, MAP, "
          "kylvätsketemperatur och insugsluftens temperatur (IAT). Saknas din givare kan du skapa en "
          "ny genom att byta flik till sensoreditorn."}});

    Guide_Step engine = Settings_Tab(11);
    engine.close_sensor_editor = true;
    steps.push_back(
        {engine,
         {"Select the right cam and crank setup to match your engine. ",
          "Later you might have to change the trigger slope at this page, depending on if you have "
          "positive or negative slope"},
         {"Välj den uppsättning av kam- och vevaxelgivare som passar din motor. ",
          "Senare kan du behöva ändra triggerflanken på den här sidan, beroende på om du har positiv "
          "eller negativ flank"}});
    steps.push_back(
        {Settings_Tab(13),
         {"Setup the number of fuel cells you prefere for the load and RPM axis. Also spread out the "
          "cells so you cover the MAP you plan to use"},
         {"Ställ in det antal bränsleceller du föredrar för last- och varvtalsaxeln. Sprid också ut "
          "cellerna så att de täcker det MAP-område du tänker använda"}});
    steps.push_back(
        {Settings_Tab(1),
         {"Setup the number of ignition cells you prefere for the load and RPM axis. Also spread out "
          "the cells so you cover the MAP you plan to use"},
         {"Ställ in det antal tändceller du föredrar för last- och varvtalsaxeln. Sprid också ut "
          "cellerna så att de täcker det MAP-område du tänker använda"}});

    Guide_Step fuel = Main_Tab(Main_Tab_Fuel, 6);
    fuel.close_settings = true;
    fuel.frame = Guide_Frame::Fuel;
    steps.push_back({fuel,
                     {"Enter your engine data in this fuel map calculation.",
                      "Adjust numbers of injectors, cylinders, volume efficiency etc until the estimated "
                      "power for both air "
                      "and fuel match your engine.",
                      "If you have a 180 hp engine, adjust until the 'air power' indicates 180hp.",
                      "Normally the fuel is dimensioned to be enough to slihtly more.",
                      "If your injectors are too small to deliver fuel for the selected power, or you can "
                      "not rev enough - "
                      "You will get a warning",
                      "When ready press 'Generate fuel map'."},
                     {"Ange motorns data i den här beräkningen av bränslekartan.",
                      "Justera antal spridare, cylindrar, volymetrisk verkningsgrad osv. tills den beräknade "
                      "effekten för "
                      "både luft och bränsle stämmer med din motor.",
                      "Om du har en motor på 180 hk, justera tills 'air power' (lufteffekten) visar 180hp.",
                      "Normalt dimensioneras bränslet så att det räcker till något mer.",
                      "Om dina spridare är för små för att ge bränsle till den valda effekten, eller om du "
                      "inte kan varva "
                      "tillräckligt högt - får du en varning",
                      "När du är klar, tryck på 'Generate fuel map'."}});

    Guide_Step ignition = Main_Tab(Main_Tab_Ignition, 1);
    ignition.frame = Guide_Frame::Ignition;
    ignition.ignition_captions = true;
    steps.push_back(
        {ignition,
         {"Enter the engine data in this ignition map calculation.",
          "If you use TPS as base for the ignition map, make sure that the lowest voltage in the map is "
          "equal to "
          "released throttle, and maximal TPS boltage is the last cell in the map.",
          "The defalut values are selected to match a standard 4 cyl production engine. Make sure that it "
          "does "
          "not ping at full load before using it as your real ignition setting",
          "Make sure that it does not ping at full load before using it as your real ignition setting",
          "When ready press 'Generate ignition map'."},
         {"Ange motorns data i den här beräkningen av tändkartan.",
          "Om du använder TPS som grund för tändkartan, se till att den lägsta spänningen i kartan motsvarar "
          "släppt gaspedal och att högsta TPS-spänningen är den sista cellen i kartan.",
          "Standardvärdena är valda för att passa en vanlig fyrcylindrig serietillverkad motor. Se till att "
          "den "
          "inte spikar vid full last innan du använder den som din riktiga tändinställning",
          "Se till att den inte spikar vid full last innan du använder den som din riktiga tändinställning",
          "När du är klar, tryck på 'Generate ignition map'."}});

    steps.push_back(
        {Settings_Tab(3),
         {"Make sure the settings reflects your needs. By default it is a standard setting which use "
          "closed loop AFR control.",
          "AFR Control", No_Closed_Loop_English},
         {"Kontrollera att inställningarna motsvarar dina behov. Som standard är det en "
          "grundinställning som använder sluten AFR-reglering.",
          "AFR-reglering", No_Closed_Loop_Swedish}});
    steps.push_back(
        {Main_Tab(Main_Tab_Fuel, 4),
         {"Make sure the settings reflects your needs. By default it is a standard setting which use "
          "closed loop AFR control with target AFR 14.7 (lambda=1.0) at low load and AFR 12.5 "
          "(lambda 0.85) at high load.",
          "AFR Control target values", No_Closed_Loop_English},
         {"Kontrollera att inställningarna motsvarar dina behov. Som standard är det en "
          "grundinställning som använder sluten AFR-reglering med mål-AFR 14,7 (lambda=1,0) vid låg "
          "last och AFR 12,5 (lambda 0,85) vid hög last.",
          "Målvärden för AFR-regleringen", No_Closed_Loop_Swedish}});
    steps.push_back(
        {Settings_Tab(6),
         {"Make sure the settings reflects your needs. By default it is a standard setting, but if you "
          "have changed the temperature sensor, you have to change the settings",
          "Temp Corrections"},
         {"Kontrollera att inställningarna motsvarar dina behov. Som standard är det en "
          "grundinställning, men om du har bytt temperaturgivare måste du ändra inställningarna",
          "Temperaturkorrigeringar"}});
    steps.push_back(Standard_Page(7, "Start up fuel", "Startbränsle"));
    steps.push_back(Standard_Page(12, "Fuel acceleration", "Accelerationsbränsle"));
    steps.push_back(Standard_Page(5, "Idle settings", "Tomgångsinställningar"));
    steps.push_back(Standard_Page(8, "Digital inputs", "Digitala ingångar"));
    steps.push_back(Standard_Page(15, "Digital outputs", "Digitala utgångar"));
    steps.push_back(Standard_Page(2, "PWM Outputs", "PWM-utgångar"));
    steps.push_back(Standard_Page(9, "Analog settings", "Analoga inställningar"));
    steps.push_back(Standard_Page(10, "Limits / Warnings", "Gränser / Varningar"));
    steps.push_back(
        {Settings_Tab(11),
         {"Before you make your first start attemt, you should verify if the crank and cam trigger slope is "
          "positive or negative ",
          "First shut down the power to the fuel injectors to prevent the fuel from flooding. ",
          "Start the high speed digital logging, and crank the engine. Stop the logging",
          "Zoom in the missing pulse of the crank sensor and compare with the pictures in the slope "
          "settings. "
          "Change if necessary."},
         {"Innan du gör ditt första startförsök bör du kontrollera om vev- och kamaxelgivarnas triggerflank "
          "är "
          "positiv eller negativ ",
          "Stäng först av strömmen till bränslespridarna så att motorn inte dränks med bränsle. ",
          "Starta den digitala höghastighetsloggningen och dra runt motorn. Stoppa loggningen",
          "Zooma in den saknade pulsen från vevaxelgivaren och jämför med bilderna i flankinställningarna. "
          "Ändra "
          "vid behov."}});
    steps.push_back({Settings_Tab(11),
                     {"You should also verify that the crank trigger wheel is correct positioned. ",
                      "Keep the power off to the fuel injectors to prevent the fuel from flooding. ",
                      "Connect a normal stroboscope to the first cylinder and verify that the ignition fires "
                      "at 15 deg, which "
                      "is the factory preset.",
                      "If not change the 'Crank sensor teeth between missing pulse and 51deg BTDC marking' "
                      "and potentially "
                      "fine adjust the setting until it does"},
                     {"Du bör också kontrollera att vevaxelns triggerhjul sitter rätt. ",
                      "Håll strömmen till bränslespridarna avstängd så att motorn inte dränks med bränsle. ",
                      "Anslut ett vanligt stroboskop till första cylindern och kontrollera att tändningen "
                      "sker vid 15 grader, "
                      "vilket är fabriksinställningen.",
                      "Om inte, ändra 'Crank sensor teeth between missing pulse and 51deg BTDC marking' och "
                      "finjustera vid "
                      "behov inställningen tills den gör det"}});

    Guide_Step last;
    last.close_settings = true;
    steps.push_back({last,
                     {"Congratulation, it is time to make a first start attemt!"},
                     {"Grattis, dags för ett första startförsök!"}});
    return steps;
}

const std::vector<Step_Data>& Steps() {
    static const std::vector<Step_Data> steps = Make_Steps();
    return steps;
}

const Step_Data* Data_Of(int step) {
    if (step < 1 || step > Guide_Steps) return nullptr;
    return &Steps()[static_cast<std::size_t>(step - 1)];
}

} // namespace

const Guide_Step* Guide_Step_Of(int step) {
    const Step_Data* d = Data_Of(step);
    return d == nullptr ? nullptr : &d->step;
}

std::string Guide_Text(int step, std::string_view language) {
    const Step_Data* d = Data_Of(step);
    if (d == nullptr) return {};
    std::string text;
    for (const char* line : language == "SWE" ? d->swedish : d->english) {
        if (!text.empty()) text += "\r\n\r\n";
        text += line;
    }
    return text;
}

const Guide_Step* Autosetup_next(int& Setup_Step, int index) {
    Setup_Step += index == 0 ? 1 : -1;
    return Guide_Step_Of(Setup_Step);
}

const Guide_Step* Guide_Restart(int& Setup_Step) {
    Setup_Step = 1;
    return Guide_Step_Of(Setup_Step);
}

} // namespace quorlen
