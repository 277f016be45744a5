#include "logging/log_capture.h"

#include "core/proc_guard.h"
#include "core/run_error.h"
#include "core/text.h"
#include "image/scaling.h"
#include "link/serial_line.h"
#include "logging/log_calc.h"
#include "logging/log_chart.h"
#include "logging/log_file.h"
#include "logging/log_settings.h"
#include "logging/log_signals.h"
#include "logging/log_text.h"

#include <algorithm>
#include <cstdio>

namespace quorlen {

namespace {

constexpr const char* Delayed_Mark = "a 'Delayed start error occured";
constexpr const char* Interruption_Mark = " 'Interuption of log";
constexpr std::size_t Live_Text_Rows = 200; // rows the live text view keeps

Serial_Line& Line(Log_Context& ctx) {
    if (ctx.line == nullptr) throw Run_Error(8012, "Port not open");
    return *ctx.line;
}

bool Port_Open(Log_Context& ctx) {
    return ctx.line != nullptr && ctx.line->Is_Open();
}

// InBufferCount: what the port holds, received and not yet taken.
int In_Buffer_Count(Log_Context& ctx) {
    Capture_State& cap = ctx.log.capture;
    cap.pending += Line(ctx).Read_All();
    return static_cast<int>(cap.pending.size());
}

// Input: at most InputLen characters, all when it is 0.
std::string Input(Log_Context& ctx) {
    Capture_State& cap = ctx.log.capture;
    cap.pending += Line(ctx).Read_All();
    const std::size_t n = cap.port.InputLen <= 0
                              ? cap.pending.size()
                              : std::min(cap.pending.size(), static_cast<std::size_t>(cap.port.InputLen));
    std::string taken = cap.pending.substr(0, n);
    cap.pending.erase(0, n);
    return taken;
}

void Open_Port(Log_Context& ctx) {
    Serial_Line& line = Line(ctx);
    line.Set_Port(ctx.port);
    line.Set_Settings(Settings_Text(ctx.program.ComSpeed));
    ctx.log.capture.pending.clear();
    const Open_Result result = line.Open();
    if (!result.Ok()) throw Run_Error(8002, "Port not open: " + ctx.port);
}

void Backup_Write(Capture_State& cap, std::string_view text) {
    if (cap.backup == nullptr || text.empty()) return;
    std::fwrite(text.data(), 1, text.size(), cap.backup);
    // A log that ends with the program killed keeps what arrived until then.
    std::fflush(cap.backup);
}

// Restarts the stream the way the log began: the start string, or the binary request.
void Send_Start(Log_Context& ctx) {
    if (ctx.log.capture.Binary)
        Start_Logging_bin(ctx);
    else
        Line(ctx).Write(ctx.log.Log_Start_String);
}

void Cut_After_Last_Lf(std::string& text) {
    const std::size_t lf = text.rfind('\n');
    text.resize(lf == std::string::npos ? 0 : lf + 1);
}

void Keep_Live_Text(Log_Form& form, std::string_view row) {
    form.txt_File.append(row).append("\r\n");
    if (form.txt_File.size() > Live_Text_Rows * (row.size() + 2) * 2) {
        std::size_t cut = form.txt_File.size() - Live_Text_Rows * (row.size() + 2);
        cut = form.txt_File.find('\n', cut);
        if (cut != std::string::npos) form.txt_File.erase(0, cut + 1);
    }
}

void Wait_For_Connection_Check(Log_Context& ctx) {
    for (int i = 0; i < 100 && ctx.flags.Connection_Check_Busy; ++i)
        ctx.Dummy_Wait();
}

std::string Status_Hex(std::uint8_t b) {
    // The hex text goes through the number format "00": one digit gets a leading zero, one
    // letter stays alone.
    char hex[4];
    std::snprintf(hex, sizeof hex, "%X", b);
    std::string text = hex;
    if (text.size() == 1 && text[0] >= '0' && text[0] <= '9') text = "0" + text;
    return text;
}

std::string Three(int value) {
    char text[8];
    std::snprintf(text, sizeof text, "%03d", value);
    return text;
}

void Fast_Read(Log_Context& ctx, bool last);

void Start(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "cmd Open Com (Start logg)");
    Log_State& log = ctx.log;
    Log_Form& f = log.form;
    Capture_State& cap = log.capture;
    const Log_Setup& s = log.setup;

    Wait_For_Connection_Check(ctx);
    cap.Log_Stopped_By_Overload = false;
    cap.Log_Receive_Enabled = true;
    cap.Logging_Running = true;
    ctx.flags.Logging_Active = true;
    f.txt_Log_Free_Text_compare_Visible = false;
    guard.Step([&] {
        if (ctx.hooks.Main_Status) ctx.hooks.Main_Status("ONLINE");
    });
    f.cmd_Open_Com_Enabled = false;
    cap.ShowCurser_Timer_Enabled = false;
    f.menus_Enabled = false;
    guard.Step([&] {
        if (ctx.hooks.Check_If_Unsaved_File) ctx.hooks.Check_If_Unsaved_File();
    });
    log.Compare_Mode = false;
    log.Reading_Compare = false;

    if (s.check_SettingsInLogg != 0) {
        f.cmd_Open_Com_Caption = "Reading box settings";
        guard.Step([&] {
            if (ctx.hooks.Read_Box_Settings) ctx.hooks.Read_Box_Settings();
        });
        const std::string& status = ctx.texts.rs232_text;
        if (status.find("rror") != std::string::npos || status.find("Failed to open") != std::string::npos) {
            f.txt_NoConnection_alert_Visible = true;
            log.Readable_Settings_Text.clear();
            log.Log_Dataset_Text.clear();
            ctx.debug.Write_Line("Error in box communication. Could not start logging");
            Enable_Buttons_after_log(ctx);
            return;
        }
        guard.Step([&] { Update_Log_Dataset(log, ctx.image); });
        guard.Step([&] {
            const std::string summary = ctx.hooks.Settings_Summary ? ctx.hooks.Settings_Summary() : "";
            log.Readable_Settings_Text = "[readable_settings]\r\n" + summary +
                                         (summary.empty() ? "" : "\r\n") + "[end readable_settings]";
        });
    } else {
        // A log that does not carry the box's settings carries none of an older one either.
        log.Readable_Settings_Text = "[readable_settings]\r\n[end readable_settings]";
        log.Log_Dataset_Text = "[log_dataset]\r\n[end log_dataset]";
    }

    cap.port = Log_Port_Settings{};
    guard.Step([&] {
        if (ctx.hooks.Main_Controls_Enabled) ctx.hooks.Main_Controls_Enabled(false);
    });
    guard.Step([&] { Open_Port(ctx); });
    ctx.Dummy_Wait();

    guard.Step([&] { cmd_Clear_Logg_Click(ctx); });
    f.cmd_Open_Com_Caption = "STOP";
    guard.Step([&] {
        if (ctx.hooks.Main_Log_Caption) ctx.hooks.Main_Log_Caption("STOP LOGGING");
    });
    f.File_Info_Frame_Visible = true;

    f.txt_Log_time = ctx.Time_Text();
    f.txt_Log_Date = ctx.Date_Text();
    log.Log_File_Name = s.txt_Default_Save_Name + ".qxl";
    log.Part_Counter = 0;
    f.Caption = ctx.program.Program_Title + log.Log_File_Name;

    guard.Step([&] { Update_All_Log_Setting_Variables(ctx); });
    cap.Log_Row_Count = 0;
    log.Log_Data_Text = "[log_data]\r\n";
    guard.Step([&] { Init_Logg_Backup_File(ctx); });
    guard.Step([&] { Calculate_Data(ctx, "", 0, log.Log_Data); });

    cap.Log_Receive_Enabled = true;
    f.cmd_Clear_Logg_Enabled = false;
    cap.timer_LogAlert_Enabled = true;
    cap.Log_First_Data_Seen = false;
    cap.Log_Data_Since_Tick = false;
    cap.Log_Interrupted = false;
    cap.Log_Data_While_Interrupted = false;
    cap.Log_Delayed_Start = false;
    cap.Log_Had_Interruption = false;

    // A timer's period is at most about 65 s; a longer one, or a negative one, stops it.
    const double interval = Text_Value(s.txt_Show_Log_Interval);
    cap.Timer1_Interval = static_cast<int>(
        Whole_Within(Round_Even_Whole(interval * (s.check_LogToFileOnly != 0 ? 200 : 1000)), 0, 65535)
            .value_or(0));
    // An interval of 0 stops the timer, as a timer with no period does.
    cap.Timer1_Enabled = cap.Timer1_Interval > 0;
    cap.ShowCurser_Timer_Enabled = true;
    f.MSChart1_Visible = s.check_LogToFileOnly == 0;
    f.label_NoGraph_Visible = s.check_LogToFileOnly != 0;

    f.txt_File.clear();
    guard.Step([&] {
        if (!Port_Open(ctx)) return;
        Line(ctx).Clear_Input();
        Line(ctx).Read_All();
        cap.pending.clear();
    });
    cap.Log_Stream_Buffer.clear();

    cap.Binary = f.Binary_log_opt == 1;
    guard.Step([&] { Send_Start(ctx); });
    f.cmd_Open_Com_Enabled = true;
}

void Stop(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "cmd Open Com (Start logg)");
    Log_State& log = ctx.log;
    Capture_State& cap = log.capture;

    Wait_For_Connection_Check(ctx);
    if (!cap.Log_Stopped_By_Overload) guard.Step([&] { Line(ctx).Write(" "); });
    // The count is read until the port answers; a port that has gone for good is given up.
    for (int tries = 0; tries < 20 && Port_Open(ctx); ++tries) {
        try {
            In_Buffer_Count(ctx);
            break;
        } catch (const Run_Error&) {
            ctx.Dummy_Wait();
        }
    }
    guard.Step([&] {
        if (ctx.line != nullptr) ctx.line->Close();
    });
    // What came before the stop belongs to the log: the characters still waiting at the port,
    // and in a binary log the frames not yet converted.
    guard.Step([&] {
        if (!cap.Log_First_Data_Seen || cap.Log_Interrupted || cap.Log_Stopped_By_Overload) return;
        if (cap.Binary) {
            cap.Log_Stream_Buffer += cap.pending;
            Fast_Read(ctx, true);
        } else {
            Drop_End_Of_Text(cap.pending);
            log.Log_Data_Text += cap.pending;
            Backup_Write(cap, cap.pending);
        }
    });
    cap.pending.clear();

    guard.Step([&] { Finalize_Logg_Backup_File(ctx); });
    guard.Step([&] { Trim_Log_Data(log); });
    log.form.MSChart1_Visible = true;

    guard.Step([&] { QX_Log_Data_Read(ctx); });
    // The whole log as the file has it, which may hold a row or two more than came live.
    log.window = Zoom_All(Window_Limits{log.Last_Row, 0});
    guard.Step([&] {
        if (ctx.hooks.Update_Chart) ctx.hooks.Update_Chart();
    });
    cap.Log_Row.clear();
    log.Unsaved = true;
    if (log.setup.check_AutoSave != 0) guard.Step([&] { Log_File_Auto_Save(ctx); });
    guard.Step([&] {
        if (ctx.hooks.Show_Current_Data_Clear) ctx.hooks.Show_Current_Data_Clear();
    });

    if (cap.Log_Delayed_Start && cap.Log_Had_Interruption)
        ctx.debug.Write_Line(
            "There were both a delayed start, and some interruption of log. Current box settings "
            "were therefore not read.");
    else if (cap.Log_Delayed_Start)
        ctx.debug.Write_Line(
            "There were a delay before logging started. Current box settings were therefore not read.");
    else if (cap.Log_Had_Interruption)
        ctx.debug.Write_Line("There were some interruptions during the log");

    Enable_Buttons_after_log(ctx);
}

} // namespace

void Start_Logging(Log_Context& ctx) {
    // A log runs or it does not; the port may have gone with the cable meanwhile.
    if (ctx.log.capture.Logging_Running) {
        Stop(ctx);
    } else if (ctx.flags.HS_Logging_Active) {
        // The high-speed capture holds the port; the box streams its samples, not rows.
        ctx.dialogs.Inform(HS_Port_Busy_Text);
    } else {
        Start(ctx);
    }
}

void Start_Logging_bin(Log_Context& ctx) {
    ctx.log.Log_Row_Columns = 58;
    Serial_Line& line = Line(ctx);
    line.Write("bL");
    line.Write("00");
    line.Write(dec2hex(58, 2));
}

void Log_Receive_Event(Log_Context& ctx) {
    Capture_State& cap = ctx.log.capture;
    // A threshold of 0 is the event switched off, as a live change does while it has the port.
    if (!cap.Log_Receive_Enabled || cap.Log_Receive_Busy || cap.port.RThreshold <= 0 || !Port_Open(ctx))
        return;
    Proc_Guard guard(ctx.debug, "mscomm1 oncomm");
    guard.Step([&] {
        if (In_Buffer_Count(ctx) < Receive_Threshold) return;
        Log_State& log = ctx.log;
        cap.Log_Receive_Busy = true;
        std::string s = Input(ctx);
        // Noise on the line: such a byte in a saved text log would end its reading there.
        if (!cap.Binary) Drop_End_Of_Text(s);

        if (!cap.Log_First_Data_Seen) {
            cap.Log_First_Data_Seen = true;
            if (cap.Binary) {
                const std::size_t ps = s.find("PS");
                if (ps != std::string::npos) s.erase(0, ps);
            }
            cap.Log_Stream_Buffer += s;
            log.Log_Data_Text += (cap.Log_Delayed_Start ? Delayed_Mark : log.Log_Start_String) + "\r\n";
            if (!cap.Binary) {
                log.Log_Data_Text += s;
                Backup_Write(cap, s);
            }
            cap.Log_Data_Since_Tick = true;
            log.form.txt_NoConnection_alert_Visible = false;
            cap.Timer1_Enabled = cap.Timer1_Interval > 0;
        } else if (!cap.Log_Interrupted) {
            cap.Log_Stream_Buffer += s;
            if (!cap.Binary) {
                log.Log_Data_Text += s;
                Backup_Write(cap, s);
            }
            cap.Log_Data_Since_Tick = true;
        } else if (cap.Log_Data_Since_Tick) {
            // The stream is back: go on from a row boundary.
            cap.Log_Interrupted = false;
            cap.Log_Data_While_Interrupted = false;
            std::string rest;
            if (cap.Binary) {
                const std::size_t ps = s.find("PS");
                rest = ps == std::string::npos ? std::string() : s.substr(ps);
            } else {
                const std::size_t lf = s.rfind('\n');
                rest = lf == std::string::npos ? s : s.substr(lf + 1);
            }
            cap.Log_Stream_Buffer += rest;
            if (log.Log_Data_Text.size() >= 2) log.Log_Data_Text.resize(log.Log_Data_Text.size() - 2);
            log.Log_Data_Text += std::string(Interruption_Mark) + "\r\n";
            if (!cap.Binary) {
                log.Log_Data_Text += rest;
                Backup_Write(cap, rest);
            }
            cap.Timer1_Enabled = cap.Timer1_Interval > 0;
        } else {
            cap.Log_Data_While_Interrupted = true;
        }
    });
    cap.Log_Receive_Busy = false;
}

void Timer1_Timer(Log_Context& ctx) {
    Capture_State& cap = ctx.log.capture;
    cap.Log_Receive_Enabled = false;
    cap.Timer1_Enabled = false;
    Proc_Guard guard(ctx.debug, "Timer1 timer");

    int waiting = 0;
    guard.Step([&] { waiting = Port_Open(ctx) ? In_Buffer_Count(ctx) : 0; });
    if (waiting > Overload_Count) {
        cap.Log_Stopped_By_Overload = true;
        Start_Logging(ctx);
        ctx.dialogs.Show_Message(Icon::Stop, Overload_Text);
        ctx.debug.Write_Line(Overload_Text);
        return;
    }
    guard.Step([&] {
        if (cap.Binary)
            QX_Fast_Log_Row_Data_Read(ctx);
        else
            QX_Log_Row_Data_Read(ctx);
    });
    Log_State& log = ctx.log;
    log.window.Zoom_Stop = cap.Log_Row_Count;
    const long shown =
        Whole_Within(20 * Text_Value(log.setup.txt_Show_Log_Sek), 0, Log_Row_Limit).value_or(0);
    log.window.Zoom_Start = std::max(1, cap.Log_Row_Count - static_cast<int>(shown));
    guard.Step([&] {
        if (log.setup.check_LogToFileOnly == 0 && ctx.hooks.Update_Chart) ctx.hooks.Update_Chart();
    });
    if (cap.Logging_Running) {
        cap.Log_Receive_Enabled = true;
        cap.Timer1_Enabled = cap.Timer1_Interval > 0;
    }
}

void timer_LogAlert_Timer(Log_Context& ctx) {
    Capture_State& cap = ctx.log.capture;
    Log_Form& f = ctx.log.form;
    if (!cap.Logging_Running) return;
    Proc_Guard guard(ctx.debug, "timer LogAlert timer");
    if (cap.Log_Data_Since_Tick) {
        if (cap.Log_Interrupted) {
            guard.Step([&] { Send_Start(ctx); });
        } else {
            f.txt_Logging_alert_Visible = true;
            f.txt_NoConnection_alert_Visible = false;
            f.txt_Logging_alert_Inverted = !f.txt_Logging_alert_Inverted;
        }
        cap.Log_Data_Since_Tick = false;
        return;
    }
    f.txt_Logging_alert_Visible = false;
    f.txt_NoConnection_alert_Visible = true;
    cap.Timer1_Enabled = false;
    if (!cap.Log_First_Data_Seen) {
        guard.Step([&] { Send_Start(ctx); });
        cap.Log_Delayed_Start = true;
    } else if (!cap.Log_Data_While_Interrupted) {
        cap.Log_Interrupted = true;
        cap.Log_Had_Interruption = true;
        Cut_After_Last_Lf(ctx.log.Log_Data_Text);
        Cut_After_Last_Lf(cap.Log_Stream_Buffer);
        guard.Step([&] {
            if (Port_Open(ctx) && In_Buffer_Count(ctx) != 0) {
                Send_Start(ctx);
                return;
            }
            if (ctx.line != nullptr) ctx.line->Close();
            ctx.Dummy_Wait();
            Open_Port(ctx);
        });
    } else {
        guard.Step([&] {
            cap.port.InputLen = 0;
            Input(ctx);
            cap.port.InputLen = 200;
        });
        cap.Log_Data_Since_Tick = true;
    }
}

void QX_Log_Row_Data_Read(Log_Context& ctx) {
    Proc_Guard guard(ctx.debug, "QX Log Row Data Read");
    Log_State& log = ctx.log;
    Capture_State& cap = log.capture;
    guard.Step([&] {
        const std::size_t last_lf = cap.Log_Stream_Buffer.rfind('\n');
        if (last_lf == std::string::npos) return;
        long dropped = 0;
        const std::string chunk =
            Filter_logfile_errors(std::string_view(cap.Log_Stream_Buffer).substr(0, last_lf + 1), dropped);
        cap.Log_Stream_Buffer.erase(0, last_lf + 1);

        std::size_t rows_start = 0;
        if (const std::size_t header = chunk.find("#RPM"); header != std::string::npos) {
            const std::size_t lf = chunk.find('\n', header);
            rows_start = lf == std::string::npos ? chunk.size() : lf + 1;
        } else if (const std::size_t a = chunk.rfind('a'); a != std::string::npos) {
            const std::size_t lf = chunk.find('\n', a);
            rows_start = lf == std::string::npos ? chunk.size() : lf + 1;
        }
        const std::size_t first_cr = chunk.find('\r', rows_start);
        if (first_cr == std::string::npos) return;
        const std::size_t row_length = first_cr - rows_start;
        log.Log_Row_Columns = static_cast<std::int16_t>(Count_Char(chunk, ' ', rows_start, first_cr));
        log.Log_Wide_Row = log.Log_Row_Columns >= 14;

        std::string_view rest = std::string_view(chunk).substr(rows_start);
        while (!rest.empty()) {
            const std::size_t lf = rest.find('\n');
            std::string_view row = rest.substr(0, lf);
            if (!row.empty() && row.back() == '\r') row.remove_suffix(1);
            if (row.find("RPM") != std::string_view::npos || row.find('l') != std::string_view::npos)
                row = {};
            if (!row.empty() && row.size() == row_length) {
                ++cap.Log_Row_Count;
                Keep_Live_Text(log.form, row);
                Calculate_Data(ctx, row, cap.Log_Row_Count, log.Log_Data);
                if (cap.Log_Row_Count > Log_Split_Rows) {
                    // The rest of this chunk is in the text of the part just saved.
                    Fast_Save_Long_Log_File(ctx);
                    Calculate_Data(ctx, "", 0, log.Log_Data);
                    return;
                }
            }
            if (lf == std::string_view::npos) break;
            rest.remove_prefix(lf + 1);
        }
    });
}

void QX_Fast_Log_Row_Data_Read(Log_Context& ctx) {
    Fast_Read(ctx, false);
}

namespace {

void Fast_Read(Log_Context& ctx, bool last) {
    Proc_Guard guard(ctx.debug, "QX Fast Log Row Data Read");
    Log_State& log = ctx.log;
    Capture_State& cap = log.capture;
    guard.Step([&] {
        const std::size_t last_ds = cap.Log_Stream_Buffer.rfind("DS");
        if (last_ds == std::string::npos) return;
        const std::string chunk = cap.Log_Stream_Buffer.substr(0, last_ds + 2);
        cap.Log_Stream_Buffer.erase(0, last_ds + 2);

        const std::size_t first_ps = chunk.find("PS");
        if (first_ps == std::string::npos) {
            ctx.dialogs.Show_Message(Icon::Stop, "No start of data in this chunk");
            return;
        }
        std::size_t start = first_ps + 2;
        std::size_t end = chunk.find("PS", start);
        if (end == std::string::npos) {
            // The last frames of a stopped log are taken even when there is only one.
            if (!last) {
                ctx.dialogs.Show_Message(Icon::Stop, "No complete data in this chunk");
                return;
            }
            end = chunk.find("DS", start);
            end = end == std::string::npos ? end : end + 2;
        }
        long frames = 0;
        for (std::size_t at = chunk.find("DS"); at != std::string::npos; at = chunk.find("DS", at + 2))
            ++frames;
        for (long k = 0; k < frames && start != std::string::npos && end != std::string::npos && end > start;
             ++k) {
            const std::string_view frame = std::string_view(chunk).substr(start, end - start);
            if (!frame.empty()) {
                ++cap.Log_Row_Count;
                const std::string row = Convert_to_Slowdata(ctx, frame);
                log.Log_Data_Text += row + "\r\n";
                Keep_Live_Text(log.form, row);
                Calculate_Data(ctx, row, cap.Log_Row_Count, log.Log_Data);
                if (cap.Log_Row_Count > Log_Split_Rows) {
                    // The frames still in this chunk begin the next part.
                    Fast_Save_Long_Log_File(ctx);
                    Calculate_Data(ctx, "", 0, log.Log_Data);
                }
            }
            const std::size_t next_ps = chunk.find("PS", start);
            start = next_ps == std::string::npos ? std::string::npos : next_ps + 2;
            if (start == std::string::npos) break;
            const std::size_t next_ds = chunk.find("DS", start);
            end = next_ds == std::string::npos ? std::string::npos : next_ds + 2;
        }
    });
}

} // namespace

std::string Convert_to_Slowdata(Log_Context& ctx, std::string_view t) {
    Log_Form& f = ctx.log.form;
    auto at = [&](std::size_t i) { return i < t.size() ? static_cast<std::uint8_t>(t[i]) : std::uint8_t{0}; };
    const int length = at(0);
    const long data_length = static_cast<long>(t.size()) - 5;
    if (length != data_length)
        f.txt_Log_Free_Text +=
            "\r\nErr data length " + std::to_string(length) + " " + std::to_string(data_length);
    const unsigned received =
        at(static_cast<std::size_t>(length) + 1) * 256u + at(static_cast<std::size_t>(length) + 2);
    std::array<std::uint8_t, 256> d{};
    unsigned sum = static_cast<unsigned>(length);
    for (int i = 0; i < length; ++i) {
        d[static_cast<std::size_t>(i)] = at(static_cast<std::size_t>(i) + 1);
        sum += d[static_cast<std::size_t>(i)];
    }
    const unsigned calculated = sum - 1;
    if (received != calculated)
        f.txt_Log_Free_Text +=
            "\r\nErr check sum " + std::to_string(received) + " " + std::to_string(calculated);

    const double seconds = (65536.0 * d[30] + 256.0 * d[31] + d[32]) * 256 * 256 * 8 / 11000000;
    f.Engine_On_Text = "Engine on for " + Format_Number(seconds, "0.00") + " sec";
    if (ctx.hooks.Show_Engine_On) ctx.hooks.Show_Engine_On(f.Engine_On_Text);

    const double rpm = (256.0 * d[0] + d[1]) * 16000 / 65536;
    std::string row = "$" + Format_Number(rpm, "00000") + " ";
    row.reserve(180);
    for (int i = 2; i <= 29; ++i)
        row += Three(d[static_cast<std::size_t>(i)]) + " ";
    for (int i : {32, 33, 34, 35, 36, 39, 40, 41, 43, 44})
        row += Three(d[static_cast<std::size_t>(i)]) + " ";
    for (int i = 46; i <= 48; ++i)
        row += "h" + Status_Hex(d[static_cast<std::size_t>(i)]) + " ";
    ctx.log.capture.Log_Row = row;
    return row;
}

void Init_Logg_Backup_File(Log_Context& ctx) {
    Capture_State& cap = ctx.log.capture;
    if (cap.backup != nullptr) std::fclose(cap.backup);
    cap.backup_path = ctx.program.App_Path + Log_Backup_File_Name;
    cap.backup = std::fopen(cap.backup_path.c_str(), "wb");
    if (cap.backup == nullptr) throw errors::Permission_Denied();
    Backup_Write(cap, "[log_data] 'Backup of last made logging " + ctx.Date_Text() + " " + ctx.Time_Text() +
                          "\r\n");
}

void Finalize_Logg_Backup_File(Log_Context& ctx) {
    Log_State& log = ctx.log;
    Capture_State& cap = log.capture;
    if (cap.backup == nullptr) return;
    std::string tail =
        "\r\n[end_log_data]\r\n" + log.Log_Settings_Text + "\r\n" + log.Log_Sens_Def_Text + "\r\n";
    if (log.setup.check_SettingsInLogg != 0)
        tail += log.Readable_Settings_Text + "\r\n" + log.Log_Dataset_Text + "\r\n";
    Backup_Write(cap, tail);
    std::fclose(cap.backup);
    cap.backup = nullptr;
}

void cmd_Clear_Logg_Click(Log_Context& ctx) {
    Log_State& log = ctx.log;
    log.Log_Data.Clear();
    log.Compare_Data.Clear();
    log.capture.Log_Stream_Buffer.clear();
    log.capture.Log_Row.clear();
    log.capture.Log_Row_Count = 0;
    log.form.txt_File.clear();
    log.Last_Row = 0;
    log.window = Chart_Window{};
    ++log.Data_Version;
}

void Enable_Buttons_after_log(Log_Context& ctx) {
    Log_State& log = ctx.log;
    Capture_State& cap = log.capture;
    Log_Form& f = log.form;
    f.cmd_Open_Com_Caption = "START";
    f.cmd_Open_Com_Enabled = true;
    f.cmd_Clear_Logg_Enabled = true;
    f.menus_Enabled = true;
    f.txt_Logging_alert_Visible = false;
    cap.Timer1_Enabled = false;
    cap.timer_LogAlert_Enabled = false;
    cap.ShowCurser_Timer_Enabled = false;
    cap.Log_Receive_Enabled = false;
    cap.Logging_Running = false;
    ctx.flags.Logging_Active = false;
    if (ctx.hooks.Main_Controls_Enabled) ctx.hooks.Main_Controls_Enabled(true);
    if (ctx.hooks.Main_Log_Caption) ctx.hooks.Main_Log_Caption("START LOGGING");
    if (ctx.hooks.Main_Status) ctx.hooks.Main_Status("");
}

std::string Log_Start_Command(const Log_State& log) {
    return log.capture.Binary ? "bL00" + dec2hex(58, 2) : log.Log_Start_String;
}

std::string Live_Stream_Tail(Log_Context& ctx) {
    Capture_State& cap = ctx.log.capture;
    if (Port_Open(ctx)) In_Buffer_Count(ctx);
    const std::string seen =
        cap.Log_Stream_Buffer.substr(cap.Log_Stream_Buffer.size() -
                                     std::min<std::size_t>(cap.Log_Stream_Buffer.size(), 8)) +
        cap.pending;
    return seen.substr(seen.size() - std::min<std::size_t>(seen.size(), 8));
}

void Live_Stream_Stopped(Log_Context& ctx, const std::string& rest) {
    Log_State& log = ctx.log;
    Capture_State& cap = log.capture;
    cap.pending += rest;
    const std::string row_end = cap.Binary ? "DS" : "\n";
    const std::size_t end = cap.pending.rfind(row_end);
    const std::string whole =
        end == std::string::npos ? std::string() : cap.pending.substr(0, end + row_end.size());
    cap.pending.clear();
    if (cap.Log_First_Data_Seen && !cap.Log_Interrupted && !whole.empty()) {
        cap.Log_Stream_Buffer += whole;
        if (!cap.Binary) {
            log.Log_Data_Text += whole;
            Backup_Write(cap, whole);
        }
        cap.Log_Data_Since_Tick = true;
    }
    // A row cut in two by the stop would join the first one after the restart.
    if (cap.Binary) {
        const std::size_t ds = cap.Log_Stream_Buffer.rfind("DS");
        cap.Log_Stream_Buffer.resize(ds == std::string::npos ? 0 : ds + 2);
    } else if (!cap.Log_Stream_Buffer.empty() && cap.Log_Stream_Buffer.back() != '\n') {
        Cut_After_Last_Lf(cap.Log_Stream_Buffer);
        Cut_After_Last_Lf(log.Log_Data_Text);
        Backup_Write(cap, "\r\n");
    }
}

void Live_Drop_Input(Log_Context& ctx) {
    ctx.log.capture.pending.clear();
    if (!Port_Open(ctx)) return;
    Line(ctx).Clear_Input();
    Line(ctx).Read_All();
}

void Live_Open_Port(Log_Context& ctx) {
    Open_Port(ctx);
}

void Live_Log_Timers(Log_Context& ctx, bool on) {
    Capture_State& cap = ctx.log.capture;
    cap.Timer1_Enabled = on && cap.Timer1_Interval > 0;
    cap.timer_LogAlert_Enabled = on;
}

void Live_Receive_Event(Log_Context& ctx, bool on) {
    ctx.log.capture.port.RThreshold = on ? 130 : 0;
}

void Log_Timers::Run_Until(double until, const std::function<void(double seconds)>& wait) {
    Capture_State& cap = ctx_.log.capture;
    double now = ctx_.Now();
    if (!started_) {
        started_ = true;
        next_receive_ = now + Receive_Poll_Period / 1000.0;
        next_timer1_ = now + cap.Timer1_Interval / 1000.0;
        next_alert_ = now + Log_Alert_Period / 1000.0;
    }
    while (cap.Logging_Running && now < until) {
        if (now >= next_receive_) {
            Log_Receive_Event(ctx_);
            next_receive_ += Receive_Poll_Period / 1000.0;
            if (next_receive_ < now) next_receive_ = now + Receive_Poll_Period / 1000.0;
        }
        if (now >= next_timer1_) {
            if (cap.Timer1_Enabled) Timer1_Timer(ctx_);
            next_timer1_ = now + std::max(cap.Timer1_Interval, 1) / 1000.0;
        }
        if (now >= next_alert_ && cap.timer_LogAlert_Enabled) {
            timer_LogAlert_Timer(ctx_);
            next_alert_ += Log_Alert_Period / 1000.0;
        }
        const double next = std::min({next_receive_, next_timer1_, next_alert_, until});
        now = ctx_.Now();
        if (next > now) wait(next - now);
        now = ctx_.Now();
    }
}

} // namespace quorlen
