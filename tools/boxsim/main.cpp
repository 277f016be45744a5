// boxsim: the engine box on a pseudo-terminal. The protocol lives in Box; this file is the
// line around it: the pty, the pacing of a real wire, the trace, the faults and a clean stop.

#include "box.h"
#include "faults.h"
#include "line_speed.h"
#include "options.h"
#include "qxs_file.h"
#include "trace.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <poll.h>
#include <sstream>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace boxsim {
namespace {

constexpr const char* Default_Settings_Name = "RZ400_800M3_Default_Settings.qxs";
constexpr const char* Default_Ini_Name = "RZ400_800M3.ini";
constexpr int Default_Dataset = 201;
constexpr Time Spin_Below = std::chrono::microseconds(500);

volatile std::sig_atomic_t stop_signal = 0;
void On_Signal(int signal) {
    stop_signal = signal;
}

Time Now() {
    return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now().time_since_epoch());
}

std::string Executable_Dir() {
    char path[4096];
    const ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
    if (n <= 0) return ".";
    std::string dir(path, static_cast<std::size_t>(n));
    const auto slash = dir.rfind('/');
    return slash == std::string::npos ? "." : dir.substr(0, slash);
}

bool Exists(const std::string& path) {
    struct stat st {};
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

// A shipped data file beside the executable, or in the installed data folder; "" when neither.
std::string Shipped_File(const std::string& name) {
    const std::string dir = Executable_Dir();
    for (const std::string& candidate : {dir + "/" + name, dir + "/../share/quorlen/" + name})
        if (Exists(candidate)) return candidate;
    return "";
}

// The engine layouts of the configuration file; a named file that can't be read is an error,
// a missing shipped one leaves the stream its default wheel.
bool Load_Layouts(const Options& options, Box_Config& config, std::string& error) {
    const std::string path = options.ini_path.empty() ? Shipped_File(Default_Ini_Name) : options.ini_path;
    if (path.empty()) return true;
    config.hs.layouts = Load_Engine_Layouts(path, error);
    if (config.engine.enabled) {
        std::ifstream in(path, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        config.engine.sensors = Parse_Tuning_Sensors(text.str());
    }
    return !config.hs.layouts.empty() || options.ini_path.empty();
}

// The images the box starts with; false with `error` set when a named file is bad.
bool Load_Images(const Options& options, Box_Config& config, std::string& error) {
    std::string path = options.image_path;
    if (path.empty()) path = Shipped_File(Default_Settings_Name);
    if (path.empty()) {
        config.image.fill(0);
        config.image[Dataset_Byte] =
            static_cast<std::uint8_t>(config.dataset >= 0 ? config.dataset : Default_Dataset);
    } else {
        auto image = Load_Qxs(path, error);
        if (!image) return false;
        config.image = *image;
    }
    for (auto [address, value] : options.errors)
        config.image[address] = static_cast<std::uint8_t>(value);

    config.slave_present = options.slave;
    if (options.slave) {
        if (options.slave_path.empty()) {
            config.slave_image = config.image;
            config.slave_image[Mode_Byte] |= Slave_Mark;
            for (int a = First_Counter; a <= Last_Counter; ++a)
                config.slave_image[a] = 0;
        } else {
            auto image = Load_Qxs(options.slave_path, error);
            if (!image) return false;
            config.slave_image = *image;
        }
        for (auto [address, value] : options.slave_errors)
            config.slave_image[address] = static_cast<std::uint8_t>(value);
    }
    return true;
}

struct Pty {
    int master = -1;
    int slave = -1; // held open so that the program closing its port is no hang-up for us
    std::string name;
};

bool Open_Pty(Pty& pty, std::string& error) {
    pty.master = posix_openpt(O_RDWR | O_NOCTTY);
    if (pty.master < 0 || grantpt(pty.master) != 0 || unlockpt(pty.master) != 0) {
        error = std::string("pseudo-terminal: ") + std::strerror(errno);
        return false;
    }
    char name[256];
    if (ptsname_r(pty.master, name, sizeof name) != 0) {
        error = std::string("ptsname: ") + std::strerror(errno);
        return false;
    }
    pty.name = name;
    pty.slave = open(name, O_RDWR | O_NOCTTY);
    if (pty.slave < 0) {
        error = pty.name + ": " + std::strerror(errno);
        return false;
    }
    // Raw 8N1 like the box's UART; the program sets its own speed, which a pty accepts and ignores.
    termios tio{};
    tcgetattr(pty.slave, &tio);
    cfmakeraw(&tio);
    tio.c_cflag |= CLOCAL | CREAD;
    cfsetspeed(&tio, B115200);
    tcsetattr(pty.slave, TCSANOW, &tio);
    fcntl(pty.master, F_SETFL, fcntl(pty.master, F_GETFL) | O_NONBLOCK);
    return true;
}

bool Make_Link(const std::string& link, const std::string& target, std::string& error) {
    struct stat st {};
    if (lstat(link.c_str(), &st) == 0) {
        if (!S_ISLNK(st.st_mode)) {
            error = link + " exists and is not a symbolic link";
            return false;
        }
        unlink(link.c_str());
    }
    if (symlink(target.c_str(), link.c_str()) != 0) {
        error = link + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

void Remove_Link(const std::string& link, const std::string& target) {
    char points_to[4096];
    const ssize_t n = readlink(link.c_str(), points_to, sizeof points_to - 1);
    if (n > 0 && std::string(points_to, static_cast<std::size_t>(n)) == target) unlink(link.c_str());
}

timespec To_Timespec(Time t) {
    if (t < Time::zero()) t = Time::zero();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(t);
    return timespec{static_cast<time_t>(seconds.count()), static_cast<long>((t - seconds).count())};
}

// Serves the box on the line until a signal or a hang-up.
class Line {
public:
    Line(const Options& options, Box& box, Pty& pty, Trace& trace)
        : box_(box), pty_(pty), trace_(trace), faults_(options.line_faults),
          char_time_(options.wire_baud > 0 ? Time(10'000'000'000LL / options.wire_baud) : Time::zero()),
          wire_baud_(options.wire_baud) {}

    void Serve(const sigset_t& wait_mask) {
        char buffer[4096];
        while (!stop_signal) {
            const Time now = Now();
            Deliver_Input(now);
            Queue(box_.Tick(now), now);
            const bool blocked = Write_Due(Now());
            if (output_.empty() && hang_up_) {
                Let_The_Reader_Take_It();
                return;
            }
            if (failed_) return;

            const Time next = Next_Wake(blocked);
            timespec timeout{};
            if (next != Time::max()) timeout = To_Timespec(next - Now());
            // The wire is paced to the bit: short waits are spun, because a timed sleep
            // overshoots by tens of microseconds, which the pacing would charge to the program.
            if (next != Time::max() && next - Now() < Spin_Below) timeout = timespec{};
            pollfd pfd{pty_.master, static_cast<short>(POLLIN | (blocked ? POLLOUT : 0)), 0};
            const int r = ppoll(&pfd, 1, next == Time::max() ? nullptr : &timeout, &wait_mask);
            if (r < 0) {
                if (errno == EINTR) continue;
                std::cerr << "boxsim: poll: " << std::strerror(errno) << "\n";
                return;
            }
            if (pfd.revents & POLLIN) {
                const ssize_t n = read(pty_.master, buffer, sizeof buffer);
                if (n > 0) Receive(std::string_view(buffer, static_cast<std::size_t>(n)), Now());
            } else if (pfd.revents & (POLLHUP | POLLERR)) {
                // Only when no slave side is open at all; ours should prevent it. Do not spin.
                usleep(10000);
            }
        }
    }

private:
    // A pty throws away what the reader has not taken when the master closes, but on a wire
    // the characters before a disconnect do arrive. Wait, within reason, until they are read.
    void Let_The_Reader_Take_It() const {
        const Time give_up = Now() + std::chrono::seconds(1);
        usleep(20000); // the pty moves written data to the reader's side asynchronously
        int waiting = 0;
        while (Now() < give_up && ioctl(pty_.slave, FIONREAD, &waiting) == 0 && waiting > 0)
            usleep(5000);
    }

    void Receive(std::string_view bytes, Time now) {
        trace_.Data(now, "in", bytes);
        // On a paced line a character reaches the box only when its last bit has.
        for (char c : bytes) {
            const Time arrival = char_time_ > Time::zero() ? std::max(now, input_free_) + char_time_ : now;
            input_free_ = arrival;
            input_.emplace_back(arrival, c);
        }
    }

    void Deliver_Input(Time now) {
        std::string due;
        while (!input_.empty() && input_.front().first <= now) {
            due += input_.front().second;
            input_.pop_front();
        }
        if (due.empty()) return;
        // The box runs at the speed of its line: the paced one, else the one the program set.
        const long baud = wire_baud_ > 0 ? wire_baud_ : Terminal_Baud(pty_.slave);
        if (baud > 0) box_.Set_Line_Baud(baud);
        Queue(box_.Receive(due, now), now);
    }

    void Queue(const std::string& out, Time now) {
        if (out.empty() || hang_up_) return;
        auto result = faults_.Filter(out);
        for (const auto& note : result.notes)
            trace_.Note(now, note);
        if (!result.out.empty()) output_.push_back({now + faults_.Delay(), std::move(result.out)});
        if (result.hang_up) hang_up_ = true;
    }

    // Writes what the line has finished sending by now; true when the pty would block.
    bool Write_Due(Time now) {
        while (!output_.empty()) {
            Chunk& chunk = output_.front();
            std::size_t n = chunk.bytes.size();
            const Time start = std::max(line_free_, chunk.not_before);
            if (char_time_ > Time::zero()) {
                if (start + char_time_ > now) return false;
                n = std::min<std::size_t>(n, static_cast<std::size_t>((now - start) / char_time_));
            } else if (chunk.not_before > now) {
                return false;
            }
            const ssize_t written = write(pty_.master, chunk.bytes.data(), n);
            if (written < 0) {
                if (errno == EINTR) continue;
                if (errno == EAGAIN) return true;
                std::cerr << "boxsim: write: " << std::strerror(errno) << "\n";
                failed_ = true;
                return false;
            }
            const auto w = static_cast<std::size_t>(written);
            trace_.Data(Now(), "out", std::string_view(chunk.bytes).substr(0, w));
            if (char_time_ > Time::zero()) line_free_ = start + static_cast<Time::rep>(w) * char_time_;
            chunk.bytes.erase(0, w);
            if (chunk.bytes.empty()) output_.pop_front();
        }
        return false;
    }

    Time Next_Wake(bool blocked) const {
        Time next = box_.Next_Deadline();
        if (!input_.empty()) next = std::min(next, input_.front().first);
        if (!output_.empty() && !blocked)
            next = std::min(next, std::max(line_free_, output_.front().not_before) + char_time_);
        return next;
    }

    struct Chunk {
        Time not_before;
        std::string bytes;
    };

    Box& box_;
    Pty& pty_;
    Trace& trace_;
    Line_Faults faults_;
    Time char_time_;
    long wire_baud_;
    std::deque<std::pair<Time, char>> input_;
    std::deque<Chunk> output_;
    Time input_free_{};
    Time line_free_{};
    bool hang_up_ = false;
    bool failed_ = false;
};

int Run(int argc, char** argv) {
    std::string error;
    const auto options = Parse_Options(std::vector<std::string>(argv + 1, argv + argc), error);
    if (!options) {
        std::cerr << "boxsim: " << error << "\n" << Usage();
        return 2;
    }
    if (options->help) {
        std::cout << Usage();
        return 0;
    }

    Box_Config config = options->box;
    if (!Load_Images(*options, config, error) || !Load_Layouts(*options, config, error)) {
        std::cerr << "boxsim: " << error << "\n";
        return 2;
    }
    Box box(config, options->box_faults);

    const Time start = Now();
    Trace trace;
    if (!options->trace.empty() && !trace.Open(options->trace, start, error)) {
        std::cerr << "boxsim: " << error << "\n";
        return 2;
    }

    // Signals are blocked except inside ppoll, so a stop can never fall between test and wait.
    sigset_t blocked;
    sigset_t wait_mask;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGINT);
    sigaddset(&blocked, SIGTERM);
    sigaddset(&blocked, SIGHUP);
    sigprocmask(SIG_BLOCK, &blocked, &wait_mask);
    struct sigaction action {};
    action.sa_handler = On_Signal;
    sigemptyset(&action.sa_mask);
    for (int s : {SIGINT, SIGTERM, SIGHUP})
        sigaction(s, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    Pty pty;
    if (!Open_Pty(pty, error) || !Make_Link(options->link, pty.name, error)) {
        std::cerr << "boxsim: " << error << "\n";
        return 1;
    }
    std::cout << "ready " << options->link << std::endl;

    Line line(*options, box, pty, trace);
    line.Serve(wait_mask);

    // Closing the master is what the program sees as the box going away.
    close(pty.master);
    close(pty.slave);
    Remove_Link(options->link, pty.name);

    int status = 0;
    if (!options->image_out.empty() && !Save_Qxs(options->image_out, box.Committed(), error)) {
        std::cerr << "boxsim: " << error << "\n";
        status = 1;
    }
    return status;
}

} // namespace
} // namespace boxsim

int main(int argc, char** argv) {
    return boxsim::Run(argc, argv);
}
