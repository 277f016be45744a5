#include "cards/chipdrive.h"

#include "cards/memory_card.h"
#include "core/proc_guard.h"
#include "core/text.h"

#include <vector>

namespace quorlen {

namespace {

constexpr int Block_Size = 256;
constexpr int First_Byte = 1; // the path never moves byte 0
constexpr int Last_Byte = 255;

// "Card,MemRead,0,256" into its verb and span; false when it is not of that form.
bool Card_Command(const std::string& command, const char* verb, int& start, int& length) {
    const std::string head = std::string("Card,") + verb + ",";
    if (command.rfind(head, 0) != 0) return false;
    const std::string rest = command.substr(head.size());
    const auto comma = rest.find(',');
    if (comma == std::string::npos) return false;
    auto s = To_Integer(rest.substr(0, comma));
    auto n = To_Integer(rest.substr(comma + 1));
    if (!s || !n || *s < 0 || *n <= 0 || *s + *n > Block_Size) return false;
    start = static_cast<int>(*s);
    length = static_cast<int>(*n);
    return true;
}

// The status words of the main form for what the command entry said.
std::string Path_Status(long rc, const std::string& status) {
    switch (static_cast<Card_Error>(rc)) {
    case Card_Error::No_Card:
        return "< No Card >";
    case Card_Error::No_Reader:
    case Card_Error::No_Service:
        return "< No Reader >";
    default:
        return "< " + status + " >";
    }
}

} // namespace

long Reader_Chipdrive::Fail(const Card_Result& r, std::string& status) {
    status = r.text;
    return static_cast<long>(r.error);
}

long Reader_Chipdrive::Search(int number, std::string& status) {
    std::vector<std::string> names;
    if (Card_Result r = reader_.List_Readers(names); !r.Ok()) return Fail(r, status);
    if (number < 1 || number > static_cast<int>(names.size()))
        return Fail(Card_Fail(Card_Error::No_Reader, "No reader " + std::to_string(number) + " on the PC"),
                    status);
    const std::string& name = names[static_cast<std::size_t>(number - 1)];
    if (Card_Result r = reader_.Initial(name); !r.Ok()) return Fail(r, status);
    found_ = name;
    status = Chipdrive_Ready;
    return 0;
}

long Reader_Chipdrive::SCardComand(const std::string& command, std::string& status, std::string& data) {
    const std::string search = "Device,SearchComPort,";
    if (command.rfind(search, 0) == 0) {
        auto n = To_Integer(command.substr(search.size()));
        return Search(n ? static_cast<int>(*n) : 0, status);
    }
    int start = 0;
    int length = 0;
    const bool read = Card_Command(command, "MemRead", start, length);
    const bool write = !read && Card_Command(command, "MemWrite", start, length);
    if (!read && !write) return Fail(Card_Fail(Card_Error::Failed, "Unknown command " + command), status);
    if (found_.empty()) return Fail(Card_Fail(Card_Error::No_Reader, "No reader searched for"), status);
    if (Card_Result r = Open_Memory_Card(reader_, found_, Card_Type::SLE4442); !r.Ok())
        return Fail(r, status);
    Card_Result r;
    if (read) {
        std::vector<std::uint8_t> bytes;
        r = reader_.Read(start, length, bytes);
        if (r.Ok()) data.assign(bytes.begin(), bytes.end());
    } else if (static_cast<int>(data.size()) != length) {
        r = Card_Fail(Card_Error::Failed, "The data holds " + std::to_string(data.size()) + " bytes, not " +
                                              std::to_string(length));
    } else {
        r = Present_PIN_Text(reader_, Card_Type::SLE4442, pin_);
        if (r.Ok())
            r = Write_Memory_Span(reader_, start, std::vector<std::uint8_t>(data.begin(), data.end()));
    }
    reader_.Disconnect();
    if (!r.Ok()) return Fail(r, status);
    status = Chipdrive_Ready;
    return 0;
}

void Chipdrive_Connect(Card_Context& k) {
    k.card.txt_Chipdrive_status = "< Searching... >";
    k.card.Chipdrive_Status_Text.clear();
}

void ChipDrive_timer_Timer(Card_Context& k, Chipdrive_Port& port) {
    Proc_Guard guard(k.log, "Chipdrive timer");
    guard.Step([&] {
        std::string status;
        std::string data;
        long rc = port.SCardComand("Device,SearchComPort,1", status, data);
        if (rc != 0) rc = port.SCardComand("Device,SearchComPort,2", status, data);
        if (rc != 0) {
            k.card.Chipdrive_Status_Text.clear();
            k.card.txt_Chipdrive_status = "< No Reader >";
            if (!status.empty()) k.Add_Debug("Card reader: " + status);
            return;
        }
        k.card.Chipdrive_Status_Text = status;
        k.card.txt_Chipdrive_status = "< Card Reader OK >";
    });
}

void Read_Chipdrive_cmd(Card_Context& k, Chipdrive_Port& port) {
    Proc_Guard guard(k.log, "Read chipdrive cmd");
    if (k.card.Chipdrive_Status_Text != Chipdrive_Ready) {
        k.card.txt_Chipdrive_status = "< No Reader >";
        return;
    }
    guard.Step([&] {
        std::string status;
        std::string data(Block_Size, ' ');
        const long rc = port.SCardComand("Card,MemRead,0,256", status, data);
        if (rc != 0 || data.size() != static_cast<std::size_t>(Block_Size)) {
            k.card.txt_Chipdrive_status = Path_Status(rc, status);
            if (!status.empty()) k.Add_Debug("Card reader: " + status);
            return;
        }
        const std::vector<std::uint8_t> bytes(data.begin(), data.end());
        Take_Card_Bytes(k, bytes, First_Byte, Last_Byte, k.card.txt_Chipdrive_status);
    });
    if (guard.Failed())
        std::copy(k.card.Card_Backup.begin(), k.card.Card_Backup.end(), k.image.CardByte.begin());
}

void Write_Chipdrive_cmd(Card_Context& k, Chipdrive_Port& port) {
    Proc_Guard guard(k.log, "Write chipdrive cmd click");
    if (k.card.Chipdrive_Status_Text != Chipdrive_Ready) {
        k.card.txt_Chipdrive_status = "< No Reader >";
        return;
    }
    guard.Step([&] {
        const std::vector<std::uint8_t> bytes = Card_Write_Bytes(k, First_Byte, Last_Byte);
        std::string data(bytes.begin(), bytes.end());
        std::string status;
        const long rc = port.SCardComand("Card,MemWrite,1,255", status, data);
        if (rc != 0) {
            k.card.txt_Chipdrive_status = Path_Status(rc, status);
            if (!status.empty()) k.Add_Debug("Card reader: " + status);
            // A refused code is not offered again: the card counts each try.
            if (static_cast<Card_Error>(rc) == Card_Error::Wrong_PIN ||
                static_cast<Card_Error>(rc) == Card_Error::Locked)
                k.card.Card_PIN.clear();
            return;
        }
        Card_Write_Done(k, bytes, First_Byte);
        k.card.txt_Chipdrive_status = "< Card Write OK >";
    });
}

} // namespace quorlen
