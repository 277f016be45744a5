#include "faults.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace boxsim {

const char* const Fault_Help =
    "Fault kinds for --fault KIND[@N] (repeatable):\n"
    "  silence[@N]     the box answers N commands, then neither acts nor answers; without N\n"
    "                  it is mute from the start. Each exchange of the dialogue counts one:\n"
    "                  \"v\", \"rd\", \"bR\", \"b\", \"w\", one digit, \"$\", \"ue\", \"bW\" with its "
    "frame.\n"
    "  drop@N          the N-th character of output (counting from 1) is lost on the line\n"
    "  corrupt@N       the N-th character of output arrives with bit 0 flipped\n"
    "  slow@N          every answer starts N ms after its command\n"
    "  hangup[@N]      the line is closed once N characters have gone out (without N: at the\n"
    "                  first answer); boxsim then stops as on SIGTERM\n"
    "  i2c[@N]         the first N banners (without N: all) carry \"I2C TIME OUT 2\"\n"
    "  bootloader[@N]  after N commands the box resets into its boot loader, losing what was\n"
    "                  not committed with \"ue\"; without N it starts there (as --bootloader)\n"
    "  reject[@N]      the first N \"bW\" frames (without N: all) are refused with \"E\"\n"
    "  uefail[@N]      the first N \"ue\" (without N: all) answer \"ueE\" and commit nothing\n"
    "  pause@N         the log stream goes quiet for 2 s at its row N (counting from 0); the\n"
    "                  engine runs on, so those rows are missing when it comes back\n"
    "  badsum@N        the binary log frame of row N carries a wrong sum\n"
    "  hscheck@N       the N-th check byte of the high-speed stream (from 1) is 254, not 255\n"
    "  hsgap@N         the high-speed stream goes quiet for 0.5 s at its sample N (from 1);\n"
    "                  the engine turns on, so those samples never come\n"
    "  cardsilence@N   a card write (--smartcard) stops after N bytes: the box answers nothing\n"
    "                  more and the card is left half written\n";

namespace {

bool Parse_Count(std::string_view text, long& value) {
    const char* end = text.data() + text.size();
    auto [ptr, ec] = std::from_chars(text.data(), end, value);
    return ec == std::errc() && ptr == end && value >= 0;
}

} // namespace

bool Add_Fault(std::string_view fault_text, Box_Faults& box, Line_Fault_Plan& line, std::string& error) {
    const auto at = fault_text.find('@');
    const std::string_view kind = fault_text.substr(0, at);
    long n = -1;
    if (at != std::string_view::npos && !Parse_Count(fault_text.substr(at + 1), n)) {
        error = "bad count in fault '";
        error.append(fault_text).append("'");
        return false;
    }
    const bool has_n = n >= 0;
    const auto need_n = [&] {
        if (!has_n) {
            error = "fault '";
            error.append(kind).append("' needs @N");
        }
        return has_n;
    };

    if (kind == "silence") {
        box.silence_after = has_n ? n : 0;
    } else if (kind == "drop") {
        if (!need_n()) return false;
        line.dropped.push_back(n);
    } else if (kind == "corrupt") {
        if (!need_n()) return false;
        line.corrupted.push_back(n);
    } else if (kind == "slow") {
        if (!need_n()) return false;
        line.slow = std::chrono::milliseconds(n);
    } else if (kind == "hangup") {
        line.hangup_after = has_n ? n : 0;
    } else if (kind == "i2c") {
        box.i2c_timeouts = has_n ? n : -1;
    } else if (kind == "bootloader") {
        box.bootloader_after = has_n ? n : 0;
    } else if (kind == "reject") {
        box.rejected_frames = has_n ? n : -1;
    } else if (kind == "uefail") {
        box.failed_commits = has_n ? n : -1;
    } else if (kind == "pause") {
        if (!need_n()) return false;
        box.pause_at_row = n;
    } else if (kind == "cardsilence") {
        if (!need_n()) return false;
        box.card_silence_after = n;
    } else if (kind == "badsum") {
        if (!need_n()) return false;
        box.bad_sum_row = n;
    } else if (kind == "hscheck" || kind == "hsgap") {
        if (!need_n()) return false;
        if (n < 1) {
            error = "fault '";
            error.append(kind).append("' counts from 1");
            return false;
        }
        (kind == "hscheck" ? box.hs_bad_check : box.hs_gap_at) = n;
    } else {
        error = "unknown fault kind '";
        error.append(kind).append("'");
        return false;
    }
    return true;
}

Line_Faults::Result Line_Faults::Filter(std::string_view out) {
    Result result;
    if (hung_up_) return result;
    for (char c : out) {
        if (plan_.hangup_after >= 0 && passed_ >= plan_.hangup_after) break;
        const long number = ++produced_;
        char note[80];
        if (std::find(plan_.dropped.begin(), plan_.dropped.end(), number) != plan_.dropped.end()) {
            std::snprintf(note, sizeof note, "drop character %ld (0x%02X)", number,
                          static_cast<unsigned char>(c));
            result.notes.emplace_back(note);
            continue;
        }
        if (std::find(plan_.corrupted.begin(), plan_.corrupted.end(), number) != plan_.corrupted.end()) {
            const char spoilt = static_cast<char>(c ^ 0x01);
            std::snprintf(note, sizeof note, "corrupt character %ld (0x%02X to 0x%02X)", number,
                          static_cast<unsigned char>(c), static_cast<unsigned char>(spoilt));
            result.notes.emplace_back(note);
            c = spoilt;
        }
        result.out += c;
        ++passed_;
    }
    if (plan_.hangup_after >= 0 && passed_ >= plan_.hangup_after && !out.empty()) {
        hung_up_ = true;
        result.hang_up = true;
        result.notes.emplace_back("hang up after ");
        result.notes.back().append(std::to_string(passed_)).append(" characters");
    }
    return result;
}

} // namespace boxsim
