#pragma once
// The ignition map generator: from four angles and the top speed of the fuel page, a start
// map for the ignition table. It knows two kinds of load axis and shapes the map for each:
// manifold pressure in bar, and throttle.

#include "autosetup/fuel_generator.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorlen {

// The ignition table's load inputs the generator knows (IgnLoadSensor).
inline constexpr int Ign_Load_Throttle = 2;
inline constexpr int Ign_Load_MAP = 3;

struct Auto_Ignition_Inputs {
    // A production four-cylinder: 30 degrees at full load and top speed, 10 at 1000 rpm,
    // 15 more per bar of vacuum, 10 less per bar of boost.
    std::string Ign_atm_maxrpm_txt = "30";
    std::string Ign_atm_idle_txt = "10";
    std::string Ign_retard_txt = "10";
    std::string Ign_advance_txt = "15";
};

// The captions of the four boxes, in the order of the inputs above.
using Ignition_Captions = std::array<std::string, 4>;

struct Auto_Ignition {
    Auto_Ignition_Inputs in;
    Ignition_Captions captions;
    // The load the captions were last set for; 0 before the first time.
    int Captions_Load = 0;
};

// The captions for a manifold pressure or a throttle load; any other load leaves them.
void Update_Ignition_maxload_label(Auto_Ignition& form, int IgnLoadSensor);

// The cells of the ignition map (row after row) for the load, the axes and the top speed T
// of the fuel page: the load rule of each row, less the speed correction towards 1000 rpm,
// and 15 degrees in the low corner of idle and part load. nullopt for a load the generator
// does not know. Throws Run_Error (a Generator_Fault) for T = 1000 and a throttle axis
// ending at 0.
std::optional<std::vector<std::uint8_t>> Autoignition_Cells(Auto_Ignition& form, int IgnLoadSensor,
                                                            const std::string& MaxRPM_txt_4,
                                                            const Map_Axes& axes);

} // namespace quorlen
