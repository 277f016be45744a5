#include "cards/pcsc/pcsc_reader.h"

#include <PCSC/winscard.h>
#include <PCSC/wintypes.h>

#include <algorithm>

namespace quorlen {

namespace {

SCARDCONTEXT As_Context(std::intptr_t v) {
    return static_cast<SCARDCONTEXT>(v);
}
SCARDHANDLE As_Card(std::intptr_t v) {
    return static_cast<SCARDHANDLE>(v);
}

// The names in a PC/SC multi-string: each ended by NUL, the list by one more.
std::vector<std::string> Split_Multi_String(const char* text, DWORD length) {
    std::vector<std::string> names;
    for (DWORD at = 0; at < length && text[at] != '\0';) {
        std::string name(text + at);
        at += static_cast<DWORD>(name.size()) + 1;
        names.push_back(std::move(name));
    }
    return names;
}

} // namespace

Pcsc_Reader::~Pcsc_Reader() {
    Release();
}

void Pcsc_Reader::Release() {
    Disconnect();
    if (has_context_) SCardReleaseContext(As_Context(context_));
    has_context_ = false;
    context_ = 0;
}

Card_Result Pcsc_Reader::Result_Of(long rv, const std::string& reader) {
    switch (rv) {
    case SCARD_S_SUCCESS:
        return {};
    case SCARD_E_NO_SERVICE:
    case SCARD_E_SERVICE_STOPPED:
    case SCARD_E_INVALID_HANDLE:
        // pcscd is gone (or restarted): the next call starts afresh.
        card_ = 0;
        if (has_context_) SCardReleaseContext(As_Context(context_));
        has_context_ = false;
        return Card_Fail(Card_Error::No_Service, "The smart-card service (pcscd) is not running");
    case SCARD_E_NO_READERS_AVAILABLE:
        return Card_Fail(Card_Error::No_Reader, "No card reader is connected to the PC");
    case SCARD_E_UNKNOWN_READER:
    case SCARD_E_READER_UNAVAILABLE:
        return Card_Fail(Card_Error::No_Reader, "The reader " + reader + " is not there");
    case SCARD_E_NO_SMARTCARD:
    case SCARD_W_REMOVED_CARD:
    case SCARD_W_UNPOWERED_CARD:
    case SCARD_W_UNRESPONSIVE_CARD:
        card_ = 0;
        return Card_Fail(Card_Error::No_Card, "No card in the reader");
    default:
        return Card_Fail(Card_Error::Failed, std::string("Card reader: ") + pcsc_stringify_error(rv));
    }
}

Card_Result Pcsc_Reader::Context() {
    if (has_context_ && SCardIsValidContext(As_Context(context_)) == SCARD_S_SUCCESS) return {};
    has_context_ = false;
    SCARDCONTEXT context = 0;
    const LONG rv = SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &context);
    if (rv != SCARD_S_SUCCESS) return Result_Of(rv);
    context_ = static_cast<std::intptr_t>(context);
    has_context_ = true;
    return {};
}

Card_Result Pcsc_Reader::List_Readers(std::vector<std::string>& names) {
    names.clear();
    if (Card_Result r = Context(); !r.Ok()) return r;
    DWORD length = 0;
    LONG rv = SCardListReaders(As_Context(context_), nullptr, nullptr, &length);
    if (rv == SCARD_E_NO_READERS_AVAILABLE) return {};
    if (rv != SCARD_S_SUCCESS) return Result_Of(rv);
    std::string buffer(length, '\0');
    rv = SCardListReaders(As_Context(context_), nullptr, buffer.data(), &length);
    if (rv == SCARD_E_NO_READERS_AVAILABLE) return {};
    if (rv != SCARD_S_SUCCESS) return Result_Of(rv);
    names = Split_Multi_String(buffer.data(), std::min<DWORD>(length, static_cast<DWORD>(buffer.size())));
    return {};
}

Card_Result Pcsc_Reader::Initial(const std::string& reader) {
    std::vector<std::string> names;
    if (Card_Result r = List_Readers(names); !r.Ok()) return r;
    if (std::find(names.begin(), names.end(), reader) == names.end())
        return Card_Fail(Card_Error::No_Reader, "The reader " + reader + " is not there");
    return {};
}

Card_Result Pcsc_Reader::Connect(const std::string& reader) {
    Disconnect();
    if (Card_Result r = Context(); !r.Ok()) return r;
    SCARDHANDLE card = 0;
    DWORD protocol = 0;
    const LONG rv = SCardConnect(As_Context(context_), reader.c_str(), SCARD_SHARE_SHARED,
                                 SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1, &card, &protocol);
    if (rv != SCARD_S_SUCCESS) return Result_Of(rv, reader);
    card_ = static_cast<std::intptr_t>(card);
    protocol_ = protocol;
    Forget_Card_Type();
    return {};
}

Card_Result Pcsc_Reader::Disconnect() {
    if (card_ == 0) return {};
    // A reset takes back a presented PIN: the card is not left open for the next program.
    const LONG rv = SCardDisconnect(As_Card(card_), SCARD_RESET_CARD);
    card_ = 0;
    Forget_Card_Type();
    if (rv == SCARD_W_REMOVED_CARD || rv == SCARD_E_NO_SMARTCARD) return {};
    return Result_Of(rv);
}

Card_Result Pcsc_Reader::Reset(std::vector<std::uint8_t>& atr) {
    atr.clear();
    if (card_ == 0) return Card_Fail(Card_Error::No_Card, "No card connected");
    DWORD protocol = 0;
    LONG rv = SCardReconnect(As_Card(card_), SCARD_SHARE_SHARED, SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1,
                             SCARD_RESET_CARD, &protocol);
    if (rv != SCARD_S_SUCCESS) return Result_Of(rv);
    protocol_ = protocol;
    Forget_Card_Type();
    char name[256];
    DWORD name_length = sizeof name;
    DWORD state = 0;
    BYTE answer[MAX_ATR_SIZE];
    DWORD answer_length = sizeof answer;
    rv = SCardStatus(As_Card(card_), name, &name_length, &state, &protocol, answer, &answer_length);
    if (rv != SCARD_S_SUCCESS) return Result_Of(rv);
    atr.assign(answer, answer + std::min<DWORD>(answer_length, sizeof answer));
    return {};
}

Card_Result Pcsc_Reader::Transmit(const Apdu& command, std::vector<std::uint8_t>& reply) {
    reply.clear();
    if (card_ == 0) return Card_Fail(Card_Error::No_Card, "No card connected");
    const SCARD_IO_REQUEST* pci = protocol_ == SCARD_PROTOCOL_T0 ? SCARD_PCI_T0 : SCARD_PCI_T1;
    BYTE answer[MAX_BUFFER_SIZE];
    DWORD length = sizeof answer;
    const LONG rv = SCardTransmit(As_Card(card_), pci, command.data(), static_cast<DWORD>(command.size()),
                                  nullptr, answer, &length);
    if (rv != SCARD_S_SUCCESS) return Result_Of(rv);
    reply.assign(answer, answer + std::min<DWORD>(length, sizeof answer));
    return {};
}

} // namespace quorlen
