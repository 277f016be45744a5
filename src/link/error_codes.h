#pragma once
// The box's fault counters: twelve bytes at the end of the image, each with a counter for the
// high side of a check in its low nibble and one for the low side in its high nibble.

#include "core/program_state.h"
#include "image/settings_image.h"
#include "link/rw_state.h"

#include <string>

namespace quorlen {

struct Settings_Context;

inline constexpr int First_Error_Counter = 1011;
inline constexpr int Last_Error_Counter = 1022;

// The words of one counter byte, a line for each side that counted.
std::string Err_text(int address, int value);

// Error_Codes_txt: the master's counters, then the slave's.
void Show_Error_Code(const Settings_Image& image, Form_Texts& texts);
void Show_Error_Code(const Image_Array<std::uint8_t>& master, const Image_Array<std::uint8_t>& slave,
                     Form_Texts& texts);

// Shows the counters beside the report; the box is smaller when the report is on show. A
// verify shows the counters the box holds (TempByte), which the program's image need not.
void Show_Error_Codes(Settings_Context& s, const Image_Array<std::uint8_t>& master);
void Hide_Error_Codes(Rw_State& rw);

// Zeroes the counters in the program and writes just them to the box.
void Clear_Err_Counters_cmd_Click(Settings_Context& s);

} // namespace quorlen
