#pragma once
// Fuel correction from a log: where the engine ran steadily, the lambda sensor tells how far
// each cell of the main fuel map is off, and the cell's injection time behind the injector's
// dead time is scaled by that much. The engine needs fuel in proportion to the air it takes,
// so a mixture that reads 12 % leaner than wanted wants 12 % more of the time the injector is
// really open.
//
// Measured and wanted lambda are both read through the tuning sensor of the lambda input
// (the same arithmetic that shows the AFR target table), so the ratio holds whatever unit the
// sensor speaks, AFR or lambda. The proposal is a plain value; applying it is an edit of the
// image like any other.

#include "analysis/cell_hits.h"
#include "image/settings_image.h"
#include "tables/undo_list.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace quorlen {

// Which rows count as steady. Each threshold is shown to the tuner and can be changed.
struct Steady_Filter {
    double min_rpm = 500;          // the engine runs (and its fuel is not cut)
    double min_coolant = 70;       // the log's coolant signal; below it warm-up enrichment blurs lambda
    double max_throttle_rate = 20; // the throttle signal's change per second
    // After a faster throttle move, or while the box's own acceleration enrichment runs, this
    // long again before a row counts: the mixture and the sensor take a moment to settle.
    double settle_seconds = 0.5;
};

struct Correction_Options {
    Steady_Filter steady;
    double min_seconds = 1.0;     // weighted steady time a cell needs before it is touched
    double max_change_pct = 15.0; // the most a cell's time may move in one pass
    // The target when the image has AFR control off, in the lambda sensor's unit; none: 14.7
    // for a sensor that reads AFR, 1.00 for one that reads lambda.
    std::optional<double> fixed_target;
};

// Why a row was left out (or that it counted), in the order the filters ask.
enum class Row_Verdict {
    Steady,
    No_Place,            // no speed, load, lambda or target reading in the row
    Not_Running,         // below the engine speed, or the fuel cut
    Cold,                // coolant below the threshold
    Throttle_Moving,     // the throttle moved faster than the threshold lately
    Enrichment,          // the box's acceleration enrichment ran lately
    Lambda_Out_Of_Range, // the sensor at an end of its range: it can't say how far off
    Count
};

inline constexpr int Verdict_Count = static_cast<int>(Row_Verdict::Count);
const char* Verdict_Text(Row_Verdict verdict);

struct Cell_Correction {
    int row = 0, col = 0; // the map's cell, from 1
    int address = 0;      // its image address
    double seconds = 0;   // steady time, weighted
    double ratio = 1;     // weighted mean of measured over target lambda
    std::uint8_t old_byte = 0, new_byte = 0;
    double old_ms = 0, new_ms = 0;
    double percent = 0;   // the cell's change, (new - old) / old
    bool enough = false;  // enough steady time to say anything
    bool limited = false; // the per-pass limit cut the change
    bool changed = false; // a new byte is proposed
};

struct Fuel_Proposal {
    int rows = 0, cols = 0;
    std::vector<Cell_Correction> cells; // row after row
    double dead_time_ms = 0;
    bool afr_control = false; // the target comes from the AFR target table
    double fixed_target = 0;  // the target when it doesn't
    std::string target_unit;  // the lambda sensor's unit
    std::string target_text;  // "AFR target table" or "fixed 14.7 AFR"
    int lambda_input = 0;     // the input the lambda sensor is on
    std::array<int, Verdict_Count> verdicts{};
    int rows_total = 0;
    Correction_Options options;
    // Why nothing could be proposed; empty when the log was studied.
    std::string problem;

    Cell_Correction& At(int r, int c) { return cells[static_cast<std::size_t>((r - 1) * cols + (c - 1))]; }
    const Cell_Correction& At(int r, int c) const {
        return cells[static_cast<std::size_t>((r - 1) * cols + (c - 1))];
    }
    int Changed_Count() const;
};

// The open log against the image's main fuel map.
Fuel_Proposal Propose_Fuel_Correction(const Settings_Image& image, const Sensor_State& sensors,
                                      const Log_State& log, const Correction_Options& options = {});

// The verdict on every row from 1 to the last: what the filters and the form's counts say.
std::vector<Row_Verdict> Steady_Rows(const Settings_Image& image, const Sensor_State& sensors,
                                     const Log_State& log, const Steady_Filter& filter);

// The new bytes of the chosen cells (row, column from 1; empty: every proposed change) into
// the image as one edit: a snapshot for undo first, each byte marked changed. A cell whose
// byte is no longer the one the proposal started from (edited since) is left as it is.
// Returns the number of bytes written; the caller redraws.
int Apply_Fuel_Correction(Settings_Image& image, Undo_List& undo, const Fuel_Proposal& proposal,
                          std::span<const std::pair<int, int>> chosen = {});

} // namespace quorlen
