// A port the user may not open, tried by the programs themselves as that user: the message
// must say what to do (join the group, with the command), not merely that it failed.
//
// The port is a pseudo-terminal set up like a USB adapter's device: root's, group dialout,
// mode 0660. Run as root (CI), the programs run as "nobody", who is not in dialout. Run as
// a user, the user's own terminal is shut to everyone (mode 0) instead.

#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <grp.h>
#include <pwd.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace quorlen {
namespace {

class Port_Permission : public ::testing::Test {
protected:
    void SetUp() override {
        master_ = posix_openpt(O_RDWR | O_NOCTTY);
        ASSERT_GE(master_, 0);
        ASSERT_EQ(grantpt(master_), 0);
        ASSERT_EQ(unlockpt(master_), 0);
        port_ = ptsname(master_);
        if (geteuid() == 0) {
            const group* dialout = getgrnam("dialout");
            const passwd* nobody = getpwnam("nobody");
            ASSERT_NE(dialout, nullptr);
            ASSERT_NE(nobody, nullptr);
            ASSERT_EQ(chown(port_.c_str(), 0, dialout->gr_gid), 0);
            ASSERT_EQ(chmod(port_.c_str(), 0660), 0);
            run_as_ = nobody->pw_uid;
            run_as_group_ = nobody->pw_gid;
        } else {
            ASSERT_EQ(chmod(port_.c_str(), 0), 0);
        }
        // The program's data folder must be the other user's to write.
        std::filesystem::permissions(dir_.Path(), std::filesystem::perms::all);
    }
    void TearDown() override {
        if (master_ >= 0) close(master_);
    }

    // Runs `args` as the user who may not open the port; what it wrote to standard error,
    // read until `wanted` shows or `seconds` pass, when the program is stopped.
    std::string Run_Denied(const std::vector<std::string>& args, const std::string& wanted, double seconds) {
        int pipe_fds[2];
        if (pipe(pipe_fds) != 0) return "pipe failed";
        const pid_t child = fork();
        if (child == 0) {
            dup2(pipe_fds[1], STDERR_FILENO);
            dup2(pipe_fds[1], STDOUT_FILENO);
            close(pipe_fds[0]);
            if (run_as_ != 0) {
                if (setgroups(0, nullptr) != 0 || setgid(run_as_group_) != 0 || setuid(run_as_) != 0)
                    _exit(90);
            }
            std::vector<char*> argv;
            for (const std::string& a : args)
                argv.push_back(const_cast<char*>(a.c_str()));
            argv.push_back(nullptr);
            setenv("QT_QPA_PLATFORM", "offscreen", 1);
            unsetenv("XDG_RUNTIME_DIR");
            execv(argv[0], argv.data());
            _exit(91);
        }
        close(pipe_fds[1]);
        fcntl(pipe_fds[0], F_SETFL, O_NONBLOCK);
        std::string output;
        const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
        bool exited = false;
        while (std::chrono::steady_clock::now() < end) {
            char buffer[4096];
            const ssize_t n = read(pipe_fds[0], buffer, sizeof buffer);
            if (n > 0) output.append(buffer, static_cast<std::size_t>(n));
            if (output.find(wanted) != std::string::npos) break;
            int status = 0;
            if (n <= 0 && waitpid(child, &status, WNOHANG) == child) {
                exited = true;
                break;
            }
            if (n <= 0) std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        if (!exited) {
            kill(child, SIGTERM);
            waitpid(child, nullptr, 0);
        }
        close(pipe_fds[0]);
        return output;
    }

    test::Temp_Dir dir_;
    int master_ = -1;
    std::string port_;
    uid_t run_as_ = 0;
    gid_t run_as_group_ = 0;
};

TEST_F(Port_Permission, TheCommandLineNamesTheGroupAndTheCommandToJoinIt) {
    const std::string out = Run_Denied({QUORLEN_CLI, "info", "--port", port_}, "$USER", 20);
    EXPECT_NE(out.find(port_ + ": permission denied"), std::string::npos) << out;
    EXPECT_NE(out.find("'dialout'"), std::string::npos) << out;
    EXPECT_NE(out.find("sudo usermod -aG dialout $USER"), std::string::npos) << out;
}

// The main window's connection check is what a user meets first: the message comes before
// them (unattended, the program reports its message boxes on standard error).
TEST_F(Port_Permission, TheProgramTellsTheUserOnItsFirstConnectionCheck) {
    const std::string out = Run_Denied(
        {QUORLEN_GUI, "--unattended", "--app-path", dir_.Path().string(), "--port", port_}, "$USER", 60);
    const std::size_t box = out.find("[inform] " + port_ + ": permission denied");
    ASSERT_NE(box, std::string::npos) << out;
    EXPECT_NE(out.find("sudo usermod -aG dialout $USER", box), std::string::npos) << out;
}

} // namespace
} // namespace quorlen
