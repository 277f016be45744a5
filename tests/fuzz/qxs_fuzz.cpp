// A settings file as File, Open reads it; what it reads must come back unchanged from a save.

#include "files/qxs_format.h"
#include "fuzz_support.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorlen;
    const std::string_view text = fuzz::Text(data, size);
    const auto numbers = Parse_Qxs_Numbers(text);
    const auto content = Parse_Qxs(text);
    if (numbers.has_value() != content.has_value()) std::abort();
    if (!content) return 0;
    if (*numbers != content->bytes) std::abort();
    const auto again = Parse_Qxs(Format_Qxs(content->bytes, content->comment));
    if (!again || again->bytes != content->bytes) std::abort();
    return 0;
}
