#pragma once
// A text log of the simulator's engine swept through the fuel map of `image`, as the box
// streams it, laid into the shipped default log file in place of its rows: what a tuner would
// record on a dyno with `boxsim --drive sweep --fuel-error ...`, without the waiting.

#include "engine_model.h"
#include "image/settings_image.h"

#include <algorithm>
#include <string>

namespace quorlen::test {

// `fuel_error` as boxsim takes it ("3000-5000:1.0-1.5:+12"); `ini_text` the configuration
// file whose sensors the engine reads with; `shipped_log` the default log file's text.
inline std::string Sweep_Log_File(const Settings_Image& image, const std::string& ini_text,
                                  const std::string& shipped_log, const std::string& fuel_error, long rows) {
    boxsim::Image_Bytes bytes{};
    std::copy_n(image.CardByte.begin(), bytes.size(), bytes.begin());
    boxsim::Engine_Setup setup;
    setup.enabled = true;
    setup.drive = boxsim::Drive::Sweep;
    std::string error;
    if (auto e = boxsim::Parse_Fuel_Error(fuel_error, error)) setup.errors.push_back(*e);
    setup.sensors = boxsim::Parse_Tuning_Sensors(ini_text);
    const boxsim::Engine_Model engine(setup, bytes);

    std::string data = "[log_data]\r\nLa\r\n" + boxsim::Text_Header() + "\r\n";
    for (long r = 0; r < rows; ++r)
        data += boxsim::Text_Row(engine.Sample(r, bytes)) + "\r\n";
    data += "[end log_data]\r\n";
    const auto at = shipped_log.find("[log_data]");
    const auto end = shipped_log.find("[log_dataset]");
    return shipped_log.substr(0, at) + data + "\r\n" + shipped_log.substr(end);
}

} // namespace quorlen::test
