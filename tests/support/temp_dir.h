#pragma once
// A fresh folder per test, removed afterwards.

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

namespace quorlen::test {

class Temp_Dir {
public:
    Temp_Dir() {
        std::random_device rd;
        path_ = std::filesystem::temp_directory_path() /
                ("quorlen-test-" + std::to_string(rd()) + std::to_string(rd()));
        std::filesystem::create_directories(path_);
    }
    ~Temp_Dir() {
        std::error_code ec;
        std::filesystem::remove_all(path_, ec);
    }
    Temp_Dir(const Temp_Dir&) = delete;
    Temp_Dir& operator=(const Temp_Dir&) = delete;

    // The folder with a closing "/", the form App_Path has.
    std::string Slash() const { return path_.string() + "/"; }
    std::string File(const std::string& name) const { return (path_ / name).string(); }
    const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

inline void Write_File(const std::string& path, const std::string& content) {
    std::ofstream out(path, std::ios::binary);
    out << content;
}

inline std::string Read_File(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

} // namespace quorlen::test
