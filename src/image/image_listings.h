#pragma once
// The listings of the image that support asks for: every byte, the flag bytes, a map block,
// the analogue input selections.

#include "image/settings_image.h"

#include <string>

namespace quorlen {

// Each address 0..1023: address, byte, bits, and the shadow value (always 0), tab-separated.
std::string Listing_All_CardByte(const Settings_Image& image);
// The flag bytes with their bit labels.
std::string Listing_Flag_Bytes(const Settings_Image& image);
// A map block at `base`: its size and axis steps, then one line a row of address:value.
std::string Listing_Map_Block(const Settings_Image& image, int base);
// The twelve analogue input selections, 884 to 895.
std::string Listing_Analog_Selections(const Settings_Image& image);

} // namespace quorlen
