#include "analysis/fuel_correction.h"

#include "engine/page_choices.h"
#include "image/scaling.h"
#include "tables/cell_entry.h"
#include "tables/selection_ops.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace quorlen {

namespace {

constexpr int Afr_Points = 17;
constexpr int Afr_Control_Byte = 215; // bit 0 AFR control on, bit 1 wide band sensor
constexpr int Ae_Threshold_Address = 86;
constexpr int Ae_Sustain_Address = 88;
constexpr double Stoichiometric_Afr = 14.7;

bool Empty(double v) {
    return v != v;
}

bool Reads_Afr(const std::string& unit) {
    std::string u;
    for (char c : unit)
        u += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return u.find("afr") != std::string::npos;
}

double Column_Value(const double* row, int column) {
    return column >= 1 && column < Log_Data_Columns ? row[column] : std::nan("");
}

// Whether a reading lies inside what the sensor can tell apart: a wide band controller's
// output sits on a rail when the mixture is beyond its range, and a rail says only "at
// least this far".
bool Inside_Range(const Sensor_Table& table, int s, double raw) {
    if (!table.Has(s)) return false;
    if (table.Type(s) == "Linear") {
        const auto& n = table.Linear[static_cast<std::size_t>(s)];
        return raw > n.min && raw < n.max;
    }
    if (table.Type(s) == "Tab") {
        const auto& p = table.Sens_Point_Tab[static_cast<std::size_t>(s)];
        const auto [lo, hi] = std::minmax_element(p.begin() + 1, p.end());
        const auto v = Forward_Sensor_Exact(table, s, raw);
        return v && *v > *lo && *v < *hi;
    }
    return false;
}

// Everything the study of one log needs, read once.
class Study {
public:
    Study(const Settings_Image& image, const Sensor_State& sensors, const Log_State& log,
          const Steady_Filter& filter, std::optional<double> fixed_target)
        : sensors_(sensors), log_(log), filter_(filter),
          fuel_(Make_Map_Locator(image, sensors, log, Table_Id::Fuel_3D)) {
        const Load_Selections loads = Read_Load_Selections(image);
        lambda_input_ = image.Analog_Channel[static_cast<std::size_t>(loads.LambdaSensor)];
        lambda_sensor_ = Sensor_For_Selection(image, sensors, loads.LambdaSensor);
        lambda_ = Make_Input_Reader(log, lambda_input_);
        afr_control_ = (image.CardByte[Afr_Control_Byte] & 1) != 0;
        const bool wide_band = (image.CardByte[Afr_Control_Byte] & 2) != 0;
        if (lambda_sensor_ >= 0) unit_ = sensors.table.Unit(lambda_sensor_);
        fixed_target_ = fixed_target.value_or(Reads_Afr(unit_) ? Stoichiometric_Afr : 1.0);

        if (lambda_sensor_ < 0)
            problem_ =
                "No sensor is chosen for the lambda input (input " + std::to_string(lambda_input_) + ").";
        else if (unit_ == "V" || (afr_control_ && !wide_band))
            problem_ = "The lambda sensor is a narrow band one: it tells rich or lean, not how far.";
        else if (lambda_.kind == Input_Reader::Kind::None)
            problem_ =
                "The log holds no reading of the lambda input (input " + std::to_string(lambda_input_) + ").";
        else if (fuel_.load_points.empty() ||
                 (!fuel_.load_is_rpm && fuel_.load_input.kind == Input_Reader::Kind::None))
            problem_ = "The log holds no reading of the fuel map's load input.";
        else if (!afr_control_ && fixed_target_ <= 0)
            problem_ = "The fixed lambda target must be above 0.";

        if (afr_control_) {
            const int load_input = image.Analog_Channel[static_cast<std::size_t>(loads.LambdaLoadSensor)];
            afr_load_ = Make_Input_Reader(log, load_input);
            for (int i = 0; i < Afr_Points; ++i)
                afr_points_[static_cast<std::size_t>(i)] =
                    Forward_Sensor_Exact(
                        sensors.table, lambda_sensor_,
                        image.CardByte[static_cast<std::size_t>(One_D_Base(Table_Id::Afr) + i)])
                        .value_or(0);
        }
        const int ae = ae_combo_Index(image);
        if (ae == 1 || ae == 2) ae_input_ = Make_Input_Reader(log, ae == 1 ? 2 : 3);
        ae_threshold_volts_ = Scroll_Value(image, Ae_Threshold_Address, image.CardByte[Ae_Threshold_Address]);
        ae_sustain_cycles_ = image.CardByte[Ae_Sustain_Address];
    }

    const std::string& Problem() const { return problem_; }
    const Map_Locator& Fuel() const { return fuel_; }
    bool Afr_Control() const { return afr_control_; }
    double Fixed_Target() const { return fixed_target_; }
    const std::string& Unit() const { return unit_; }
    int Lambda_Input() const { return lambda_input_; }

    // The verdict on each row, and for the steady ones where they stood and measured over
    // target lambda. Index 0 is unused so that the index is the row number.
    struct Row_Result {
        Row_Verdict verdict = Row_Verdict::No_Place;
        Map_Cell cell;
        double ratio = 1;
    };

    std::vector<Row_Result> Rows() const {
        std::vector<Row_Result> out(static_cast<std::size_t>(log_.Last_Row + 1));
        if (!problem_.empty()) return out;
        const Log_Columns& col = log_.columns;
        const int settle_rows =
            static_cast<int>(std::lround(std::max(0.0, filter_.settle_seconds) / Row_Seconds));
        int last_move = -1'000'000;
        int ae_until = -1'000'000;
        double last_throttle = std::nan("");
        std::optional<double> last_ae;
        for (int r = 1; r <= log_.Last_Row; ++r) {
            const double* row = log_.Log_Data.Row(r);
            const auto rpm = Row_Rpm(fuel_, row);

            // The history runs through every row, counted or not.
            const double throttle = Column_Value(row, col.Col_AN2);
            if (!Empty(throttle) && !Empty(last_throttle) &&
                std::fabs(throttle - last_throttle) / Row_Seconds > filter_.max_throttle_rate)
                last_move = r;
            last_throttle = throttle;
            if (ae_input_.kind != Input_Reader::Kind::None) {
                const auto ae = ae_input_.Raw(row);
                if (ae && last_ae && (*ae - *last_ae) * 5.0 / 255 > ae_threshold_volts_ && *ae > *last_ae) {
                    // Sustain counts engine cycles of two turns each.
                    const double seconds = rpm && *rpm > 0 ? ae_sustain_cycles_ * 120.0 / *rpm : 0;
                    ae_until = std::max(ae_until, r + static_cast<int>(std::ceil(seconds / Row_Seconds)));
                }
                last_ae = ae;
            }

            Row_Result& result = out[static_cast<std::size_t>(r)];
            if (!rpm) continue;
            const double fuel = Column_Value(row, col.Col_Fuel);
            if (*rpm < filter_.min_rpm || (!Empty(fuel) && fuel <= 0)) {
                result.verdict = Row_Verdict::Not_Running;
                continue;
            }
            const auto cell = Locate_Row(fuel_, row);
            const auto raw = lambda_.Raw(row);
            const auto target = Target(row);
            if (!cell || !raw || !target || *target <= 0) continue;
            const double coolant = Column_Value(row, col.Col_AN4);
            if (!Empty(coolant) && coolant < filter_.min_coolant) {
                result.verdict = Row_Verdict::Cold;
            } else if (r - last_move <= settle_rows) {
                result.verdict = Row_Verdict::Throttle_Moving;
            } else if (r <= ae_until + settle_rows) {
                result.verdict = Row_Verdict::Enrichment;
            } else if (!Inside_Range(sensors_.table, lambda_sensor_, *raw)) {
                result.verdict = Row_Verdict::Lambda_Out_Of_Range;
            } else {
                result.verdict = Row_Verdict::Steady;
                result.cell = *cell;
                result.ratio =
                    Forward_Sensor_Exact(sensors_.table, lambda_sensor_, *raw).value_or(0) / *target;
            }
        }
        return out;
    }

private:
    // The wanted lambda at a row: the AFR target table over its load input (17 points spread
    // evenly over the input's 0-5 V), or the fixed target.
    std::optional<double> Target(const double* row) const {
        if (!afr_control_) return fixed_target_;
        const auto x = afr_load_.Raw(row);
        if (!x) return std::nullopt;
        const double pos = std::clamp(*x, 0.0, 255.0) * (Afr_Points - 1) / 255.0;
        const int i = std::min(static_cast<int>(pos), Afr_Points - 2);
        const double f = pos - i;
        const double a = afr_points_[static_cast<std::size_t>(i)];
        const double b = afr_points_[static_cast<std::size_t>(i + 1)];
        return a + (b - a) * f;
    }

    const Sensor_State& sensors_;
    const Log_State& log_;
    Steady_Filter filter_;
    Map_Locator fuel_;
    int lambda_input_ = 1;
    int lambda_sensor_ = -1;
    Input_Reader lambda_;
    bool afr_control_ = false;
    std::string unit_;
    double fixed_target_ = 1;
    Input_Reader afr_load_;
    std::array<double, Afr_Points> afr_points_{};
    Input_Reader ae_input_;
    double ae_threshold_volts_ = 0;
    int ae_sustain_cycles_ = 0;
    std::string problem_;
};

// The fuel byte nearest to `ms`: Fuel_ms_to_byte gives the code at or below it, and the
// next code up may be nearer.
std::uint8_t Nearest_Fuel_Byte(double ms) {
    const std::uint8_t below = Fuel_ms_to_byte(ms);
    if (below == 255) return below;
    const auto above = static_cast<std::uint8_t>(below + 1);
    return std::fabs(Fuel_Cell_Value(above) - ms) < std::fabs(ms - Fuel_Cell_Value(below)) ? above : below;
}

} // namespace

const char* Verdict_Text(Row_Verdict verdict) {
    switch (verdict) {
    case Row_Verdict::Steady:
        return "steady";
    case Row_Verdict::No_Place:
        return "no speed, load or lambda reading";
    case Row_Verdict::Not_Running:
        return "engine not running or fuel cut";
    case Row_Verdict::Cold:
        return "coolant below the threshold";
    case Row_Verdict::Throttle_Moving:
        return "throttle moving";
    case Row_Verdict::Enrichment:
        return "acceleration enrichment";
    case Row_Verdict::Lambda_Out_Of_Range:
        return "lambda at an end of the sensor's range";
    default:
        return "";
    }
}

int Fuel_Proposal::Changed_Count() const {
    return static_cast<int>(
        std::count_if(cells.begin(), cells.end(), [](const Cell_Correction& c) { return c.changed; }));
}

std::vector<Row_Verdict> Steady_Rows(const Settings_Image& image, const Sensor_State& sensors,
                                     const Log_State& log, const Steady_Filter& filter) {
    const Study study(image, sensors, log, filter, std::nullopt);
    std::vector<Row_Verdict> verdicts;
    for (const auto& row : study.Rows())
        verdicts.push_back(row.verdict);
    return verdicts;
}

Fuel_Proposal Propose_Fuel_Correction(const Settings_Image& image, const Sensor_State& sensors,
                                      const Log_State& log, const Correction_Options& options) {
    const Study study(image, sensors, log, options.steady, options.fixed_target);
    const Map_Locator& fuel = study.Fuel();
    Fuel_Proposal p;
    p.options = options;
    p.rows = fuel.rows;
    p.cols = fuel.cols;
    p.dead_time_ms = Injector_Dead_Time(image);
    p.afr_control = study.Afr_Control();
    p.fixed_target = study.Fixed_Target();
    p.target_unit = study.Unit();
    p.lambda_input = study.Lambda_Input();
    p.target_text = p.afr_control
                        ? "AFR target table"
                        : "fixed " + Format_Number(p.fixed_target, p.fixed_target < 10 ? "0.00" : "0.0") +
                              " " + p.target_unit;
    p.problem = study.Problem();
    p.rows_total = log.Last_Row;

    Hit_Grid seconds(Table_Id::Fuel_3D, fuel.rows, fuel.cols);
    Hit_Grid ratio_sum(Table_Id::Fuel_3D, fuel.rows, fuel.cols);
    const auto rows = study.Rows();
    for (std::size_t r = 1; r < rows.size(); ++r) {
        const auto& row = rows[r];
        ++p.verdicts[static_cast<std::size_t>(row.verdict)];
        if (row.verdict != Row_Verdict::Steady) continue;
        Spread(seconds, row.cell, Row_Seconds);
        Spread(ratio_sum, row.cell, Row_Seconds * row.ratio);
    }

    const Map_Block block{image.FuelBlockBase, fuel.cols, fuel.rows};
    const double limit = std::max(0.0, options.max_change_pct) / 100;
    p.cells.resize(static_cast<std::size_t>(fuel.rows * fuel.cols));
    for (int r = 1; r <= fuel.rows; ++r)
        for (int c = 1; c <= fuel.cols; ++c) {
            Cell_Correction& cell = p.At(r, c);
            cell.row = r;
            cell.col = c;
            cell.address = block.Cell(r, c);
            cell.old_byte = cell.new_byte =
                image.CardByte[static_cast<std::size_t>(Checked_Address(cell.address))];
            cell.old_ms = cell.new_ms = Fuel_Cell_Value(cell.old_byte);
            cell.seconds = seconds.At(r, c);
            if (cell.seconds > 0) cell.ratio = ratio_sum.At(r, c) / cell.seconds;
            cell.enough = cell.seconds > 0 && cell.seconds >= options.min_seconds;
            // A cell of 0 ms is a fuel cut the tuner set on purpose: nothing to scale.
            if (!cell.enough || cell.old_byte == 0) continue;
            double ms = p.dead_time_ms + (cell.old_ms - p.dead_time_ms) * cell.ratio;
            const double low = cell.old_ms * (1 - limit), high = cell.old_ms * (1 + limit);
            if (ms < low || ms > high) {
                ms = std::clamp(ms, low, high);
                cell.limited = true;
            }
            cell.new_byte = Nearest_Fuel_Byte(ms);
            // The nearer code may lie past the limit by a fraction of a step: keep inside.
            if (Fuel_Cell_Value(cell.new_byte) > high * (1 + 1e-9) && cell.new_byte > 0) --cell.new_byte;
            if (Fuel_Cell_Value(cell.new_byte) < low * (1 - 1e-9) && cell.new_byte < 255) ++cell.new_byte;
            cell.new_ms = Fuel_Cell_Value(cell.new_byte);
            cell.changed = cell.new_byte != cell.old_byte;
            cell.percent = cell.old_ms > 0 ? (cell.new_ms - cell.old_ms) / cell.old_ms * 100 : 0;
        }
    return p;
}

int Apply_Fuel_Correction(Settings_Image& image, Undo_List& undo, const Fuel_Proposal& proposal,
                          std::span<const std::pair<int, int>> chosen) {
    std::vector<const Cell_Correction*> cells;
    const auto take = [&](const Cell_Correction& c) {
        if (c.changed && image.CardByte[static_cast<std::size_t>(Checked_Address(c.address))] == c.old_byte &&
            std::find(cells.begin(), cells.end(), &c) == cells.end())
            cells.push_back(&c);
    };
    if (chosen.empty()) {
        for (const Cell_Correction& c : proposal.cells)
            take(c);
    } else {
        for (auto [r, c] : chosen)
            if (r >= 1 && r <= proposal.rows && c >= 1 && c <= proposal.cols) take(proposal.At(r, c));
    }
    if (cells.empty()) return 0;
    save_to_undolist(undo, image);
    for (const Cell_Correction* c : cells)
        Put_Byte(image, c->address, c->new_byte);
    return static_cast<int>(cells.size());
}

} // namespace quorlen
