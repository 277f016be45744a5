#include "link/serial_port_list.h"

#include <algorithm>

namespace quorlen {

std::string clsSerialPort::COMxString() const {
    return DevPath.empty() ? "COM" + std::to_string(COMx) : DevPath;
}

bool clsSerialPort::checkIfOpen() const {
    return platform_ == nullptr || platform_->Cannot_Open(DevPath);
}

bool clsSerialPort::CheckIfExist() const {
    return platform_ != nullptr && platform_->Exists(DevPath);
}

clsSerialPortList::clsSerialPortList(Port_Platform& platform, Port_Names& names,
                                     std::vector<std::string> simulator_links)
    : platform_(&platform), names_(names), simulator_links_(std::move(simulator_links)) {}

void clsSerialPortList::Add_Filtered(const clsSerialPort& p, bool CheckExist, bool CheckOpen) {
    if (CheckExist && !p.CheckIfExist()) return;
    if (CheckOpen && p.checkIfOpen()) return;
    ports_.push_back(p);
}

void clsSerialPortList::PopulateList(std::int16_t max_port, bool CheckExist, bool CheckOpen) {
    ports_.clear();
    for (int n = 1; n <= max_port; ++n) {
        clsSerialPort p(platform_);
        p.Name = "COM" + std::to_string(n);
        p.DevPath = names_.Path_Of(n);
        if (p.DevPath.empty()) continue;
        p.COMx = static_cast<std::int16_t>(n);
        Add_Filtered(p, CheckExist, CheckOpen);
    }
}

bool clsSerialPortList::Device_Walk(bool CheckExist, bool CheckOpen) {
    ports_.clear();
    std::vector<Found_Port> found;
    if (!platform_->Walk(found)) {
        ports_.clear();
        return false;
    }
    auto listed = [&found](const std::string& path) {
        return std::any_of(found.begin(), found.end(),
                           [&](const Found_Port& f) { return f.Location == path || f.Stable_Path == path; });
    };
    // The chosen port may be a path the system does not list (a pseudo-terminal); it stays
    // on offer so the selection survives. The simulator joins when it is running.
    std::vector<std::string> extra = names_.Registered();
    for (const std::string& link : simulator_links_)
        if (platform_->Exists(link)) extra.push_back(link);
    for (const std::string& path : extra) {
        if (listed(path)) continue;
        found.push_back(
            {path, platform_->Is_Pseudo_Terminal(path) ? "pseudo-terminal" : "", path, false, ""});
    }

    for (const Found_Port& f : found) {
        clsSerialPort p(platform_);
        p.Name = f.Name;
        p.Description = f.Usb ? Usb_Port_Description : f.Description;
        p.DevPath = f.Location;
        p.IsUsb = f.Usb;
        if (f.Usb && f.Description != Usb_Port_Description) p.Product = f.Description;
        p.Stable_Path = f.Stable_Path;
        p.COMx = static_cast<std::int16_t>(names_.Number_For(f.Location));
        // Chosen, the adapter is remembered by its link, which survives re-plugging.
        if (p.COMx < First_Path_Number) names_.Set_Stable_Path(p.COMx, f.Stable_Path);
        Add_Filtered(p, CheckExist, CheckOpen);
    }
    return true;
}

void clsSerialPortList::EnumerateList(std::int16_t max_port, bool CheckExist, bool CheckOpen, bool Merge) {
    std::vector<clsSerialPort> kept;
    if (Merge) {
        PopulateList(max_port, CheckExist, CheckOpen);
        kept = ports_;
    }
    if (!Device_Walk(CheckExist, CheckOpen)) {
        PopulateList(max_port, CheckExist, CheckOpen);
        return;
    }
    if (!Merge || kept.empty() || ports_.empty()) return;
    std::vector<clsSerialPort> missing;
    for (const clsSerialPort& k : kept) {
        bool found = std::any_of(ports_.begin(), ports_.end(),
                                 [&](const clsSerialPort& p) { return p.COMx == k.COMx; });
        if (!found) missing.push_back(k);
    }
    ports_.insert(ports_.end(), missing.begin(), missing.end());
}

std::vector<std::string> Simulator_Link_Candidates(const char* xdg_runtime_dir) {
    std::vector<std::string> paths;
    if (xdg_runtime_dir != nullptr && *xdg_runtime_dir != '\0')
        paths.push_back(std::string(xdg_runtime_dir) + "/quorlen-box");
    paths.push_back("/tmp/quorlen-box");
    return paths;
}

namespace {

// Which adapter it is, for a tuner with more than one: its own description and its stable name.
std::string Adapter_Words(const clsSerialPort& p) {
    std::string words;
    if (!p.Product.empty()) words += ": " + p.Product;
    if (!p.Stable_Path.empty()) {
        const std::size_t slash = p.Stable_Path.rfind('/');
        words += "  (" + p.Stable_Path.substr(slash == std::string::npos ? 0 : slash + 1) + ")";
    }
    return words;
}

} // namespace

Combo1_Fill Fill_Combo1(const clsSerialPortList& list, int Com_Port) {
    Combo1_Fill fill;
    fill.Com_Port = Com_Port;
    int usb_ports = 0;
    int last_usb = 0;
    for (int i = 1; i <= list.PortCount(); ++i) {
        const clsSerialPort& p = list.port(i);
        Combo1_Entry entry;
        entry.COMx = p.COMx;
        if (p.Description == Usb_Port_Description && p.COMx < 17) {
            entry.text = p.COMxString() + "  " + p.Description + Adapter_Words(p);
            ++usb_ports;
            last_usb = p.COMx;
        } else {
            entry.text = "Not available! " + p.COMxString() + "  " + p.Description + Adapter_Words(p);
        }
        fill.entries.push_back(entry);
    }
    auto find = [&fill](int number) {
        for (std::size_t i = 0; i < fill.entries.size(); ++i)
            if (fill.entries[i].COMx == number) return static_cast<int>(i);
        return -1;
    };
    fill.selected = find(Com_Port);
    if (fill.selected < 0 && usb_ports == 1) {
        fill.Com_Port = last_usb;
        fill.selected = find(last_usb);
    }
    return fill;
}

} // namespace quorlen
