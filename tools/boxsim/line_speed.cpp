// Alone in its file: the kernel's termios2 (which carries any speed, 625000 too) can't share a
// translation unit with the C library's termios.
#include "line_speed.h"

#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace boxsim {

long Terminal_Baud(int fd) {
    termios2 settings{};
    if (ioctl(fd, TCGETS2, &settings) != 0) return 0;
    return static_cast<long>(settings.c_ospeed);
}

} // namespace boxsim
