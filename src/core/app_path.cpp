#include "core/app_path.h"

#include <filesystem>
#include <system_error>

namespace quorlen {

namespace fs = std::filesystem;

std::string With_One_Trailing_Slash(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    if (path.empty() || path.back() != '/') path += '/';
    return path;
}

std::vector<std::string> Seed_Data_Folder(const std::string& from, const std::string& to) {
    std::vector<std::string> copied;
    std::error_code ec;
    fs::create_directories(to, ec);
    for (fs::recursive_directory_iterator it(from, ec), end; !ec && it != end; it.increment(ec)) {
        if (!it->is_regular_file(ec)) continue;
        const fs::path relative = it->path().lexically_relative(from);
        const fs::path target = fs::path(to) / relative;
        if (fs::exists(target, ec)) continue;
        std::error_code copy_ec;
        fs::create_directories(target.parent_path(), copy_ec);
        if (fs::copy_file(it->path(), target, copy_ec)) copied.push_back(relative.generic_string());
    }
    return copied;
}

std::string Resolve_App_Path(const App_Path_Inputs& in) {
    std::error_code ec;
    if (!in.executable_dir.empty() && fs::exists(fs::path(in.executable_dir) / App_Data_Marker, ec))
        return With_One_Trailing_Slash(in.executable_dir);
    if (!in.installed_data.empty() && !in.user_data.empty())
        Seed_Data_Folder(in.installed_data, in.user_data);
    if (!in.user_data.empty()) {
        fs::create_directories(in.user_data, ec);
        return With_One_Trailing_Slash(in.user_data);
    }
    return With_One_Trailing_Slash(in.executable_dir.empty() ? "." : in.executable_dir);
}

} // namespace quorlen
