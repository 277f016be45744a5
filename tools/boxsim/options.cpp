#include "options.h"

#include <algorithm>
#include <charconv>

namespace boxsim {

namespace {

bool To_Long(const std::string& text, long& value, int base = 10) {
    const char* begin = text.data();
    const char* end = begin + text.size();
    if (base == 0) {
        base = 10;
        if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
            begin += 2;
            base = 16;
        }
    }
    auto [ptr, ec] = std::from_chars(begin, end, value, base);
    return ec == std::errc() && ptr == end && begin != end;
}

// "1015=0x21,1017=48" into pairs; the counters are the only bytes this may set.
bool Parse_Counters(const std::string& text, std::vector<std::pair<int, int>>& into, std::string& error) {
    std::size_t pos = 0;
    while (pos <= text.size()) {
        const auto comma = std::min(text.find(',', pos), text.size());
        const std::string item = text.substr(pos, comma - pos);
        const auto eq = item.find('=');
        long address = 0;
        long value = 0;
        if (eq == std::string::npos || !To_Long(item.substr(0, eq), address, 0) ||
            !To_Long(item.substr(eq + 1), value, 0) || address < First_Counter || address > Last_Counter ||
            value < 0 || value > 255) {
            error = "bad error counter '" + item + "': want ADDR=VALUE with ADDR 1011..1022, VALUE 0..255";
            return false;
        }
        into.emplace_back(static_cast<int>(address), static_cast<int>(value));
        pos = comma + 1;
    }
    return true;
}

bool Check_Wheel(const std::string& text, std::string& error) {
    if (Parse_Wheel(text).positions == 0) {
        error = "--hs-wheel wants teeth and missing teeth, e.g. 36-1 or 60-2";
        return false;
    }
    return true;
}

} // namespace

std::string Usage() {
    return std::string(
               "usage: boxsim --link PATH [options]\n"
               "Plays the engine box on a pseudo-terminal: PATH becomes a symlink to it, \"ready PATH\"\n"
               "is printed, and it serves until SIGINT or SIGTERM.\n"
               "\n"
               "  --image FILE.qxs       settings in the box (default: the shipped default settings,\n"
               "                         else all zero with the dataset at byte 255)\n"
               "  --image-out FILE.qxs   write the committed memory there on stopping\n"
               "  --serial N             serial number, 0..65535 (default 1234)\n"
               "  --serial-decimal       show the serial as five decimal digits, not as \"HHLLh\"\n"
               "  --dataset N            the box's SC ID, 0..255 (default: byte 255 of the image)\n"
               "  --firmware TEXT        version text after the maker's name (default \"800M3 V3.42\")\n"
               "  --slave [FILE.qxs]     a slave box is present; its settings from FILE, else the\n"
               "                         master's with the slave mark set and no counters\n"
               "  --smartcard            a Mapchip is in the slot: \"br\" writes it, and the box runs from "
               "it\n"
               "  --engine-running       the engine runs (bit 0 of the status value)\n"
               "  --tps-script T:RAW,... while a log runs, the throttle input reads RAW from second T\n"
               "                         of the stream on (\"0:30,5:230\": released, then floored)\n"
               "  --no-status-value      older banner: the Status line ends after its three flags\n"
               "  --banner-pad N         pad the banner before its mode line to N characters with\n"
               "                         the echo (default: as long as its lines, some 100)\n"
               "  --bootloader           start in the boot loader; \"g\" leaves it\n"
               "  --i2c-timeouts N       the first N banners carry \"I2C TIME OUT 2\"\n"
               "  --errors A=V,...       master error counters (A 1011..1022; V decimal or 0x..)\n"
               "  --slave-errors A=V,... the slave's error counters\n"
               "  --wire-baud N          pace both directions like a line of N baud (10 bits a character)\n"
               "  --hs-rpm N             engine speed of the high-speed stream (\"d\"), 1..20000 (default "
               "300)\n"
               "  --hs-wheel N-M         crank wheel of that stream, e.g. 60-2 (default: the wheel of the\n"
               "                         image's engine layout in the configuration file; a layout\n"
               "                         without a cam sensor still gets a cam pulse every two turns)\n"
               "  --hs-pwm-hz N          frequency of PWM 1 in that stream (default 25)\n"
               "  --drive demo|sweep     play an engine that needs a fuel time in each cell of the main\n"
               "                         fuel map (what the settings hold at start) and whose lambda\n"
               "                         sensor follows the map the box holds now; demo: the test-drive,\n"
               "                         sweep: a dyno run holding each point of the map it can reach\n"
               "                         (at least 1.6 s a point, about 285 s a round)\n"
               "  --fuel-error RPM1-RPM2:LOAD1-LOAD2:PCT\n"
               "                         that engine needs PCT percent more injector-open time (or less)\n"
               "                         in the cells whose points lie in the region (load in the unit of\n"
               "                         the fuel map's axis), so lambda reads leaner (richer) there;\n"
               "                         repeatable, and implies --drive demo unless --drive is given\n"
               "  --ini FILE             configuration file with the Engine_Config rows and the sensors\n"
               "                         (default: the shipped RZ400_800M3.ini)\n"
               "  --trace FILE           log every character in and out: seconds since start,\n"
               "                         \"in\" (to the box), \"out\" (from it) or \"fault\", then the text\n"
               "  --fault KIND[@N]       inject a fault, see below\n"
               "  --help                 this text\n"
               "\n") +
           Fault_Help;
}

std::optional<Options> Parse_Options(const std::vector<std::string>& args, std::string& error) {
    Options o;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string name = args[i];
        std::optional<std::string> inline_value;
        if (const auto eq = name.find('='); name.rfind("--", 0) == 0 && eq != std::string::npos) {
            inline_value = name.substr(eq + 1);
            name.resize(eq);
        }
        const auto value = [&](std::string& out) {
            if (inline_value) {
                out = *inline_value;
                return true;
            }
            if (i + 1 >= args.size()) {
                error = name + " needs a value";
                return false;
            }
            out = args[++i];
            return true;
        };
        const auto number = [&](long& out, long low, long high) {
            std::string text;
            if (!value(text)) return false;
            if (!To_Long(text, out) || out < low || out > high) {
                error = name + " wants a number from " + std::to_string(low) + " to " + std::to_string(high);
                return false;
            }
            return true;
        };
        const auto flag = [&](bool& out) {
            if (inline_value) {
                error = name + " takes no value";
                return false;
            }
            out = true;
            return true;
        };

        long n = 0;
        std::string text;
        bool ok = true;
        if (name == "--link") {
            ok = value(o.link);
        } else if (name == "--image") {
            ok = value(o.image_path);
        } else if (name == "--image-out") {
            ok = value(o.image_out);
        } else if (name == "--trace") {
            ok = value(o.trace);
        } else if (name == "--serial") {
            ok = number(n, 0, 65535);
            o.box.serial = static_cast<int>(n);
        } else if (name == "--serial-decimal") {
            ok = flag(o.box.serial_decimal);
        } else if (name == "--dataset") {
            ok = number(n, 0, 255);
            o.box.dataset = static_cast<int>(n);
        } else if (name == "--firmware") {
            ok = value(o.box.firmware);
        } else if (name == "--slave") {
            o.slave = true;
            if (inline_value)
                o.slave_path = *inline_value;
            else if (i + 1 < args.size() && args[i + 1].rfind("--", 0) != 0)
                o.slave_path = args[++i];
        } else if (name == "--smartcard") {
            ok = flag(o.box.smartcard);
        } else if (name == "--tps-script") {
            ok = value(text) && Parse_Throttle_Script(text, o.box.throttle, error);
        } else if (name == "--engine-running") {
            ok = flag(o.box.engine_running);
        } else if (name == "--banner-pad") {
            ok = number(n, 0, 4096);
            o.box.banner_pad = static_cast<std::size_t>(n);
        } else if (name == "--no-status-value") {
            bool off = false;
            ok = flag(off);
            o.box.status_value = !off;
        } else if (name == "--bootloader") {
            ok = flag(o.box.bootloader);
        } else if (name == "--i2c-timeouts") {
            ok = number(n, 0, 1000000);
            o.box_faults.i2c_timeouts = n;
        } else if (name == "--errors") {
            ok = value(text) && Parse_Counters(text, o.errors, error);
        } else if (name == "--slave-errors") {
            ok = value(text) && Parse_Counters(text, o.slave_errors, error);
        } else if (name == "--wire-baud") {
            ok = number(o.wire_baud, 50, 10000000);
        } else if (name == "--hs-rpm") {
            ok = number(n, 1, 20000);
            o.box.hs.rpm = static_cast<double>(n);
        } else if (name == "--hs-wheel") {
            ok = value(o.box.hs.wheel) && Check_Wheel(o.box.hs.wheel, error);
        } else if (name == "--hs-pwm-hz") {
            ok = number(n, 0, 10000);
            o.box.hs.pwm_hz = static_cast<double>(n);
        } else if (name == "--ini") {
            ok = value(o.ini_path);
        } else if (name == "--drive") {
            ok = value(text);
            if (ok && text != "demo" && text != "sweep") {
                error = "--drive is demo or sweep";
                ok = false;
            }
            o.box.engine.enabled = true;
            o.box.engine.drive = text == "sweep" ? Drive::Sweep : Drive::Demo;
        } else if (name == "--fuel-error") {
            std::optional<Fuel_Error> e;
            ok = value(text) && (e = Parse_Fuel_Error(text, error)).has_value();
            if (ok) o.box.engine.errors.push_back(*e);
            o.box.engine.enabled = true;
        } else if (name == "--fault") {
            ok = value(text) && Add_Fault(text, o.box_faults, o.line_faults, error);
        } else if (name == "--help" || name == "-h") {
            o.help = true;
        } else {
            error = "unknown option '" + args[i] + "'";
            ok = false;
        }
        if (!ok) return std::nullopt;
    }
    if (o.link.empty() && !o.help) {
        error = "--link PATH is required";
        return std::nullopt;
    }
    if (o.box_faults.bootloader_after == 0) {
        o.box.bootloader = true;
        o.box_faults.bootloader_after = -1;
    }
    return o;
}

} // namespace boxsim
