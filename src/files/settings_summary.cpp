#include "files/settings_summary.h"

#include <algorithm>
#include <array>

namespace quorlen {

namespace {

const char* const Crlf = "\r\n";
const char* const Tables_Head = "--------Tables--------";

std::string Line(const char* label, const std::string& value) {
    return std::string(label) + "\t\t" + value + Crlf;
}

std::string Right(const std::string& text, std::size_t width) {
    return text.size() >= width ? text : std::string(width - text.size(), ' ') + text;
}

std::string Left(const std::string& text, std::size_t width) {
    return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

std::size_t Widest(const Text_Grid& grid) {
    std::size_t width = 0;
    for (const auto& row : grid)
        for (const auto& cell : row)
            width = std::max(width, cell.size());
    return width;
}

// A grid cell by cell, each right-aligned in a column one wider than its widest cell, so it
// reads in a fixed-pitch font and in any word processor.
std::string Grid_Lines(const Text_Grid& grid) {
    const std::size_t width = Widest(grid) + 1;
    std::string text;
    for (const auto& row : grid) {
        std::string line;
        for (const auto& cell : row)
            line += Right(cell, width);
        text += line + Crlf;
    }
    return text;
}

std::string Header_Row(const Text_Grid& grid) {
    if (grid.empty()) return Crlf;
    Text_Grid head{std::vector<std::string>(grid[0].begin() + (grid[0].empty() ? 0 : 1), grid[0].end())};
    return Grid_Lines(head);
}

std::vector<std::string> Header_Column(const Text_Grid& grid) {
    std::vector<std::string> column;
    for (std::size_t r = 1; r < grid.size(); ++r)
        column.push_back(grid[r].empty() ? std::string() : grid[r][0]);
    return column;
}

std::vector<std::string> Header_Row_Cells(const Text_Grid& grid) {
    if (grid.empty() || grid[0].empty()) return {};
    return {grid[0].begin() + 1, grid[0].end()};
}

// The boost table's rows as "axis  value", its load column standing for volts when a sensor
// gives one.
std::vector<std::string> Boost_Rows(const Text_Grid& grid) {
    std::vector<std::string> rows;
    for (std::size_t r = 1; r < grid.size(); ++r) {
        const auto& row = grid[r];
        const std::string axis = row.size() > 1 && !row[1].empty() ? row[1] : (row.empty() ? "" : row[0]);
        rows.push_back(axis + "  " + (row.size() > 2 ? row[2] : std::string()));
    }
    return rows;
}

std::string Side_By_Side(const std::array<const char*, 3>& titles,
                         const std::array<std::vector<std::string>, 3>& columns) {
    std::array<std::size_t, 3> width{};
    std::size_t rows = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        width[i] = std::string(titles[i]).size();
        for (const auto& cell : columns[i])
            width[i] = std::max(width[i], cell.size());
        width[i] += 3;
        rows = std::max(rows, columns[i].size());
    }
    std::string text;
    std::string head;
    for (std::size_t i = 0; i < 3; ++i)
        head += Left(titles[i], width[i]);
    text += head + Crlf;
    for (std::size_t r = 0; r < rows; ++r) {
        std::string line;
        for (std::size_t i = 0; i < 3; ++i)
            line += Left(r < columns[i].size() ? columns[i][r] : std::string(), width[i]);
        while (!line.empty() && line.back() == ' ')
            line.pop_back();
        text += line + Crlf;
    }
    return text;
}

} // namespace

std::string Readable_Settings_Text(const Summary_Facts& f) {
    std::string text = std::string(Readable_Settings_Tag) + Crlf;
    text += Line("Quorlen version: ", f.program_version);
    text += Line("Operating system: ", f.operating_system);
    text += Line("QX-box firmware: ", f.firmware);
    text += Line("RZ-box SC ID: ", f.sc_id);
    text += Line("RZ-box Serial: ", f.serial.empty() ? std::string() : "RZ" + f.serial);
    text += Line("RZ mode: ", std::string(f.slave_mode ? "Slave" : "Master") +
                                  (f.slave_present ? " & Slave present" : ""));
    text += std::string(Readable_Settings_End_Tag) + Crlf;
    return text;
}

std::string Show_Tabels_Alt1(const Summary_Tables& t) {
    std::string text = std::string(Tables_Head) + Crlf;
    text += std::string("Ignition load table:") + Crlf + Grid_Lines(t.ignition);
    text += std::string("Ignition rpm table:") + Crlf + Header_Row(t.ignition);
    text += std::string("Fuel load table:") + Crlf + Grid_Lines(t.fuel);
    text += std::string("Fuel rpm table:") + Crlf + Header_Row(t.fuel);
    text += std::string("Boost load table:") + Crlf + Grid_Lines(t.boost);
    return text;
}

std::string Show_Tabels_Alt2(const Summary_Tables& t) {
    std::string text = std::string(Tables_Head) + Crlf;
    const std::vector<std::string> boost = Boost_Rows(t.boost);
    const std::vector<std::string> none;
    text += Side_By_Side({"Ignition load table", "Fuel load table", "Boost load table"},
                         {Header_Column(t.ignition), Header_Column(t.fuel), t.boost_over_rpm ? none : boost});
    text += Side_By_Side(
        {"Fuel rpm table", "Ignition rpm table", "Boost rpm table"},
        {Header_Row_Cells(t.fuel), Header_Row_Cells(t.ignition), t.boost_over_rpm ? boost : none});
    return text;
}

std::string Readable_Section_Of(const std::string& log_text) {
    const std::size_t start = log_text.find(Readable_Settings_Tag);
    if (start == std::string::npos) return {};
    std::size_t end = log_text.find(Readable_Settings_End_Tag, start);
    if (end == std::string::npos) return log_text.substr(start);
    end += std::string(Readable_Settings_End_Tag).size();
    if (log_text.compare(end, 2, Crlf) == 0) end += 2;
    return log_text.substr(start, end - start);
}

std::string Readable_Settings_Body(const std::string& readable_text) {
    std::string body = readable_text;
    if (body.rfind(Readable_Settings_Tag, 0) == 0) {
        const std::size_t line_end = body.find('\n');
        body.erase(0, line_end == std::string::npos ? body.size() : line_end + 1);
    }
    if (const std::size_t end = body.find(Readable_Settings_End_Tag); end != std::string::npos)
        body.resize(end);
    while (!body.empty() && (body.back() == '\n' || body.back() == '\r'))
        body.pop_back();
    return body;
}

} // namespace quorlen
