#pragma once
// What the fuzz targets share: the input as text, a box on a scripted line that answers each
// command with the next piece of the input, and the program's state around the link.

#include "core/debug_log.h"
#include "core/run_error.h"
#include "link/settings_context.h"
#include "support/scripted_dialogs.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace quorlen::fuzz {

inline std::string_view Text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// One temporary folder for the whole process, "quorlen-fuzz-NAME-XXXXXX", with a trailing
// slash; the targets that need files replace them for each input. It goes when the process
// ends normally; after a crash it stays, with the files of the input that crashed.
inline std::string Make_Scratch(const std::string& name) {
    static std::string made;
    made = (std::filesystem::temp_directory_path() / ("quorlen-fuzz-" + name + "-XXXXXX")).string();
    if (::mkdtemp(made.data()) == nullptr) std::abort();
    std::atexit([] {
        std::error_code ec;
        std::filesystem::remove_all(made, ec);
    });
    return made + "/";
}

// The record separator (0x1E) splits an input into the answers of a scripted box, so one
// input is a whole conversation; a seed stays readable in an editor.
inline constexpr char Piece_Separator = '\x1E';

inline std::vector<std::string> Pieces(std::string_view input) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = input.find(Piece_Separator, start);
        pieces.emplace_back(input.substr(start, end == std::string_view::npos ? end : end - start));
        if (end == std::string_view::npos) return pieces;
        start = end + 1;
    }
}

// A box that answers every command written to it with the next piece, all at once, and then
// falls silent. Time passes only while the program waits, so a time-out costs nothing.
class Scripted_Box_Line final : public Serial_Line {
public:
    explicit Scripted_Box_Line(std::vector<std::string> answers) : answers_(std::move(answers)) {}

    double now = 0;

    void Set_Port(const std::string& path) override { port_ = path; }
    std::string Port() const override { return port_; }
    void Set_Settings(const std::string&) override {}
    Open_Result Open() override {
        open_ = true;
        return {};
    }
    void Close() override { open_ = false; }
    bool Is_Open() const override { return open_; }
    void Clear_Input() override {
        Need_Open();
        waiting_.clear();
    }
    int Bytes_Waiting() override {
        Need_Open();
        return static_cast<int>(waiting_.size());
    }
    std::string Read_All() override {
        Need_Open();
        std::string all;
        all.swap(waiting_);
        return all;
    }
    void Write(std::string_view) override {
        Need_Open();
        if (next_ < answers_.size()) waiting_ += answers_[next_++];
    }
    bool Wait_For_Input(double seconds) override {
        if (waiting_.empty() && seconds > 0) now += seconds;
        return !waiting_.empty();
    }

private:
    void Need_Open() const {
        if (!open_) throw Run_Error(8012, "Port not open");
    }
    std::vector<std::string> answers_;
    std::size_t next_ = 0;
    bool open_ = false;
    std::string port_, waiting_;
};

// The program's state around one box: what a window or the command-line tool owns while it
// reads, verifies or writes settings. The diagnostics log stays closed: its lines are dropped.
struct Box_Session {
    explicit Box_Session(std::vector<std::string> answers) : line(std::move(answers)) {
        program.Com_Port = state.Ports.Number_For("/dev/fuzz-box");
    }
    Link_Context Link() {
        Link_Hooks hooks;
        hooks.Now = [this] { return line.now; };
        hooks.Dummy_Wait = [this] { line.now += 0.05; };
        return Link_Context{program, texts, flags, state, log, line, no_auto_start, std::move(hooks)};
    }

    Scripted_Box_Line line;
    Program_State program;
    Form_Texts texts;
    File_State files;
    Link_Flags flags;
    Link_State state;
    Debug_Log log;
    Settings_Image image;
    Rw_State rw;
    test::Scripted_Dialogs dialogs;
    const bool no_auto_start[2] = {false, false};
};

} // namespace quorlen::fuzz
