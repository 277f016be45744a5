#pragma once
// The Mapchip in the box's slot, through the box over the serial line: is a card there, read
// it, write the image to it. qx_crw_text is their status line.
//
// Writing is the box's card-writing mode: "br" answered by "#", then two hex digits a byte,
// each byte acknowledged with "m", and after the last byte the box's closing reply "!". The
// write counts as done only when that "!" came: silence, an "m" or anything else after the
// last byte is a failure, so a card that may be half written is never reported as written.

#include "cards/card_context.h"
#include "link/settings_context.h"

namespace quorlen {

inline constexpr int Mapchip_Size = 256;

void Check_Card_Present_cmd_Click(Settings_Context& s, Card_Context& k);
// Reads the box's image (the box serves the card in its first 256 bytes) into the image.
void Read_Card_Inbox_cmd_Click(Settings_Context& s, Card_Context& k);
// Writes image bytes 0 to 255 to the card.
void Write_Card_Inbox_cmd_Click(Settings_Context& s, Card_Context& k);

} // namespace quorlen
