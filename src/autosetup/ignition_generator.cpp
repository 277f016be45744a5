#include "autosetup/ignition_generator.h"

#include "autosetup/generator_math.h"
#include "image/scaling.h"
#include "image/settings_image.h"

namespace quorlen {

namespace {

// The low corner takes this angle: idle and light load want it steady, whatever the rest.
constexpr double Idle_Degrees = 15.0;
constexpr double Idle_Corner_Rpm = 1500;
constexpr double Idle_Corner_MAP = 0.8;
constexpr double Idle_Corner_Throttle = 2.5;

std::uint8_t Degrees(double g) {
    return byte_chk(g / 0.2);
}

} // namespace

void Update_Ignition_maxload_label(Auto_Ignition& form, int IgnLoadSensor) {
    if (IgnLoadSensor == Ign_Load_MAP) {
        form.captions = {"Ignition at 'MAP=1 bar' and 'Max rpm'", "Ignition at 'MAP=1 bar' and '1000 rpm'",
                         "Ignition retard per 1 bar (15psi) boost", "Ignition advance at vaccum"};
    } else if (IgnLoadSensor == Ign_Load_Throttle) {
        form.captions = {"Ignition at full throttle and Max rpm", "Ignition at full throttle and 1000rpm",
                         "Ignition retard at boost not used", "Ignition advance at released throttle"};
    } else {
        return;
    }
    form.Captions_Load = IgnLoadSensor;
}

std::optional<std::vector<std::uint8_t>> Autoignition_Cells(Auto_Ignition& form, int IgnLoadSensor,
                                                            const std::string& MaxRPM_txt_4,
                                                            const Map_Axes& axes) {
    Auto_Ignition_Inputs& in = form.in;
    for (std::string* box :
         {&in.Ign_atm_maxrpm_txt, &in.Ign_atm_idle_txt, &in.Ign_retard_txt, &in.Ign_advance_txt})
        Comma_To_Point(*box);
    if (IgnLoadSensor != Ign_Load_MAP && IgnLoadSensor != Ign_Load_Throttle) return std::nullopt;

    const double A = Box_Number(in.Ign_atm_maxrpm_txt);
    const double I = Box_Number(in.Ign_atm_idle_txt);
    const double R = Box_Number(in.Ign_retard_txt);
    const double V = Box_Number(in.Ign_advance_txt);
    const double T = Box_Number(MaxRPM_txt_4);
    const std::size_t rows = axes.load.size();
    const std::size_t cols = axes.rpm.size();
    std::vector<double> L(rows), S(cols);
    for (std::size_t i = 0; i < rows; ++i)
        L[i] = Box_Number(axes.load[i]);
    for (std::size_t j = 0; j < cols; ++j)
        S[j] = Box_Number(axes.rpm[j]);
    std::vector<std::uint8_t> cells(rows * cols);
    auto fill_row = [&](std::size_t i, double g) {
        for (std::size_t j = 0; j < cols; ++j)
            cells[i * cols + j] = Degrees(g);
    };

    if (IgnLoadSensor == Ign_Load_MAP) {
        // V degrees more per bar of vacuum below 1 bar, R less per bar of boost above it.
        std::size_t i = 0;
        for (; i < rows && !(L[i] > 1.0); ++i)
            fill_row(i, Round_Even((1.0 - L[i]) * V + A, 2));
        for (; i < rows; ++i)
            fill_row(i, A - Round_Even((L[i] - 1.0) * R, 2));
    } else {
        const double top = rows == 0 ? 0 : L[rows - 1];
        for (std::size_t i = 0; i < rows; ++i)
            fill_row(i, Round_Even(Divide((top - L[i]) * V, top, "the throttle axis ends at 0") + A, 2));
    }

    // From T down to 1000 rpm the angle falls by A - I; above T nothing changes.
    const double slope = Divide(A - I, T - 1000, "the top RPM is 1000");
    for (std::size_t j = 0; j < cols; ++j) {
        const std::uint8_t n = Degrees(-slope * (S[j] - T));
        for (std::size_t i = 0; i < rows; ++i)
            cells[i * cols + j] = byte_chk(cells[i * cols + j] - n);
    }

    const double corner_load = IgnLoadSensor == Ign_Load_MAP ? Idle_Corner_MAP : Idle_Corner_Throttle;
    std::size_t J = 0, K = 0;
    while (J < cols && !(S[J] > Idle_Corner_Rpm))
        ++J;
    while (K < rows && !(L[K] > corner_load))
        ++K;
    for (std::size_t i = 0; i < K; ++i)
        for (std::size_t j = 0; j < J; ++j)
            cells[i * cols + j] = Degrees(Idle_Degrees);
    return cells;
}

} // namespace quorlen
