#pragma once
// Changing the shape and the axes of the main fuel and ignition maps without losing the map.
// The axes are kept as steps (a power of two each, the first one a plain offset), and a map is
// re-sampled in three steps the user takes in turn: save the map as it is shown, change the
// shape and the spacing, convert the saved map onto the new breakpoints, first along the
// speed, then along the load, so the engine gets the same fuel and angle at the same speed
// and load.

#include "core/debug_log.h"
#include "tables/map_tables.h"
#include "tables/undo_list.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorlen {

enum class Map_Head { Fuel, Ignition };
// Which axis grid the step buttons work on: the one that had the focus last.
enum class Axis_Focus { Rpm, Map };

inline constexpr int Resolution_Scroll_Max = 8; // steps of 2^(s - 1): 128 at the top
inline constexpr const char* Nothing_Saved_Text =
    "There is no saved map to convert. Save the current map first (step 1).";

// A map as its grid shows it: row 0 the speeds, column 0 the loads, the cells as their texts.
struct Saved_Grid {
    int rows = 0; // header row included
    int cols = 0; // header column included
    std::vector<std::string> cells;

    void Resize(int r, int c);
    const std::string& At(int r, int c) const;
    std::string& At(int r, int c);
    double Number(int r, int c) const;
};

struct Saved_Map {
    int Saved_RPM_Count = 0;
    int Saved_MAP_Count = 0;
    Saved_Grid grid;  // "Saved fuel map"
    Saved_Grid grid2; // "Recalulated fuel step 1": new speeds over the saved loads
};

struct Transform_State {
    // The saved fuel map and the saved ignition map are kept apart, so saving one does not
    // replace the other before it has been converted.
    Saved_Map fuel;
    Saved_Map ignition;

    Saved_Map& Of(Map_Head head) { return head == Map_Head::Fuel ? fuel : ignition; }
    const Saved_Map& Of(Map_Head head) const { return head == Map_Head::Fuel ? fuel : ignition; }
};

struct Axis_Context {
    Settings_Image& image;
    const Sensor_State& sensors;
    Undo_List& undo;
    Debug_Log& log;
};

// The block of a head under the shape the image holds now.
Map_Block Head_Block(const Settings_Image& image, Map_Head head);

// Running sums of `count` steps from `first_step`: a 0 adds nothing, and above 255 the sum
// stays 255.
std::vector<int> Axis_Sums(const Settings_Image& image, int first_step, int count);

// The axes as the conversion compares them: speeds "0", loads through the sensor of the map's
// load input in "0.00".
std::vector<std::string> Rpm_Axis_Texts(const Axis_Context& ctx, Map_Head head);
std::vector<std::string> Load_Axis_Texts(const Axis_Context& ctx, Map_Head head);

// A number of the conversion back to a cell byte: fuel in its two scales, ignition in 0.2°.
std::uint8_t Fuel_Transform_Byte(double ms);
std::uint8_t Ign_Transform_Byte(double degrees);

// --- the three steps --------------------------------------------------------------------------

// Step 1: the map as it is shown into both grids, with its counts.
void Save_transform(const Axis_Context& ctx, Transform_State& state);
void Save_Ign_transform(const Axis_Context& ctx, Transform_State& state);

// Step 3: the saved map onto the axes the image holds now; every cell of the new shape is
// written. False, with nothing changed, when no map was saved.
bool Convert_Transform(const Axis_Context& ctx, Transform_State& state, const Table_Hooks& hooks);
bool Convert_Ign_Transform(const Axis_Context& ctx, Transform_State& state, const Table_Hooks& hooks);

// --- step 2: the shape and the axes -----------------------------------------------------------------

// FUEL_3D_MAP_Size_Combo, Ign_3D_MAP_Size_Combo: the new shape (after an undo snapshot); the
// bytes stay where they are, so the map is to be saved first.
void Map_Size_Click(Tables_Context& ctx, Map_Head head, int index, const Table_Hooks& hooks);

// One step byte after a button, for step i (1-based) of its axis. The first step is a plain
// offset that the buttons move by one; every other step doubles up to 128 or halves down to
// 1. Insert halves without the offset rule.
std::uint8_t Increased_Step(std::uint8_t b, int i);
std::uint8_t Decreased_Step(std::uint8_t b, int i);
std::uint8_t Inserted_Step(std::uint8_t b, int i);

// The buttons over the selected steps first..last (either order) of the axis under focus.
// Table_Insert works on the steps just after the selection, for finer spacing there.
void Table_Increase(const Axis_Context& ctx, Map_Head head, Axis_Focus axis, int first, int last,
                    const Table_Hooks& hooks);
void Table_Decrease(const Axis_Context& ctx, Map_Head head, Axis_Focus axis, int first, int last,
                    const Table_Hooks& hooks);
void Table_Insert(const Axis_Context& ctx, Map_Head head, Axis_Focus axis, int first, int last,
                  const Table_Hooks& hooks);

// The resolution sliders: every step of the axis becomes 2^(s - 1) (s = 0 gives 0).
std::uint8_t Resolution_Step(int s);
std::string d_3D_RPM_text(int s);
std::string d_3D_MAP_text(const Axis_Context& ctx, Map_Head head, int s);
void d_3D_RPM_scroll_Change(const Axis_Context& ctx, Map_Head head, int s, const Table_Hooks& hooks);
void d_3D_MAP_scroll_Change(const Axis_Context& ctx, Map_Head head, int s, const Table_Hooks& hooks);
// Where a slider stands for the axis as it is: by its second step, 0 when that is no power of two.
int Resolution_Of(const Settings_Image& image, Map_Head head, Axis_Focus axis);

// --- the throttle calibration's rewrite of the load steps -----------------------------------

// On each main map whose load is the throttle (selection 2): the first load step becomes the
// released reading and the others the smallest equal power of two that lets the rows reach
// the full reading (at most 64).
void Throttle_Load_Steps(const Axis_Context& ctx, int min_raw, int max_raw, const Table_Hooks& hooks);

} // namespace quorlen
