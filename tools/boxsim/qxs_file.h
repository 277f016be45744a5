#pragma once
// Settings files as the box simulator needs them: 1024 decimal byte lines, then a free comment
// that the simulator neither needs nor keeps.

#include "box.h"

#include <optional>
#include <string>
#include <string_view>

namespace boxsim {

// The image in the text of a settings file; nullopt, with `error` filled, when the text does
// not begin with 1024 numbers of 0 to 255.
std::optional<Image> Parse_Qxs(std::string_view text, std::string& error);
std::string Format_Qxs(const Image& image, std::string_view comment = {});

std::optional<Image> Load_Qxs(const std::string& path, std::string& error);
bool Save_Qxs(const std::string& path, const Image& image, std::string& error);

} // namespace boxsim
