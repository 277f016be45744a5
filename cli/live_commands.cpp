#include "cli/live_commands.h"

#include "cli/box_session.h"
#include "cli/log_session.h"
#include "image/scaling.h"
#include "link/live_changes.h"
#include "link/read_verify.h"
#include "logging/log_live.h"

#include <algorithm>
#include <cstdlib>

#ifndef QUORLEN_VERSION
#define QUORLEN_VERSION "0.0.0"
#endif

namespace quorlen::cli {

namespace {

// One change at its second of the log: a byte to write, or a cell adjustment.
struct Live_Event {
    double at = 0;
    int address = -1;
    int value = 0;
    std::string adjust;
};

struct Live_Args {
    std::string port, output, save;
    std::string baud = "115200";
    double seconds = -1;
    bool binary = false, fast = false, verify = false;
    std::vector<Live_Event> events;
};

std::optional<double> Seconds_Of(const std::string& text) {
    char* end = nullptr;
    const double v = std::strtod(text.c_str(), &end);
    if (text.empty() || end != text.c_str() + text.size() || !(v >= 0)) return std::nullopt;
    return v;
}

// "S:ADDR=VALUE" or "S:X"; nullopt when it is neither.
std::optional<Live_Event> Parse_Event(const std::string& text, bool adjust) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) return std::nullopt;
    const auto at = Seconds_Of(text.substr(0, colon));
    if (!at) return std::nullopt;
    Live_Event e;
    e.at = *at;
    const std::string rest = text.substr(colon + 1);
    if (adjust) {
        if (rest != Adjust_Fuel_Up && rest != Adjust_Fuel_Down && rest != Adjust_Ign_Up &&
            rest != Adjust_Ign_Down)
            return std::nullopt;
        e.adjust = rest;
        return e;
    }
    const std::size_t eq = rest.find('=');
    if (eq == std::string::npos) return std::nullopt;
    const auto address = To_Integer(rest.substr(0, eq));
    const auto value = To_Integer(rest.substr(eq + 1));
    if (!address || !value || *address < 0 || *address > 1023 || *value < 0 || *value > 255)
        return std::nullopt;
    e.address = static_cast<int>(*address);
    e.value = static_cast<int>(*value);
    return e;
}

bool Parse(const std::vector<std::string>& args, Live_Args& a, std::FILE* err) {
    const auto fail = [&](const std::string& what) {
        std::fprintf(err, "quorlen-cli live: %s (see quorlen-cli --help)\n", what.c_str());
        return false;
    };
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i];
        if (name == "--binary" || name == "--fast" || name == "--verify") {
            (name == "--binary" ? a.binary : name == "--fast" ? a.fast : a.verify) = true;
            continue;
        }
        std::string value = Take_Option_Value(args, i, name);
        if (value.empty()) return fail("'" + name + "' wants a value");
        if (name == "--port") {
            a.port = value;
        } else if (name == "--baud") {
            a.baud = value;
        } else if (name == "-o" || name == "--output") {
            a.output = value;
        } else if (name == "--save") {
            a.save = value;
        } else if (name == "--seconds") {
            auto n = To_Integer(value);
            if (!n || *n <= 0 || *n > 24 * 3600) return fail("--seconds wants a whole number above 0");
            a.seconds = static_cast<double>(*n);
        } else if (name == "--at" || name == "--adjust") {
            auto e = Parse_Event(value, name == "--adjust");
            if (!e)
                return fail(name == "--at" ? "--at wants S:ADDR=VALUE, ADDR 0..1023 and VALUE 0..255"
                                           : "--adjust wants S:+, S:-, S:> or S:<");
            a.events.push_back(*e);
        } else {
            return fail("unexpected '" + args[i] + "'");
        }
    }
    if (a.port.empty() || a.output.empty() || a.seconds <= 0 || (a.baud != "115200" && a.baud != "625000"))
        return fail("want --port PATH, --seconds N and -o FILE.qxl");
    for (const Live_Event& e : a.events)
        if (e.at >= a.seconds)
            return fail("a change at second " + Format_Number(e.at, "0.0") + " comes after the log");
    std::stable_sort(a.events.begin(), a.events.end(),
                     [](const Live_Event& x, const Live_Event& y) { return x.at < y.at; });
    return true;
}

// The verify after the log: each address the box holds otherwise than the image.
int Verify_Box(Recording& r, std::FILE* out) {
    Verify_Settings_Click(r.settings);
    if (!r.rw.Read_Complete) {
        std::fprintf(out, "verify: no answer from the box\n");
        return 3;
    }
    int differences = 0;
    for (int a = 0; a < Image_Size; ++a) {
        if (!Compared_Address(a) || r.s.image.TempByte[a] == r.s.image.CardByte[a]) continue;
        std::fprintf(out, "verify: %d box %d image %d\n", a, r.s.image.TempByte[a], r.s.image.CardByte[a]);
        ++differences;
    }
    if (differences == 0 && !r.rw.Master_Mismatch) std::fprintf(out, "verify: the box holds the image\n");
    return differences == 0 && !r.rw.Master_Mismatch ? 0 : 3;
}

} // namespace

int Live_Command(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    Live_Args a;
    if (!Parse(args, a, err)) return 2;
    Recording r(err, a.port, a.baud);
    r.s.program.Program_Version = QUORLEN_VERSION;
    if (!r.Port_Opens(err)) return 1;
    // The box's settings come first: the changes start from what the box holds.
    if (!r.Start("live", a.binary, true, a.output, err)) return 2;
    Log_Context& log = r.Ctx();
    const double start = log.Now();

    // The stream stands still while the change goes: no waiting for a port to settle then.
    Link_Context live_link = r.link;
    live_link.hooks.Dummy_Wait = {};
    Settings_Context live_settings{live_link, r.s.image, r.rw, r.files, r.s.dialogs, {}};
    Live_State live;
    const auto said = [&](const std::string& text) {
        std::fprintf(out, "%7.2f s  %s\n", log.Now() - start, text.c_str());
        std::fflush(out);
    };

    for (const Live_Event& e : a.events) {
        r.Run_Until(start + e.at);
        if (!log.log.capture.Logging_Running) break;
        Live_Context ctx = Live_Context_Of(log, live_settings, live);
        ctx.hooks.Status = said;
        live.Last_Window_Seconds = -1;
        if (!e.adjust.empty()) {
            said("adjust " + e.adjust);
            live.Cell_Adjust_Command = e.adjust;
            Write_Fast_while_logging(ctx);
        } else {
            said("write " + std::to_string(e.address) + "=" + std::to_string(e.value));
            r.s.image.CardByte[static_cast<std::size_t>(e.address)] = static_cast<std::uint8_t>(e.value);
            r.s.image.ChangedByte[static_cast<std::size_t>(e.address)] = Changed_Mark;
            (a.fast ? Write_Fast_while_logging : Write_while_logging)(ctx);
        }
        if (live.Last_Window_Seconds >= 0)
            said("stream stood still " + Format_Number(live.Last_Window_Seconds * 1000, "0.0") + " ms");
        else if (e.address >= 0 && r.s.image.ChangedByte[static_cast<std::size_t>(e.address)] != 0)
            said("not sent: the stream stands still while the log recovers it; it goes with the next write");
    }
    r.Run_Until(start + a.seconds);
    int status = r.Stop_And_Save(a.output, out, err);
    if (!r.s.texts.Debug_txt2.empty()) std::fputs(Lines_Of(r.s.texts.Debug_txt2).c_str(), out);
    if (a.verify && status == 0) status = Verify_Box(r, out);
    if (!a.save.empty() && !Save_Settings_File(a.save, r.s.image, "Saved by quorlen-cli live", err) &&
        status == 0)
        status = 1;
    return status;
}

} // namespace quorlen::cli
