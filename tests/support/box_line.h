#pragma once
// The simulator's box behind a serial line, in the test's process and on the test's clock:
// what the program writes reaches the box at once, what the box sends arrives a character
// time apart (after the adapter's latency, if one is set), and waiting for input moves the
// clock on to the next thing that happens. No
// real time passes, so an exchange and the stream around it run exactly as on a paced wire.

#include "box.h"
#include "core/run_error.h"
#include "link/serial_line.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace quorlen::test {

class Box_Line final : public Serial_Line {
public:
    // `clock` is the test's clock in seconds; `baud` 0 delivers the box's output at once.
    Box_Line(boxsim::Box& box, double& clock, long baud = 115200)
        : box_(box), clock_(clock), char_time_(baud > 0 ? 10.0 / static_cast<double>(baud) : 0) {}

    std::vector<std::string> written;
    int opens = 0;
    // What the box sends reaches the program this much later, as through a USB adapter that
    // hands on what it has received in batches.
    double latency = 0;

    void Set_Port(const std::string& path) override { port_ = path; }
    std::string Port() const override { return port_; }
    void Set_Settings(const std::string&) override {}
    Open_Result Open() override {
        open_ = true;
        ++opens;
        arriving_.clear();
        return {};
    }
    void Close() override { open_ = false; }
    bool Is_Open() const override { return open_; }
    void Clear_Input() override {
        Need_Open();
        Pump();
        received_.clear();
    }
    int Bytes_Waiting() override {
        Need_Open();
        Pump();
        return static_cast<int>(received_.size());
    }
    std::string Read_All() override {
        Need_Open();
        Pump();
        std::string all;
        all.swap(received_);
        return all;
    }
    void Write(std::string_view bytes) override {
        Need_Open();
        written.emplace_back(bytes);
        Pump();
        // The characters go out one after another; the box hears each when its last bit has.
        for (char c : bytes) {
            clock_ += char_time_;
            Queue(box_.Receive(std::string_view(&c, 1), Box_Time()));
        }
    }
    bool Wait_For_Input(double seconds) override {
        const double until = clock_ + seconds;
        Pump();
        while (received_.empty() && clock_ < until) {
            double next = until;
            if (!arriving_.empty()) next = std::min(next, arriving_.front().at);
            const auto deadline = box_.Next_Deadline();
            if (deadline != boxsim::Time::max())
                next = std::min(next, std::chrono::duration<double>(deadline).count() + 1000.0);
            clock_ = std::min(until, std::max(next, clock_ + 1e-6));
            Pump();
        }
        return !received_.empty();
    }

    // Lets the box's time-driven output (the stream) happen up to the clock.
    void Pump() {
        Queue(box_.Tick(Box_Time()));
        while (!arriving_.empty() && arriving_.front().at <= clock_ + 1e-12) {
            if (open_) received_ += arriving_.front().c;
            arriving_.pop_front();
        }
    }
    std::string All_Written() const {
        std::string all;
        for (const auto& w : written)
            all += w;
        return all;
    }

private:
    struct Arrival {
        double at;
        char c;
    };
    // The box's clock starts at 1000 s on the test's.
    boxsim::Time Box_Time() const {
        return std::chrono::duration_cast<boxsim::Time>(std::chrono::duration<double>(clock_ - 1000.0));
    }
    void Queue(const std::string& out) {
        for (char c : out) {
            line_free_ = std::max(line_free_, clock_) + char_time_;
            arriving_.push_back({line_free_ + latency, c});
        }
    }
    void Need_Open() const {
        if (!open_) throw Run_Error(8012, "Port not open");
    }

    boxsim::Box& box_;
    double& clock_;
    double char_time_;
    double line_free_ = 0;
    bool open_ = false;
    std::deque<Arrival> arriving_;
    std::string received_;
    std::string port_;
};

} // namespace quorlen::test
