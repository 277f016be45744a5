#pragma once
// Where the program keeps its data (ini, default settings, logs, Debug_file.log).
//
// Beside the executable when the shipped data stands there (a build tree, or a portable
// copy on a stick); otherwise in the user's data folder, which is seeded from the installed
// data the first time, so an installed program never needs to write under /usr.

#include <string>
#include <vector>

namespace quorlen {

struct App_Path_Inputs {
    std::string executable_dir; // folder of the running program
    std::string installed_data; // e.g. <prefix>/share/quorlen
    std::string user_data;      // e.g. ~/.local/share/quorlen
};

// The file whose presence marks a folder as holding the program's data.
inline constexpr const char* App_Data_Marker = "RZ400_800M3_Default_Settings.qxs";

// Chooses App_Path, seeding the user folder when that is the choice. The result ends with
// exactly one "/".
std::string Resolve_App_Path(const App_Path_Inputs& in);

// Copies every regular file of `from` and its folders (the base maps, the manual) that `to`
// does not have yet, never overwriting a file the user may have changed. Returns the paths
// copied, relative to `from`.
std::vector<std::string> Seed_Data_Folder(const std::string& from, const std::string& to);

// Appends "/" when missing and folds trailing repeats to one.
std::string With_One_Trailing_Slash(std::string path);

} // namespace quorlen
