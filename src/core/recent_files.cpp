#include "core/recent_files.h"

#include <utility>

namespace quorlen {

std::vector<std::string> Push_Recent(std::vector<std::string> list, const std::string& path,
                                     std::size_t kept) {
    if (path.empty()) return list;
    std::vector<std::string> pushed{path};
    for (std::string& file : list)
        if (file != path && pushed.size() < kept) pushed.push_back(std::move(file));
    return pushed;
}

std::string Recent_Menu_Text(std::size_t index, const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    std::string shown;
    for (char ch : name) {
        if (ch == '&') shown += '&';
        shown += ch;
    }
    // Only the first nine get a key: "&10" would be a second "&1".
    const std::string number = std::to_string(index + 1);
    return (index < 9 ? "&" + number : number) + " " + shown;
}

} // namespace quorlen
