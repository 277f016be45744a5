#pragma once
// Reading and writing settings against the real simulator: the program's state for one box,
// the simulator's trace of what the program sent, and images in and out of settings files.
// Shared by the link tests and the fault campaign of the benchmark.

#include "files/qxs_format.h"
#include "link/qt/qt_serial_line.h"
#include "link/read_verify.h"
#include "link/write_settings.h"
#include "support/boxsim_run.h"
#include "support/scripted_dialogs.h"
#include "support/temp_dir.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace quorlen::test {

// The program's side of one box: the state a window or the command-line tool would own.
class Settings_Session {
public:
    explicit Settings_Session(const std::string& link) { program.Com_Port = state.Ports.Number_For(link); }

    // A context for one procedure; the hooks count what the window would be told.
    Settings_Context Context() {
        link_.emplace(Link_Context{program, texts, flags, state, log, line, no_auto_start_, {}});
        link_->hooks.Command_Buttons = [this](bool enabled) { buttons_enabled = enabled; };
        Settings_Hooks hooks;
        hooks.Service_Events = [this] { ++events_served; };
        hooks.Progress = [this](int done, int total) {
            if (done > total || done < 0) progress_out_of_range = true;
        };
        return Settings_Context{*link_, image, rw, files, dialogs, std::move(hooks)};
    }
    template <class Procedure>
    void Run(Procedure procedure) {
        Settings_Context s = Context();
        procedure(s);
    }

    // The image of a settings file, as the program loads it, with nothing marked.
    void Take(const Image_Bytes& bytes) {
        std::copy(bytes.begin(), bytes.end(), image.CardByte.begin());
        std::fill(image.ChangedByte.begin(), image.ChangedByte.end(), 0);
        image.DatasetID = bytes[255];
    }
    Image_Bytes Card() const {
        Image_Bytes bytes{};
        std::copy_n(image.CardByte.begin(), bytes.size(), bytes.begin());
        return bytes;
    }

    Program_State program;
    Form_Texts texts;
    File_State files;
    Link_Flags flags;
    Link_State state;
    Debug_Log log;
    Qt_Serial_Line line;
    Settings_Image image;
    Rw_State rw;
    Scripted_Dialogs dialogs;
    bool buttons_enabled = true;
    int events_served = 0;
    bool progress_out_of_range = false;

private:
    const bool no_auto_start_[2] = {false, false};
    std::optional<Link_Context> link_;
};

inline void Save_Image(const std::string& path, const Image_Bytes& bytes) {
    Write_File(path, Format_Qxs(bytes, "test"));
}

inline std::optional<Image_Bytes> Load_Image(const std::string& path) {
    auto content = Parse_Qxs(Read_File(path));
    if (!content) return std::nullopt;
    return content->bytes;
}

// Addresses a verify compares at which two images differ.
inline std::vector<int> Compared_Differences(const Image_Bytes& a, const Image_Bytes& b) {
    std::vector<int> differ;
    for (int i = 0; i < static_cast<int>(a.size()); ++i)
        if (Compared_Address(i) && a[static_cast<std::size_t>(i)] != b[static_cast<std::size_t>(i)])
            differ.push_back(i);
    return differ;
}

// What the program sent, one entry per chunk the simulator took in, unescaped.
inline std::vector<std::string> Trace_In(const std::string& path) {
    std::vector<std::string> sent;
    const std::string text = Read_File(path);
    std::size_t pos = 0;
    while (pos < text.size()) {
        std::size_t end = text.find('\n', pos);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(pos, end - pos);
        pos = end + 1;
        const auto at = line.find(" in \"");
        if (at == std::string::npos || line.back() != '"') continue;
        std::string chunk;
        for (std::size_t i = at + 5; i + 1 < line.size(); ++i) {
            char c = line[i];
            if (c == '\\' && i + 2 < line.size()) {
                const char e = line[++i];
                if (e == 'r')
                    c = '\r';
                else if (e == 'n')
                    c = '\n';
                else if (e == 't')
                    c = '\t';
                else if (e == 'x') {
                    c = static_cast<char>(std::strtol(line.substr(i + 1, 2).c_str(), nullptr, 16));
                    i += 2;
                } else
                    c = e;
            }
            chunk += c;
        }
        sent.push_back(chunk);
    }
    return sent;
}

// --- the fault campaign -----------------------------------------------------------------

enum class Outcome { Verified, Aborted, Lost_Edit };

struct Scenario {
    std::vector<std::string> faults; // for boxsim --fault
    bool binary = false;             // verify, binary frame, verify (the command-line tool's way)
    Image_Bytes box{};               // the box's settings before the write
    Image_Bytes edited{};            // what the tuner wants in it
};

// A box image a write may go to without questions: no slave mark, no counters, dataset 200.
inline Scenario Make_Scenario(unsigned seed) {
    std::mt19937 rng(seed);
    const auto pick = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(rng); };
    Scenario s;
    for (auto& b : s.box)
        b = static_cast<std::uint8_t>(pick(0, 255));
    s.box[1] &= 0xF7;
    for (int a = 1011; a <= 1023; ++a)
        s.box[static_cast<std::size_t>(a)] = 0;
    s.box[250] = s.box[251] = 0;
    s.box[255] = 200;
    s.edited = s.box;
    int bytes = 0;
    int runs = 0;
    for (int n = pick(1, 12); n > 0; --n, ++runs) {
        int a = pick(0, 1010);
        for (int length = pick(1, 4); length > 0 && a <= 1010; --length, ++a) {
            if (!Compared_Address(a)) continue;
            auto& b = s.edited[static_cast<std::size_t>(a)];
            b = static_cast<std::uint8_t>(b + pick(1, 255));
            ++bytes;
        }
    }
    s.binary = pick(0, 4) == 0;
    // Characters the box sends and commands it takes in a write without faults, roughly:
    // a banner and an image for each verify, then the dialogue.
    const int chars = 2 * 2256 + (s.binary ? 16 : 15 * runs + 3 * bytes + 3);
    const int commands = 4 + (s.binary ? 1 : 8 * runs + 2 * bytes + 1);
    const auto fault = [&](int kind) {
        switch (kind) {
        case 0:
            return "drop@" + std::to_string(pick(2200, chars));
        case 1:
            return "corrupt@" + std::to_string(pick(2200, chars));
        case 2:
            return "silence@" + std::to_string(pick(2, commands));
        case 3:
            return "hangup@" + std::to_string(pick(2200, chars));
        case 4:
            return "bootloader@" + std::to_string(pick(2, commands));
        case 5:
            return std::string("uefail@") + std::to_string(pick(1, 4));
        default:
            return std::string("reject@1");
        }
    };
    const int kind = pick(0, 19);
    s.faults.push_back(fault(kind < 6    ? 0
                             : kind < 12 ? 1
                             : kind < 15 ? 2
                             : kind < 17 ? 3
                             : kind < 18 ? 4
                             : kind < 19 ? 5
                                         : 6));
    if (pick(0, 3) == 0) s.faults.push_back(fault(pick(0, 1)));
    return s;
}

struct Scenario_Result {
    Outcome outcome = Outcome::Lost_Edit;
    std::string why; // for a lost edit
};

// Writes the scenario's edits to a faulty box; then, from what that box kept, a clean box
// must take the whole job in one more write.
inline Scenario_Result Run_Scenario(const std::string& boxsim, const Scenario& sc, const Temp_Dir& dir) {
    Scenario_Result result;
    const std::string before = dir.File("before.qxs");
    const std::string kept = dir.File("kept.qxs");
    const std::string done = dir.File("done.qxs");
    Save_Image(before, sc.box);
    // The fault positions count characters with a banner of 200.
    std::vector<std::string> args{"--image", before, "--image-out", kept, "--banner-pad", "200"};
    for (const auto& f : sc.faults) {
        args.push_back("--fault");
        args.push_back(f);
    }
    bool finished = false;
    Image_Bytes marks_of{};
    {
        Boxsim_Run box(boxsim, args);
        if (!box.Ready()) {
            result.why = "boxsim did not start";
            return result;
        }
        Settings_Session p(box.Link());
        p.Take(sc.edited);
        // The tuner's edits marked themselves.
        for (int a : Compared_Differences(sc.box, sc.edited))
            p.image.ChangedByte[static_cast<std::size_t>(a)] = Changed_Mark;
        if (sc.binary) {
            p.Run(Verify_bR_Settings_Click);
            if (p.rw.Read_Complete) {
                p.Run(Write_bin_command_cmd_Click);
                if (p.rw.Write_Succeeded) {
                    p.Run(Verify_bR_Settings_Click);
                    finished = p.rw.Read_Complete && !p.rw.Master_Mismatch;
                }
            }
        } else {
            p.Run(Write_Settings_Click);
            finished = p.rw.Write_Succeeded;
            if (!finished && p.texts.rs232_text.rfind("Write aborted ", 0) != 0 &&
                p.texts.rs232_text.rfind("< Failed to open ", 0) != 0) {
                result.why = "ended with \"" + p.texts.rs232_text + "\"";
                return result;
            }
        }
        for (std::size_t i = 0; i < marks_of.size(); ++i)
            marks_of[i] = p.image.ChangedByte[i];
        box.Stop();
    }
    const auto after = Load_Image(kept);
    if (!after) {
        result.why = "no image from the faulty box";
        return result;
    }
    for (int a : Compared_Differences(*after, sc.edited)) {
        if (finished) {
            result.why = "reported written, but the box differs at " + std::to_string(a);
            return result;
        }
        if (marks_of[static_cast<std::size_t>(a)] != Changed_Mark) {
            result.why = "the mark of " + std::to_string(a) + " is gone";
            return result;
        }
    }
    {
        Boxsim_Run box(boxsim, {"--image", kept, "--image-out", done});
        Settings_Session p(box.Link());
        p.Take(sc.edited);
        p.Run(Write_Settings_Click);
        box.Stop();
        const auto last = Load_Image(done);
        if (!p.rw.Write_Succeeded || !last || !Compared_Differences(*last, sc.edited).empty()) {
            result.why = "the later write did not complete the job: " + p.texts.rs232_text;
            return result;
        }
    }
    result.outcome = finished ? Outcome::Verified : Outcome::Aborted;
    return result;
}

} // namespace quorlen::test
