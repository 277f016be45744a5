#pragma once
// The command line of boxsim.

#include "box.h"
#include "faults.h"

#include <optional>
#include <string>
#include <vector>

namespace boxsim {

struct Options {
    std::string link;
    std::string image_path; // empty: the shipped default settings
    std::string image_out;
    std::string trace;
    std::string ini_path; // empty: the shipped configuration file, for the engine layouts
    bool slave = false;
    std::string slave_path;                  // empty: a copy of the master with the slave mark set
    std::vector<std::pair<int, int>> errors; // counter address, value
    std::vector<std::pair<int, int>> slave_errors;
    long wire_baud = 0; // 0: no pacing
    bool help = false;

    Box_Config box; // without its images, which main() loads
    Box_Faults box_faults;
    Line_Fault_Plan line_faults;
};

// nullopt, with `error` set, on a bad command line.
std::optional<Options> Parse_Options(const std::vector<std::string>& args, std::string& error);

std::string Usage();

} // namespace boxsim
