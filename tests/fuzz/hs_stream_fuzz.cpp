// The box's high-speed stream as the capture takes it from the port, piece by piece (pieces
// parted by 0x1E), into a .qxo file that is then read back. The first two bytes, little end
// first, are how many bytes come before the next check byte; 11520 and more start the capture
// from the box's echo. So a short input reaches the check bytes every 11520 samples.

#include "fuzz_support.h"
#include "hslog/hs_capture.h"
#include "hslog/osc_file.h"

#include <cstdlib>
#include <filesystem>

namespace {

const std::string& Scratch() {
    static const std::string dir = quorlen::fuzz::Make_Scratch("hs");
    return dir;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    if (size < 2) return 0;
    const long before_check = data[0] | data[1] << 8;
    const std::string path = Scratch() + "capture.qxo";
    std::filesystem::remove(path);
    HS_Capture_State cap;
    std::string error;
    if (!cap.file.Open(path, error)) std::abort();
    // The samples before were taken by an earlier part of this capture.
    cap.Sample_Count = before_check < Osc_Check_Interval ? Osc_Check_Interval + 1 - before_check : 0;
    const std::int64_t start = cap.Sample_Count;
    for (const std::string& piece : fuzz::Pieces(fuzz::Text(data + 2, size - 2)))
        if (!HS_Take_Bytes(cap, piece)) break;
    const int rate = Sample_Rate_Of(625000);
    if (!cap.file.Close(rate)) std::abort();

    // What the capture counted is what the file holds: every byte before a bad check byte,
    // none after it.
    const auto trace = Read_Osc_File(path, error, Default_Sample_Rate);
    if (!trace || trace->cut_off || trace->bad_line != 0 || trace->sample_rate != rate) std::abort();
    if (trace->Count() != cap.Sample_Count - start || trace->rows_stated != trace->Count()) std::abort();
    return 0;
}
