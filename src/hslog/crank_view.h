#pragma once
// What the crank viewer shows: the trigger wheel of the image's engine layout, where the
// sensor's 51-degree mark and top dead centre of cylinder 1 fall on it, and what a
// high-speed capture says of the wheel that is really there: teeth a turn, the gap, the
// cam pulse's place. Disagreements between the two are what a tuner must see before a
// first start, so they come out as warnings.

#include "engine/engine_catalogue.h"
#include "hslog/osc_file.h"

#include <optional>
#include <string>
#include <vector>

namespace quorlen {

// The setting that places the wheel: teeth from the missing pulse to the 51-degree mark.
inline constexpr int Mark_Teeth_Address = 18;
inline constexpr double Mark_Degrees = 51;
inline constexpr const char* Mark_Teeth_Name =
    "Crank sensor teeth between missing pulse and 51deg BTDC marking";

// The wheel of a layout. Angles are degrees of crank from tooth 0, the first tooth after the
// (first) gap, in the direction the wheel turns.
struct Wheel_Layout {
    int row = 0;
    std::string name; // the layout's list item
    std::string crank_sensor, cam_sensor;
    bool known = false;        // a wheel with teeth could be read from the layout
    int positions = 0;         // tooth places in a turn of the crank
    std::vector<bool> present; // per place; false in a gap
    std::vector<int> gaps;     // teeth missing in each gap
    bool on_distributor = false;
    double tooth_degrees = 0; // the layout's degrees a tooth
    int mark_teeth = 0;       // the setting
    double mark_angle = 0;    // where the 51-degree mark is
    double tdc_angle = 0;     // top dead centre of cylinder 1, within the turn
    int cam_teeth = 0;        // cam pulses in two turns; 0 without a cam sensor
    std::vector<std::string> notes;

    int Missing() const;
    int Teeth() const { return positions - Missing(); }
};

// The layout of image value `layout` (byte 6) with `mark_teeth` (byte 18).
Wheel_Layout Wheel_Layout_For(const Engine_Config_Table& tab, int layout, int mark_teeth);

// The crank and cam lines of a capture, measured turn by turn. A turn runs from the tooth
// after a gap to the tooth after the `gaps_per_turn`-th gap from it.
struct Crank_Measure {
    std::string problem; // why nothing could be measured; empty when measured
    long turns = 0;
    double teeth_per_turn = 0;
    int teeth_min = 0, teeth_max = 0;
    double gap_ratio = 0; // the gap's time over the tooth's before it
    int missing = 0;      // teeth missing at each gap, from that ratio
    int positions = 0;    // teeth and missing ones in a turn
    double rpm = 0;
    long cam_pulses = 0; // rising edges of the cam line within the turns measured
    double cam_per_two_turns = 0;
    std::optional<double> cam_angle; // degrees from tooth 0 to the first cam pulse's rise
};
Crank_Measure Measure_Crank(const Osc_Trace& trace, int gaps_per_turn = 1);

// What the viewer says in words: the layout, the capture, and warnings where they disagree.
struct Crank_Report {
    std::vector<std::string> lines;
    std::vector<std::string> warnings;
};
Crank_Report Crank_View_Report(const Wheel_Layout& wheel, const Crank_Measure* measure,
                               const std::string& capture_name);

} // namespace quorlen
