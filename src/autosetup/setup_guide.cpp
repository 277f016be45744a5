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

const char* const Check_Line =
    "Make sure the settings reflects your needs. By default it is a standard setting";
const char* const No_Closed_Loop_Line = "An alternative is to not use closed loop at full load";

// A page of the settings form that holds a standard setting: its title and the check.
Step_Data Standard_Page(int tab, const char* english) {
    return {Settings_Tab(tab), {english, Check_Line}};
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
          "You can anytime click back or forward or make other than suggested changes."}});

    Guide_Step sensors;
    sensors.form = Guide_Form::Sensor_Editor;
    sensors.tab = Sensor_Tab_Select;
    steps.push_back(
        {sensors,
         {"Select the correct sensor definitions you plan to use for AFR, TPS, MAP, Coolant temp and "
          "IAT. If you miss your sensor you can create new ones, by change tab to sensor editor."}});

    Guide_Step engine = Settings_Tab(11);
    engine.close_sensor_editor = true;
    steps.push_back(
        {engine,
         {"Select the right cam and crank setup to match your engine. ",
          "Later you might have to change the trigger slope at this page, depending on if you have "
          "positive or negative slope"}});
    steps.push_back(
        {Settings_Tab(13),
         {"Setup the number of fuel cells you prefere for the load and RPM axis. Also spread out the "
          "cells so you cover the MAP you plan to use"}});
    steps.push_back(
        {Settings_Tab(1),
         {"Setup the number of ignition cells you prefere for the load and RPM axis. Also spread out "
          "the cells so you cover the MAP you plan to use"}});

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
                      "When ready press 'Generate fuel map'."}});

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
          "When ready press 'Generate ignition map'."}});

    steps.push_back(
        {Settings_Tab(3),
         {"Make sure the settings reflects your needs. By default it is a standard setting which use "
          "closed loop AFR control.",
          "AFR Control", No_Closed_Loop_Line}});
    steps.push_back(
        {Main_Tab(Main_Tab_Fuel, 4),
         {"Make sure the settings reflects your needs. By default it is a standard setting which use "
          "closed loop AFR control with target AFR 14.7 (lambda=1.0) at low load and AFR 12.5 "
          "(lambda 0.85) at high load.",
          "AFR Control target values", No_Closed_Loop_Line}});
    steps.push_back(
        {Settings_Tab(6),
         {"Make sure the settings reflects your needs. By default it is a standard setting, but if you "
          "have changed the temperature sensor, you have to change the settings",
          "Temp Corrections"}});
    steps.push_back(Standard_Page(7, "Start up fuel"));
    steps.push_back(Standard_Page(12, "Fuel acceleration"));
    steps.push_back(Standard_Page(5, "Idle settings"));
    steps.push_back(Standard_Page(8, "Digital inputs"));
    steps.push_back(Standard_Page(15, "Digital outputs"));
    steps.push_back(Standard_Page(2, "PWM Outputs"));
    steps.push_back(Standard_Page(9, "Analog settings"));
    steps.push_back(Standard_Page(10, "Limits / Warnings"));
    steps.push_back(
        {Settings_Tab(11),
         {"Before you make your first start attemt, you should verify if the crank and cam trigger slope is "
          "positive or negative ",
          "First shut down the power to the fuel injectors to prevent the fuel from flooding. ",
          "Start the high speed digital logging, and crank the engine. Stop the logging",
          "Zoom in the missing pulse of the crank sensor and compare with the pictures in the slope "
          "settings. "
          "Change if necessary."}});
    steps.push_back({Settings_Tab(11),
                     {"You should also verify that the crank trigger wheel is correct positioned. ",
                      "Keep the power off to the fuel injectors to prevent the fuel from flooding. ",
                      "Connect a normal stroboscope to the first cylinder and verify that the ignition fires "
                      "at 15 deg, which "
                      "is the factory preset.",
                      "If not change the 'Crank sensor teeth between missing pulse and 51deg BTDC marking' "
                      "and potentially "
                      "fine adjust the setting until it does"}});

    Guide_Step last;
    last.close_settings = true;
    steps.push_back({last, {"Congratulation, it is time to make a first start attemt!"}});
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

const std::vector<const char*>& Guide_Lines(int step) {
    static const std::vector<const char*> none;
    const Step_Data* d = Data_Of(step);
    return d == nullptr ? none : d->english;
}

std::string Guide_Text(int step) {
    std::string text;
    for (const char* line : Guide_Lines(step)) {
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
