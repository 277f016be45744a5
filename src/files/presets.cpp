#include "files/presets.h"

#include "core/atomic_file.h"
#include "core/proc_guard.h"
#include "core/run_error.h"
#include "core/text.h"
#include "image/scaling.h"

#include <cmath>
#include <exception>

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

namespace {

// The number behind an item's letter, whole, with a tie to the even one.
long Item_Number(std::string_view text) {
    const double n = Round_Even_Whole(Val(text));
    if (!std::isfinite(n) || std::fabs(n) > 2147483647.0) throw errors::Overflow();
    return static_cast<long>(n);
}

void Run_List(std::string_view list, int& position, Image_Array<std::uint8_t>& bytes,
              std::vector<Preset_Change>& changes, std::string* fault) {
    std::size_t start = 0;
    while (start <= list.size()) {
        std::size_t comma = list.find(',', start);
        std::string_view item =
            list.substr(start, comma == std::string_view::npos ? std::string_view::npos : comma - start);
        start = comma == std::string_view::npos ? list.size() + 1 : comma + 1;
        if (item.empty()) continue;
        try {
            const char letter = item[0];
            if (letter == '@') {
                long n = Item_Number(item.substr(1));
                if (n < 0) throw errors::Subscript_Out_Of_Range();
                position = static_cast<int>(std::min(n, 255L));
                continue;
            }
            if (letter != 's' && letter != 'r') continue;
            const long n = Item_Number(item.substr(1));
            auto& byte = bytes[static_cast<std::size_t>(position)];
            const long value = letter == 's' ? (byte | n) : (byte & n);
            if (value < 0 || value > 255) throw errors::Overflow();
            if (value == byte) continue;
            changes.push_back({position, byte, static_cast<int>(value)});
            byte = static_cast<std::uint8_t>(value);
        } catch (const std::exception& e) {
            if (fault != nullptr) *fault = e.what();
        }
    }
}

} // namespace

std::vector<Preset_Change> Run_Preset_Lists(const Preset_Row& row, Image_Array<std::uint8_t>& bytes,
                                            std::string* fault) {
    std::vector<Preset_Change> changes;
    int position = 0;
    for (const std::string* list : {&row.list1, &row.list2, &row.list3})
        Run_List(*list, position, bytes, changes, fault);
    return changes;
}

std::string Show_Preset_Changes(const Preset_Row& row, const Settings_Image& image, Debug_Log& log) {
    Proc_Guard guard(log, "Show preset changes");
    std::string text = "These presets will change:\r\n";
    Image_Array<std::uint8_t> bytes = image.CardByte;
    std::string fault;
    for (const Preset_Change& c : Run_Preset_Lists(row, bytes, &fault))
        text += std::to_string(c.address) + ": " + std::to_string(c.old_value) + " -> " +
                std::to_string(c.new_value) + "\r\n";
    if (!fault.empty()) guard.Fail(fault);
    return text;
}

std::vector<Preset_Change> Apply_Preset(const Preset_Row& row, Settings_Image& image, Debug_Log& log) {
    Proc_Guard guard(log, "Apply user preset");
    std::string fault;
    std::vector<Preset_Change> changes = Run_Preset_Lists(row, image.CardByte, &fault);
    for (const Preset_Change& c : changes)
        image.ChangedByte[static_cast<std::size_t>(c.address)] = Changed_Mark;
    if (!fault.empty()) guard.Fail(fault);
    return changes;
}

std::string Dataset_Description_File(const std::string& folder, int dataset_id) {
    return folder + "DatasetID" + std::to_string(dataset_id) + ".txt";
}

std::string Dataset_Description(const std::string& folder, int dataset_id, const Settings_Image& image) {
    const std::string path = Dataset_Description_File(folder, dataset_id);
    if (!File_Exists(path)) return {};
    std::string text;
    for (const std::string& line : Split_Lines(Read_Whole_File(path))) {
        const std::size_t comma = line.find(',');
        const auto address = To_Integer(std::string_view(line).substr(0, comma));
        if (comma == std::string::npos || !address || *address < 0 || *address >= Image_Size) {
            if (!Trim(line).empty()) text += line + "\r\n";
            continue;
        }
        const std::string words = Trim(std::string_view(line).substr(comma + 1));
        text += std::to_string(*address) + ": " + words;
        if (words.find("bit") != std::string::npos)
            text += "  " + Byte_Bits_Text(image.CardByte[static_cast<std::size_t>(*address)]);
        text += "\r\n";
    }
    return text;
}

bool Pre_perc_Valid(std::string_view text, double& percent) {
    std::string number = Trim(text);
    for (char& ch : number)
        if (ch == ',') ch = '.';
    if (number.empty()) return false;
    percent = Val(number);
    return percent > 0 && percent <= 1000;
}

} // namespace quorlen
