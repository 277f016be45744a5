#pragma once
// The speed the other end set on a pseudo-terminal. A pty carries bytes at any speed, but
// the box's high-speed stream sends as fast as its line goes, so boxsim reads the speed the
// program chose for its port, as the box would run at the speed it was set up for.

namespace boxsim {

// Bits a second set on the terminal `fd`; 0 when it can't be read.
long Terminal_Baud(int fd);

} // namespace boxsim
