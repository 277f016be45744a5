#pragma once
// Product identity: everything the program calls itself follows from one selector pair set
// at start-up, so a build for another product changes it in one place.

#include "core/program_state.h"

namespace quorlen {

void Set_Program_Identity(Program_State& state, int brand);
void Set_custom_logfilename(Program_State& state);

} // namespace quorlen
