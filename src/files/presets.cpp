#include "files/presets.h"

namespace quorlen {

namespace {
std::string Between(std::string_view text, std::size_t from, std::size_t to) {
    if (from == std::string_view::npos || to == std::string_view::npos || to < from) return {};
    return std::string(text.substr(from, to - from));
}
} // namespace

Preset_Row Parse_Preset_Line(std::string_view line) {
    Preset_Row row;
    std::size_t lt = line.find('<');
    std::size_t gt = line.find('>', lt == std::string_view::npos ? 0 : lt);
    std::size_t dollar = line.find('$', gt == std::string_view::npos ? 0 : gt);
    std::size_t bang = line.find('!', dollar == std::string_view::npos ? 0 : dollar);
    std::size_t from = bang == std::string_view::npos ? 0 : bang;
    std::size_t pound = line.find("\xC2\xA3", from);
    if (pound == std::string_view::npos) pound = line.find('\xA3', from);
    row.dataset = lt == std::string_view::npos ? std::string() : std::string(line.substr(0, lt));
    row.name = lt == std::string_view::npos ? std::string() : Between(line, lt + 1, gt);
    row.list1 = gt == std::string_view::npos ? std::string() : Between(line, gt + 1, dollar);
    row.list2 = dollar == std::string_view::npos ? std::string() : Between(line, dollar + 1, bang);
    row.list3 = bang == std::string_view::npos ? std::string() : Between(line, bang + 1, pound);
    return row;
}

Preset_Row No_Preset_Row() {
    return {"<No preset in ini file>", "68000000", "", "", ""};
}

} // namespace quorlen
