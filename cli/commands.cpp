#include "cli/commands.h"
#include "cli/show_command.h"

#include "cli/analysis_commands.h"
#include "cli/card_commands.h"
#include "cli/chart_commands.h"
#include "cli/edit_command.h"
#include "cli/engine_commands.h"
#include "cli/generate_commands.h"
#include "cli/hslog_commands.h"
#include "cli/link_commands.h"
#include "cli/log_commands.h"
#include "cli/rw_commands.h"
#include "cli/sensor_commands.h"
#include "cli/settings_commands.h"
#include "cli/summary_commands.h"
#include "cli/transform_commands.h"

#include "files/settings_files.h"
#include "image/settings_image.h"

#include <cstdarg>

namespace quorlen::cli {

namespace {

const char* const Usage =
    "usage: quorlen-cli COMMAND [ARGS]\n"
    "\n"
    "commands:\n"
    "  qxs-check FILE     read a settings file as the program does; print its dataset ID,\n"
    "                     the image checksum over 0..1023 (hex) and the number of comment lines\n"
    "  qxs-diff A B       list each address whose byte differs: address, byte in A, byte in B;\n"
    "                     exit 0 when the images are equal, 1 when not\n"
    "  ports [--port PATH|N]\n"
    "                     the serial ports as the preferences list them, and the entry they\n"
    "                     would select for the port (default: port 1)\n"
    "  info --port PATH|N [--baud 115200|625000]\n"
    "                     ask the box who it is and print what Connect info shows; exit 0 when\n"
    "                     it answered, 2 when not, 1 when the port can't be opened (and "
    "why)\n" QUORLEN_CLI_SHOW_USAGE QUORLEN_CLI_RW_USAGE QUORLEN_CLI_EDIT_USAGE QUORLEN_CLI_SETTINGS_USAGE
        QUORLEN_CLI_LOG_USAGE QUORLEN_CLI_ANALYSIS_USAGE QUORLEN_CLI_CHART_USAGE QUORLEN_CLI_HSLOG_USAGE
            QUORLEN_CLI_ENGINE_USAGE QUORLEN_CLI_PRESET_USAGE QUORLEN_CLI_GENERATE_USAGE
                QUORLEN_CLI_SUMMARY_USAGE QUORLEN_CLI_CARD_USAGE QUORLEN_CLI_SENSOR_USAGE
                    QUORLEN_CLI_TRANSFORM_USAGE "\n"
    "A file the program would not load prints \"Not a valid qxs-file\" and exits 1 (2 for qxs-diff).\n";

int Qxs_Check(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    if (args.size() != 2) {
        std::fputs(Usage, err);
        return 2;
    }
    auto content = Load_Qxs_File(args[1]);
    if (!content) {
        std::fprintf(err, "%s: %s\n", args[1].c_str(), Not_Valid_Qxs_Text);
        std::fprintf(out, "%s\n", Not_Valid_Qxs_Text);
        return 1;
    }
    int lines = 0;
    for (std::size_t p = content->comment.find("\r\n"); p != std::string::npos;
         p = content->comment.find("\r\n", p + 2))
        ++lines;
    std::fprintf(out, "dataset ID: %d\n", content->bytes[255]);
    std::fprintf(out, "checksum: %s\n", dec2hex(Checksum_Of(content->bytes.data(), 0, 1023), 4).c_str());
    std::fprintf(out, "comment lines: %d\n", lines);
    return 0;
}

int Qxs_Diff(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    if (args.size() != 3) {
        std::fputs(Usage, err);
        return 2;
    }
    auto a = Load_Qxs_File(args[1]);
    auto b = Load_Qxs_File(args[2]);
    for (auto [file, content] : {std::pair{&args[1], &a}, std::pair{&args[2], &b}}) {
        if (!*content) {
            std::fprintf(err, "%s: %s\n", file->c_str(), Not_Valid_Qxs_Text);
            return 2;
        }
    }
    int differences = 0;
    for (std::size_t i = 0; i < a->bytes.size(); ++i) {
        if (a->bytes[i] == b->bytes[i]) continue;
        std::fprintf(out, "%zu\t%d\t%d\n", i, a->bytes[i], b->bytes[i]);
        ++differences;
    }
    return differences == 0 ? 0 : 1;
}

} // namespace

int Run(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
    if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
        std::fputs(Usage, args.empty() ? err : out);
        return args.empty() ? 2 : 0;
    }
    const std::string& command = args[0];
    if (command == "qxs-check") return Qxs_Check(args, out, err);
    if (command == "qxs-diff") return Qxs_Diff(args, out, err);
    if (command == "ports") return Ports(args, out, err);
    if (command == "info") return Info(args, out, err);
    if (command == "show") return Show_Command(args, out, err);
    if (command == "read") return Read_Command(args, out, err);
    if (command == "verify") return Verify_Command(args, out, err);
    if (command == "write") return Write_Command(args, out, err);
    if (command == "errors") return Errors_Command(args, out, err);
    if (command == "clear-errors") return Clear_Errors_Command(args, out, err);
    if (command == "edit") return Edit_Command(args, out, err);
    if (command == "settings") return Settings_Command(args, out, err);
    if (command == "set") return Set_Command(args, out, err);
    if (command == "log") return Log_Command(args, out, err);
    if (command == "log-info") return Log_Info_Command(args, out, err);
    if (command == "log-csv") return Log_Csv_Command(args, out, err);
    if (command == "hslog") return Hslog_Command(args, out, err);
    if (command == "hs-analyze") return Hs_Analyze_Command(args, out, err);
    if (command == "crank") return Crank_Command(args, out, err);
    if (command == "engine") return Engine_Command(args, out, err);
    if (command == "preset") return Preset_Command(args, out, err);
    if (command == "generate") return Generate_Command(args, out, err);
    if (command == "summary") return Summary_Command(args, out, err);
    if (command == "log-chart") return Log_Chart_Command(args, out, err);
    if (command == "log-hits") return Log_Hits_Command(args, out, err);
    if (command == "fuel-correct") return Fuel_Correct_Command(args, out, err);
    if (command == "card-check") return Card_Check_Command(args, out, err);
    if (command == "card-read") return Card_Read_Command(args, out, err);
    if (command == "card-write") return Card_Write_Command(args, out, err);
    if (command == "pcsc-list") return Pcsc_List_Command(args, out, err);
    if (command == "pcsc-read") return Pcsc_Read_Command(args, out, err);
    if (command == "pcsc-write") return Pcsc_Write_Command(args, out, err);
    if (command == "sensor") return Sensor_Command(args, out, err);
    if (command == "transform") return Transform_Command(args, out, err);
    std::fprintf(err, "quorlen-cli: unknown command '%s'\n\n%s", command.c_str(), Usage);
    return 2;
}

} // namespace quorlen::cli
