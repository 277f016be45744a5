// The real simulator on its pseudo-terminal, opened the way a serial port is opened.

#include "qxs_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace boxsim {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

class Boxsim_Process {
public:
    explicit Boxsim_Process(const std::vector<std::string>& args) {
        int out[2];
        if (pipe(out) != 0) return;
        pid_ = fork();
        if (pid_ == 0) {
            dup2(out[1], STDOUT_FILENO);
            close(out[0]);
            close(out[1]);
            std::vector<char*> argv{const_cast<char*>(BOXSIM_EXECUTABLE)};
            for (const auto& a : args)
                argv.push_back(const_cast<char*>(a.c_str()));
            argv.push_back(nullptr);
            execv(BOXSIM_EXECUTABLE, argv.data());
            _exit(127);
        }
        close(out[1]);
        stdout_ = out[0];
    }
    Boxsim_Process(const Boxsim_Process&) = delete;
    Boxsim_Process& operator=(const Boxsim_Process&) = delete;
    ~Boxsim_Process() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        if (stdout_ >= 0) close(stdout_);
    }

    // The first line it prints, or "" when none comes in time.
    std::string First_Line(std::chrono::milliseconds timeout = 5s) {
        std::string line;
        const auto end = Clock::now() + timeout;
        while (Clock::now() < end && line.find('\n') == std::string::npos) {
            pollfd pfd{stdout_, POLLIN, 0};
            if (poll(&pfd, 1, 20) <= 0) continue;
            char c;
            if (read(stdout_, &c, 1) != 1) break;
            line += c;
        }
        return line;
    }

    // Exit status, or -1 when it did not end in time (it is then killed).
    int Wait(std::chrono::milliseconds timeout = 5s) {
        const auto end = Clock::now() + timeout;
        int status = 0;
        while (Clock::now() < end) {
            if (waitpid(pid_, &status, WNOHANG) == pid_) {
                pid_ = -1;
                return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            }
            std::this_thread::sleep_for(5ms);
        }
        return -1;
    }
    int Stop() {
        kill(pid_, SIGTERM);
        return Wait();
    }

private:
    pid_t pid_ = -1;
    int stdout_ = -1;
};

int Open_Port(const std::string& path) {
    const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (fd < 0) return fd;
    termios tio{};
    tcgetattr(fd, &tio);
    cfmakeraw(&tio);
    cfsetspeed(&tio, B115200);
    tcsetattr(fd, TCSANOW, &tio);
    return fd;
}

// Sends and collects until `expected` characters, the time-out, or the line going away.
std::string Exchange(int fd, const std::string& command, std::size_t expected,
                     std::chrono::milliseconds timeout = 2s) {
    if (!command.empty() && write(fd, command.data(), command.size()) < 0) return "<write failed>";
    std::string answer;
    const auto end = Clock::now() + timeout;
    while (answer.size() < expected && Clock::now() < end) {
        pollfd pfd{fd, POLLIN, 0};
        if (poll(&pfd, 1, 10) <= 0) continue;
        char buffer[4096];
        const ssize_t n = read(fd, buffer, sizeof buffer);
        if (n > 0)
            answer.append(buffer, static_cast<std::size_t>(n));
        else if (n == 0 || errno != EAGAIN)
            break;
    }
    return answer;
}

std::string Read_File(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

class BoxsimProcess : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/boxsim_test_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir_ = pattern;
        link_ = (dir_ / "ttyBOX").string();
    }
    void TearDown() override { fs::remove_all(dir_); }

    fs::path dir_;
    std::string link_;
};

TEST_F(BoxsimProcess, ServesReopensAndWritesCommittedMemoryOnStop) {
    Image image{};
    image[255] = 42;
    image[300] = 5;
    std::ofstream(dir_ / "in.qxs", std::ios::binary) << Format_Qxs(image, "start");
    const auto trace = dir_ / "trace.txt";
    const auto out = dir_ / "out.qxs";
    Boxsim_Process box({"--link", link_, "--image", (dir_ / "in.qxs").string(), "--image-out", out.string(),
                        "--trace", trace.string(), "--banner-pad", "200"});
    ASSERT_EQ(box.First_Line(), "ready " + link_ + "\n");

    // The program closes its port between operations; the box must not notice.
    for (int session = 0; session < 3; ++session) {
        const int fd = Open_Port(link_);
        ASSERT_GE(fd, 0) << session;
        const std::string banner = Exchange(fd, "v", 200);
        ASSERT_EQ(banner.size(), 200u) << session;
        EXPECT_NE(banner.find("SC ID 042"), std::string::npos);
        close(fd);
    }

    const int fd = Open_Port(link_);
    ASSERT_GE(fd, 0);
    for (const auto& [send, answer] : std::vector<std::pair<std::string, std::string>>{{"b", "b"},
                                                                                       {"w", "w$"},
                                                                                       {"0", "0"},
                                                                                       {"1", "1"},
                                                                                       {"2", "2"},
                                                                                       {"C", "C"},
                                                                                       {"9", "9"},
                                                                                       {"9", "9w"},
                                                                                       {"$", "$\r\n>"},
                                                                                       {"ue", "ue*"},
                                                                                       {"b", "b"},
                                                                                       {"w", "w$"},
                                                                                       {"0", "0"},
                                                                                       {"1", "1"},
                                                                                       {"2", "2"},
                                                                                       {"E", "E"},
                                                                                       {"7", "7"},
                                                                                       {"7", "7w"},
                                                                                       {"$", "$\r\n>"}})
        ASSERT_EQ(Exchange(fd, send, answer.size()), answer) << send;
    close(fd);

    EXPECT_EQ(box.Stop(), 0);
    EXPECT_FALSE(fs::exists(fs::symlink_status(link_))) << "the link goes with the box";

    std::string error;
    const auto written = Load_Qxs(out.string(), error);
    ASSERT_TRUE(written) << error;
    EXPECT_EQ((*written)[300], 0x99);
    EXPECT_EQ((*written)[302], 0x00) << "written but never committed";
    EXPECT_EQ((*written)[255], 42);

    const std::string log = Read_File(trace);
    EXPECT_NE(log.find(" in \"v\"\n"), std::string::npos) << log.substr(0, 300);
    EXPECT_NE(log.find(" out \"v\\r\\nVELMORA ECU "), std::string::npos) << log.substr(0, 300);
    EXPECT_NE(log.find(" out \"ue*\"\n"), std::string::npos);
}

TEST_F(BoxsimProcess, HangupFaultClosesTheLineAndEnds) {
    Boxsim_Process box({"--link", link_, "--fault", "hangup@50", "--trace", (dir_ / "trace.txt").string()});
    ASSERT_EQ(box.First_Line(), "ready " + link_ + "\n");
    const int fd = Open_Port(link_);
    ASSERT_GE(fd, 0);
    const std::string answer = Exchange(fd, "v", 200);
    EXPECT_EQ(answer.size(), 50u);
    close(fd);
    EXPECT_EQ(box.Wait(), 0) << "a hang-up stops the simulator by itself";
    EXPECT_NE(Read_File(dir_ / "trace.txt").find("fault hang up after 50 characters"), std::string::npos);
}

TEST_F(BoxsimProcess, WireBaudPacesTheAnswer) {
    Boxsim_Process box({"--link", link_, "--wire-baud", "9600", "--banner-pad", "200"});
    ASSERT_EQ(box.First_Line(), "ready " + link_ + "\n");
    const int fd = Open_Port(link_);
    ASSERT_GE(fd, 0);
    const auto start = Clock::now();
    const std::string banner = Exchange(fd, "v", 200);
    const auto elapsed = Clock::now() - start;
    close(fd);
    ASSERT_EQ(banner.size(), 200u);
    // 201 characters of 10 bits at 9600 baud, the command's own included: 209 ms.
    EXPECT_GE(elapsed, 200ms);
    EXPECT_LT(elapsed, 1500ms);
    EXPECT_EQ(box.Stop(), 0);
}

TEST_F(BoxsimProcess, RefusesABadCommandLine) {
    Boxsim_Process box({"--link", link_, "--fault", "flood"});
    EXPECT_EQ(box.Wait(), 2);
    EXPECT_FALSE(fs::exists(fs::symlink_status(link_)));
}

} // namespace
} // namespace boxsim
