#include "hslog/crank_view.h"

#include "image/scaling.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <numeric>

namespace quorlen {

namespace {

// The first number in a text; nullopt when there is none.
std::optional<int> First_Number(const std::string& text) {
    const auto digit = std::find_if(text.begin(), text.end(),
                                    [](char c) { return std::isdigit(static_cast<unsigned char>(c)); });
    if (digit == text.end()) return std::nullopt;
    int n = 0;
    for (auto it = digit; it != text.end() && std::isdigit(static_cast<unsigned char>(*it)) && n < 10000;
         ++it)
        n = n * 10 + (*it - '0');
    return n;
}

int Cam_Teeth_Of(const std::string& cam_sensor) {
    if (cam_sensor.empty() || cam_sensor.rfind("No", 0) == 0) return 0;
    return std::clamp(First_Number(cam_sensor).value_or(1), 1, 72);
}

std::string Wheel_Name(int positions, const std::vector<int>& gaps) {
    std::string name = std::to_string(positions);
    for (int g : gaps)
        name += "-" + std::to_string(g);
    return name;
}

std::string Degrees(double value) {
    return Format_Number(value, "0") + " deg";
}

} // namespace

int Wheel_Layout::Missing() const {
    return static_cast<int>(std::count(present.begin(), present.end(), false));
}

Wheel_Layout Wheel_Layout_For(const Engine_Config_Table& tab, int layout, int mark_teeth) {
    Wheel_Layout w;
    w.row = Engine_Config_Row(layout);
    w.mark_teeth = mark_teeth;
    if (layout < 0 || layout >= Engine_Combo_Count) {
        w.notes.push_back("Layout " + std::to_string(layout) + " is not one the box knows.");
        return w;
    }
    w.name = Engine_Combo_Item(tab, layout);
    const Engine_Layout row = Engine_Layout_Of(tab, w.row);
    w.crank_sensor = row.crank_sensor;
    w.cam_sensor = row.cam_sensor;
    w.tooth_degrees = row.tooth_degrees;
    w.cam_teeth = Cam_Teeth_Of(row.cam_sensor);
    const auto wheel = Crank_Wheel_Of(row.crank_sensor);
    if (!wheel || w.tooth_degrees <= 0) {
        w.notes.push_back(row.crank_sensor.empty()
                              ? "The layout names no crank wheel."
                              : "\"" + row.crank_sensor + "\" with " + Format_Number(w.tooth_degrees, "0.0") +
                                    " deg a tooth is no wheel that can be drawn.");
        return w;
    }
    // The box counts teeth by the layout's tooth angle; the sensor's text gives the gaps.
    w.positions = static_cast<int>(std::lround(360.0 / w.tooth_degrees));
    if (w.positions < 2 || w.positions > 360) {
        w.positions = 0;
        w.notes.push_back("A tooth of " + Format_Number(w.tooth_degrees, "0.0") + " deg gives no wheel.");
        return w;
    }
    w.known = true;
    w.on_distributor = wheel->on_distributor;
    if (!w.on_distributor && wheel->positions != w.positions)
        w.notes.push_back("\"" + row.crank_sensor + "\" names " + std::to_string(wheel->positions) +
                          " teeth, the tooth angle gives " + std::to_string(w.positions) + ".");
    w.present.assign(static_cast<std::size_t>(w.positions), true);
    w.gaps = wheel->gaps;
    const int count = static_cast<int>(w.gaps.size());
    for (int g = 0; g < count; ++g) {
        // A turn ends with its last gap; where the others stand the catalogue does not say,
        // so they are drawn evenly round the wheel.
        const int end = w.positions - g * w.positions / count;
        const int missing = std::clamp(w.gaps[static_cast<std::size_t>(g)], 0, w.positions / count - 1);
        for (int m = 1; m <= missing; ++m)
            w.present[static_cast<std::size_t>((end - m + w.positions) % w.positions)] = false;
    }
    if (count > 1) w.notes.push_back("The " + std::to_string(count) + " gaps are drawn evenly spaced.");
    w.mark_angle = mark_teeth * w.tooth_degrees;
    w.tdc_angle = std::fmod(w.mark_angle + Mark_Degrees, 360.0);
    if (w.mark_angle >= 720)
        w.notes.push_back(std::string(Mark_Teeth_Name) + " (" + std::to_string(mark_teeth) +
                          ") is more than two turns of the wheel.");
    return w;
}

Crank_Measure Measure_Crank(const Osc_Trace& trace, int gaps_per_turn) {
    Crank_Measure m;
    const auto& s = trace.samples;
    std::vector<long> teeth; // samples where the crank line rises
    std::vector<long> cams;
    for (std::size_t i = 1; i < s.size(); ++i) {
        if ((s[i] & 1) != 0 && (s[i - 1] & 1) == 0) teeth.push_back(static_cast<long>(i));
        if ((s[i] & 16) != 0 && (s[i - 1] & 16) == 0) cams.push_back(static_cast<long>(i));
    }
    if (teeth.size() < 8) {
        m.problem =
            "The capture has " + std::to_string(teeth.size()) + " crank pulses: too few to measure a wheel.";
        return m;
    }
    // A gap is a tooth period well above the ones on either side of it.
    std::vector<std::size_t> gap_ends; // indexes into `teeth` of the tooth after each gap
    std::vector<double> ratios;
    for (std::size_t j = 1; j + 2 < teeth.size(); ++j) {
        const double before = static_cast<double>(teeth[j] - teeth[j - 1]);
        const double gap = static_cast<double>(teeth[j + 1] - teeth[j]);
        const double after = static_cast<double>(teeth[j + 2] - teeth[j + 1]);
        if (gap > 1.5 * before && gap > 1.5 * after) {
            gap_ends.push_back(j + 1);
            ratios.push_back(gap / before);
        }
    }
    const std::size_t per_turn = static_cast<std::size_t>(std::max(gaps_per_turn, 1));
    if (gap_ends.size() < per_turn + 1 || teeth.empty()) {
        m.problem = "No gap repeats in the crank pulses: a wheel without missing teeth, or less than a turn.";
        return m;
    }
    m.gap_ratio = std::accumulate(ratios.begin(), ratios.end(), 0.0) / static_cast<double>(ratios.size());
    m.missing = std::max(0, static_cast<int>(std::lround(m.gap_ratio)) - 1);
    std::vector<std::size_t> starts; // turn starts, indexes into `teeth`
    for (std::size_t k = 0; k < gap_ends.size(); k += per_turn)
        starts.push_back(gap_ends[k]);
    m.turns = static_cast<long>(starts.size()) - 1;
    long total_teeth = 0;
    m.teeth_min = 1 << 30;
    for (std::size_t k = 0; k + 1 < starts.size(); ++k) {
        const int n = static_cast<int>(starts[k + 1] - starts[k]);
        total_teeth += n;
        m.teeth_min = std::min(m.teeth_min, n);
        m.teeth_max = std::max(m.teeth_max, n);
    }
    m.teeth_per_turn = static_cast<double>(total_teeth) / static_cast<double>(m.turns);
    m.positions = static_cast<int>(std::lround(m.teeth_per_turn)) + m.missing * static_cast<int>(per_turn);
    const long first = teeth.at(starts.at(0));
    const long last = teeth.at(starts.at(starts.size() - 1));
    const double turn_samples = static_cast<double>(last - first) / static_cast<double>(m.turns);
    m.rpm = 60.0 * trace.sample_rate / turn_samples;

    for (long c : cams) {
        if (c < first || c >= last) continue;
        ++m.cam_pulses;
        if (m.cam_angle) continue;
        // The turn it falls in, and how far through that turn.
        std::size_t k = 0;
        while (k + 1 < starts.size() && teeth[starts[k + 1]] <= c)
            ++k;
        const long from = teeth[starts[k]];
        const long to = teeth[starts[k + 1]];
        m.cam_angle = 360.0 * static_cast<double>(c - from) / static_cast<double>(to - from);
    }
    m.cam_per_two_turns = 2.0 * static_cast<double>(m.cam_pulses) / static_cast<double>(m.turns);
    return m;
}

Crank_Report Crank_View_Report(const Wheel_Layout& w, const Crank_Measure* m,
                               const std::string& capture_name) {
    Crank_Report r;
    auto& out = r.lines;
    out.push_back("Layout: " + (w.name.empty() ? std::string("none") : w.name));
    if (w.known) {
        std::string wheel = "Wheel: " + std::to_string(w.positions) + " tooth places of " +
                            Format_Number(w.tooth_degrees, "0.0") + " deg, " + std::to_string(w.Teeth()) +
                            " teeth";
        if (w.Missing() > 0)
            wheel += ", " + std::to_string(w.Missing()) + " missing (" + w.crank_sensor + ")";
        if (w.on_distributor) wheel += ", in the distributor: the place of a tooth in a turn of the crank";
        out.push_back(wheel);
        out.push_back(std::string(Mark_Teeth_Name) + ": " + std::to_string(w.mark_teeth));
        out.push_back("51deg BTDC mark: tooth " + std::to_string(w.mark_teeth) +
                      " after the missing pulse, " + Degrees(w.mark_angle) +
                      " after it; TDC of cylinder 1 at " + Degrees(w.tdc_angle));
    }
    out.push_back("Cam sensor: " + (w.cam_sensor.empty() ? std::string("none") : w.cam_sensor));
    for (const std::string& note : w.notes)
        out.push_back("Note: " + note);

    if (m == nullptr) {
        out.push_back("No high-speed capture is open: capture the cranking engine in the high speed "
                      "logging window to check the wheel.");
        return r;
    }
    out.push_back("Capture: " + capture_name);
    if (!m->problem.empty()) {
        r.warnings.push_back(m->problem);
        return r;
    }
    out.push_back("Measured: " + std::to_string(m->turns) + " turns at " + Format_Number(m->rpm, "0") +
                  " rpm, " + Format_Number(m->teeth_per_turn, "0.0") + " teeth a turn, the gap " +
                  Format_Number(m->gap_ratio, "0.00") + " teeth long: " + std::to_string(m->missing) +
                  " missing, a " + std::to_string(m->positions) + "-" + std::to_string(m->missing) +
                  " wheel");
    if (m->cam_pulses == 0) {
        out.push_back("Cam: no pulses");
    } else {
        std::string cam = "Cam: " + Format_Number(m->cam_per_two_turns, "0.0") + " pulses in two turns";
        if (m->cam_angle && w.known)
            cam += ", the first " + Degrees(*m->cam_angle) + " after the missing pulse (tooth " +
                   Format_Number(std::floor(*m->cam_angle / w.tooth_degrees), "0") + ")";
        else if (m->cam_angle)
            cam += ", the first " + Degrees(*m->cam_angle) + " after the missing pulse";
        out.push_back(cam);
    }

    if (m->teeth_min != m->teeth_max)
        r.warnings.push_back("The teeth counted in a turn vary from " + std::to_string(m->teeth_min) +
                             " to " + std::to_string(m->teeth_max) +
                             ": crank pulses are lost or added (noise, a loose "
                             "sensor, the trigger slope).");
    if (w.known) {
        const int per_gap = w.gaps.empty() ? 0 : w.gaps.front();
        if (m->positions != w.positions || m->missing != per_gap)
            r.warnings.push_back("The capture shows a " + std::to_string(m->positions) + "-" +
                                 std::to_string(m->missing) + " wheel; the layout has " +
                                 Wheel_Name(w.positions, w.gaps) + " (" + w.crank_sensor + ").");
    }
    const long cams = std::lround(m->cam_per_two_turns);
    if (w.cam_teeth == 0 && m->cam_pulses > 0)
        r.warnings.push_back("The capture has cam pulses; the layout uses no cam sensor (" + w.cam_sensor +
                             ").");
    else if (w.cam_teeth > 0 && m->cam_pulses == 0)
        r.warnings.push_back("No cam pulses in the capture; the layout expects " + w.cam_sensor + ".");
    else if (w.cam_teeth > 0 && cams != w.cam_teeth)
        r.warnings.push_back("The capture has " + std::to_string(cams) +
                             " cam pulses in two turns; the layout expects " + std::to_string(w.cam_teeth) +
                             " (" + w.cam_sensor + ").");
    return r;
}

} // namespace quorlen
