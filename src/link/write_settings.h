#pragma once
// Writing sends the bytes that differ from the box, never the whole image: byte-wise, where
// every character is echoed and the box commits with "ue", or as one binary frame. Both act
// on the marks in ChangedByte, which only a verify clears, so a write that fails part way
// loses nothing: the next one sends the same bytes again.

#include "link/settings_context.h"

namespace quorlen {

// The Write button: verify, byte dialogue over the marked addresses, commit, verify.
void Write_Settings_Click(Settings_Context& s);
// Dialogue and commit over every marked address 0..1023, without the verifies; used while a
// log holds the link.
void Write_Settings_Fast_Click(Settings_Context& s);
// The changed span as one binary frame.
void Write_bin_command_cmd_Click(Settings_Context& s);
// Sends CardByte(first..last) as one frame; `ok` when the box answered "&".
void Write_bin(Settings_Context& s, int first, int last, bool& ok);
// The older path: asks for a slave, warns, then verifies.
void Com_write_Click(Settings_Context& s);

} // namespace quorlen
