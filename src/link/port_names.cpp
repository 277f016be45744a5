#include "link/port_names.h"

#include "core/text.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <system_error>

namespace quorlen {

namespace fs = std::filesystem;

namespace {

struct Band {
    std::string_view device; // "/dev/ttyUSB"
    int first_number;        // number of index 0
    int low_count;           // indexes below this use first_number + index
    int high_base;           // indexes from low_count on use high_base + index
};

constexpr Band Bands[] = {
    {"/dev/ttyUSB", 1, 8, 100},
    {"/dev/ttyACM", 9, 4, 200},
    {"/dev/ttyS", 13, 4, 300},
};
constexpr int Max_Index = 99;

} // namespace

int Fixed_Port_Number(std::string_view path) {
    for (const Band& band : Bands) {
        if (path.substr(0, band.device.size()) != band.device) continue;
        std::string_view digits = path.substr(band.device.size());
        int index = -1;
        auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), index);
        if (digits.empty() || ec != std::errc() || end != digits.data() + digits.size()) return 0;
        if (digits.size() > 1 && digits[0] == '0') return 0; // "ttyUSB01" is not ttyUSB1
        if (index < 0 || index > Max_Index) return 0;
        return index < band.low_count ? band.first_number + index : band.high_base + index;
    }
    return 0;
}

std::string Fixed_Port_Path(int number) {
    for (const Band& band : Bands) {
        int index = -1;
        if (number >= band.first_number && number < band.first_number + band.low_count)
            index = number - band.first_number;
        else if (number >= band.high_base + band.low_count && number <= band.high_base + Max_Index)
            index = number - band.high_base;
        if (index >= 0) return std::string(band.device) + std::to_string(index);
    }
    return "";
}

int Port_Names::Number_For(const std::string& path) {
    if (int fixed = Fixed_Port_Number(path); fixed != 0) return fixed;
    auto it = std::find(paths_.begin(), paths_.end(), path);
    if (it == paths_.end()) it = paths_.insert(paths_.end(), path);
    return First_Path_Number + static_cast<int>(it - paths_.begin());
}

std::string Link_Target(const std::string& path) {
    std::error_code ec;
    if (!fs::is_symlink(path, ec)) return "";
    fs::path target = fs::read_symlink(path, ec);
    if (ec) return "";
    if (target.is_relative()) target = fs::path(path).parent_path() / target;
    return target.lexically_normal().string();
}

std::map<std::string, std::string> Stable_Links(const std::string& folder) {
    std::map<std::string, std::string> links;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        const std::string link = it->path().string();
        const std::string target = Link_Target(link);
        if (!target.empty()) links.emplace(target, link);
    }
    return links;
}

void Port_Names::Set_Stable_Path(int number, const std::string& link) {
    if (link.empty())
        stable_.erase(number);
    else
        stable_[number] = link;
}

std::string Port_Names::Path_Of(int number) const {
    if (number >= First_Path_Number) {
        const auto index = static_cast<std::size_t>(number - First_Path_Number);
        return index < paths_.size() ? paths_[index] : "";
    }
    return Fixed_Port_Path(number);
}

std::string Port_Names::Name_Of(int number) const {
    std::string path = Path_Of(number);
    return path.empty() ? "COM" + std::to_string(number) : path;
}

std::string Port_Names::Ini_Value(int number) const {
    if (auto it = stable_.find(number); it != stable_.end()) return it->second;
    if (number >= First_Path_Number) {
        std::string path = Path_Of(number);
        if (!path.empty()) return path;
    }
    return std::to_string(number);
}

int Port_Names::From_Ini(const std::string& value) {
    std::string text = Trim(value);
    if (!text.empty() && text[0] == '/') {
        // An adapter unplugged at start has no link yet: its path is kept as it stands.
        const int fixed = Fixed_Port_Number(Link_Target(text));
        if (fixed == 0) return Number_For(text);
        stable_[fixed] = text;
        return fixed;
    }
    // A number no port can have reads as none, as a missing key does.
    return static_cast<int>(Whole_Within(Val(text), 0, 32767).value_or(0));
}

} // namespace quorlen
