#pragma once
// A serial line the test feeds by hand and that records what the program writes.

#include "core/run_error.h"
#include "link/serial_line.h"

#include <string>
#include <vector>

namespace quorlen::test {

// A line that holds what the test puts in and records what the program writes.
class Fake_Line final : public Serial_Line {
public:
    std::string incoming;
    std::vector<std::string> written;
    bool open = false;
    bool refuse_open = false;
    int opens = 0;

    void Set_Port(const std::string& path) override { port_ = path; }
    std::string Port() const override { return port_; }
    void Set_Settings(const std::string& settings) override { settings_ = settings; }
    Open_Result Open() override {
        if (refuse_open) return {Open_Failure::Missing, "No such file or directory", ""};
        open = true;
        ++opens;
        return {};
    }
    void Close() override { open = false; }
    bool Is_Open() const override { return open; }
    void Clear_Input() override {
        Need_Open();
        incoming.clear();
    }
    int Bytes_Waiting() override {
        Need_Open();
        return static_cast<int>(incoming.size());
    }
    std::string Read_All() override {
        Need_Open();
        std::string all;
        all.swap(incoming);
        return all;
    }
    void Write(std::string_view bytes) override {
        Need_Open();
        written.emplace_back(bytes);
    }
    bool Wait_For_Input(double) override { return !incoming.empty(); }
    Line_Losses Losses() override { return losses; }
    Line_Losses losses;
    std::string All_Written() const {
        std::string all;
        for (const auto& w : written)
            all += w;
        return all;
    }

private:
    void Need_Open() const {
        if (!open) throw Run_Error(8012, "Port not open");
    }
    std::string port_, settings_;
};

} // namespace quorlen::test
