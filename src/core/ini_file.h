#pragma once
// The configuration file: key=value lines with no sections of their own meaning. A key may
// stand many times, as a list read by occurrence. A single read opens and closes the file
// (the user may edit it while the program runs); a load that reads many keys or a whole list
// takes one snapshot and reads that. Every write rewrites the file whole through a temporary
// file and a rename.

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quorlen {

// The file as it stood when read, split once: every key's values in file order.
class Ini_Snapshot {
public:
    Ini_Snapshot() = default;
    explicit Ini_Snapshot(std::string_view text);

    // As Ini_File::Read_Ini, without touching the file again.
    bool Read_Ini(std::string_view key, std::string& value, int occurrence = 1) const;
    std::string Read_Ini(std::string_view key, int occurrence = 1) const;
    double Read_Ini_Number(std::string_view key, int occurrence = 1) const;
    // Every value of `key` in file order (a list such as Sens_Def); empty when it has none.
    const std::vector<std::string>& Read_List(std::string_view key) const;

private:
    std::unordered_map<std::string, std::vector<std::string>> values_; // by key in lower case
};

class Ini_File {
public:
    // `temp_path` is where the rewrite is built before it replaces `path`.
    Ini_File(std::string path, std::string temp_path);

    const std::string& Path() const { return path_; }

    // The value of the occurrence-th line of `key` (1 = first), keys compared without
    // regard to case; only the first "=" separates. A bracket line "[name]" is found by the
    // key "[name". Returns false, with `value` empty, when there is no such line or no file.
    bool Read_Ini(std::string_view key, std::string& value, int occurrence = 1) const;
    std::string Read_Ini(std::string_view key, int occurrence = 1) const;
    // The value read as a number the lenient way: missing or text gives 0.
    double Read_Ini_Number(std::string_view key, int occurrence = 1) const;
    // The whole file read and split once; empty when there is no file.
    Ini_Snapshot Snapshot() const;

    // Replaces the line of `key` with key=value, or with `match` given, the line of the list
    // `key` that contains `match`; adds the line after its list, or at the end, when there
    // is none. Other lines keep their order and text. Throws Run_Error when the file cannot
    // be written; the old file is then untouched.
    void Write_Ini(std::string_view key, std::string_view value, std::string_view match = {});

private:
    std::string path_;
    std::string temp_path_;
};

// The rewrite itself, on text, so it tests without files.
std::string Ini_Rewrite(std::string_view old_text, std::string_view key, std::string_view value,
                        std::string_view match);

} // namespace quorlen
