#pragma once
// The real box simulator on a pseudo-terminal in a folder of its own, for tests and
// benchmarks of the link. Stopped (and its link removed) when the object goes.

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace quorlen::test {

class Boxsim_Run {
public:
    // Starts `executable --link DIR/box ARGS...` and waits for its "ready" line.
    Boxsim_Run(const std::string& executable, const std::vector<std::string>& args) {
        char pattern[] = "/tmp/quorlen-link-XXXXXX";
        if (mkdtemp(pattern) == nullptr) return;
        dir_ = pattern;
        link_ = dir_ + "/box";
        int out[2];
        if (pipe(out) != 0) return;
        pid_ = fork();
        if (pid_ == 0) {
            dup2(out[1], STDOUT_FILENO);
            close(out[0]);
            close(out[1]);
            std::vector<std::string> all{executable, "--link", link_};
            all.insert(all.end(), args.begin(), args.end());
            std::vector<char*> argv;
            for (auto& a : all)
                argv.push_back(a.data());
            argv.push_back(nullptr);
            execv(executable.c_str(), argv.data());
            _exit(127);
        }
        close(out[1]);
        ready_ = Read_Line(out[0]) == "ready " + link_;
        close(out[0]);
    }
    Boxsim_Run(const Boxsim_Run&) = delete;
    Boxsim_Run& operator=(const Boxsim_Run&) = delete;
    ~Boxsim_Run() {
        Stop();
        std::error_code ec;
        if (!dir_.empty()) std::filesystem::remove_all(dir_, ec);
    }

    bool Ready() const { return ready_; }
    const std::string& Link() const { return link_; }
    const std::string& Dir() const { return dir_; }

    // SIGTERM, then SIGKILL when it does not go within 2 s.
    void Stop() {
        if (pid_ <= 0) return;
        kill(pid_, SIGTERM);
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        while (waitpid(pid_, nullptr, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > end) {
                kill(pid_, SIGKILL);
                waitpid(pid_, nullptr, 0);
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        pid_ = -1;
    }

private:
    static std::string Read_Line(int fd) {
        std::string line;
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (std::chrono::steady_clock::now() < end) {
            pollfd pfd{fd, POLLIN, 0};
            if (poll(&pfd, 1, 50) <= 0) continue;
            char c;
            if (read(fd, &c, 1) != 1 || c == '\n') break;
            line += c;
        }
        return line;
    }

    pid_t pid_ = -1;
    std::string dir_;
    std::string link_;
    bool ready_ = false;
};

} // namespace quorlen::test
