#include "link/qt/qt_serial_line.h"

#include "core/run_error.h"

#include <QSerialPort>

#include <cerrno>
#include <cmath>
#include <grp.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorlen {

namespace {

// USB adapters hold received characters back for their latency timer (16 ms on FTDI by
// default), which would dominate every short exchange. A pseudo-terminal has no such setting.
bool Request_Low_Latency(int fd) {
    serial_struct settings{};
    if (ioctl(fd, TIOCGSERIAL, &settings) != 0) return false;
    settings.flags |= ASYNC_LOW_LATENCY;
    return ioctl(fd, TIOCSSERIAL, &settings) == 0;
}

// The group whose members may use the device, as the advice names it.
std::string Group_Granting(const std::string& path) {
    struct stat st {};
    if (stat(path.c_str(), &st) != 0) return "";
    const group* g = getgrgid(st.st_gid);
    return Group_To_Join(g != nullptr ? g->gr_name : "", st.st_mode);
}

Open_Result Classify(const QSerialPort& port, const std::string& path) {
    Open_Result result;
    result.text = port.errorString().toStdString();
    switch (port.error()) {
    case QSerialPort::DeviceNotFoundError:
        result.failure = Open_Failure::Missing;
        break;
    case QSerialPort::PermissionError:
        // Qt reports a lock held by another program in the same words as a device we may
        // not open; the file's own permissions tell them apart.
        if (access(path.c_str(), R_OK | W_OK) != 0 && errno == EACCES) {
            result.failure = Open_Failure::No_Permission;
            result.group = Group_Granting(path);
        } else {
            result.failure = Open_Failure::Busy;
        }
        break;
    case QSerialPort::UnsupportedOperationError:
        result.failure = Open_Failure::Not_A_Serial_Port;
        break;
    default:
        result.failure = Open_Failure::Other;
        break;
    }
    return result;
}

} // namespace

Qt_Serial_Line::Qt_Serial_Line() : port_(std::make_unique<QSerialPort>()) {}

Qt_Serial_Line::~Qt_Serial_Line() = default;

void Qt_Serial_Line::Set_Settings(const std::string& settings) {
    if (auto baud = Settings_Baud(settings)) baud_ = *baud;
}

Open_Result Qt_Serial_Line::Open() {
    if (port_->isOpen()) {
        if (!lost_) return {Open_Failure::Other, "Port already open", ""};
        port_->close();
    }
    lost_ = false;
    port_->setPortName(QString::fromStdString(path_));
    port_->setBaudRate(baud_);
    port_->setDataBits(QSerialPort::Data8);
    port_->setParity(QSerialPort::NoParity);
    port_->setStopBits(QSerialPort::OneStop);
    port_->setFlowControl(QSerialPort::NoFlowControl);
    if (!port_->open(QIODevice::ReadWrite)) {
        Open_Result result = Classify(*port_, path_);
        port_->clearError();
        return result;
    }
    low_latency_ = Request_Low_Latency(static_cast<int>(port_->handle()));
    return {};
}

void Qt_Serial_Line::Close() {
    if (port_->isOpen()) port_->close();
    lost_ = false;
}

bool Qt_Serial_Line::Is_Open() const {
    return port_->isOpen() && !lost_;
}

void Qt_Serial_Line::Require_Open() const {
    if (!Is_Open()) throw Run_Error(8012, "Port not open");
}

void Qt_Serial_Line::Note_Errors() {
    // A read that fails or ends means the far end has gone: a USB adapter pulled out, or
    // the simulator stopped.
    const auto error = port_->error();
    if (error == QSerialPort::ResourceError || error == QSerialPort::ReadError) lost_ = true;
    if (error != QSerialPort::NoError) port_->clearError();
}

void Qt_Serial_Line::Pull() {
    while (port_->waitForReadyRead(0)) {
    }
    Note_Errors();
}

void Qt_Serial_Line::Clear_Input() {
    Require_Open();
    port_->clear(QSerialPort::Input);
}

int Qt_Serial_Line::Bytes_Waiting() {
    Require_Open();
    Pull();
    return static_cast<int>(port_->bytesAvailable());
}

std::string Qt_Serial_Line::Read_All() {
    Require_Open();
    Pull();
    const QByteArray data = port_->readAll();
    return std::string(data.constData(), static_cast<std::size_t>(data.size()));
}

void Qt_Serial_Line::Write(std::string_view bytes) {
    Require_Open();
    const auto size = static_cast<qint64>(bytes.size());
    if (port_->write(bytes.data(), size) != size) throw Run_Error(8015, "Write failed");
    port_->flush();
    while (port_->bytesToWrite() > 0) {
        if (!port_->waitForBytesWritten(1000)) {
            Note_Errors();
            throw Run_Error(8015, "Write failed");
        }
    }
}

bool Qt_Serial_Line::Wait_For_Input(double seconds) {
    if (!Is_Open()) return false;
    if (port_->bytesAvailable() > 0) return true;
    // waitForReadyRead counts whole milliseconds, and rounding a guard of a few character
    // times up to one would cost more than the characters it waits for; the descriptor is
    // waited on to the microsecond, and Qt then takes what came.
    if (seconds > 0) {
        const double whole = std::floor(seconds);
        timespec timeout{static_cast<time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
        pollfd pfd{static_cast<int>(port_->handle()), POLLIN, 0};
        ppoll(&pfd, 1, &timeout, nullptr);
    }
    const bool got = port_->waitForReadyRead(0);
    Note_Errors();
    return got;
}

Line_Losses Qt_Serial_Line::Losses() {
    Line_Losses losses;
    if (!port_->isOpen()) return losses;
    // Counted since the driver loaded; the caller compares two looks, so the origin is moot.
    serial_icounter_struct counts{};
    if (ioctl(static_cast<int>(port_->handle()), TIOCGICOUNT, &counts) == 0) {
        losses.overrun = counts.overrun;
        losses.buffer_overrun = counts.buf_overrun;
    }
    return losses;
}

} // namespace quorlen
