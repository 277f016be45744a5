#pragma once
// The box's high-speed digital stream: after "d" the box echoes it and then sends the state of
// its eight digital lines, one byte a sample, as fast as the line carries them (ten bit times
// a sample). Bit 0 is the crank sensor, then ignition A and B, PWM 1, the cam sensor, launch,
// ignition cut and fuel A. Every 11520th byte of what it sends, counting the echo as the
// first, the box puts a check byte of 255 in place of a sample; its own first sample is none.
// A blank stops the stream.
//
// The engine turns at a fixed speed on the wheel of the image's engine layout: the crank
// teeth with their gap, the cam pulses, the coils charged and fired at the advance of the
// ignition map, the injector of channel A opened at its tooth for the time of the fuel map,
// PWM 1 at the duty of its table. The crank angle counts from the first tooth after the gap;
// tooth number "setting 18" is 51 degrees before top dead centre of cylinder 1.

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace boxsim {

using Stream_Time = std::chrono::nanoseconds;
using Image_Bytes = std::array<std::uint8_t, 1024>;

inline constexpr long Check_Every = 11520;

// One Engine_Config row of the configuration file, its fields as the file has them.
using Layout_Row = std::vector<std::string>;

// The Engine_Config rows of an ini file, the heading row first; empty when there are none.
std::vector<Layout_Row> Load_Engine_Layouts(const std::string& ini_path, std::string& error);
std::vector<Layout_Row> Parse_Engine_Layouts(const std::string& ini_text);

// A trigger wheel: `positions` places round the crank, `present` false where a tooth is
// missing. Place 0 is the first tooth after the gap.
struct Wheel {
    int positions = 36;
    std::vector<bool> present;
    double Tooth_Degrees() const { return 360.0 / positions; }
};
// "36-1", "Crank 60-2", "Crank 36-2-2-2", "Crank 36 even", "Dist 24 teeth"; nullopt-like
// empty wheel (positions 0) when no tooth count is in the text.
Wheel Parse_Wheel(const std::string& text);

// What the engine does, in angles of the 720-degree cycle from the first tooth after the gap.
struct HS_Plan {
    double rpm = 300;
    Wheel wheel;
    int cam_teeth = 1; // cam pulses per cycle; a layout without a cam still gets one
    int cylinders = 4;
    std::vector<char> ign_channels; // the channel firing at each event of the cycle, in order
    std::vector<char> fuel_channels;
    double tdc1 = 91;    // degrees from tooth 0 to top dead centre of cylinder 1
    double advance = 10; // degrees before top dead centre
    double dwell_ms = 3;
    double fuel_start = 100; // degrees from tooth 0 to the first injection
    double fuel_ms = 2;
    double pwm_duty = 0; // 0 .. 1
    double pwm_hz = 25;

    // The eight lines at `seconds` after the stream began.
    std::uint8_t Sample_At(double seconds) const;
};

// How boxsim is told to run the engine, and what it reads the layout from.
struct HS_Setup {
    double rpm = 300;
    std::string wheel; // "--hs-wheel": overrides the layout's crank sensor
    double pwm_hz = 25;
    std::vector<Layout_Row> layouts; // from the ini; empty: a 36-1 wheel, four cylinders
};

// The plan for an image: its layout byte (6), teeth to the 51-degree mark (18) and to the
// injection (20), dwell (21), and the ignition, fuel and PWM 1 maps at the set speed.
HS_Plan Plan_For(const HS_Setup& setup, const Image_Bytes& image);

struct HS_Faults {
    long bad_check = -1; // this check byte (counting from 1) goes out as 254
    long gap_at = -1;    // from this sample (counting from 1) the stream is quiet for `gap`
    Stream_Time gap = std::chrono::milliseconds(500);
};

class HS_Stream {
public:
    explicit HS_Stream(HS_Faults faults = {}) : faults_(faults) {}

    // Begins at `now` with `samples_per_second`; returns the echo.
    std::string Start(const HS_Plan& plan, int samples_per_second, Stream_Time now);
    void Stop() { active_ = false; }
    bool Active() const { return active_; }
    // Every byte due by `now`.
    std::string Tick(Stream_Time now);
    Stream_Time Next_Deadline() const;
    long Bytes_Sent() const { return sent_; }

private:
    HS_Faults faults_;
    HS_Plan plan_;
    bool active_ = false;
    int rate_ = 11520;
    Stream_Time started_{};
    long sent_ = 0;   // bytes of this stream, the echo included
    long checks_ = 0; // check bytes sent so far, over the whole run
    bool gap_done_ = false;
    Stream_Time gap_end_{};
    long gap_skip_ = 0; // samples the gap has passed over
};

} // namespace boxsim
