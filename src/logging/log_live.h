#pragma once
// The log's side of a change made while its stream runs: how the live change stops, pauses
// and starts again the stream that this log receives.

#include "link/live_changes.h"
#include "logging/log_context.h"

namespace quorlen {

// The stream stands still while an interruption is being recovered.
bool Log_Paused(const Log_State& log);

// The hooks a live change needs of the log. `ctx` must outlive them.
Live_Hooks Log_Live_Hooks(Log_Context& ctx);

// A live change on this log's port: `s` carries the image, the flags and the person, and its
// line the byte-wise dialogue. `ctx` and `s` must outlive the result.
Live_Context Live_Context_Of(Log_Context& ctx, Settings_Context& s, Live_State& live);

} // namespace quorlen
