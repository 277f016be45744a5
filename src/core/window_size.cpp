#include "core/window_size.h"

#include "core/text.h"

#include <array>

namespace quorlen {

std::optional<Window_Size> Parse_Window_Size(std::string_view value) {
    if (value.empty()) return std::nullopt;
    auto state = To_Integer(value.substr(0, 1));
    if (!state) return std::nullopt;
    std::array<int, 4> fields{};
    std::size_t pos = 1;
    for (int& field : fields) {
        std::size_t tab = value.find('\t', pos);
        if (tab == std::string_view::npos) return std::nullopt;
        // Twips of a window on any screen fit an int many times over; more is a damaged value.
        auto number = To_Integer(value.substr(pos, tab - pos));
        if (!number || *number < -(1L << 30) || *number > (1L << 30)) return std::nullopt;
        field = static_cast<int>(*number);
        pos = tab + 1;
    }
    return Window_Size{static_cast<int>(*state), fields[0], fields[1], fields[2], fields[3]};
}

std::string Format_Window_Size(const Window_Size& s) {
    return std::to_string(s.state) + std::to_string(s.width) + "\t" + std::to_string(s.height) + "\t" +
           std::to_string(s.left) + "\t" + std::to_string(s.top) + "\t;";
}

std::optional<std::string> Window_Size_To_Save(const Window_Size& current, std::string_view saved) {
    if (current.state == 1) return std::nullopt;
    if (current.state == 2) {
        auto old = Parse_Window_Size(saved);
        if (!old) return std::nullopt;
        old->state = 2;
        return Format_Window_Size(*old);
    }
    return Format_Window_Size(current);
}

} // namespace quorlen
