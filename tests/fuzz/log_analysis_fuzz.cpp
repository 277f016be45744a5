// A log file against the shipped default settings, as the Log hits colouring and the fuel
// correction study it: each row's speed and load located on the main maps, the time spent in
// every cell, and the proposal applied as one edit.

#include "analysis/cell_hits.h"
#include "analysis/fuel_correction.h"
#include "files/settings_files.h"
#include "fuzz_support.h"
#include "logging/log_file.h"
#include "support/log_fixture.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

struct Shipped {
    quorlen::Image_Bytes bytes{};
    quorlen::Sensor_State sensors;
};

// On the heap: clang 14 crashes compiling some of the program's big tables as variables.
std::unique_ptr<Shipped> Load_Shipped() {
    using namespace quorlen;
    auto s = std::make_unique<Shipped>();
    const auto settings = Load_Qxs_File(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3_Default_Settings.qxs");
    if (!settings) std::abort();
    s->bytes = settings->bytes;
    Debug_Log debug;
    Proc_Guard guard(debug, "Init ini file");
    Load_Sensor_Definitions(s->sensors, Ini_File(std::string(QUORLEN_DATA_DIR) + "/RZ400_800M3.ini", ""),
                            guard);
    return s;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    static const std::unique_ptr<Shipped> shipped = Load_Shipped();
    test::Log_Fixture f;
    std::copy(shipped->bytes.begin(), shipped->bytes.end(), f.image.CardByte.begin());
    f.image.DatasetID = f.image.CardByte[255];
    f.Load_Defaults(false);
    const std::string path = f.dir.File("fuzz.qxl");
    test::Write_File(path, std::string(fuzz::Text(data, size)));
    auto c = f.Ctx();
    if (!Open_File(c, path)) return 0;
    const Log_State& log = *f.state;

    for (const Table_Id map : {Table_Id::Fuel_3D, Table_Id::Ignition_3D}) {
        const Hit_Grid hits = Cell_Hits(Make_Map_Locator(f.image, shipped->sensors, log, map), log);
        Log_Hit_Colours(hits);
        Hit_Legend(hits);
    }
    const Fuel_Proposal proposal = Propose_Fuel_Correction(f.image, shipped->sensors, log);
    const auto undo = std::make_unique<Undo_List>();
    const Settings_Image before = f.image;
    const int written = Apply_Fuel_Correction(f.image, *undo, proposal);
    // The proposal writes only inside the fuel map, and no more bytes than it changed.
    int differ = 0;
    for (std::size_t i = 0; i < before.CardByte.size(); ++i)
        differ += before.CardByte[i] != f.image.CardByte[i];
    if (written < 0 || differ > written || written > proposal.Changed_Count()) std::abort();
    return 0;
}
