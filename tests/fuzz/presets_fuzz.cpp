// A user preset as the configuration file keeps it, run over the image as its window shows
// and applies it; then the description file of a dataset (pieces parted by 0x1E).

#include "core/atomic_file.h"
#include "files/presets.h"
#include "fuzz_support.h"

#include <cstdlib>

namespace {

const std::string& Scratch() {
    static const std::string dir = quorlen::fuzz::Make_Scratch("preset");
    return dir;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    const std::vector<std::string> pieces = fuzz::Pieces(fuzz::Text(data, size));
    const Preset_Row row = Parse_Preset_Line(pieces[0]);
    Debug_Log debug;
    Settings_Image image;
    for (std::size_t i = 0; i < image.CardByte.size(); ++i)
        image.CardByte[i] = static_cast<std::uint8_t>(i * 7);
    const Settings_Image before = image;
    Show_Preset_Changes(row, image, debug);
    if (image.CardByte != before.CardByte) std::abort(); // showing changes nothing

    // Applying changes exactly the bytes it names, each to its new value.
    const std::vector<Preset_Change> changes = Apply_Preset(row, image, debug);
    Image_Array<std::uint8_t> expected = before.CardByte;
    for (const Preset_Change& c : changes) {
        if (c.address < 0 || c.address >= Image_Size || c.new_value < 0 || c.new_value > 255) std::abort();
        expected[static_cast<std::size_t>(c.address)] = static_cast<std::uint8_t>(c.new_value);
    }
    if (image.CardByte != expected) std::abort();

    if (pieces.size() > 1) {
        Replace_File_Atomically(Dataset_Description_File(Scratch(), 7), pieces[1]);
        Dataset_Description(Scratch(), 7, image);
    }
    return 0;
}
