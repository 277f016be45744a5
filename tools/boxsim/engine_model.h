#pragma once
// An engine for tuning against: it needs a certain injection time in every cell of the main
// fuel map, and its lambda sensor tells how far the time the box gives is from that. By
// default it needs exactly what the box's settings held when the simulator started, so lambda
// reads the AFR table's target; a fuel error makes a region of the map need more (or less), so
// lambda reads leaner (or richer) there. Lambda always follows the map the box holds now, so a
// corrected map written back brings it onto the target.
//
// The engine is physics: the time it needs, its injectors' dead time, the targets it was tuned
// to and which input its lambda sensor is wired to are fixed at start. Only the box's map,
// which decides the time delivered, follows what is written.
//
// The sweep drive holds the engine on each point of the fuel map it can reach (a dyno run
// through the map, load row by load row), long enough for a log to count it as steady.

#include "log_stream.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace boxsim {

using Image_Bytes = std::array<std::uint8_t, 1024>;

// --fuel-error RPM1-RPM2:LOAD1-LOAD2:PCT: cells whose RPM and load points lie in the ranges
// need PCT percent more injector-open time (negative: less). Load is in the unit of the fuel
// map's load axis.
struct Fuel_Error {
    double rpm_from = 0, rpm_to = 0;
    double load_from = 0, load_to = 0;
    double percent = 0;
};
std::optional<Fuel_Error> Parse_Fuel_Error(const std::string& text, std::string& error);

enum class Drive { Demo, Sweep };

// A tuning sensor of the configuration file: how a reading of 0-255 becomes a value.
struct Tuning_Sensor {
    bool table = false;
    double gain = 0, offset = 0, min = 0, max = 255;
    std::array<double, 33> points{}; // a table's values at readings 0, 8, .. 256
    std::string unit;
    double Value(double raw) const;
    // The reading nearest to `value` (0 to 255).
    double Raw(double value) const;
};

// The Sens_Def entries of a configuration file: sensor n (from 1) at index n, index 0 empty,
// an entry of another type empty too (it still takes its number).
std::vector<std::optional<Tuning_Sensor>> Parse_Tuning_Sensors(const std::string& ini_text);

struct Engine_Setup {
    bool enabled = false; // set by --drive or --fuel-error
    Drive drive = Drive::Demo;
    std::vector<Fuel_Error> errors;
    std::vector<std::optional<Tuning_Sensor>> sensors;
};

// The sweep spends at least this long on each point: half a second for the mixture to settle
// after a step of the throttle, and a second that counts.
inline constexpr double Sweep_Min_Hold_Seconds = 1.6;
// ... and spreads the points over about this long when there are few of them, so that a
// five-minute log takes in the whole sweep.
inline constexpr double Sweep_Cycle_Seconds = 285;

class Engine_Model {
public:
    // `engine` is the image the engine was tuned with.
    Engine_Model(Engine_Setup setup, const Image_Bytes& engine);

    // Row `row` of the stream with the box's settings as they are now.
    Engine_Sample Sample(long row, const Image_Bytes& memory) const;

    // What the engine needs over what the starting map gives, in the cell (1-based) of the
    // starting map: 1.12 in a region of +12 %.
    double Need_Factor(int r, int c) const;
    // The sweep's points on `memory`'s fuel map (column, row from 1) in the order driven, and
    // the rows it holds each.
    std::vector<std::pair<int, int>> Sweep_Points(const Image_Bytes& memory) const;
    int Sweep_Hold_Rows(std::size_t points) const;

private:
    struct Fuel_Map {
        bool valid = false;
        int cols = 0, rows = 0;
        std::vector<double> rpm;  // the RPM axis
        std::vector<double> load; // the load axis as the box reads it: raw sums, or rpm
        std::vector<double> ms;   // the cells, row after row
        int load_input = 0;       // 1..12, 0 for engine speed
        double At(double rpm_value, double load_value) const;
    };
    static Fuel_Map Read_Map(const Image_Bytes& image);
    Engine_Sample Sweep_At(long row, const Image_Bytes& memory, double& load_reading) const;
    const Tuning_Sensor* Sensor_Of_Input(int input) const;

    Engine_Setup setup_;
    Image_Bytes engine_{};
    Fuel_Map need_;      // the starting map with the errors in it
    double dead_ms_ = 0; // the injectors' dead time
    int lambda_input_ = 1;
    int afr_load_input_ = 3;
    std::array<double, 17> afr_target_{}; // the AFR table's targets in the lambda sensor's unit
    bool lambda_modelled_ = false;
};

} // namespace boxsim
