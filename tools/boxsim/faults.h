#pragma once
// Faults by name, after the mock links that inject them into a real protocol. The kinds that
// change what the box does go into Box_Faults; the kinds that spoil the line are applied to
// the box's output by Line_Faults, counting characters over the whole run.

#include "box.h"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace boxsim {

struct Line_Fault_Plan {
    std::vector<long> dropped;   // 1-based numbers of output characters that never arrive
    std::vector<long> corrupted; // 1-based numbers of output characters with bit 0 flipped
    std::chrono::milliseconds slow{0};
    long hangup_after = -1; // close the line once this many characters went out
};

// Adds one "KIND[@N]" to the plans; false with `error` set when it is not one of ours.
bool Add_Fault(std::string_view fault_text, Box_Faults& box, Line_Fault_Plan& line, std::string& error);

// The text of `boxsim --help` that lists the kinds.
extern const char* const Fault_Help;

class Line_Faults {
public:
    explicit Line_Faults(Line_Fault_Plan plan) : plan_(std::move(plan)) {}

    struct Result {
        std::string out;
        bool hang_up = false; // close the line after `out` has gone
        std::vector<std::string> notes;
    };
    Result Filter(std::string_view out);

    std::chrono::milliseconds Delay() const { return plan_.slow; }

private:
    Line_Fault_Plan plan_;
    long produced_ = 0;
    long passed_ = 0;
    bool hung_up_ = false;
};

} // namespace boxsim
