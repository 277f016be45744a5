#pragma once
// The serial line on a QSerialPort. The link spins on it without the event loop: reads pull
// from the driver directly, and the wait blocks on the descriptor until a character comes.

#include "link/serial_line.h"

#include <memory>

class QSerialPort;

namespace quorlen {

class Qt_Serial_Line final : public Serial_Line {
public:
    Qt_Serial_Line();
    ~Qt_Serial_Line() override;
    Qt_Serial_Line(const Qt_Serial_Line&) = delete;
    Qt_Serial_Line& operator=(const Qt_Serial_Line&) = delete;

    void Set_Port(const std::string& path) override { path_ = path; }
    std::string Port() const override { return path_; }
    void Set_Settings(const std::string& settings) override;
    Open_Result Open() override;
    void Close() override;
    bool Is_Open() const override;
    void Clear_Input() override;
    int Bytes_Waiting() override;
    std::string Read_All() override;
    void Write(std::string_view bytes) override;
    bool Wait_For_Input(double seconds) override;
    Line_Losses Losses() override;

    // The driver was asked for low latency and agreed (a USB adapter's latency timer);
    // false on a pseudo-terminal, which has none.
    bool Low_Latency() const { return low_latency_; }

private:
    void Require_Open() const;
    void Pull();
    void Note_Errors();

    std::unique_ptr<QSerialPort> port_;
    std::string path_;
    std::int32_t baud_ = 115200;
    bool lost_ = false;
    bool low_latency_ = false;
};

} // namespace quorlen
