#pragma once
// The box's live data stream: 20 rows a second while an engine runs, either as text rows
// ("La") or as binary frames ("bL", "00", length in two hex digits). A blank stops it.
//
// The engine is a repeating test-drive, a function of the row number alone so that every
// run of the simulator streams the same data: idle, a pull through five gears with boost,
// a lift-off with fuel cut, idle again. Its values are encoded the way the box's inputs
// see them (raw 8-bit readings of 0-5 V sensors), so a log decoded with the usual sensors
// shows plausible engine figures.

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace boxsim {

using Stream_Time = std::chrono::nanoseconds;

inline constexpr Stream_Time Row_Period = std::chrono::milliseconds(50);
inline constexpr int Stream_Fields = 42; // the row: RPM, columns 2..39, three status bytes
inline constexpr int Default_Frame_Length = 58;

// One row of the engine, in engineering units, plus the raw columns as the box sends them.
struct Engine_Sample {
    double rpm = 0;
    int gear = 0;        // 0 at idle or while the clutch is out
    double throttle = 0; // %
    double map_bar = 0;  // absolute
    double lambda = 1;
    double ignition = 0; // degrees before top dead centre
    double fuel_ms = 0;
    double coolant = 0; // deg C
    double air = 0;
    double battery = 0;
    // columns[c] for c = 2..39 as raw bytes; status bytes 1..3 in status[0..2].
    std::array<std::uint8_t, 40> columns{};
    std::array<std::uint8_t, 3> status{};
    std::uint32_t engine_on = 0; // 24-bit counter, one step a row
    // What the drive is doing, for the figures that follow from it.
    bool wot = false;
    bool fuel_cut = false;
    double boost = 0;   // 0 to 1 of full boost
    double seconds = 0; // since the box came up
};

// The engine at row n of a stream (n from 0).
Engine_Sample Engine_At(long row);
// The figures of the test-drive at row n, before they are encoded.
Engine_Sample Drive_At_Row(long row);
// The raw columns and status bytes from the figures.
void Encode(Engine_Sample& sample);
// The stream's columns of analogue input 1 to 12 (0 for none).
int Input_Column(int input);

// A throttle a test holds where it wants: from each second (counted from the start of the
// stream) the throttle input reads the given raw value, in place of the drive's own.
using Throttle_Script = std::vector<std::pair<double, int>>;
// "0:30,5:230" into its points, in time order; false, with `error` set, on a bad text.
bool Parse_Throttle_Script(const std::string& text, Throttle_Script& script, std::string& error);
// The scripted raw value at `seconds` into the stream; -1 before the first point.
int Scripted_Throttle(const Throttle_Script& script, double seconds);

// "#RPM" and a title for each field, padded so the header is as long as a row.
std::string Text_Header();
// A text row without its line end: "$" and the RPM in thousands ("3.450"), the columns as
// three decimal digits, the status bytes as "h" and two hex digits, each field and a blank.
std::string Text_Row(const Engine_Sample& sample);
// The data bytes d(0) .. d(length-1) of a binary frame.
std::string Frame_Data(const Engine_Sample& sample, int length);
// "PS", length, data, sum high and low, "DS". The sum starts from the length, adds every
// data byte and takes 1 off. `spoil_sum` sends a wrong one.
std::string Frame(const std::string& data, bool spoil_sum = false);

// Faults of the stream itself.
struct Stream_Faults {
    long pause_at_row = -1; // at this row the stream goes quiet for `pause`, then goes on
    Stream_Time pause = std::chrono::seconds(2);
    long bad_sum_row = -1;    // the frame of this row carries a wrong sum
    long message_every = 200; // a "#" box message in text mode every this many rows (0: never)
};

class Log_Stream {
public:
    enum class Mode { Off, Text, Binary };

    explicit Log_Stream(Stream_Faults faults = {}, Throttle_Script throttle = {})
        : faults_(faults), throttle_(std::move(throttle)) {}

    // Where the rows come from: the test-drive unless an engine model is set.
    using Engine = std::function<Engine_Sample(long row)>;
    void Set_Engine(Engine engine) { engine_ = std::move(engine); }

    // The header goes at once; the first row one period later.
    std::string Start_Text(Stream_Time now);
    void Start_Binary(int length, Stream_Time now);
    void Stop() { mode_ = Mode::Off; }

    Mode Active() const { return mode_; }
    // Every row due by `now`.
    std::string Tick(Stream_Time now);
    Stream_Time Next_Deadline() const;
    long Rows_Sent() const { return rows_sent_; }

private:
    std::string Row_Text(long row);

    Stream_Faults faults_;
    Engine engine_;
    Throttle_Script throttle_;
    Mode mode_ = Mode::Off;
    int length_ = Default_Frame_Length;
    Stream_Time started_{};
    long next_row_ = 0;
    long rows_sent_ = 0;
    long stream_rows_ = 0; // rows of the engine since the box came up, across streams
};

} // namespace boxsim
