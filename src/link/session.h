#pragma once
// The session with the box: who it is (get_connect_info), the poll that keeps that fresh
// (Check_connection_timer), and the user's commands around it.

#include "link/command_link.h"

namespace quorlen {

// The "v" exchange: over when `expected` characters came, or the moment the banner is whole.
// A box's banner is usually shorter than the count waited for.
void Ask_Banner(Link_Context& c, double timeout, int expected, std::string& answer, bool& ok);

// Asks for the banner and fills the fields of the link state, Box_Info_Text and Connected.
void get_connect_info(Link_Context& c);

// One tick of the 1500 ms poll. Stays away while anyone else owns the port.
void Check_connection_timer(Link_Context& c);

// The Connect info button: the banner in a "Connected box info" message box.
void Connect_Info_Click(Link_Context& c);
// Ports 1 to 9 in turn, a message box for each that opens.
void Command2_Click(Link_Context& c);
// Opening and closing the port by hand.
void Com_Open_Click(Link_Context& c);
void Com_Close_Click(Link_Context& c);

// The preferences found a port: look for the box on it, quietly.
void Look_For_Box(Link_Context& c);

} // namespace quorlen
