#include "logging/log_live.h"

#include "logging/log_capture.h"

namespace quorlen {

bool Log_Paused(const Log_State& log) {
    return log.capture.Log_Interrupted;
}

Live_Hooks Log_Live_Hooks(Log_Context& ctx) {
    Live_Hooks h;
    h.Log_Paused = [&ctx] { return Log_Paused(ctx.log); };
    h.Log_Timers = [&ctx](bool on) { Live_Log_Timers(ctx, on); };
    h.Receive_Event = [&ctx](bool on) { Live_Receive_Event(ctx, on); };
    h.Stream_Tail = [&ctx] { return Live_Stream_Tail(ctx); };
    h.Stream_Stopped = [&ctx](const std::string& rest) { Live_Stream_Stopped(ctx, rest); };
    h.Drop_Log_Input = [&ctx] { Live_Drop_Input(ctx); };
    h.Open_Log_Port = [&ctx] { Live_Open_Port(ctx); };
    return h;
}

Live_Context Live_Context_Of(Log_Context& ctx, Settings_Context& s, Live_State& live) {
    Live_Context live_ctx{s,
                          *ctx.line,
                          live,
                          Log_Start_Command(ctx.log),
                          ctx.log.capture.Binary ? "DS" : "\r\n",
                          Log_Live_Hooks(ctx)};
    return live_ctx;
}

} // namespace quorlen
